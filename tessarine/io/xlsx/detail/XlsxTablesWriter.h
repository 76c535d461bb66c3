#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

namespace tessarine {
class TSheetTable;
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

/// A table with what it is called in the file.
struct TXlsxTable {
  const TSheetTable* Table = nullptr;
  int32_t Number = 0;  // from 1, in the workbook
  std::u16string Name;
  std::u16string DisplayName;
};

/// Names that may be there once each, without regard to the case of ASCII letters.
class TXlsxNameSet {
 public:
  void Reserve(std::u16string_view AName);

  /// AName where it is new, else AName with a number behind it that makes it so.
  std::u16string Take(std::u16string_view AName);

 private:
  boost::unordered_flat_set<std::u16string> FNames;             // in small letters
  boost::unordered_flat_map<std::u16string, int32_t> FNumbers;  // the last one given out, by name
};

/// Numbers the tables of a workbook's sheets and gives them names. In a file, names of tables and defined names are
/// one set without regard to case; unless the form is literal, a name that another has gets a number behind it, and
/// units that names do not have become "_".
class TXlsxTablePlan {
 public:
  TXlsxTablePlan(const TWorkbook& AWorkbook, bool AIsLiteral);

  /// The next sheet's tables that lie inside the sheet.
  std::vector<TXlsxTable> Next(const TWorksheet& ASheet);

  /// Names that had to be changed so far.
  uint64_t RenamedCount() const { return FRenamedCount; }

 private:
  bool FIsLiteral;
  int32_t FNext = 1;
  uint64_t FRenamedCount = 0;
  TXlsxNameSet FNames;
};

/// Builds the part of a table of ASheet (ECMA-376-1 §18.5.1.2). Unless it is literal, columns are called as the cells
/// of the header row read.
std::string XlsxTablePart(const TWorksheet& ASheet, const TXlsxTable& ATable, bool AIsLiteral);

}  // namespace tessarine::detail

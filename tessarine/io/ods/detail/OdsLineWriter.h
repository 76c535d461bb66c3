#pragma once

#include <cstdint>
#include <string>

#include <boost/unordered/unordered_flat_map.hpp>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

class TOdsStyleWriter;

/// How the rows and columns of one sheet are written: their styles ("co3_s1", "ro7_s1": the first line of each size on
/// the sheet with that number), visibility and repeats.
class TOdsLineWriter {
 public:
  enum class TRowState : uint8_t { rsShown, rsHidden, rsFiltered };
  struct TRowLook {
    int32_t Style = 0;  // the row whose style it is; 0 for none
    TRowState State = TRowState::rsShown;

    friend bool operator==(const TRowLook&, const TRowLook&) = default;
  };

  /// AIndex is the sheet's, 0-based.
  TOdsLineWriter(const TWorksheet& ASheet, int32_t AIndex, TOdsStyleWriter& AStyles);

  /// All columns of the table, at least up to ALastCol.
  void AppendColumns(int32_t ALastCol, std::string& AOut);

  TRowLook LookOf(int32_t ARow);
  /// The last row from AFirst to ALimit that looks like all before it.
  int32_t LastAlike(int32_t AFirst, int32_t ALimit);
  /// Opens ACount rows of one look.
  void AppendRowStart(const TRowLook& ALook, int32_t ACount, std::string& AOut) const;

  /// Rows behind this one are of default size and shown.
  int32_t LastSpecialRow() const { return FLastSpecialRow; }

 private:
  int32_t ColumnStyleOf(int32_t ACol);
  void AppendColumnRun(int32_t AStyle, bool AIsHidden, int32_t ACount, std::string& AOut) const;
  bool IsFiltered(int32_t ARow) const;
  std::string StyleName(const char* APrefix, int32_t ALine) const;

  const TWorksheet& FSheet;
  int32_t FNumber;  // of the sheet, 1-based
  TOdsStyleWriter& FStyles;
  boost::unordered_flat_map<double, int32_t> FColumnStyles;  // first column by width
  boost::unordered_flat_map<double, int32_t> FRowStyles;     // first row by height
  int32_t FLastSpecialRow;
  bool FHasCriteria = false;
};

}  // namespace tessarine::detail

#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tessarine {
class TPageSetup;
class TXmlReader;
struct THeaderFooterSection;
}  // namespace tessarine

namespace tessarine::detail {

struct TXlsxReport;

/// Reads what a sheet part says about printing (ECMA-376-1 §18.3.1.62 and its neighbours) into a page setup, element
/// by element in the order of the file. Breaks wait for the end of the part.
class TXlsxPageSettings {
 public:
  /// The page setup outlives the object.
  TXlsxPageSettings(TPageSetup& APageSetup, size_t AMaxRecords) : FPageSetup(APageSetup), FMaxRecords(AMaxRecords) {}

  /// Called at the start event of a section: false, and nothing has happened, when it does not speak of printing; else
  /// reads it and goes on to its end event. Throws ELimit for too many breaks.
  bool TryReadSection(TXmlReader& AReader, const TXlsxReport& AReport);

  void ApplyBreaks();

 private:
  void ReadBreaks(TXmlReader& AReader, std::vector<int32_t>& ABreaks);

  TPageSetup& FPageSetup;
  const size_t FMaxRecords;
  std::vector<int32_t> FRowBreaks;  // numbers of the lines that they stand before, as met
  std::vector<int32_t> FColBreaks;
};

/// A header or footer in its three sections, split at the first "&L", "&C" and "&R" (an "&&" is a plain "&"). What
/// stands before the first of them belongs to the centre.
THeaderFooterSection SplitXlsxHeader(std::u16string_view AText);

}  // namespace tessarine::detail

#include <tessarine/core/lists/PageSetup.h>

#include <algorithm>
#include <array>

namespace tessarine {

namespace {

constexpr std::array<TPaperDimensions, 15> kPapers = {{
    {8.5, 11},       // psLetter
    {8.5, 11},       // psLetterSmall
    {11, 17},        // psTabloid
    {17, 11},        // psLedger
    {8.5, 14},       // psLegal
    {5.5, 8.5},      // psStatement
    {7.25, 10.5},    // psExecutive
    {11.69, 16.54},  // psA3
    {8.27, 11.69},   // psA4
    {8.27, 11.69},   // psA4Small
    {5.83, 8.27},    // psA5
    {9.84, 13.9},    // psB4
    {6.93, 9.84},    // psB5
    {8.5, 13},       // psFolio
    {8.5, 10.83},    // psQuarto
}};
static_assert(kPapers.size() == static_cast<size_t>(psCustom));

void AddBreak(std::vector<int32_t>& ABreaks, int32_t ALine) {
  if (ALine < 2) return;
  const auto place = std::lower_bound(ABreaks.begin(), ABreaks.end(), ALine);
  if (place == ABreaks.end() || *place != ALine) ABreaks.insert(place, ALine);
}

}  // namespace

std::optional<TPaperDimensions> PaperSizeDimensionsInches(TPaperSize ASize) {
  const auto index = static_cast<size_t>(ASize);
  return index < kPapers.size() ? std::optional(kPapers[index]) : std::nullopt;
}

int32_t PaperSizeToOOXML(TPaperSize ASize) { return ASize >= psCustom ? 0 : static_cast<int32_t>(ASize) + 1; }

TPaperSize PaperSizeFromOOXML(int32_t ACode) {
  return ACode >= 1 && ACode <= static_cast<int32_t>(kPapers.size()) ? static_cast<TPaperSize>(ACode - 1) : psCustom;
}

void TPageSetup::SetPaperSize(TPaperSize ASize) {
  FPaperSize = ASize;
  FCustom = PaperSizeDimensionsInches(ASize).value_or(FCustom);
}

double TPageSetup::PaperWidthInches() const { return PaperSizeDimensionsInches(FPaperSize).value_or(FCustom).Width; }

double TPageSetup::PaperHeightInches() const { return PaperSizeDimensionsInches(FPaperSize).value_or(FCustom).Height; }

void TPageSetup::SetPrintArea(const TCellRange& ARange) {
  const TCellRange range = ARange.Normalize();
  if (range.StartCol >= 1 && range.StartRow >= 1) {
    FPrintArea = range;
  } else {
    FPrintArea.reset();
  }
}

TCellRange TPageSetup::PrintAreaOrUsed(int32_t AMaxCol, int32_t AMaxRow) const {
  return FPrintArea.value_or(TCellRange{1, 1, std::max(AMaxCol, 1), std::max(AMaxRow, 1)});
}

void TPageSetup::SetTitleRows(int32_t AFirst, int32_t ALast) {
  FTitleRows.reset();
  if (AFirst >= 1 && AFirst <= ALast) FTitleRows = {1, AFirst, kMaxCol, ALast};
}

void TPageSetup::SetTitleCols(int32_t AFirst, int32_t ALast) {
  FTitleCols.reset();
  if (AFirst >= 1 && AFirst <= ALast) FTitleCols = {AFirst, 1, ALast, kMaxRow};
}

void TPageSetup::ClearPrintTitles() {
  FTitleRows.reset();
  FTitleCols.reset();
}

void TPageSetup::AddRowBreak(int32_t ARow) { AddBreak(FRowBreaks, ARow); }

void TPageSetup::AddColBreak(int32_t ACol) { AddBreak(FColBreaks, ACol); }

void TPageSetup::ClearBreaks() {
  FRowBreaks.clear();
  FColBreaks.clear();
}

}  // namespace tessarine

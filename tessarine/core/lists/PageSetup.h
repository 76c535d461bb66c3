#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/lists/PrintWhat.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TPageOrientation : uint8_t { poPortrait, poLandscape };
using enum TPageOrientation;

enum class TPaperSize : uint8_t {
  psLetter,
  psLetterSmall,
  psTabloid,
  psLedger,
  psLegal,
  psStatement,
  psExecutive,
  psA3,
  psA4,
  psA4Small,
  psA5,
  psB4,
  psB5,
  psFolio,
  psQuarto,
  psCustom,
};
using enum TPaperSize;

enum class TPageOrder : uint8_t { poDownThenOver, poOverThenDown };
using enum TPageOrder;

enum class TPrintCommentsMode : uint8_t { pcmNone, pcmAtEnd, pcmAsDisplayed };
using enum TPrintCommentsMode;

enum class TPrintErrorsMode : uint8_t { pemDisplayed, pemBlank, pemDash, pemNA };
using enum TPrintErrorsMode;

/// Width and height in inches, portrait.
struct TPaperDimensions {
  double Width = 8.5;
  double Height = 11;

  friend bool operator==(const TPaperDimensions&, const TPaperDimensions&) = default;
};

/// Nothing for psCustom.
TESSARINE_API std::optional<TPaperDimensions> PaperSizeDimensionsInches(TPaperSize ASize);

/// The paper codes of OOXML (ECMA-376-1 §18.3.1.63): 1 to 15 in the order of the enumeration, 0 for psCustom; an
/// unknown code is psCustom.
TESSARINE_API int32_t PaperSizeToOOXML(TPaperSize ASize);
TESSARINE_API TPaperSize PaperSizeFromOOXML(int32_t ACode);

/// The three texts of a header or footer, in the code language that printing expands.
struct THeaderFooterSection {
  TText Left;
  TText Center;
  TText Right;

  static THeaderFooterSection Empty() { return {}; }
  bool IsEmpty() const { return Left.IsEmpty() && Center.IsEmpty() && Right.IsEmpty(); }

  friend bool operator==(const THeaderFooterSection&, const THeaderFooterSection&) = default;
};

/// All that governs the paper output of a sheet. Fields without a rule are plain; the others keep theirs:
/// ranges are normalized and inside the sheet's numbers, breaks are sorted, at least 2 and each there once.
class TESSARINE_API TPageSetup {
 public:
  TPageOrientation Orientation = poPortrait;
  int32_t ScalePercent = 100;
  bool FitToPage = false;
  int32_t FitToWidth = 1;       // pages across
  int32_t FitToHeight = 1;      // pages down
  int32_t FirstPageNumber = 0;  // 0: automatic
  bool BlackAndWhite = false;
  bool DraftQuality = false;
  double MarginLeft = 0.7;  // inches, here and below
  double MarginRight = 0.7;
  double MarginTop = 0.75;
  double MarginBottom = 0.75;
  double MarginHeader = 0.3;
  double MarginFooter = 0.3;
  bool CenterHorizontally = false;
  bool CenterVertically = false;
  THeaderFooterSection Header;
  THeaderFooterSection Footer;
  bool PrintGridlines = false;
  bool PrintHeadings = false;
  TPageOrder PageOrder = poDownThenOver;
  TPrintCommentsMode CommentsMode = pcmNone;
  TPrintErrorsMode ErrorsMode = pemDisplayed;

  void Assign(const TPageSetup& ASource) { *this = ASource; }

  TPaperSize PaperSize() const { return FPaperSize; }
  /// A standard size also sets the custom width and height; psCustom leaves them.
  void SetPaperSize(TPaperSize ASize);
  /// Inches; of a standard size its own, else the custom ones.
  double PaperWidthInches() const;
  double PaperHeightInches() const;
  void SetCustomPaperInches(double AWidth, double AHeight) { FCustom = {AWidth, AHeight}; }

  bool HasPrintArea() const { return FPrintArea.has_value(); }
  /// Normalized; a range of zeros without one.
  TCellRange PrintArea() const { return FPrintArea.value_or(TCellRange()); }
  /// A range with a corner below 1 means none.
  void SetPrintArea(const TCellRange& ARange);
  void ClearPrintArea() { FPrintArea.reset(); }
  /// The print area, or from A1 to the given bounds (at least 1).
  TCellRange PrintAreaOrUsed(int32_t AMaxCol, int32_t AMaxRow) const;

  bool HasTitleRows() const { return FTitleRows.has_value(); }
  TCellRange TitleRows() const { return FTitleRows.value_or(TCellRange()); }  // all columns of these rows
  bool HasTitleCols() const { return FTitleCols.has_value(); }
  TCellRange TitleCols() const { return FTitleCols.value_or(TCellRange()); }  // all rows of these columns
  /// Lines repeated on every page; anything but 1 <= first <= last clears them.
  void SetTitleRows(int32_t AFirst, int32_t ALast);
  void SetTitleCols(int32_t AFirst, int32_t ALast);
  void ClearPrintTitles();

  /// A break stands before its row or column. Ignored below 2 and where there is one already.
  void AddRowBreak(int32_t ARow);
  void AddColBreak(int32_t ACol);
  void ClearBreaks();
  const std::vector<int32_t>& RowBreaks() const { return FRowBreaks; }  // ascending
  const std::vector<int32_t>& ColBreaks() const { return FColBreaks; }

  friend bool operator==(const TPageSetup&, const TPageSetup&) = default;

 private:
  TPaperSize FPaperSize = psLetter;
  TPaperDimensions FCustom;
  std::optional<TCellRange> FPrintArea;
  std::optional<TCellRange> FTitleRows;
  std::optional<TCellRange> FTitleCols;
  std::vector<int32_t> FRowBreaks;
  std::vector<int32_t> FColBreaks;
};

/// Settings of one print job.
struct TPrintJobSettings {
  TPrintWhat What = pwActiveSheets;
  bool IgnorePrintArea = false;
  int32_t FromPage = 0;  // 0 and 0: all pages
  int32_t ToPage = 0;
  int32_t Copies = 1;
  bool Collate = true;

  static TPrintJobSettings Default() { return {}; }

  friend bool operator==(const TPrintJobSettings&, const TPrintJobSettings&) = default;
};

}  // namespace tessarine

#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

namespace detail {
class TAxisSizing;
struct TPixelScale;
}  // namespace detail

/// Measures digits for MeasureMaxDigitWidth; a host or the font service sets one.
class TESSARINE_API IDigitMeasurer {
 public:
  virtual ~IDigitMeasurer() = default;

  /// The width in pixels of the widest of the ten digits in a font of normal weight; nothing when it cannot be had.
  virtual std::optional<double> WidestDigitPixels(std::u16string_view AFontName, int32_t ASizePt, int32_t ADpi) = 0;
};

/// First and last line of an outline group, its summary line left out.
struct TOutlineGroup {
  int32_t First = 0;
  int32_t Last = 0;

  friend bool operator==(const TOutlineGroup&, const TOutlineGroup&) = default;
};

/// Sizes, visibility and outline of the rows and columns of one sheet, kept only where they are not the default.
/// Lines are 1-based and not validated when set. Widths are in characters, heights in points; dots per inch come with
/// each operation on pixels. Ties round to even.
class TESSARINE_API TRowColSizing {
 public:
  TRowColSizing();
  ~TRowColSizing();
  TRowColSizing(const TRowColSizing& AOther);
  TRowColSizing& operator=(const TRowColSizing& AOther);

  /// Empties all but the default sizes; summary lines stand below and right again.
  void Clear();

  // Sizes.
  double DefaultColWidth() const;
  void SetDefaultColWidth(double AWidthChars);
  double DefaultRowHeight() const;
  void SetDefaultRowHeight(double AHeightPt);
  double MaxDigitWidth() const { return FMaxDigitWidth; }
  /// Pixels at 96 dots per inch.
  void SetMaxDigitWidth(double AWidthPixels);

  double GetColWidthChars(int32_t ACol) const;
  void SetColWidthChars(int32_t ACol, double AWidthChars);
  bool HasCustomColWidth(int32_t ACol) const;
  /// The custom height, else the larger of the default and the measured height.
  double GetRowHeightPt(int32_t ARow) const;
  /// Drops the row's measured height.
  void SetRowHeightPt(int32_t ARow, double AHeightPt);
  bool HasCustomRowHeight(int32_t ARow) const;
  /// Keeps a measured height; one up to the default plus 0.01 removes the entry.
  void SetAutoRowHeightPt(int32_t ARow, double AHeightPt);
  void ClearAutoRowHeight(int32_t ARow);
  void ClearAutoRowHeights();

  // Pixels.
  int32_t ColWidthToPixels(double AWidthChars, int32_t ADpi) const;
  static int32_t RowHeightToPixels(double AHeightPt, int32_t ADpi);
  /// 0 for a hidden line.
  int32_t GetColWidthPixels(int32_t ACol, int32_t ADpi) const;
  int32_t GetRowHeightPixels(int32_t ARow, int32_t ADpi) const;
  /// Where a line starts; 0 for line 1 and below.
  int64_t GetCumulativeColWidthBefore(int32_t ACol, int32_t ADpi) const;
  int64_t GetCumulativeRowHeightBefore(int32_t ARow, int32_t ADpi) const;
  /// The line at a pixel offset: the last that starts at or before it. Line 1 below offset 1.
  int32_t FindRowAtOffset(int64_t AOffset, int32_t ADpi) const;
  int32_t FindColAtOffset(int64_t AOffset, int32_t ADpi) const;

  /// The same by a walk over all entries and by bisection over it; they judge the indexed forms above.
  int64_t GetCumulativeColWidthBeforePlain(int32_t ACol, int32_t ADpi) const;
  int64_t GetCumulativeRowHeightBeforePlain(int32_t ARow, int32_t ADpi) const;
  int32_t FindRowAtOffsetPlain(int64_t AOffset, int32_t ADpi) const;
  int32_t FindColAtOffsetPlain(int64_t AOffset, int32_t ADpi) const;

  // Visibility.
  void SetColHidden(int32_t ACol, bool AHidden);
  void SetRowHidden(int32_t ARow, bool AHidden);
  bool IsColHidden(int32_t ACol) const;
  bool IsRowHidden(int32_t ARow) const;

  /// The last line that has a custom size or is hidden; 0 when there is none.
  int32_t LastSpecialCol() const;
  int32_t LastSpecialRow() const;
  /// The lines of the sheet with a custom size, hidden, with an outline level or collapsed, ascending. With AAnywhere
  /// also those beyond it, which insertions push there and deletions bring back.
  std::vector<int32_t> MarkedCols(bool AAnywhere = false) const;
  std::vector<int32_t> MarkedRows(bool AAnywhere = false) const;

  // Outline. Levels are 0 (none) to 7.
  bool OutlineSummaryBelow() const;
  void SetOutlineSummaryBelow(bool ABelow);
  bool OutlineSummaryRight() const;
  void SetOutlineSummaryRight(bool ARight);
  int32_t GetRowOutlineLevel(int32_t ARow) const;
  void SetRowOutlineLevel(int32_t ARow, int32_t ALevel);
  bool IsRowCollapsed(int32_t ARow) const;
  void SetRowCollapsed(int32_t ARow, bool ACollapsed);
  int32_t MaxRowOutlineLevel() const;
  int32_t OutlineLevelButtonCount() const;
  static int32_t OutlineLevelPitch(int32_t ADpi);
  int32_t OutlineGutterPixels(int32_t ADpi) const;
  /// The middle of a level's strip in the gutter, counted from AOrigin; AForward puts level 1 first.
  double OutlineLevelCenterX(int32_t ALevel, double AOrigin, int32_t ADpi, bool AForward) const;
  /// The group that ASummaryRow sums up: the adjoining rows of higher level, at most 10,001.
  std::optional<TOutlineGroup> FindRowGroupDetails(int32_t ASummaryRow) const;
  /// The summary row of the innermost group around ARow, at most 10,000 rows away; 0 when there is none.
  int32_t FindOwningSummaryRow(int32_t ARow) const;
  /// The level of the group of a summary row; 0 when it has none.
  int32_t RowGroupLevel(int32_t ASummaryRow) const;
  /// Hides or shows a group; groups inside that are collapsed stay shut. False without a group.
  bool ToggleRowGroup(int32_t ASummaryRow);
  /// Shows all rows of a level below ALevel and collapses the rest. False without levels.
  bool ShowRowOutlineLevel(int32_t ALevel);

  int32_t GetColOutlineLevel(int32_t ACol) const;
  void SetColOutlineLevel(int32_t ACol, int32_t ALevel);
  bool IsColCollapsed(int32_t ACol) const;
  void SetColCollapsed(int32_t ACol, bool ACollapsed);
  int32_t MaxColOutlineLevel() const;
  int32_t OutlineColLevelButtonCount() const;
  int32_t OutlineColGutterPixels(int32_t ADpi) const;
  double OutlineLevelCenterY(int32_t ALevel, double AOrigin, int32_t ADpi, bool AForward) const;
  std::optional<TOutlineGroup> FindColGroupDetails(int32_t ASummaryCol) const;
  int32_t FindOwningSummaryCol(int32_t ACol) const;
  int32_t ColGroupLevel(int32_t ASummaryCol) const;
  bool ToggleColGroup(int32_t ASummaryCol);
  bool ShowColOutlineLevel(int32_t ALevel);

  // Structure; AStart, ADelta, ACount and ADest as in ShiftIndex and MoveIndex.
  void ShiftRows(int64_t AStart, int64_t ADelta);
  void ShiftColumns(int64_t AStart, int64_t ADelta);
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest);
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest);

  /// The width of the widest digit in pixels. A blank name means Calibri, a size up to 0 means 11 and dots per inch
  /// below 1 mean 96. 7 while no measurer is set or nothing can be measured.
  static double MeasureMaxDigitWidth(std::u16string_view AFontName, double ASizePt, int32_t ADpi);

  /// Process-wide, null to take it away; safe on any thread.
  static void SetDigitMeasurer(std::shared_ptr<IDigitMeasurer> AMeasurer);

 private:
  detail::TPixelScale ColScale(int32_t ADpi) const;

  std::unique_ptr<detail::TAxisSizing> FRows;  // never null
  std::unique_ptr<detail::TAxisSizing> FCols;  // never null
  double FMaxDigitWidth = 7;
};

}  // namespace tessarine

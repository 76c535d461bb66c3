#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/detail/LineTable.h>

namespace tessarine::detail {

/// Turns a size in points or characters into pixels for one dots-per-inch value.
struct TPixelScale {
  bool IsColumns = false;
  double DigitWidth = 7;  // columns only: pixels at 96 dots per inch
  int32_t Dpi = 96;

  int32_t ToPixels(double ASize) const;
  friend bool operator==(const TPixelScale&, const TPixelScale&) = default;
};

/// A value that stays within 32 bits, rounded with ties to even; 0 for what is no number.
int32_t RoundToPixels(double AValue);

/// Sizes, visibility and outline of the lines of one axis; rows and columns differ only in limit and pixel scale.
class TAxisSizing {
 public:
  TAxisSizing(int32_t ALimit, double ADefaultSize);
  TAxisSizing(const TAxisSizing& AOther);
  TAxisSizing& operator=(const TAxisSizing& AOther);
  ~TAxisSizing();

  void Clear();

  double DefaultSize() const { return FDefaultSize; }
  /// What is no number is ignored.
  void SetDefaultSize(double ASize);
  double Size(int32_t ALine) const;
  bool HasCustomSize(int32_t ALine) const { return FSizes.Find(ALine) != nullptr; }
  /// Drops the line's measured size.
  void SetSize(int32_t ALine, double ASize);
  void SetAutoSize(int32_t ALine, double ASize);
  void ClearAutoSize(int32_t ALine);
  void ClearAutoSizes();

  bool IsHidden(int32_t ALine) const { return FHidden.Find(ALine) != nullptr; }
  void SetHidden(int32_t ALine, bool AHidden);

  /// The last line of the sheet that has a size of its own or is hidden; 0 when there is none.
  int32_t LastSpecialLine() const;
  /// The lines of the sheet, or of any number, that have a size of their own, are hidden, collapsed or on an outline
  /// level, ascending.
  std::vector<int32_t> MarkedLines(bool AAnywhere) const;

  int32_t Pixels(int32_t ALine, const TPixelScale& AScale) const;
  int64_t CumulativeBefore(int32_t ALine, const TPixelScale& AScale) const;
  int64_t CumulativeBeforePlain(int32_t ALine, const TPixelScale& AScale) const;
  int32_t FindAtOffset(int64_t AOffset, const TPixelScale& AScale) const;
  int32_t FindAtOffsetPlain(int64_t AOffset, const TPixelScale& AScale) const;

  bool SummaryBehind() const { return FSummaryBehind; }
  void SetSummaryBehind(bool ABehind) { FSummaryBehind = ABehind; }
  int32_t Level(int32_t ALine) const;
  void SetLevel(int32_t ALine, int32_t ALevel);
  bool IsCollapsed(int32_t ALine) const { return FCollapsed.Find(ALine) != nullptr; }
  void SetCollapsed(int32_t ALine, bool ACollapsed);
  int32_t MaxLevel() const;
  int32_t LevelButtonCount() const;
  int32_t GutterPixels(int32_t ADpi) const;
  double LevelCenter(int32_t ALevel, double AOrigin, int32_t ADpi, bool AForward) const;
  std::optional<TOutlineGroup> FindGroup(int32_t ASummary) const;
  int32_t FindOwningSummary(int32_t ALine) const;
  int32_t GroupLevel(int32_t ASummary) const;
  bool ToggleGroup(int32_t ASummary);
  bool ShowLevel(int32_t ALevel);

  void Shift(int64_t AStart, int64_t ADelta);
  void Move(int64_t AStart, int64_t ACount, int64_t ADest);

 private:
  struct TFlag {};  // a key that exists is the flag
  struct TPixelIndex;

  void DropIndex();
  const TPixelIndex& PixelIndex(const TPixelScale& AScale) const;
  template <class TNewLine>
  void Renumber(TNewLine&& ANewLine);

  int32_t FLimit;  // the last line of a sheet
  double FDefaultSize;
  bool FSummaryBehind = true;
  TLineTable<double> FSizes;
  TLineTable<double> FAutoSizes;
  TLineTable<TFlag> FHidden;
  TLineTable<uint8_t> FLevels;
  TLineTable<TFlag> FCollapsed;
  /// Where the lines of other than default size start, for the scale of the last question; null after a change.
  mutable std::unique_ptr<TPixelIndex> FPixelIndex;
};

}  // namespace tessarine::detail

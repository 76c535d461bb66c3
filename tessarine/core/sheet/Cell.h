#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

enum class TSparklineKind : uint8_t { spkNone, spkBar, spkColumn, spkLine, spkWinLoss };
using enum TSparklineKind;

/// The chart inside a cell that a sparkline formula makes.
struct TSparklineData {
  TSparklineKind Kind = spkNone;  // spkNone: no chart
  double Value = 0;               // the single value of the bar forms
  double MaxVal = 0;              // the scale's maximum
  uint32_t Color = 0;             // marks, ARGB
  std::vector<double> Values;     // the series of the line, column and win/loss forms

  friend bool operator==(const TSparklineData&, const TSparklineData&) = default;
};

/// A stretch of text in one font.
struct TRichTextRun {
  TText Text;
  TCellFontInfo Font;

  friend bool operator==(const TRichTextRun&, const TRichTextRun&) = default;
};
using TRichTextRuns = std::vector<TRichTextRun>;

/// One cell as callers see it: a record that is built from the sheet's store and written back whole.
struct TESSARINE_API TCell {
  TCellValue Value;                // what was entered: a constant, or a formula's source
  int32_t StyleIndex = 0;          // into TTessarineStyleSheet; any number is kept, 0 is the default format
  bool HasFormatOverride = false;  // FormatOverride wins over StyleIndex
  bool HasCachedValue = false;     // CachedValue is valid
  TCellFormat FormatOverride;
  TRichTextRuns RichText;    // what is displayed, when present
  TCellValue CachedValue;    // last result of the formula, never of kind cvkFormula
  TSparklineData Sparkline;  // set by a sparkline formula

  static TCell CreateEmpty() { return {}; }

  /// No value, no format, no cached result, no sparkline. Runs of text do not count: a cell that holds only runs is
  /// empty, and storing it removes it.
  bool IsEmpty() const {
    return Value.IsEmpty() && !HasFormatOverride && StyleIndex == 0 && !HasCachedValue && Sparkline.Kind == spkNone;
  }

  /// Takes a formula's result; a result of kind cvkFormula becomes a text.
  void SetCachedResult(const TCellValue& AResult);

  /// Drops the cached result and with it the sparkline's kind and series; its other fields stay.
  void ClearCachedResult();

  friend bool operator==(const TCell&, const TCell&) = default;
};

}  // namespace tessarine

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TTessarineFileFormat : uint8_t { ffAuto, ffTsr, ffXlsx, ffOds, ffCsv };
using enum TTessarineFileFormat;

enum class TSheetVisibility : uint8_t { svVisible, svHidden, svVeryHidden };
using enum TSheetVisibility;

enum class TCellValueKind : uint8_t { cvkEmpty, cvkText, cvkNumber, cvkBoolean, cvkError, cvkFormula };
using enum TCellValueKind;

enum class TCellErrorCode : uint8_t {
  ceNone,
  ceDiv0,
  ceNA,
  ceName,
  ceNull,
  ceNum,
  ceRef,
  ceValue,
  ceCirc,
  ceSpill,
};
using enum TCellErrorCode;

/// The error's literal ("#DIV/0!"); "#ERROR!" for ceNone and for codes that do not exist.
TESSARINE_API TText ErrorCodeToString(TCellErrorCode ACode);

/// The format that a file name's extension stands for, in any case; ffAuto for others.
TESSARINE_API TTessarineFileFormat FileFormatFromExtension(std::string_view APath);

/// A value that is only looked at: trivially copied, and valid while its owner (a cell, an argument) is unchanged.
struct TValueView {
  union {
    double Number;                    // cvkNumber
    const detail::TTextBlock* Block;  // cvkText, cvkFormula; null for the empty text
  };
  TCellValueKind Kind = cvkEmpty;
  TCellErrorCode ErrorCode = ceNone;  // cvkError
  bool BooleanValue = false;          // cvkBoolean

  TValueView() : Number(0) {}
  static TValueView FromNumber(double ANumber) {
    TValueView view;
    view.Number = ANumber;
    view.Kind = cvkNumber;
    return view;
  }
  static TValueView FromBoolean(bool AValue) {
    TValueView view;
    view.Kind = cvkBoolean;
    view.BooleanValue = AValue;
    return view;
  }
  static TValueView FromError(TCellErrorCode ACode) {
    TValueView view;
    view.Kind = cvkError;
    view.ErrorCode = ACode;
    return view;
  }
  static TValueView FromBlock(TCellValueKind AKind, const detail::TTextBlock* ABlock) {
    TValueView view;
    view.Kind = AKind;
    view.Block = ABlock;
    return view;
  }

  bool IsEmpty() const { return Kind == cvkEmpty; }
  bool IsError() const { return Kind == cvkError; }
  std::u16string_view Text() const { return Block ? Block->View() : std::u16string_view(); }
};
static_assert(sizeof(TValueView) == 16);

/// What a cell holds or a formula yields: one kind and the member that goes with it, all others zero or empty.
/// A cvkFormula holds only the source text with its "="; its result stands beside it in the cell.
struct TESSARINE_API TCellValue {
  TCellValueKind Kind = cvkEmpty;
  TCellErrorCode ErrorCode = ceNone;  // cvkError
  bool BooleanValue = false;          // cvkBoolean
  double Number = 0;                  // cvkNumber; dates and times are numbers too
  TText Text;                         // cvkText: the text; cvkFormula: the source

  static TCellValue Empty() { return {}; }
  static TCellValue FromText(TText AText) {
    TCellValue value;
    value.Kind = cvkText;
    value.Text = std::move(AText);
    return value;
  }
  static TCellValue FromNumber(double ANumber) {
    TCellValue value;
    value.Kind = cvkNumber;
    value.Number = ANumber;
    return value;
  }
  static TCellValue FromBoolean(bool AValue) {
    TCellValue value;
    value.Kind = cvkBoolean;
    value.BooleanValue = AValue;
    return value;
  }
  static TCellValue FromError(TCellErrorCode ACode) {
    TCellValue value;
    value.Kind = cvkError;
    value.ErrorCode = ACode;
    return value;
  }
  /// A non-empty text without a leading "=" gets one.
  static TCellValue FromFormula(std::u16string_view AFormula);
  static TCellValue FromView(const TValueView& AView);

  bool IsEmpty() const { return Kind == cvkEmpty; }
  bool IsError() const { return Kind == cvkError; }
  const TText& Formula() const { return Text; }

  TValueView View() const {
    switch (Kind) {
      case cvkNumber: return TValueView::FromNumber(Number);
      case cvkText:
      case cvkFormula: return TValueView::FromBlock(Kind, Text.Block());
      case cvkBoolean: return TValueView::FromBoolean(BooleanValue);
      case cvkError: return TValueView::FromError(ErrorCode);
      case cvkEmpty: break;
    }
    return {};
  }

  /// The plain, format-free text, see AppendDisplayString.
  TText ToDisplayString() const;

  friend bool operator==(const TCellValue&, const TCellValue&) = default;
};
static_assert(sizeof(TCellValue) <= 24);

/// Appends the plain text of a value: numbers with 15 significant digits, TRUE and FALSE, the error's literal, the
/// formula's source. Behind a "." trailing zeros are cut from the very end, also those of an exponent: 1.2E+20
/// reads "1.2E+2".
TESSARINE_API void AppendDisplayString(const TValueView& AValue, std::u16string& AText);

/// The same text without a copy where one stands already (texts, errors, Booleans); ABuffer holds what is built.
TESSARINE_API std::u16string_view DisplayView(const TValueView& AValue, std::u16string& ABuffer);

}  // namespace tessarine

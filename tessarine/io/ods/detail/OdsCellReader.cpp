#include <tessarine/io/ods/detail/OdsCellReader.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <utility>

#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/ods/detail/OdsDrawingReader.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsValidationReader.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Equality with a word whose length the compiler knows, which then compares without a call.
template <size_t TSize>
bool IsWord(std::string_view AText, const char (&AWord)[TSize]) {
  return AText.size() == TSize - 1 && std::memcmp(AText.data(), AWord, TSize - 1) == 0;
}

bool IsTrueWord(std::string_view AText) { return AText == "true" || AText == "1"; }

constexpr TCellErrorCode kErrorCodes[] = {ceDiv0, ceNA, ceName, ceNull, ceNum, ceRef, ceValue, ceCirc, ceSpill};

}  // namespace

int32_t OdsRepeatCount(std::string_view AText) {
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  int64_t count = 0;
  for (const char digit : AText) {
    if (digit < '0' || digit > '9') return 1;
    count = std::min<int64_t>(count * 10 + (digit - '0'), kMost);
  }
  return static_cast<int32_t>(std::max<int64_t>(count, 1));
}

TOdsCellReader::TOdsCellReader(TXmlReader& AReader, TWorksheet& ASheet, const TOdsReadContext& AContext,
                               TOdsValidationReader& AValidations, TOdsDrawingReader& ADrawings)
    : FReader(AReader),
      FSheet(ASheet),
      FStore(ASheet.Store()),
      FContext(AContext),
      FValidations(AValidations),
      FDrawings(ADrawings),
      FBlocks(ASheet, AContext.Budget.SpilledValues),
      FText(AContext) {}

// ---- reading

int32_t TOdsCellReader::ReadCell(int32_t ACol, TOdsCellStyle* ADefault) {
  FCol = ACol;
  FCell = {};
  FFormula.clear();
  ReadAttributes();
  FHasOwnStyle = !FCell.StyleName.empty();
  if (FHasOwnStyle && (!FLastStyle || FCell.StyleName != FLastStyleName)) {
    FLastStyle = &FContext.Formats.Find(FCell.StyleName);
    FLastStyleName = FCell.StyleName;
  }
  FStyle = FHasOwnStyle ? FLastStyle : ADefault;
  if (!FCell.Validation.empty() && FCol <= kMaxCol && FRow <= kMaxRow)
    FValidations.Bind(FCell.Validation, {FCol, FRow, FCol + std::min(FCell.Repeat, kMaxCol) - 1,
                                         FRow + std::min(FRowRepeat, kMaxRow) - 1});
  ReadContent();
  if (FCol <= kMaxCol && FRow <= kMaxRow) PlaceCell();
  return FCell.Repeat;
}

/// One pass by local names. The extensions of other programs repeat some of the names and count only for errors.
void TOdsCellReader::ReadAttributes() {
  for (const TXmlAttribute& attribute : FReader.Attributes()) {
    const size_t colon = attribute.Name.find(':');
    const std::string_view name = colon == attribute.Name.npos ? attribute.Name : attribute.Name.substr(colon + 1);
    if (colon == 7 && attribute.Name.starts_with("calcext:")) {
      if (IsWord(name, "value-type") && attribute.Value == "error") FCell.IsError = true;
    } else if (!TryReadValueAttribute(name, attribute.Value)) {
      ReadPlaceAttribute(name, attribute.Value);
    }
  }
}

/// What a cell holds. Of several values that which has the name of a type counts.
bool TOdsCellReader::TryReadValueAttribute(std::string_view AName, std::string_view AValue) {
  if (IsWord(AName, "value-type")) {
    FCell.Type = TypeOf(AValue);
  } else if (IsWord(AName, "value")) {
    if (!FCell.HasValue) FNumberText = AValue;
    FCell.HasValue = true;
  } else if (IsWord(AName, "style-name")) {
    FCell.StyleName = AValue;
  } else if (IsWord(AName, "date-value") || IsWord(AName, "time-value") || IsWord(AName, "boolean-value")) {
    FNumberText = AValue;
    FCell.HasValue = true;
  } else if (IsWord(AName, "formula")) {
    FFormula = AValue;
  } else if (IsWord(AName, "string-value")) {
    FStringValue = AValue;
    FCell.HasText = true;
  } else {
    return false;
  }
  return true;
}

/// How far a cell reaches, and what is bound to it.
void TOdsCellReader::ReadPlaceAttribute(std::string_view AName, std::string_view AValue) {
  if (IsWord(AName, "number-columns-repeated")) FCell.Repeat = OdsRepeatCount(AValue);
  if (IsWord(AName, "number-columns-spanned")) FCell.ColSpan = OdsRepeatCount(AValue);
  if (IsWord(AName, "number-rows-spanned")) FCell.RowSpan = OdsRepeatCount(AValue);
  if (IsWord(AName, "content-validation-name")) FCell.Validation = AValue;
  if (IsWord(AName, "number-matrix-columns-spanned")) FCell.MatrixCols = OdsRepeatCount(AValue);
  if (IsWord(AName, "number-matrix-rows-spanned")) FCell.MatrixRows = OdsRepeatCount(AValue);
}

TOdsCellReader::TType TOdsCellReader::TypeOf(std::string_view AText) {
  if (IsWord(AText, "float") || IsWord(AText, "currency")) return TType::ctFloat;
  if (IsWord(AText, "string") || IsWord(AText, "text")) return TType::ctText;
  if (IsWord(AText, "percentage")) return TType::ctPercentage;
  if (IsWord(AText, "date")) return TType::ctDate;
  if (IsWord(AText, "time")) return TType::ctTime;
  return IsWord(AText, "boolean") ? TType::ctBoolean : TType::ctNone;
}

void TOdsCellReader::ReadContent() {
  FText.Clear();
  for (;;) {
    std::string_view text;
    if (FReader.TryReadLeaf("text:p", text)) {
      FText.AddPlainParagraph(text);
      continue;
    }
    const TXmlEvent event = FReader.Next();
    if (event == xeStartElement) ReadChild();
    if (event == xeEndElement || event == xeEnd) return;
  }
}

void TOdsCellReader::ReadChild() {
  if (FReader.LocalNameIs("p")) return FText.AddParagraph(FReader);
  if (FReader.LocalNameIs("annotation")) ++FComments;
  const bool isPlaced = FCol <= kMaxCol && FRow <= kMaxRow;
  if (isPlaced && FDrawings.IsDrawing(FReader.LocalName())) return FDrawings.Read(FReader, FSheet, {FCol, FRow});
  FReader.SkipElement();
}

// ---- values

bool TOdsCellReader::HasContent() const {
  if (!FFormula.empty() || FCell.HasText || !FText.Text().empty()) return true;
  return FCell.HasValue && FCell.Type != TType::ctText && FCell.Type != TType::ctNone;
}

TCellValue TOdsCellReader::TextValue() const {
  if (FCell.HasText) return TCellValue::FromText(TText::FromUtf8(FStringValue));
  return FText.Text().empty() ? TCellValue() : TCellValue::FromText(TText::FromUtf8(FText.Text()));
}

/// What the cell means by its type; a number that is not stated may stand in its text.
TCellValue TOdsCellReader::Value() {
  double number = 0;
  if (FCell.IsError) return ErrorResult();
  switch (FCell.Type) {
    case TType::ctFloat:
    case TType::ctPercentage:
      if (FCell.HasValue && TryParseFileNumber(std::string_view(FNumberText), number))
        return TCellValue::FromNumber(number);
      if (TryParseFileNumber(std::string_view(FText.Text()), number)) return TCellValue::FromNumber(number);
      return TextValue();
    case TType::ctDate:
    case TType::ctTime:
      if (FCell.HasValue)
        if (const auto serial = OdsParseDateValue(FNumberText)) return TCellValue::FromNumber(*serial);
      return TextValue();
    case TType::ctBoolean:
      if (FCell.HasValue) return TCellValue::FromBoolean(IsTrueWord(FNumberText));
      return TextValue();
    case TType::ctText:
    case TType::ctNone: break;
  }
  return TextValue();
}

/// The last result of a formula. One without a type is a number where its text is one.
TCellValue TOdsCellReader::FormulaResult() {
  if (FCell.Type == TType::ctText && !FCell.IsError) {
    // An empty text is a result like any other when the file says that it is one.
    return TCellValue::FromText(TText::FromUtf8(FCell.HasText ? FStringValue : FText.Text()));
  }
  const TCellValue value = Value();
  double number = 0;
  if (FCell.Type == TType::ctNone && !FCell.IsError && TryParseFileNumber(std::string_view(FText.Text()), number))
    return TCellValue::FromNumber(number);
  return value;
}

TCellValue TOdsCellReader::ErrorResult() const {
  const std::u16string text = Utf8ToUtf16(FText.Text());
  for (const TCellErrorCode code : kErrorCodes)
    if (ErrorCodeToString(code).View() == text) return TCellValue::FromError(code);
  return TextValue();
}

/// The style of a cell with content. Types bring a number format where the style has none.
int32_t TOdsCellReader::StyleIndex() {
  TOdsCellStyle& style = FStyle ? *FStyle : FContext.Formats.Find({});
  switch (FCell.Type) {
    case TType::ctPercentage: return FContext.Formats.PercentIndexOf(style);
    case TType::ctDate: return FContext.Formats.DateIndexOf(style);
    case TType::ctTime: return FContext.Formats.TimeIndexOf(style);
    case TType::ctNone:
    case TType::ctFloat:
    case TType::ctBoolean:
    case TType::ctText: break;
  }
  return FContext.Formats.IndexOf(style);
}

// ---- storing

/// Stores the cell in all the places that it is repeated to, up to the limit.
void TOdsCellReader::PlaceCell() {
  const bool hasContent = HasContent();
  const bool isLong = FCell.Repeat > kOdsMaxRepeat || FRowRepeat > kOdsMaxRepeat;
  // Programs give styles to the last lines of a sheet that stand for all the lines behind the content.
  const bool isRest = isLong || FCol == kMaxCol || FRow == kMaxRow;
  const bool showsBlank = FStyle && !FStyle->IsDefault && (FHasOwnStyle || FStyle->ShowsOnBlanks) && !isRest;
  const bool isMerged = FCell.ColSpan > 1 || FCell.RowSpan > 1;
  const bool isLinked = !FText.Link().empty() && !isLong;
  if (!hasContent && !showsBlank && !isMerged && !isLinked) {
    if (!FBlocks.IsEmpty() && FCell.Repeat == 1 && FRowRepeat == 1)
      FBlocks.TryStore(FCol, FRow, {}, FReader.PartName());
    return;
  }
  const TCellRange range{FCol, FRow, std::min(FCol + std::min(FCell.Repeat, kOdsMaxRepeat) - 1, kMaxCol),
                         std::min(FRow + std::min(FRowRepeat, kOdsMaxRepeat) - 1, kMaxRow)};
  TakeRepeats(static_cast<size_t>(int64_t{range.Width()} * range.Height() - 1));
  if (isMerged) MergeCells(range);
  if (isLinked || (hasContent && !FText.Link().empty()))
    FSheet.Hyperlinks().SetHyperlinkRange(range, TText::FromUtf8(FText.Link()));
  if (hasContent || showsBlank) Store(range);
}

/// Runs of a few equal cells are free: in long tables every row has some. A formula takes more memory than a value.
void TOdsCellReader::TakeRepeats(size_t ACount) {
  constexpr size_t kFreeRepeats = 16;
  constexpr size_t kFormulaCost = 4;
  const size_t count = FFormula.empty() ? std::max(ACount, kFreeRepeats) - kFreeRepeats : ACount * kFormulaCost;
  if (count == 0) return;
  TXlsxBudget::Take(
      FContext.Budget.RepeatedCells, count, [this] { return CellPlace(); }, "the repeated cells");
}

void TOdsCellReader::Store(const TCellRange& ARange) {
  FMaxCol = std::max(FMaxCol, ARange.EndCol);
  FMaxRow = std::max(FMaxRow, ARange.EndRow);
  const bool hasContent = HasContent();
  const int32_t style = hasContent ? StyleIndex() : FContext.Formats.IndexOf(*FStyle);
  if (!FFormula.empty()) return StoreFormulas(ARange, FormulaResult(), style);
  const TCellValue value = hasContent ? Value() : TCellValue();
  if (value.Kind == cvkText && FBlocks.IsEmpty()) {
    TRichTextRuns runs = FText.Runs(FStyle ? FStyle->Format.Font : TCellFormat::Default().Font);
    const bool agrees = !FCell.HasText || runs.empty() || OdsTakeLineEnds(value.Text.View(), runs);
    if (!runs.empty() && agrees) return StoreRich(ARange, value, style, std::move(runs));
  }
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col)
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) StoreAt(col, row, value, style);
}

void TOdsCellReader::StoreAt(int32_t ACol, int32_t ARow, const TCellValue& AValue, int32_t AStyle) {
  ++FCellCount;
  if (FBlocks.TryStore(ACol, ARow, AValue, FReader.PartName())) {
    FStore.SetValue(ACol, ARow, TCellValue::Empty(), AStyle);
  } else if (AValue.Kind == cvkNumber) {
    FStore.SetNumber(ACol, ARow, AValue.Number, AStyle);
  } else {
    FStore.SetValue(ACol, ARow, AValue, AStyle);
  }
}

void TOdsCellReader::StoreRich(const TCellRange& ARange, const TCellValue& AValue, int32_t AStyle,
                               TRichTextRuns ARuns) {
  const auto area = static_cast<size_t>(int64_t{ARange.Width()} * ARange.Height());
  TXlsxBudget::Take(
      FContext.Budget.RichRuns, area * ARuns.size(), [this] { return CellPlace(); }, "the formatted runs of text");
  TCell cell;
  cell.Value = AValue;
  cell.StyleIndex = AStyle;
  cell.RichText = std::move(ARuns);
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col)
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) FStore.Set(col, row, cell);
  FCellCount += area;
}

void TOdsCellReader::StoreFormulas(const TCellRange& ARange, const TCellValue& AResult, int32_t AStyle) {
  FFormulaText = OdsFormulaToExcel(Utf8ToUtf16(FFormula), FContext.StandardArrays);
  if (!FFormulaText.starts_with(u'=')) FFormulaText.insert(FFormulaText.begin(), u'=');
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
      ++FCellCount;
      FStore.SetFormula(col, row, FFormulaText, AStyle);
      if (!AResult.IsEmpty()) FStore.SetCached(col, *FStore.FindRecord(col, row), AResult);
    }
  }
  if (FCell.MatrixCols > 0 && FCell.MatrixRows > 0) {
    FBlocks.Open({FCol, FRow, FCol + std::min(FCell.MatrixCols - 1, kMaxCol - FCol),
                  FRow + std::min(FCell.MatrixRows - 1, kMaxRow - FRow)});
  }
}

/// Cells that are both merged and repeated are merged each for itself, rows only within themselves.
void TOdsCellReader::MergeCells(const TCellRange& ARange) {
  const int32_t lastRow = FCell.RowSpan > 1 ? ARange.StartRow : ARange.EndRow;
  for (int32_t row = ARange.StartRow; row <= lastRow; ++row) {
    const TCellRange merged{FCol, row, FCol + std::min(FCell.ColSpan - 1, kMaxCol - FCol),
                            row + std::min(FCell.RowSpan - 1, kMaxRow - row)};
    if (merged.Width() > 1 || merged.Height() > 1) FSheet.MergeRange(merged);
  }
}

void TOdsCellReader::Finish() {
  FBlocks.Finish();
  if (FMaxCol > 0) FSheet.ExpandUsedBounds(FMaxCol, FMaxRow);
}

std::string TOdsCellReader::CellPlace() const {
  return FReader.PartName() + ", cell " + Utf16ToUtf8(FSheet.Name()) + "!" +
         Utf16ToUtf8(TCellAddress{FCol, FRow}.ToA1());
}

}  // namespace tessarine::detail

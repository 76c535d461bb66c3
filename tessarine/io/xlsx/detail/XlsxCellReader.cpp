#include <tessarine/io/xlsx/detail/XlsxCellReader.h>

#include <algorithm>
#include <limits>
#include <utility>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/io/detail/PlainAddress.h>
#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr uint64_t BlockKey(int32_t ACol, int32_t ARow) {
  return uint64_t{static_cast<uint32_t>(ACol)} << 32 | static_cast<uint32_t>(ARow);
}

/// An index into the string table: junk counts as 0, a number too large for an index stays too large.
int32_t StringIndex(std::string_view AText) {
  AText = XlsxTrim(AText);
  const bool isNegative = AText.starts_with('-');
  if (isNegative || AText.starts_with('+')) AText.remove_prefix(1);
  constexpr int32_t kMost = std::numeric_limits<int32_t>::max();
  int64_t index = 0;
  for (const char digit : AText) {
    if (digit < '0' || digit > '9') return 0;
    index = std::min<int64_t>(index * 10 + (digit - '0'), kMost);
  }
  return static_cast<int32_t>(isNegative ? -index : index);
}

}  // namespace

TXlsxCellReader::TXlsxCellReader(TXmlReader& AReader, TWorksheet& ASheet, const TXlsxCellContext& AContext)
    : FReader(AReader),
      FSheet(ASheet),
      FStore(ASheet.Store()),
      FContext(AContext),
      FFormulas(AContext.Budget),
      FInline(AReader, AContext.Budget) {}

// ---- reading

void TXlsxCellReader::ReadCell() {
  if (!ReadAttributes()) {
    FReader.SkipElement();
    return;
  }
  FHasValue = FHasFormula = FHasInline = false;
  for (;;) {
    if (FReader.TryReadEndTag()) break;
    if (TryReadLeafChild()) continue;
    const TXmlEvent event = FReader.Next();
    if (event == xeStartElement) ReadChild();
    if (event == xeEndElement || event == xeEnd) break;
  }
  std::u16string_view formula;
  if (FHasFormula) formula = FFormulas.Resolve(FFormula, FAddress, FReader.PartName());
  if (!FAddress.IsValid()) return;
  ++FCellCount;
  FMaxCol = std::max(FMaxCol, FAddress.Col);
  FMaxRow = std::max(FMaxRow, FAddress.Row);
  StoreCell(formula);
}

/// False for a cell that does not say where it stands.
bool TXlsxCellReader::ReadAttributes() {
  FStyle = 0;
  FFormula.HasCellMeta = false;
  return TryReadAttributes() || ReadAttributesPlain();
}

/// The definition of what the attributes mean.
bool TXlsxCellReader::ReadAttributesPlain() {
  const TXmlAttributes attributes = FReader.Attributes();
  const std::string_view ref = XlsxAttr(attributes, "r");
  if (ref.empty()) return false;
  FAddress = XlsxAddress(ref);
  FStyle = XlsxAttrInt(attributes, "s", 0);
  SetType(XlsxAttr(attributes, "t"));
  FFormula.HasCellMeta = !XlsxAttr(attributes, "cm").empty();
  return true;
}

/// One pass over the attributes that nearly all files write, under exactly these names. An exact name is what the plain
/// lookup takes first, so the result is the same; any other name leaves the cell to it.
bool TXlsxCellReader::TryReadAttributes() {
  bool hasAddress = false;
  std::string_view type;
  for (const TXmlAttribute& attribute : FReader.Attributes()) {
    if (attribute.Name.size() != 1) return false;
    switch (attribute.Name.front()) {
      case 'r': hasAddress = TryReadPlainAddress(attribute.Value, FAddress); break;
      case 's':
        if (!TryParseInt32(attribute.Value, FStyle)) FStyle = 0;
        break;
      case 't': type = attribute.Value; break;
      default: return false;
    }
  }
  SetType(type);
  return hasAddress;
}

void TXlsxCellReader::SetType(std::string_view AType) {
  FType = TCellType::ctOther;
  if (AType.empty()) return;
  if (AType == "s") FType = TCellType::ctSharedString;
  if (AType == "b") FType = TCellType::ctBoolean;
  if (AType == "str") FType = TCellType::ctText;
  if (AType == "inlineStr") FType = TCellType::ctInlineText;
}

/// ReadChild for a value or a formula of nothing but text, as nearly all are.
bool TXlsxCellReader::TryReadLeafChild() {
  std::string_view text;
  if (!FHasValue && FReader.TryReadLeaf("v", text)) {
    FHasValue = true;
    FValue.assign(text);
    return true;
  }
  if (FHasFormula || !FReader.TryReadLeaf("f", text)) return false;
  FHasFormula = true;
  SetFormulaDefaults();
  FFormula.Text.assign(text);
  return true;
}

/// Of each kind the first one counts.
void TXlsxCellReader::ReadChild() {
  if (!FHasValue && XlsxIsElement(FReader, "v")) {
    FHasValue = true;
    ReadXlsxText(FReader, FValue);
  } else if (!FHasFormula && XlsxIsElement(FReader, "f")) {
    FHasFormula = true;
    ReadFormulaElement();
  } else if (!FHasInline && FReader.LocalNameIs("is")) {
    FHasInline = true;
    FInline.Read();
  } else {
    FReader.SkipElement();
  }
}

void TXlsxCellReader::SetFormulaDefaults() {
  FFormula.IsShared = FFormula.IsArray = false;
  FFormula.SharedIndex = -1;
  FFormula.ArrayRange = {};
}

void TXlsxCellReader::ReadFormulaElement() {
  SetFormulaDefaults();
  if (FReader.AttributeCount() != 0) {
    const TXmlAttributes attributes = FReader.Attributes();
    const std::string_view type = XlsxAttr(attributes, "t");
    FFormula.IsShared = EqualXmlNames(type, "shared");
    FFormula.IsArray = EqualXmlNames(type, "array");
    if (EqualXmlNames(type, "dataTable")) ++FLosses.DataTables;
    if (FFormula.IsShared) FFormula.SharedIndex = XlsxAttrInt(attributes, "si", -1);
    if (FFormula.IsArray) FFormula.ArrayRange = XlsxRange(XlsxAttr(attributes, "ref"));
  }
  ReadXlsxText(FReader, FFormula.Text);
}

// ---- values

/// A text with an escape in it may be a number all the same.
std::optional<double> TXlsxCellReader::TryNumber() const {
  double number = 0;
  if (TryParseFileNumber(FValue, number)) return number;
  const bool isNumber = FValue.find('_') != FValue.npos && TryParseFileNumber(ValueText().View(), number);
  return isNumber ? std::optional(number) : std::nullopt;
}

bool TXlsxCellReader::IsTrue() const {
  return FValue == "1" || (FValue.find('_') != FValue.npos && ValueText() == u"1");
}

TText TXlsxCellReader::ValueText() const { return XlsxText(FValue); }

/// The last result of a formula; empty where the file has none that counts, as for errors.
TCellValue TXlsxCellReader::ResultValue() const {
  if (!FHasValue) return {};
  switch (FType) {
    case TCellType::ctText:
    case TCellType::ctInlineText: return TCellValue::FromText(ValueText());
    case TCellType::ctBoolean: return TCellValue::FromBoolean(IsTrue());
    case TCellType::ctSharedString:
    case TCellType::ctOther: break;
  }
  const std::optional<double> number = TryNumber();
  return number ? TCellValue::FromNumber(*number) : TCellValue();
}

// ---- storing

/// The rules in their order: the first that fits decides.
void TXlsxCellReader::StoreCell(std::u16string_view AFormula) {
  if (FHasValue && FType == TCellType::ctSharedString) return StoreShared();
  if (!AFormula.empty()) return StoreFormula(AFormula);
  if (!FBlocks.empty() && TryStoreInBlock()) return;
  if (FHasValue) return StoreValue();
  if (FHasInline) return StoreInline();
  FStore.SetValue(FAddress.Col, FAddress.Row, TCellValue::Empty(), FStyle);
}

void TXlsxCellReader::StoreShared() {
  const int32_t index = StringIndex(FValue);
  if (FHasFormula && !FFormula.Text.empty()) ++FLosses.Formulas;
  if (index < 0 || index >= FContext.Strings.Count()) {
    ++FLosses.Texts;
    FStore.SetValue(FAddress.Col, FAddress.Row, TCellValue::Empty(), FStyle);
    return;
  }
  const std::vector<TRichStringRun>* const runs = FContext.Strings.FindRuns(index);
  if (!FBlocks.empty() && TryStoreInBlock()) return;
  if (!runs) {
    FStore.SetText(FAddress.Col, FAddress.Row, FContext.Strings.TextAt(index), FStyle);
    return;
  }
  StoreText(FContext.Strings.TextAt(index), XlsxCellRuns(*runs, FContext.StyleSheet.ResolveFormat(FStyle).Font));
}

void TXlsxCellReader::StoreValue() {
  if (FType == TCellType::ctBoolean) {
    FStore.SetValue(FAddress.Col, FAddress.Row, TCellValue::FromBoolean(IsTrue()), FStyle);
  } else if (FValue.empty()) {
    FStore.SetValue(FAddress.Col, FAddress.Row, TCellValue::Empty(), FStyle);
  } else {
    const std::optional<double> number = TryNumber();
    if (!number) ++FLosses.Constants;
    FStore.SetNumber(FAddress.Col, FAddress.Row, number.value_or(0), FStyle);
  }
}

void TXlsxCellReader::StoreInline() {
  if (!FInline.HasFont()) {
    FStore.SetText(FAddress.Col, FAddress.Row, FInline.TakeText(), FStyle);
    return;
  }
  StoreText(FInline.TakeText(), XlsxCellRuns(FInline.Runs(), FContext.StyleSheet.ResolveFormat(FStyle).Font));
}

void TXlsxCellReader::StoreText(TText AText, TRichTextRuns ARuns) {
  TXlsxBudget::Take(
      FContext.Budget.RichRuns, ARuns.size(), [this] { return Place(); }, "the formatted runs of text");
  TCell cell;
  cell.Value = TCellValue::FromText(std::move(AText));
  cell.StyleIndex = FStyle;
  cell.RichText = std::move(ARuns);
  FStore.Set(FAddress.Col, FAddress.Row, cell);
}

void TXlsxCellReader::StoreFormula(std::u16string_view AFormula) {
  FStore.SetFormula(FAddress.Col, FAddress.Row, AFormula, FStyle);
  if (FFormula.IsArray) OpenBlock();
  const TCellValue result = ResultValue();
  if (!result.IsEmpty()) FStore.SetCached(FAddress.Col, *FStore.FindRecord(FAddress.Col, FAddress.Row), result);
}

// ---- array formulas

/// From here on cells of the range without a formula are the formula's block. The sheet's spill map knows where blocks
/// stand, but not yet their values. A range that meets another one's is no block.
void TXlsxCellReader::OpenBlock() {
  const TCellRange& range = FFormula.ArrayRange;
  if (range.StartCol != FAddress.Col || range.StartRow != FAddress.Row) return;
  const int64_t area = int64_t{range.Width()} * range.Height();
  if (area < 2 || area > kMaxGeneratedCells) return;
  TXlsxBudget::Take(
      FContext.Budget.BlockProbes, std::min(static_cast<size_t>(area), FBlocks.size()), [this] { return Place(); },
      "the overlaps of array formulas");
  if (FSheet.Spills().IntersectsOther(range, range.StartCol, range.StartRow)) return;
  FSheet.Spills().SetSpill(range.StartCol, range.StartRow, range.Height(), range.Width(), {});
  FBlockByAnchor[BlockKey(range.StartCol, range.StartRow)] = FBlocks.size();
  FBlocks.push_back({range, {}});
}

/// Keeps what a cell inside a block says as a value of the block; the cell itself has its style alone.
bool TXlsxCellReader::TryStoreInBlock() {
  const TSpillRange* const spill = FSheet.Spills().FindChildBlock(FAddress.Col, FAddress.Row);
  if (!spill) return false;
  TBlock& block = FBlocks[FBlockByAnchor.at(BlockKey(spill->AnchorCol, spill->AnchorRow))];
  TCellValue value = ResultValue();
  if (FHasValue && FType == TCellType::ctSharedString) {
    value = TCellValue::FromText(FContext.Strings.TextAt(StringIndex(FValue)));
  } else if (!FHasValue && FHasInline) {
    value = TCellValue::FromText(FInline.TakeText());
  }
  const auto width = static_cast<size_t>(block.Range.Width());
  if (block.Values.empty() && !value.IsEmpty()) {
    const size_t area = width * static_cast<size_t>(block.Range.Height());
    TXlsxBudget::Take(
        FContext.Budget.SpilledValues, area, [this] { return Place(); }, "the cells of array formulas");
    block.Values.resize(area);
  }
  if (!block.Values.empty()) {
    const auto row = static_cast<size_t>(FAddress.Row - block.Range.StartRow);
    block.Values[row * width + static_cast<size_t>(FAddress.Col - block.Range.StartCol)] = std::move(value);
  }
  FStore.SetValue(FAddress.Col, FAddress.Row, TCellValue::Empty(), FStyle);
  return true;
}

void TXlsxCellReader::Finish() {
  for (TBlock& block : FBlocks) {
    const TCellRange& range = block.Range;
    const TFormulaRecord* const anchor = FStore.FindRecord(range.StartCol, range.StartRow);
    if (!anchor || block.Values.empty()) {
      FSheet.Spills().ClearAnchor(range.StartCol, range.StartRow);
      continue;
    }
    block.Values.front() = TCellValue::FromView(anchor->CachedView());
    FSheet.Spills().SetSpill(range.StartCol, range.StartRow, range.Height(), range.Width(), std::move(block.Values));
  }
  FSheet.ExpandUsedBounds(FMaxCol, FMaxRow);
}

std::string TXlsxCellReader::Place() const { return FReader.PartName() + ", cell " + Utf16ToUtf8(FAddress.ToA1()); }

}  // namespace tessarine::detail

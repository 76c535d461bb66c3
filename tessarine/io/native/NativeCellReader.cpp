#include <tessarine/io/native/detail/NativeCellReader.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/detail/PlainAddress.h>

namespace tessarine::detail {

namespace {

constexpr size_t kLoadPollCells = 4096;

/// The place that a key names; an invalid one for any other key.
TCellAddress NativeAddress(std::string_view ARawKey) {
  TCellAddress address;
  if (TryReadPlainAddress(ARawKey, address)) return address;
  return TCellAddress::FromKey(TNativeDocument::DecodeText(ARawKey));
}

bool PassLiteral(TJsonPlace& AAt, std::string_view AText) {
  if (std::memcmp(AAt, AText.data(), AText.size()) != 0) return false;
  AAt += AText.size();
  return true;
}

/// Reads the digits of a style index; false for more than nine, for a sign and for what is no whole number.
bool PassIndex(TJsonPlace& AAt, int32_t& AIndex) {
  const TJsonPlace start = AAt;
  AIndex = 0;
  for (; *AAt >= '0' && *AAt <= '9' && AAt - start < 9; ++AAt) AIndex = AIndex * 10 + (*AAt - '0');
  return AAt != start && (*AAt == ',' || *AAt == '}');
}

size_t HashOfRaw(std::string_view ARaw) {
  uint64_t hash = ARaw.size();
  for (const char byte : ARaw.substr(0, 32)) hash = (hash ^ static_cast<unsigned char>(byte)) * 0x9E3779B97F4A7C15u;
  return static_cast<size_t>(hash >> 32);
}

}  // namespace

TNativeCellReader::TNativeCellReader(TNativeDocument& ADocument, TWorksheet& ASheet, const TWorkControl& AControl)
    : FDocument(ADocument),
      FSheet(ASheet),
      FStore(ASheet.Store()),
      FControl(AControl),
      FSheetName(ASheet.Name().ToUtf8()) {}

void TNativeCellReader::Read(TJsonPlace ACells) {
  ReadEach(ACells, [this](TCellAddress AAddress, TJsonPlace ACell) {
    if (const TJsonPlace end = TryReadCell(AAddress, ACell)) return end;
    ReadCellPlain(AAddress, ACell);
    return TJsonPlace(nullptr);
  });
}

void TNativeCellReader::ReadPlain(TJsonPlace ACells) {
  ReadEach(ACells, [this](TCellAddress AAddress, TJsonPlace ACell) {
    ReadCellPlain(AAddress, ACell);
    return TJsonPlace(nullptr);
  });
}

template <class TReadOne>
void TNativeCellReader::ReadEach(TJsonPlace ACells, TReadOne&& AReadOne) {
  const auto readMember = [&](std::string_view AKey, TJsonPlace ACell) -> TJsonPlace {
    const TCellAddress address = NativeAddress(AKey);
    if (!address.IsValid() || *ACell != '{') return nullptr;
    const TJsonPlace end = AReadOne(address, ACell);
    FMaxCol = std::max(FMaxCol, address.Col);
    FMaxRow = std::max(FMaxRow, address.Row);
    if (++FCellCount % kLoadPollCells == 0) Poll(ACell);
    return end;
  };
  try {
    FDocument.Json().ForEachMember(ACells, readMember);
  } catch (...) {
    Finish();
    throw;
  }
  Finish();
}

void TNativeCellReader::Finish() {
  FSheet.ExpandUsedBounds(FMaxCol, FMaxRow);
  if (FCellCount > 0) FSheet.NoteBulkChange();
}

void TNativeCellReader::Poll(TJsonPlace AAt) {
  FControl.CheckStop();
  const double done =
      static_cast<double>(FDocument.Json().OffsetOf(AAt)) / static_cast<double>(FDocument.Json().Text().size());
  FControl.Report(ppLoading, done, FSheetName);
}

// ---- one cell

/// Reads a cell of a value, a style and perhaps the result of a formula, all in the spelling that the writer gives
/// them. The fields are then those that the plain way finds, and SetCell with such a cell comes to the same narrow
/// writes.
TJsonPlace TNativeCellReader::TryReadCell(TCellAddress AAddress, TJsonPlace ACell) {
  TJsonPlace at = ACell;
  TNativeValueSpelling value;
  if (!PassLiteral(at, "{\"value\":")) return nullptr;
  at = TryReadWrittenValue<true>(at, value);
  int32_t style = 0;
  if (!at || !PassLiteral(at, ",\"styleIndex\":") || !PassIndex(at, style)) return nullptr;
  TNativeValueSpelling cached;
  const bool hasCached = PassLiteral(at, ",\"cached\":");
  if (hasCached) {
    at = TryReadWrittenValue<true>(at, cached);
    if (!at || value.Kind != cvkFormula || cached.Kind == cvkFormula) return nullptr;
  }
  if (*at != '}') return nullptr;
  switch (value.Kind) {
    case cvkNumber: FStore.SetNumber(AAddress.Col, AAddress.Row, TJsonText::Number(value.Number.data()), style); break;
    case cvkText: FStore.SetText(AAddress.Col, AAddress.Row, TextOf(value), style); break;
    case cvkFormula: FStore.SetFormula(AAddress.Col, AAddress.Row, FormulaOf(value), style); break;
    case cvkEmpty:
    case cvkBoolean:
    case cvkError: FStore.SetValue(AAddress.Col, AAddress.Row, ValueOf(value), style); break;
  }
  if (hasCached) FStore.SetCached(AAddress.Col, *FStore.FindRecord(AAddress.Col, AAddress.Row), ValueOf(cached));
  return at + 1;
}

/// The definition of what a cell's object means.
void TNativeCellReader::ReadCellPlain(TCellAddress AAddress, TJsonPlace ACell) {
  TNativeObject object(FDocument, ACell);
  TNativeFieldReader reader(FDocument, object);
  TCell cell;
  if (const TJsonPlace value = object.FindObject("value")) cell.Value = ReadValue(value);
  reader("styleIndex", cell.StyleIndex);
  if (const TJsonPlace cached = object.FindObject("cached")) cell.SetCachedResult(ReadValue(cached));
  if (const TJsonPlace format = object.FindObject("format")) {
    cell.HasFormatOverride = true;
    reader.Read(format, cell.FormatOverride);
  }
  reader("richText", cell.RichText);
  FStore.Set(AAddress.Col, AAddress.Row, cell);
}

TCellValue TNativeCellReader::ReadValue(TJsonPlace AValue) {
  TNativeObject object(FDocument, AValue);
  TNativeFieldReader reader(FDocument, object);
  TNativeValue fields;
  VisitNativeFields(reader, fields);
  switch (fields.Kind) {
    case cvkText: return TCellValue::FromText(std::move(fields.Text));
    case cvkNumber: return TCellValue::FromNumber(fields.Number);
    case cvkBoolean: return TCellValue::FromBoolean(fields.Boolean);
    case cvkError: return TCellValue::FromError(fields.Error);
    case cvkFormula: break;
    case cvkEmpty: return {};
  }
  TCellValue formula;  // its text as it stands, "=" or not
  formula.Kind = cvkFormula;
  formula.Text = std::move(fields.Formula);
  return formula;
}

TCellValue TNativeCellReader::ValueOf(const TNativeValueSpelling& AValue) {
  switch (AValue.Kind) {
    case cvkText: return TCellValue::FromText(TextOf(AValue));
    case cvkNumber: return TCellValue::FromNumber(TJsonText::Number(AValue.Number.data()));
    case cvkBoolean: return TCellValue::FromBoolean(AValue.Boolean);
    case cvkError: return TCellValue::FromError(static_cast<TCellErrorCode>(AValue.Error));
    case cvkEmpty:
    case cvkFormula: break;
  }
  return {};
}

TText TNativeCellReader::TextOf(const TNativeValueSpelling& AValue) {
  if (FKnown.empty()) FKnown.resize(kKnownTexts);
  TKnownText& known = FKnown[HashOfRaw(AValue.Text) % kKnownTexts];
  if (known.Raw == AValue.Text) return known.Text;
  known.Raw = AValue.Text;
  known.Text = TNativeDocument::DecodeText(AValue.Text);
  return known.Text;
}

std::u16string_view TNativeCellReader::FormulaOf(const TNativeValueSpelling& AValue) {
  FFormula.clear();
  if (AValue.IsPlain) {
    FFormula.resize(AValue.Text.size());
    std::transform(AValue.Text.begin(), AValue.Text.end(), FFormula.begin(),
                   [](char AByte) { return static_cast<char16_t>(AByte); });
  } else {
    TJsonText::AppendDecoded(AValue.Text, FFormula);
  }
  return FFormula;
}

}  // namespace tessarine::detail

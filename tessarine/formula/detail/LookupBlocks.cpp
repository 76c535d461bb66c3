#include <tessarine/formula/detail/LookupBlocks.h>

#include <algorithm>
#include <cmath>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/detail/Interpreter.h>
#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/Criteria.h>
#include <tessarine/formula/library/detail/RangeIndex.h>

namespace tessarine::detail {

namespace {

/// Whether every formula of a view has its result and none is being evaluated.
bool IsSettled(const TFormulaArg& AView) {
  const TCellStore& store = AView.ViewSheet()->Store();
  const int32_t lastRow = AView.OriginRow + AView.RowCount - 1;
  for (int32_t col = AView.OriginCol; col < AView.OriginCol + AView.ColCount; ++col) {
    const int32_t lastTile = std::min((lastRow - 1) / kTileRows, store.TileLimit(col) - 1);
    for (int32_t index = (AView.OriginRow - 1) / kTileRows; index <= lastTile; ++index) {
      const TTile* const tile = store.FindTile(col, index);
      if (!tile || tile->FormulaCount == 0) continue;
      const int32_t first = std::max(AView.OriginRow, index * kTileRows + 1);
      for (int32_t row = first; row <= std::min(lastRow, (index + 1) * kTileRows); ++row) {
        const TCellSlot* const slot = store.Find(col, row);
        if (!slot || slot->Kind != cvkFormula) continue;
        const TFormulaRecord& record = store.Record(slot->Record);
        if (!record.HasCached() || record.IsVisiting()) return false;
      }
    }
  }
  return true;
}

/// A range whose corners stand still, as a view; no rectangle where it is something else.
TFormulaArg FixedRange(const TProgramNode& ANode, const TWorkbook& AWorkbook, const TInterpreter& AInterpreter,
                       int32_t ASheet, int32_t ACol) {
  if (ANode.Kind != ankRange || (ANode.Relative & (TProgramNode::rlRow | TProgramNode::rlRow2)) != 0) return {};
  const int32_t index = AInterpreter.ResolveSheetIndex(ASheet, ANode.SheetName);
  const TWorksheet* const sheet = AWorkbook.GetSheet(index);
  if (!sheet || !sheet->Spills().IsEmpty()) return {};
  const TRelativeRect rect = TProgram::RectAt(ANode, ACol, 0);
  const TCellRange range = TCellRange{rect.Col, rect.Row, rect.Col2, rect.Row2}.Normalize();
  if (!TCellAddress{range.StartCol, range.StartRow}.IsValid() || !TCellAddress{range.EndCol, range.EndRow}.IsValid())
    return {};
  if (range.Height() == kMaxRow || range.Width() == kMaxCol) return {};
  return TFormulaArg::FromView(*sheet, index, range.StartCol, range.StartRow, range.Height(), range.Width());
}

/// One column of a view, counted from 1; no rectangle when there is no such column.
TFormulaArg ColumnOf(const TFormulaArg& AView, const TProgramNode& APlace) {
  int64_t place = 0;
  if (APlace.Kind != ankNumber || !ArgAsInt64(TFormulaArg::FromScalar(TCellValue::FromNumber(APlace.Number)), place))
    return {};
  if (place < 1 || place > AView.ColCount) return {};
  return TFormulaArg::FromView(*AView.ViewSheet(), AView.OriginSheetIndex,
                               AView.OriginCol + static_cast<int32_t>(place) - 1, AView.OriginRow, AView.RowCount, 1);
}

/// The index over a view; the first of two searches does not make one yet.
const TEqualityIndex* IndexOver(TRangeIndexCache& ACache, const TFormulaArg& AView) {
  const TEqualityIndex* const index = ACache.Equality(AView);
  return index ? index : ACache.Equality(AView);
}

bool IsNumberZero(const TProgramNode& ANode) { return ANode.Kind == ankNumber && ANode.Number == 0; }

bool IsOff(const TProgramNode& ANode) { return ANode.Kind == ankBool ? !ANode.BooleanValue : IsNumberZero(ANode); }

}  // namespace

std::optional<TLookupBlock> TLookupBlock::Compile(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                                  TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol) {
  const TProgramNode& root = AProgram.Root();
  if (root.Kind != ankFunc || !root.Function || root.ChildCount < 3) return std::nullopt;
  const auto child = [&](uint32_t AIndex) -> const TProgramNode& { return AProgram.Child(root, AIndex); };
  const auto rangeOf = [&](uint32_t AIndex) {
    return FixedRange(child(AIndex), AWorkbook, AInterpreter, ASheet, ACol);
  };
  const std::u16string_view name = root.Function->Name;
  TLookupBlock block;
  if (name == u"VLOOKUP" && root.ChildCount == 4 && IsOff(child(3))) {
    const TFormulaArg table = rangeOf(1);
    if (!table.IsRange) return std::nullopt;
    block.FSearched = TFormulaArg::FromView(*table.ViewSheet(), table.OriginSheetIndex, table.OriginCol,
                                            table.OriginRow, table.RowCount, 1);
    block.FResults = ColumnOf(table, child(2));
    if (!block.FResults.IsRange) return std::nullopt;
  } else if (name == u"XLOOKUP" && root.ChildCount == 3) {
    block.FSearched = rangeOf(1);
    block.FResults = rangeOf(2);
    if (!block.FResults.IsRange || block.FResults.CellCount() < block.FSearched.CellCount()) return std::nullopt;
  } else if (name == u"MATCH" && root.ChildCount == 3 && IsNumberZero(child(2))) {
    block.FSearched = rangeOf(1);
  }
  if (!block.FSearched.IsRange || !IsSettled(block.FSearched)) return std::nullopt;
  if (block.FResults.IsRange && !IsSettled(block.FResults)) return std::nullopt;

  const TProgramNode& key = child(0);
  if (key.Kind != ankCellRef && key.Kind != ankSheetRef) return std::nullopt;
  const TWorksheet* const keys = AWorkbook.GetSheet(AInterpreter.ResolveSheetIndex(ASheet, key.SheetName));
  TWorksheet* const target = AWorkbook.GetSheet(ASheet);
  block.FIndexes = AInterpreter.RangeIndexes();
  if (!keys || !keys->Spills().IsEmpty() || !target || !block.FIndexes) return std::nullopt;
  block.FKeys = &keys->Store();
  block.FKeyCol = key.Col + ((key.Relative & TProgramNode::rlCol) ? ACol : 0);
  block.FKeyRow = key.Row;
  block.FKeyRowRelative = (key.Relative & TProgramNode::rlRow) != 0;
  block.FTarget = &target->Store();
  block.FCol = ACol;
  if (!IndexOver(*block.FIndexes, block.FSearched)) return std::nullopt;
  return block;
}

/// The value of the cell that row ARow looks for; false when it is none yet.
bool TLookupBlock::ReadKey(int32_t ARow, TValueView& AKey) const {
  const TCellAddress at{FKeyCol, FKeyRowRelative ? ARow + FKeyRow : FKeyRow};
  if (!at.IsValid()) return false;
  AKey = {};
  const TCellSlot* const slot = FKeys->Find(at.Col, at.Row);
  if (!slot) return true;
  AKey = FKeys->EffectiveView(*slot);
  if (slot->Kind != cvkFormula) return true;
  const TFormulaRecord& record = FKeys->Record(slot->Record);
  return record.HasCached() && !record.IsVisiting();
}

/// Searches for the keys of ACount rows; nothing is stored meanwhile, so that the processor overlaps the searches.
int32_t TLookupBlock::FindPlaces(int32_t ARow, int32_t ACount, int64_t* APlaces) const {
  const TEqualityIndex* const index = IndexOver(*FIndexes, FSearched);
  if (!index) return 0;
  TValueView key;
  for (int32_t i = 0; i < ACount; ++i) {
    if (!ReadKey(ARow + i, key)) return i;
    APlaces[i] = key.Kind == cvkNumber ? index->FirstMatch(key.Number) : index->FirstMatch(TMatchKey(key));
  }
  return ACount;
}

void TLookupBlock::StoreResult(TFormulaRecord& ARecord, int64_t APlace) const {
  if (APlace < 0) return FTarget->SetCached(FCol, ARecord, TCellValue::FromError(ceNA));
  if (!FResults.IsRange) return FTarget->SetCachedNumber(FCol, ARecord, static_cast<double>(APlace + 1));
  const TCellStore& store = FResults.ViewSheet()->Store();
  const auto col = static_cast<int32_t>(APlace % FResults.ColCount);
  const auto row = static_cast<int32_t>(APlace / FResults.ColCount);
  const TCellSlot* const slot = store.Find(FResults.OriginCol + col, FResults.OriginRow + row);
  const TValueView value = slot ? store.EffectiveView(*slot) : TValueView();
  if (value.Kind != cvkNumber) return FTarget->SetCached(FCol, ARecord, TCellValue::FromView(value));
  if (!std::isfinite(value.Number)) return FTarget->SetCached(FCol, ARecord, TCellValue::FromError(ceNum));
  FTarget->SetCachedNumber(FCol, ARecord, value.Number);
}

int32_t TLookupBlock::EvaluateRows(TRowSpan ARows) {
  int64_t places[kTileRows];
  for (int32_t row = ARows.First; row <= ARows.Last;) {
    const int32_t tileIndex = (row - 1) / kTileRows;
    const int32_t count = std::min(ARows.Last, (tileIndex + 1) * kTileRows) - row + 1;
    const int32_t found = FindPlaces(row, count, places);
    const TTile* const tile = FTarget->FindTile(FCol, tileIndex);
    const TCellSlot* const slots = tile->Slots() + tile->Rank(static_cast<uint32_t>(row - 1) % kTileRows);
    for (int32_t i = 0; i < found; ++i) StoreResult(FTarget->Record(slots[i].Record), places[i]);
    row += found;
    if (found < count) return row - ARows.First;
  }
  return ARows.Last - ARows.First + 1;
}

}  // namespace tessarine::detail

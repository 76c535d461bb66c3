#include <tessarine/core/sheet/Worksheet.h>

#include <algorithm>
#include <bit>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

/// The last stored row of a tile, 1-based in the sheet.
int32_t LastRowOf(const detail::TTile& ATile, int32_t ATileIndex) {
  for (int32_t word = 3; word >= 0; --word) {
    if (const uint64_t bits = ATile.Occupied[word]; bits != 0)
      return ATileIndex * detail::kTileRows + word * 64 + 64 - std::countl_zero(bits);
  }
  return 0;
}

}  // namespace

TWorksheet::TWorksheet(TText AName, TWorkbook* AOwner, detail::TFormulaPool& APool)
    : FName(std::move(AName)),
      FOwner(AOwner),
      FStore(std::make_unique<detail::TCellStore>(APool)),
      FMerges(std::make_unique<TMergedCellList>()),
      FSpills(std::make_unique<TSpillMap>()),
      FSizing(std::make_unique<TRowColSizing>()),
      FTables(std::make_unique<TSheetTableList>()),
      FHyperlinks(std::make_unique<THyperlinkList>()),
      FValidations(std::make_unique<TDataValidationList>()),
      FConditionalFormats(std::make_unique<TConditionalFormatList>()),
      FAutoFilter(std::make_unique<TSheetAutoFilter>()),
      FComments(std::make_unique<TCellCommentList>()),
      FSlicers(std::make_unique<TSheetSlicerList>()),
      FDrawings(std::make_unique<TSheetDrawingList>()),
      FPivots(std::make_unique<TSheetPivotTableList>()),
      FPageSetup(std::make_unique<TPageSetup>()),
      FSavedView(std::make_unique<TSheetSavedView>()),
      FChangeTarget(AOwner ? TChangeTarget::ctWorkbook : TChangeTarget::ctNone) {}

TWorksheet::~TWorksheet() { detail::TCellStore::Retire(std::move(FStore)); }

void TWorksheet::SetName(TTextArg AName) {
  FName = TText(AName.View());
  if (FOwner) FOwner->NoteSheetRenamed();
}

// ---- reading

const detail::TCellSlot* TWorksheet::FindSlot(TCellAddress AAddress) const {
  return AAddress.IsValid() ? FStore->Find(AAddress.Col, AAddress.Row) : nullptr;
}

TCell TWorksheet::GetCell(TCellAddress AAddress) const {
  return AAddress.IsValid() ? FStore->Get(AAddress.Col, AAddress.Row) : TCell::CreateEmpty();
}

bool TWorksheet::HasCell(TCellAddress AAddress) const { return FindSlot(AAddress) != nullptr; }

TValueView TWorksheet::EffectiveView(int32_t ACol, int32_t ARow) const {
  const detail::TCellSlot* slot = FindSlot({ACol, ARow});
  if (slot && slot->Kind != cvkEmpty) return FStore->EffectiveView(*slot);
  if (FSpills->IsEmpty()) return {};
  const TCellValue* spilled = FSpills->FindChildValue(ACol, ARow);
  return spilled ? spilled->View() : TValueView();
}

TCellValue TWorksheet::GetEffectiveValue(TCellAddress AAddress) const {
  return TCellValue::FromView(EffectiveView(AAddress.Col, AAddress.Row));
}

// ---- writing

void TWorksheet::SetCell(TCellAddress AAddress, const TCell& ACell) {
  if (!AAddress.IsValid()) return;
  if (FChangeTarget != TChangeTarget::ctForeign) {  // nobody looks at the old cell
    FStore->Set(AAddress.Col, AAddress.Row, ACell);
    UpdateUsedBounds(AAddress);
    NoteBulkChange();
    return;
  }
  const TCell oldCell = GetCell(AAddress);
  FStore->Set(AAddress.Col, AAddress.Row, ACell);
  UpdateUsedBounds(AAddress);
  FireChange(AAddress, oldCell, ACell);
}

void TWorksheet::SetValue(TCellAddress AAddress, const TCellValue& AValue) {
  if (FChangeTarget == TChangeTarget::ctForeign) {
    TCell cell;
    cell.Value = AValue;
    SetCell(AAddress, cell);
  } else if (AAddress.IsValid()) {
    FStore->SetValue(AAddress.Col, AAddress.Row, AValue, 0);
    UpdateUsedBounds(AAddress);
    NoteBulkChange();
  }
}

void TWorksheet::StoreCachedResult(TCellAddress AAddress, const TCellValue& AResult) {
  if (!AAddress.IsValid()) return;
  detail::TFormulaRecord* record = FStore->FindRecord(AAddress.Col, AAddress.Row);
  if (!record) return;
  if (FChangeTarget != TChangeTarget::ctForeign) {
    FStore->SetCached(AAddress.Col, *record, AResult);
    UpdateUsedBounds(AAddress);
    NoteBulkChange();
    return;
  }
  const TCell oldCell = GetCell(AAddress);
  FStore->SetCached(AAddress.Col, *record, AResult);
  UpdateUsedBounds(AAddress);
  TCell newCell = oldCell;
  newCell.SetCachedResult(AResult);
  FireChange(AAddress, oldCell, newCell);
}

void TWorksheet::ClearCells() { FStore->Clear(); }

void TWorksheet::SetOnChange(TWorksheetChangeEvent AHandler) {
  if (AHandler) {
    FOnChange = std::make_shared<const TWorksheetChangeEvent>(std::move(AHandler));
    FChangeTarget = TChangeTarget::ctForeign;
  } else {
    FOnChange = nullptr;
    FChangeTarget = FOwner ? TChangeTarget::ctWorkbook : TChangeTarget::ctNone;
  }
}

void TWorksheet::MuteOnChange() {
  FOnChange = nullptr;
  FChangeTarget = TChangeTarget::ctNone;
}

bool TWorksheet::ChangesAreUnobserved() const {
  switch (FChangeTarget) {
    case TChangeTarget::ctNone: return true;
    case TChangeTarget::ctWorkbook: return !FOwner->HasOnModified() || FOwner->IsUpdating();
    case TChangeTarget::ctForeign: break;
  }
  return false;
}

void TWorksheet::NoteBulkChange() {
  if (FChangeTarget == TChangeTarget::ctWorkbook) FOwner->SheetChanged();
}

void TWorksheet::TellChange(TCellAddress AAddress, bool AWasEmpty) {
  if (FChangeTarget != TChangeTarget::ctForeign) return NoteBulkChange();
  const TCell cell = GetCell(AAddress);
  FireChange(AAddress, AWasEmpty ? TCell::CreateEmpty() : cell, cell);
}

void TWorksheet::FireChange(TCellAddress AAddress, const TCell& AOldCell, const TCell& ANewCell) {
  const auto handler = FOnChange;  // a handler may put another one in its place
  (*handler)(*this, AAddress, AOldCell, ANewCell);
}

// ---- bounds

void TWorksheet::UpdateUsedBounds(TCellAddress AAddress) {
  if (!AAddress.IsValid() || (AAddress.Col <= FUsedMaxCol && AAddress.Row <= FUsedMaxRow)) return;
  FUsedMaxCol = std::max(FUsedMaxCol, AAddress.Col);
  FUsedMaxRow = std::max(FUsedMaxRow, AAddress.Row);
  ++FBoundsVersion;
}

void TWorksheet::RestoreUsedBounds(int32_t AMaxCol, int32_t AMaxRow) {
  if (FUsedMaxCol == AMaxCol && FUsedMaxRow == AMaxRow) return;
  FUsedMaxCol = std::clamp(AMaxCol, 1, kMaxCol);
  FUsedMaxRow = std::clamp(AMaxRow, 1, kMaxRow);
  ++FBoundsVersion;
}

void TWorksheet::RecalcUsedBounds() {
  int32_t lastCol = 1;
  int32_t lastRow = 1;
  for (int32_t col = 1; col <= FStore->ColumnLimit(); ++col) {
    const int32_t tileCount = FStore->TileLimit(col);
    if (tileCount == 0) continue;
    lastCol = col;
    lastRow = std::max(lastRow, LastRowOf(*FStore->FindTile(col, tileCount - 1), tileCount - 1));
  }
  if (lastCol == FUsedMaxCol && lastRow == FUsedMaxRow) return;
  FUsedMaxCol = lastCol;
  FUsedMaxRow = lastRow;
  ++FBoundsVersion;
}

// ---- view, links, merges, tables

void TWorksheet::SetFrozenRows(int32_t AValue) { FFrozenRows = std::clamp(AValue, 0, kMaxRow - 1); }

void TWorksheet::SetFrozenCols(int32_t AValue) { FFrozenCols = std::clamp(AValue, 0, kMaxCol - 1); }

void TWorksheet::SetHyperlink(int32_t ACol, int32_t ARow, TTextArg ATarget) {
  FHyperlinks->SetHyperlink(ACol, ARow, TText(ATarget.View()));
}

std::optional<TText> TWorksheet::FindHyperlink(int32_t ACol, int32_t ARow) const {
  return FHyperlinks->FindHyperlink(ACol, ARow);
}

void TWorksheet::ClearHyperlink(int32_t ACol, int32_t ARow) { FHyperlinks->ClearHyperlink(ACol, ARow); }

void TWorksheet::MergeRange(const TCellRange& ARange) { FMerges->Add(ARange.Normalize()); }

void TWorksheet::UnmergeAt(int32_t ACol, int32_t ARow) {
  const int64_t index = FMerges->FindContaining(ACol, ARow);
  if (index >= 0) FMerges->RemoveAt(static_cast<size_t>(index));
}

TWorksheet::TMergeSpan TWorksheet::GetMergeSpan(int32_t ACol, int32_t ARow) const {
  const int64_t index = FMerges->FindContaining(ACol, ARow);
  if (index < 0) return {};
  const TMergedRange& merge = FMerges->GetItem(static_cast<size_t>(index));
  if (merge.Anchor() != TCellAddress{ACol, ARow}) return {};
  const TCellRange area = merge.AsRange();
  return {area.Width() > 1 || area.Height() > 1, area.Height(), area.Width()};
}

std::vector<TText> TWorksheet::ResolveValidationListItems(std::u16string_view AListSource) const {
  std::vector<TText> items = TDataValidationList::ParseListItems(AListSource);
  if (!items.empty() || !TDataValidationList::IsListRangeFormula(AListSource)) return items;
  std::u16string source(TrimSpaces(AListSource));
  if (source.starts_with(u'=')) source.erase(0, 1);
  std::erase(source, u'$');
  if (const std::optional<TSheetRefParts> parts = SplitSheetRefText(source)) {
    if (!EqualAsciiNoCase(parts->Sheet, FName)) return items;
    source = parts->Second.empty() ? parts->First : parts->First + u':' + parts->Second;
  }
  const TCellRange range = TCellRange::FromA1(source);
  if (range.StartCol < 1 || range.StartRow < 1) return items;
  FStore->ForEachByRow(range, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    TText text = GetCellAt(ACol, ARow).Value.ToDisplayString();
    if (!text.IsEmpty()) items.push_back(std::move(text));
  });
  return items;
}

void TWorksheet::RefreshTableColumnNames() {
  for (size_t index = 0; index < FTables->Count(); ++index) {
    TSheetTable& table = FTables->GetItem(index);
    if (!table.HasHeaderRow()) continue;
    std::vector<TText> names;
    for (int32_t position = 1; position <= table.ColumnCount(); ++position) {
      const TCell cell = GetCellAt(table.Ref().StartCol + position - 1, table.HeaderRow());
      std::u16string name;
      if (cell.RichText.empty()) AppendDisplayString(cell.Value.View(), name);
      for (const TRichTextRun& run : cell.RichText) name += run.Text.View();
      if (name.empty()) {
        name = u"Column";
        AppendDisplayString(TValueView::FromNumber(position), name);
      }
      names.emplace_back(name);
    }
    table.SetColumnNames(std::move(names));
  }
}

}  // namespace tessarine

#include <algorithm>
#include <bit>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine {

namespace {

constexpr size_t kMaxSourceValues = size_t{1} << 28;  // words of 8 bytes

/// The part of a range that lies on a sheet; EndRow below StartRow when none does.
TCellRange OnSheet(const TCellRange& ARange) {
  const TCellRange range = ARange.Normalize();
  return {std::max(range.StartCol, 1), std::max(range.StartRow, 1), std::min(range.EndCol, kMaxCol),
          std::min(range.EndRow, kMaxRow)};
}

std::vector<TText> HeaderNames(const TWorksheet& ASheet, const TCellRange& ARange) {
  std::vector<TText> names;
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
    TText name = ASheet.GetCell({col, ARange.StartRow}).Value.ToDisplayString();
    if (name.IsEmpty()) name = u"Field" + GeneralNumberText(col - ARange.StartCol + 1);
    names.push_back(std::move(name));
  }
  return names;
}

/// Row AFirst on becomes record 0 on.
void ReadColumn(const detail::TCellStore& AStore, int32_t ACol, int32_t AFirst, int32_t ALast, TPivotColumn& AColumn) {
  AStore.ForEachTile(ACol, [&](const detail::TTile& ATile, int32_t AIndex) {
    const int32_t top = AIndex * detail::kTileRows + 1;
    if (top > ALast || top + detail::kTileRows - 1 < AFirst) return;
    const int32_t last = std::min(ALast, top + detail::kTileRows - 1);
    AColumn.Resize(static_cast<size_t>(last - AFirst) + 1);
    const std::span<uint64_t> words = AColumn.Words();
    const detail::TCellSlot* slot = ATile.Slots();
    for (int32_t word = 0; word < 4; ++word) {
      for (uint64_t bits = ATile.Occupied[word]; bits != 0; bits &= bits - 1, ++slot) {
        const int32_t row = top + word * 64 + std::countr_zero(bits);
        if (row < AFirst || row > last) continue;
        words[static_cast<size_t>(row - AFirst)] =
            slot->Kind == cvkNumber ? TPivotColumn::WordOf(slot->Number) : AColumn.Intern(AStore.EffectiveView(*slot));
      }
    }
  });
}

/// What spills lay over empty cells; ADataRange without the header.
void ReadSpills(const TWorksheet& ASheet, const TCellRange& ADataRange, TPivotRecords& ARecords) {
  if (ASheet.Spills().IsEmpty()) return;
  for (const TSpillRange* block : ASheet.Spills().BlocksIn(ADataRange)) {
    const int32_t lastRow = std::min(block->EndRow, ADataRange.EndRow);
    for (int32_t col = std::max(block->AnchorCol, ADataRange.StartCol);
         col <= std::min(block->EndCol, ADataRange.EndCol); ++col) {
      TPivotColumn& column = ARecords.Column(static_cast<size_t>(col - ADataRange.StartCol));
      const auto count = static_cast<size_t>(lastRow - ADataRange.StartRow) + 1;
      if (column.Words().size() < count) column.Resize(count);
      for (int32_t row = std::max(block->AnchorRow, ADataRange.StartRow); row <= lastRow; ++row)
        column.SetWord(static_cast<size_t>(row - ADataRange.StartRow), column.Intern(ASheet.EffectiveView(col, row)));
    }
  }
}

TPivotSourceMark MarkOf(const TWorkbook& AWorkbook, const TWorksheet& ASheet, const TCellRange& ARange) {
  TPivotSourceMark mark{&ASheet, AWorkbook.SheetListVersion(), 0, ASheet.Spills().Version(), ARange};
  for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col)
    mark.CellsVersion = std::max(mark.CellsVersion, ASheet.Store().ColumnVersion(col));
  return mark;
}

void ReadWorksheet(TWorkbook& AWorkbook, TPivotCache& ACache) {
  TWorksheet* sheet = AWorkbook.FindSheet(ACache.SourceSheet);
  if (!sheet) sheet = AWorkbook.ActiveSheet();
  if (!sheet) return;
  const TCellRange range = OnSheet(ACache.SourceRange);
  const TPivotSourceMark mark = MarkOf(AWorkbook, *sheet, range);
  if (ACache.SourceMark() == mark) return;
  ACache.ClearData();
  ACache.SetFieldNames(range.EndRow < range.StartRow ? std::vector<TText>() : HeaderNames(*sheet, range));
  TPivotRecords& records = ACache.EditRecords();
  const TCellRange data{range.StartCol, range.StartRow + 1, range.EndCol, range.EndRow};
  size_t values = 0;
  for (int32_t col = data.StartCol; col <= data.EndCol && data.StartRow <= data.EndRow; ++col) {
    TPivotColumn& column = records.Column(static_cast<size_t>(col - data.StartCol));
    ReadColumn(sheet->Store(), col, data.StartRow, data.EndRow, column);
    values += column.Words().size();
    if (values > kMaxSourceValues) {
      ACache.ClearData();
      throw ELimit("The source of a pivot table has more than " + std::to_string(kMaxSourceValues) + " values");
    }
  }
  if (data.StartRow <= data.EndRow) {
    ReadSpills(*sheet, data, records);
    records.SetCount(static_cast<size_t>(data.EndRow - data.StartRow) + 1);
  }
  ACache.SetSourceMark(mark);
}

/// The sheet and the range that an entry of a consolidation names.
std::pair<TWorksheet*, TCellRange> ConsolidatedRange(const TWorkbook& AWorkbook, const TPivotCache& ACache,
                                                     std::u16string_view AEntry) {
  const std::optional<TSheetRefParts> parts = SplitSheetRefText(AEntry);
  if (!parts) return {AWorkbook.FindSheet(ACache.SourceSheet), OnSheet(TCellRange::FromA1(AEntry))};
  const std::u16string& second = parts->Second.empty() ? parts->First : parts->Second;
  return {AWorkbook.FindSheet(parts->Sheet), OnSheet(TCellRange::FromA1(parts->First + u':' + second))};
}

void ReadConsolidation(TWorkbook& AWorkbook, TPivotCache& ACache) {
  ACache.ClearData();
  ACache.SetFieldNames({u"Page", u"Row", u"Column", u"Value"});
  for (size_t entry = 0; entry < ACache.MultiRanges.size(); ++entry) {
    const auto [sheet, range] = ConsolidatedRange(AWorkbook, ACache, ACache.MultiRanges[entry]);
    if (!sheet || range.EndRow < range.StartRow || range.EndCol < range.StartCol) continue;
    const int64_t count = int64_t{range.Width() - 1} * (range.Height() - 1);
    if (count + static_cast<int64_t>(ACache.RecordCount()) > TPivotEngine::kMaxCells)
      throw ELimit("The ranges of a pivot table have more than " + std::to_string(TPivotEngine::kMaxCells) + " cells");
    const TCellValue page = TCellValue::FromText(u"Range" + GeneralNumberText(static_cast<double>(entry + 1)));
    for (int32_t row = range.StartRow + 1; row <= range.EndRow; ++row) {
      const TCellValue rowName = sheet->GetEffectiveValue({range.StartCol, row});
      for (int32_t col = range.StartCol + 1; col <= range.EndCol; ++col) {
        const TCellValue record[] = {page, rowName, sheet->GetEffectiveValue({col, range.StartRow}),
                                     sheet->GetEffectiveValue({col, row})};
        ACache.AddRecord(record);
      }
    }
  }
}

}  // namespace

void TPivotEngine::RebuildCache(TWorkbook& AWorkbook, TPivotCache& ACache) {
  switch (ACache.SourceKind) {
    case pcsWorksheet: return ReadWorksheet(AWorkbook, ACache);
    case pcsMultiConsolidation: return ReadConsolidation(AWorkbook, ACache);
    case pcsOlap:
    case pcsExternal: break;
  }
  if (const TOlapConnection* connection = AWorkbook.OlapConnections().FindById(ACache.ConnectionId))
    MaterializeCache(*connection, ACache);
}

void TPivotEngine::MaterializeCache(const TOlapConnection& AConnection, TPivotCache& ACache) {
  ACache.SourceKind = pcsOlap;
  ACache.ConnectionId = AConnection.Id;
  ACache.ClearData();
  ACache.SetFieldNames({u"Member", u"Value"});
  if (AConnection.MockMembers().empty()) return;
  for (const TText& member : AConnection.MockMembers().front().second) {
    const TCellValue record[] = {TCellValue::FromText(member), AConnection.EvaluateCubeValue(std::span(&member, 1))};
    ACache.AddRecord(record);
  }
}

void TPivotEngine::ApplySlicerFilters(TWorkbook& AWorkbook, TWorksheet& ASheet) {
  for (const auto& slicer : ASheet.Slicers()) {
    if (TPivotCache* cache = AWorkbook.PivotCaches().FindById(slicer->CacheId)) cache->ClearAllSlicerFilters();
  }
  for (const auto& slicer : ASheet.Slicers()) {
    TPivotCache* cache = AWorkbook.PivotCaches().FindById(slicer->CacheId);
    if (!cache) continue;
    if (slicer->Selected().empty()) {
      cache->ClearSlicerFilter(slicer->FieldIndex);
    } else {
      cache->SetSlicerFilter(slicer->FieldIndex, slicer->Selected());
    }
  }
}

}  // namespace tessarine

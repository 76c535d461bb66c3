#include <tessarine/core/lists/PivotTables.h>

#include <algorithm>
#include <iterator>

#include <tessarine/core/lists/detail/SlidLine.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using detail::SlidLine;

using TPivotShift = void (TSheetPivotTableList::*)(int64_t AStart, int64_t ADelta);

void MoveCoarsely(TSheetPivotTableList& AList, TPivotShift AShift, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (AStart < ADest) {
    (AList.*AShift)(ADest, ACount);
    (AList.*AShift)(AStart, -ACount);
  } else {
    (AList.*AShift)(AStart, ADest - AStart);
  }
}

}  // namespace

TPivotTable::TPivotTable(TText AName, int32_t ACacheId, TCellAddress ADest)
    : Name(std::move(AName)), CacheId(ACacheId), Dest(ADest), LastBody{ADest.Col, ADest.Row, ADest.Col, ADest.Row} {}

std::vector<TPivotFieldRef> TPivotTable::FieldsFor(TPivotFieldRole ARole) const {
  std::vector<TPivotFieldRef> fields;
  std::copy_if(Fields.begin(), Fields.end(), std::back_inserter(fields),
               [&](const TPivotFieldRef& ARef) { return ARef.Role == ARole; });
  return fields;
}

TPivotTable& TSheetPivotTableList::Add(std::unique_ptr<TPivotTable> ATable) {
  FItems.push_back(std::move(ATable));
  return *FItems.back();
}

TPivotTable& TSheetPivotTableList::Add(TText AName, int32_t ACacheId, TCellAddress ADest) {
  return Add(std::make_unique<TPivotTable>(std::move(AName), ACacheId, ADest));
}

TPivotTable* TSheetPivotTableList::FindByName(std::u16string_view AName) const {
  for (const auto& table : FItems)
    if (EqualAsciiNoCase(table->Name, AName)) return table.get();
  return nullptr;
}

TPivotTable* TSheetPivotTableList::FindContaining(int32_t ACol, int32_t ARow) const {
  for (const auto& table : FItems)
    if (table->ContainsDest(ACol, ARow)) return table.get();
  return nullptr;
}

void TSheetPivotTableList::ShiftRows(int64_t AStart, int64_t ADelta) {
  for (const auto& table : FItems) {
    table->Dest.Row = SlidLine(table->Dest.Row, AStart, ADelta);
    table->LastBody.StartRow = SlidLine(table->LastBody.StartRow, AStart, ADelta);
    table->LastBody.EndRow = SlidLine(table->LastBody.EndRow, AStart, ADelta);
  }
}

void TSheetPivotTableList::ShiftColumns(int64_t AStart, int64_t ADelta) {
  for (const auto& table : FItems) {
    table->Dest.Col = SlidLine(table->Dest.Col, AStart, ADelta);
    table->LastBody.StartCol = SlidLine(table->LastBody.StartCol, AStart, ADelta);
    table->LastBody.EndCol = SlidLine(table->LastBody.EndCol, AStart, ADelta);
  }
}

void TSheetPivotTableList::MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) {
  MoveCoarsely(*this, &TSheetPivotTableList::ShiftRows, AStart, ACount, ADest);
}

void TSheetPivotTableList::MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) {
  MoveCoarsely(*this, &TSheetPivotTableList::ShiftColumns, AStart, ACount, ADest);
}

}  // namespace tessarine

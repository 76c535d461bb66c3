#include <tessarine/core/undo/detail/CellBatch.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine::detail {

namespace {

template <class TItem>
uint32_t AppendTo(std::vector<TItem>& AItems, TItem AItem) {
  AItems.push_back(std::move(AItem));
  return static_cast<uint32_t>(AItems.size() - 1);
}

bool HasMoreThanValue(const TCell& ACell) {
  return ACell.HasFormatOverride || !ACell.RichText.empty() || ACell.Sparkline != TSparklineData{} ||
         (ACell.HasCachedValue && ACell.Value.Kind != cvkFormula);
}

}  // namespace

TCellBatch::TRecord& TCellBatch::Append(TCellAddress AAddress, int32_t AStyleIndex) {
  return FRecords.emplace_back(AAddress, AStyleIndex);
}

void TCellBatch::AddNumber(TCellAddress AAddress, double ANumber, int32_t AStyleIndex) {
  TRecord& record = Append(AAddress, AStyleIndex);
  record.Kind = cvkNumber;
  record.Number = ANumber;
}

void TCellBatch::AddFormula(TCellAddress AAddress, TText ASource, int32_t AStyleIndex) {
  TRecord& record = Append(AAddress, AStyleIndex);
  record.Kind = cvkFormula;
  record.Index = AppendTo(FTexts, std::move(ASource));
}

void TCellBatch::AddResult(TCellAddress AAddress, TText ASource, TCellValue ACached, int32_t AStyleIndex) {
  TRecord& record = Append(AAddress, AStyleIndex);
  record.Kind = cvkFormula;
  record.Form = TForm::fmResult;
  record.Index = AppendTo(FResults, {std::move(ASource), std::move(ACached)});
}

void TCellBatch::AddConstant(TCellAddress AAddress, const TValueView& AValue, int32_t AStyleIndex) {
  TRecord& record = Append(AAddress, AStyleIndex);
  record.Kind = AValue.Kind;
  switch (AValue.Kind) {
    case cvkNumber: record.Number = AValue.Number; break;
    case cvkText:
    case cvkFormula: record.Index = AppendTo(FTexts, TText::Share(AValue.Block)); break;
    case cvkBoolean: record.BooleanValue = AValue.BooleanValue; break;
    case cvkError: record.ErrorCode = AValue.ErrorCode; break;
    case cvkEmpty: break;
  }
}

void TCellBatch::Add(TCellAddress AAddress, const TCell& ACell) {
  if (HasMoreThanValue(ACell)) {
    const std::shared_ptr<const TCellFormat> format = ACell.HasFormatOverride ? Shared(ACell.FormatOverride) : nullptr;
    TRecord& record = Append(AAddress, ACell.StyleIndex);
    record.Form = TForm::fmWhole;
    record.Index = AppendTo(
        FWhole, {ACell.Value, ACell.CachedValue, ACell.HasCachedValue, format, ACell.RichText, ACell.Sparkline});
  } else if (ACell.HasCachedValue) {
    AddResult(AAddress, ACell.Value.Text, ACell.CachedValue, ACell.StyleIndex);
  } else {
    AddConstant(AAddress, ACell.Value.View(), ACell.StyleIndex);
  }
}

void TCellBatch::AddCopy(TCellAddress AAddress, const TWorksheet& ASheet, TCellAddress ASource) {
  const TCellSlot* slot = ASource.IsValid() ? ASheet.Store().Find(ASource.Col, ASource.Row) : nullptr;
  if (!slot) {
    Append(AAddress, 0);
  } else if (slot->HasExtras()) {
    Add(AAddress, ASheet.GetCell(ASource));
  } else if (slot->Kind != cvkFormula) {
    AddConstant(AAddress, slot->ConstantView(), slot->StyleIndex);
  } else {
    const TFormulaRecord& formula = ASheet.Store().Record(slot->Record);
    TText source = formula.Template->TextAt(ASource.Col, ASource.Row);
    if (formula.HasCached()) {
      AddResult(AAddress, std::move(source), TCellValue::FromView(formula.CachedView()), slot->StyleIndex);
    } else {
      AddFormula(AAddress, std::move(source), slot->StyleIndex);
    }
  }
}

std::shared_ptr<const TCellFormat> TCellBatch::Shared(const TCellFormat& AFormat) {
  std::shared_ptr<const TCellFormat>& known = FOverrides[HashOf(AFormat)];
  if (!known) known = std::make_shared<const TCellFormat>(AFormat);
  return *known == AFormat ? known : std::make_shared<const TCellFormat>(AFormat);
}

TCellValue TCellBatch::ValueOf(const TRecord& ARecord) const {
  TCellValue value;
  value.Kind = ARecord.Kind;
  switch (ARecord.Kind) {
    case cvkNumber: value.Number = ARecord.Number; break;
    case cvkText:
    case cvkFormula: value.Text = FTexts[ARecord.Index]; break;
    case cvkBoolean: value.BooleanValue = ARecord.BooleanValue; break;
    case cvkError: value.ErrorCode = ARecord.ErrorCode; break;
    case cvkEmpty: break;
  }
  return value;
}

TCell TCellBatch::CellOf(const TRecord& ARecord) const {
  TCell cell;
  cell.StyleIndex = ARecord.StyleIndex;
  switch (ARecord.Form) {
    case TForm::fmValue: cell.Value = ValueOf(ARecord); break;
    case TForm::fmResult: {
      const TFormulaResult& formula = FResults[ARecord.Index];
      cell.Value.Kind = cvkFormula;
      cell.Value.Text = formula.Source;
      cell.HasCachedValue = true;
      cell.CachedValue = formula.Cached;
      break;
    }
    case TForm::fmWhole: {
      const TWholeCell& whole = FWhole[ARecord.Index];
      cell.Value = whole.Value;
      cell.HasCachedValue = whole.HasCached;
      cell.CachedValue = whole.Cached;
      cell.HasFormatOverride = whole.Override != nullptr;
      if (whole.Override) cell.FormatOverride = *whole.Override;
      cell.RichText = whole.Runs;
      cell.Sparkline = whole.Sparkline;
      break;
    }
  }
  return cell;
}

TCell TCellBatch::Cell(size_t AIndex) const { return CellOf(FRecords[AIndex]); }

void TCellBatch::WriteToPlain(TWorksheet& ASheet) const {
  for (const TRecord& record : FRecords) ASheet.SetCell(record.Address, CellOf(record));
}

void TCellBatch::WriteTo(TWorksheet& ASheet) const {
  if (!ASheet.ChangesAreUnobserved()) return WriteToPlain(ASheet);
  TCellStore& store = ASheet.Store();
  TCellAddress last;
  for (const TRecord& record : FRecords) {
    const auto [col, row] = record.Address;
    if (!record.Address.IsValid()) continue;
    last = {std::max(last.Col, col), std::max(last.Row, row)};
    if (record.Form != TForm::fmValue) {
      store.Set(col, row, CellOf(record));
    } else if (record.Kind == cvkNumber) {
      store.SetNumber(col, row, record.Number, record.StyleIndex);
    } else if (record.Kind == cvkText) {
      store.SetText(col, row, FTexts[record.Index], record.StyleIndex);
    } else {
      store.SetValue(col, row, ValueOf(record), record.StyleIndex);
    }
  }
  if (last.Col == 0) return;
  ASheet.UpdateUsedBounds(last);
  ASheet.NoteBulkChange();
}

}  // namespace tessarine::detail

#include <tessarine/core/options/NamedRanges.h>

#include <tessarine/core/sheet/Workbook.h>

namespace tessarine {

void TTessarineNamedRanges::AddOrSet(TTextArg AName, TTextArg AFormula) {
  if (FWorkbook) FWorkbook->SetNamedFormula(AName.View(), AFormula.View());
}

void TTessarineNamedRanges::Remove(TTextArg AName) {
  if (FWorkbook) FWorkbook->RemoveNamedFormula(AName.View());
}

bool TTessarineNamedRanges::Contains(TTextArg AName) const {
  return FWorkbook && FWorkbook->FindNormalizedName(TWorkbook::NormalizeName(AName));
}

TText TTessarineNamedRanges::GetFormula(TTextArg AName) const {
  return FWorkbook ? FWorkbook->FindNamedFormula(AName.View()).value_or(TText()) : TText();
}

int32_t TTessarineNamedRanges::Count() const { return static_cast<int32_t>(Names().size()); }

void TTessarineNamedRanges::Clear() {
  if (FWorkbook) FWorkbook->ClearNamedFormulas();
}

std::vector<TText> TTessarineNamedRanges::Names() const {
  return FWorkbook ? FWorkbook->NamedFormulaNames() : std::vector<TText>();
}

}  // namespace tessarine

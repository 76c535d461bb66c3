#include <tessarine/formula/detail/LocalNames.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/sheet/Workbook.h>

namespace tessarine::detail {

namespace {

/// Names of compiled formulas are in their normal form already, but for a few.
bool IsNormalName(std::u16string_view AName) {
  return std::all_of(AName.begin(), AName.end(), [](char16_t AUnit) {
    return (AUnit >= u'A' && AUnit <= u'Z') || (AUnit >= u'0' && AUnit <= u'9') || AUnit == u'_' || AUnit == u'.';
  });
}

}  // namespace

size_t TLocalNames::IndexOf(std::u16string_view AName) const {
  std::u16string normal;
  if (!IsNormalName(AName)) {
    normal = TWorkbook::NormalizeName(AName);
    AName = normal;
  }
  const size_t count = Count();
  size_t index = 0;
  while (index < count && FTable->Bindings[index].Name != AName) ++index;
  return index;
}

std::vector<TLocalNames::TBinding>& TLocalNames::Own() {
  if (!FTable) {
    FTable = std::make_shared<TTable>();
  } else if (FTable.use_count() > 1) {
    FTable = std::make_shared<TTable>(*FTable);
  }
  return FTable->Bindings;
}

bool TLocalNames::Bind(std::u16string_view AName, TFormulaArg AArg, bool AIsMissing) {
  AArg.Materialize();
  const size_t index = IndexOf(AName);
  std::vector<TBinding>& bindings = Own();
  const bool replaced = index < bindings.size();
  if (!replaced) bindings.push_back({TWorkbook::NormalizeName(AName), TFormulaArg(), false});
  bindings[index].Arg = std::move(AArg);
  bindings[index].IsMissing = AIsMissing;
  return replaced;
}

void TLocalNames::Unbind(std::u16string_view AName) {
  const size_t index = IndexOf(AName);
  if (index >= Count()) return;
  std::vector<TBinding>& bindings = Own();
  if (index + 1 < bindings.size()) std::swap(bindings[index], bindings.back());
  bindings.pop_back();
}

const TFormulaArg* TLocalNames::FindBound(std::u16string_view AName) const {
  const size_t index = IndexOf(AName);
  return index < Count() ? &FTable->Bindings[index].Arg : nullptr;
}

bool TLocalNames::IsMissing(std::u16string_view AName) const {
  const size_t index = IndexOf(AName);
  return index < Count() && FTable->Bindings[index].IsMissing;
}

bool TLocalNames::AreSame(std::u16string_view ALeft, std::u16string_view ARight) {
  return ALeft == ARight || TWorkbook::NormalizeName(ALeft) == TWorkbook::NormalizeName(ARight);
}

void TLocalNames::Restore(const TSaved& ASaved) { FTable = std::const_pointer_cast<TTable>(ASaved); }

std::vector<std::u16string> TLocalNames::LostSince(const TSaved& ASaved) const {
  std::vector<std::u16string> lost;
  if (!ASaved || ASaved == FTable) return lost;
  for (const TBinding& binding : ASaved->Bindings) {
    if (IndexOf(binding.Name) == Count()) lost.push_back(binding.Name);
  }
  return lost;
}

int64_t TLocalNames::WeightOf(const TSaved& ASaved) {
  constexpr int64_t kBindingCells = (sizeof(TBinding) + sizeof(TCellValue) - 1) / sizeof(TCellValue);
  int64_t cells = 0;
  if (!ASaved) return cells;
  for (const TBinding& binding : ASaved->Bindings) cells += kBindingCells + binding.Arg.CellCount();
  return cells;
}

}  // namespace tessarine::detail

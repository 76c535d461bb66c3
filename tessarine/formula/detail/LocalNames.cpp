#include <tessarine/formula/detail/LocalNames.h>

#include <cstddef>
#include <utility>

#include <tessarine/core/sheet/Workbook.h>

namespace tessarine::detail {

size_t TLocalNames::IndexOf(std::u16string_view AName) const {
  const std::u16string name = TWorkbook::NormalizeName(AName);
  size_t index = 0;
  while (index < FBindings.size() && FBindings[index].Name != name) ++index;
  return index;
}

bool TLocalNames::Bind(std::u16string_view AName, TFormulaArg AArg, bool AIsMissing) {
  AArg.Materialize();
  const size_t index = IndexOf(AName);
  const bool replaced = index < FBindings.size();
  if (!replaced) FBindings.push_back({TWorkbook::NormalizeName(AName), TFormulaArg(), false});
  FBindings[index].Arg = std::move(AArg);
  FBindings[index].IsMissing = AIsMissing;
  return replaced;
}

void TLocalNames::Unbind(std::u16string_view AName) {
  const size_t index = IndexOf(AName);
  if (index < FBindings.size()) FBindings.erase(FBindings.begin() + static_cast<std::ptrdiff_t>(index));
}

const TFormulaArg* TLocalNames::FindBound(std::u16string_view AName) const {
  const size_t index = IndexOf(AName);
  return index < FBindings.size() ? &FBindings[index].Arg : nullptr;
}

bool TLocalNames::IsMissing(std::u16string_view AName) const {
  const size_t index = IndexOf(AName);
  return index < FBindings.size() && FBindings[index].IsMissing;
}

}  // namespace tessarine::detail

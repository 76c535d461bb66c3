#include <tessarine/formula/FunctionTable.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <vector>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

uint32_t HashName(std::u16string_view AName) {
  uint32_t hash = static_cast<uint32_t>(AName.size());
  for (const char16_t unit : AName) hash = std::rotl(hash, 5) ^ unit;
  hash *= 0x9E3779B1u;  // 2^32 over the golden ratio: spreads what differs to the high bits
  return hash >> 16;
}

/// All rows, sorted, and a hash of them with open addressing; built once and never changed.
class TFunctionIndex {
 public:
  TFunctionIndex() {
    for (const auto rows : {AggregateFunctions(), CriteriaFunctions(), LogicFunctions(), InformationFunctions(),
                            NumberFunctions(), TextFunctions(), DateFunctions(), LookupFunctions(), FinanceFunctions(),
                            ArrayFunctions(), EvaluatorFunctions(), UnsupportedFunctions()}) {
      for (const TFunctionDef& row : rows) Add(row);
    }
    std::sort(FSorted.begin(), FSorted.end(),
              [](const TFunctionDef* ALeft, const TFunctionDef* ARight) { return ALeft->Name < ARight->Name; });
    Fill();
  }

  const TFunctionDef* Find(std::u16string_view AName) const {
    for (size_t at = HashName(AName) & FMask; FSlots[at]; at = (at + 1) & FMask) {
      if (FSlots[at]->Name == AName) return FSlots[at];
    }
    return nullptr;
  }

  std::span<const TFunctionDef* const> All() const { return FSorted; }

 private:
  void Add(const TFunctionDef& ARow) { FSorted.push_back(&ARow); }

  void Fill() {
    FSlots.assign(std::bit_ceil(FSorted.size() * 4 + 1), nullptr);
    FMask = FSlots.size() - 1;
    for (const TFunctionDef* row : FSorted) {
      size_t at = HashName(row->Name) & FMask;
      while (FSlots[at]) at = (at + 1) & FMask;
      FSlots[at] = row;
    }
  }

  std::vector<const TFunctionDef*> FSorted;
  std::vector<const TFunctionDef*> FSlots;  // at most a quarter full
  size_t FMask = 0;
};

const TFunctionIndex& Functions() {
  static const TFunctionIndex index;
  return index;
}

/// No function lets an infinity or a NaN into a cell.
TCellValue Finite(TCellValue AValue) {
  return AValue.Kind == cvkNumber && !std::isfinite(AValue.Number) ? TCellValue::FromError(ceNum) : AValue;
}

constexpr std::array<std::u16string_view, 30> kSpillFunctions = {
    u"ARRAY_CONSTRAIN", u"CHOOSECOLS",    u"CHOOSEROWS", u"DROP",         u"EXPAND",     u"FILTER",
    u"FILTERXML",       u"GOOGLEFINANCE", u"GROUPBY",    u"HSTACK",       u"IMPORTDATA", u"IMPORTFEED",
    u"IMPORTHTML",      u"IMPORTRANGE",   u"IMPORTXML",  u"PIVOTBY",      u"QUERY",      u"RANDARRAY",
    u"SEQUENCE",        u"SORT",          u"SORTBY",     u"STOCKHISTORY", u"TAKE",       u"TOCOL",
    u"TOROW",           u"TRANSPOSE",     u"UNIQUE",     u"VSTACK",       u"WRAPCOLS",   u"WRAPROWS",
};
static_assert(std::is_sorted(kSpillFunctions.begin(), kSpillFunctions.end()));

}  // namespace

const TFunctionDef* FindFunction(std::u16string_view ACanonicalName) { return Functions().Find(ACanonicalName); }

std::span<const TFunctionDef* const> AllFunctions() { return Functions().All(); }

std::u16string CanonicalFunctionName(std::u16string_view AName) {
  std::u16string name(TrimSpaces(AName));
  std::erase(name, u'$');
  for (char16_t& unit : name) unit = AsciiUpper(unit);
  for (const std::u16string_view prefix : {u"_XLFN._XLWS.", u"_XLFN.", u"_XLPM.", u"COM.MICROSOFT."}) {
    if (name.starts_with(prefix)) {
      name.erase(0, prefix.size());
      break;
    }
  }
  return name;
}

TCellValue EvaluateFunction(std::u16string_view AName, std::span<const TFormulaArg> AArgs,
                            const TFormulaContext& AContext) {
  const TFunctionDef* row = FindFunction(AName);
  if (!row || row->Tier != ftrBasic || !row->Body) return TCellValue::FromError(ceName);
  return Finite(row->Body(AArgs, AContext));
}

bool TryEvaluateExtra(std::u16string_view AName, std::span<const TFormulaArg> AArgs, const TFormulaContext& AContext,
                      TCellValue& AValue) {
  const TFunctionDef* row = FindFunction(AName);
  if (!row) return false;
  switch (row->Tier) {
    case ftrEvaluator:
    case ftrBasic: return false;
    case ftrUnsupported: AValue = TCellValue::FromError(ceNA); return true;
    case ftrArray: AValue = Finite(row->ArrayBody(AArgs, AContext).First()); return true;
    case ftrExtra: AValue = Finite(row->Body(AArgs, AContext)); return true;
  }
  return false;
}

bool IsUnsupportedFunction(std::u16string_view ACanonicalName) {
  const TFunctionDef* row = FindFunction(ACanonicalName);
  return row && row->Tier == ftrUnsupported;
}

TFormulaArg AsRangeArg(const TFormulaArg& AArg) {
  if (AArg.IsRange) return AArg;
  return TFormulaArg::FromRange({AArg.First()}, 1, 1);
}

bool IsDynamicArraySpillFunction(std::u16string_view AName) {
  const std::u16string name = CanonicalFunctionName(AName);
  return std::binary_search(kSpillFunctions.begin(), kSpillFunctions.end(), std::u16string_view(name));
}

bool IsDynamicArraySpillFormulaText(std::u16string_view AFormula) {
  std::u16string_view text = TrimSpaces(AFormula);
  text.remove_prefix(std::min(text.find_first_not_of(u"+=@"), text.size()));
  return IsDynamicArraySpillFunction(text.substr(0, text.find(u'(')));
}

}  // namespace tessarine

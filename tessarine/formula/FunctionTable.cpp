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

/// All rows, sorted, and a hash of their names with open addressing; built once and never changed.
class TFunctionIndex {
 public:
  TFunctionIndex() : FFamilies(MakeFamilies()) {
    for (const TFunctionFamily& family : FFamilies) {
      for (const TFunctionDef& row : family.Functions) Add(row);
    }
    std::sort(FSorted.begin(), FSorted.end(),
              [](const TFunctionDef* ALeft, const TFunctionDef* ARight) { return ALeft->Name < ARight->Name; });
    Fill();
  }

  const TFunctionDef* Find(std::u16string_view AName) const {
    for (size_t at = HashName(AName) & FMask; FSlots[at].Row; at = (at + 1) & FMask) {
      if (FSlots[at].Name == AName) return FSlots[at].Row;
    }
    return nullptr;
  }

  std::span<const TFunctionDef* const> All() const { return FSorted; }
  std::span<const TFunctionFamily> Families() const { return FFamilies; }

 private:
  struct TSlot {
    std::u16string_view Name;
    const TFunctionDef* Row = nullptr;
  };

  static std::vector<TFunctionFamily> MakeFamilies() {
    return {
        {u"Sums and counts", AggregateFunctions()},
        {u"Sums and counts by criteria", CriteriaFunctions()},
        {u"Logic", LogicFunctions()},
        {u"Information", InformationFunctions()},
        {u"Numbers", NumberFunctions()},
        {u"Angles", TrigonometryFunctions()},
        {u"Whole numbers and rounding", IntegerFunctions()},
        {u"Matrices", MatrixFunctions()},
        {u"Statistics", StatisticsFunctions()},
        {u"Regression and correlation", RegressionFunctions()},
        {u"Distributions and tests", DistributionFunctions()},
        {u"Records of a list", DatabaseFunctions()},
        {u"Text", TextFunctions()},
        {u"Parts and forms of text", TextPartFunctions()},
        {u"Patterns in text", RegexFunctions()},
        {u"Dates and times", DateFunctions()},
        {u"Calendars and working days", CalendarFunctions()},
        {u"Lookup", LookupFunctions()},
        {u"References", ReferenceFunctions()},
        {u"Annuities and net values", FinanceFunctions()},
        {u"Loans, depreciation and rates", LoanFunctions()},
        {u"Securities", SecurityFunctions()},
        {u"Engineering", EngineeringFunctions()},
        {u"Complex numbers", ComplexFunctions()},
        {u"Arrays", ArrayFunctions()},
        {u"Names and functions in formulas", LambdaFunctions()},
        {u"Queries", QueryFunctions()},
        {u"Web and outside data", WebFunctions()},
        {u"Live data and charts in cells", LiveDataFunctions()},
        {u"Pivot tables and cubes", PivotFunctions()},
        {u"References made by formulas", EvaluatorFunctions()},
        {u"Known but not available", UnsupportedFunctions()},
    };
  }

  void Add(const TFunctionDef& ARow) {
    FSorted.push_back(&ARow);
    FNames.push_back({ARow.Name, &ARow});
    std::u16string_view rest = ARow.Spellings;
    while (!rest.empty()) {
      const size_t end = std::min(rest.find(u' '), rest.size());
      FNames.push_back({rest.substr(0, end), &ARow});
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
  }

  void Fill() {
    FSlots.assign(std::bit_ceil(FNames.size() * 4 + 1), {});
    FMask = FSlots.size() - 1;
    for (const TSlot& name : FNames) {
      size_t at = HashName(name.Name) & FMask;
      while (FSlots[at].Row) at = (at + 1) & FMask;
      FSlots[at] = name;
    }
  }

  std::vector<TFunctionFamily> FFamilies;
  std::vector<const TFunctionDef*> FSorted;
  std::vector<TSlot> FNames;
  std::vector<TSlot> FSlots;  // at most a quarter full
  size_t FMask = 0;
};

const TFunctionIndex& Functions() {
  static const TFunctionIndex index;
  return index;
}

/// No function lets an infinity or a NaN into a cell.
TCellValue Finite(TCellValue AValue) {
  if (AValue.Kind == cvkNumber && !std::isfinite(AValue.Number)) return TCellValue::FromError(ceNum);
  return AValue;
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

std::span<const TFunctionFamily> FunctionFamilies() { return Functions().Families(); }

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

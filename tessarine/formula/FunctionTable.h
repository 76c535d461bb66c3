#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/formula/FormulaArg.h>

namespace tessarine {

/// Where a name is looked for, in this order.
enum class TFunctionTier : uint8_t {
  ftrEvaluator,    // known to the evaluator only: special forms that need unevaluated arguments or its state
  ftrBasic,        // EvaluateFunction
  ftrArray,        // rectangles; TryEvaluateExtra takes their first value
  ftrUnsupported,  // names that answer #N/A by design
  ftrExtra,        // the further families
};
using enum TFunctionTier;

using TFunctionBody = TCellValue (*)(std::span<const TFormulaArg> AArgs, const TFormulaContext& AContext);
using TArrayBody = TFormulaArg (*)(std::span<const TFormulaArg> AArgs, const TFormulaContext& AContext);

/// One function: what dispatch, help and completion know of it. Rows of a family are sorted by name.
struct TFunctionDef {
  std::u16string_view Name;            // upper case
  std::u16string_view Spellings = {};  // its other names, in upper case, separated by blanks
  int16_t MinArgs = 0;                 // as the user reads it; bodies test their own counts
  int16_t MaxArgs = -1;                // -1: any number
  TFunctionTier Tier = ftrBasic;
  TFunctionBody Body = nullptr;     // ftrBasic, ftrExtra
  TArrayBody ArrayBody = nullptr;   // ftrArray
  int16_t ArrayMinArgs = 0;         // fewer arguments than this: not a rectangle at the root (table of the evaluator)
  bool InCompletion = false;        // offered while a formula is typed
  std::u16string_view Arguments;    // "rows, [columns], [start], [step]"
  std::u16string_view Description;  // one line
};

/// The family tables; each stands in its own source file under formula/library/.
std::span<const TFunctionDef> AggregateFunctions();  // SUM, COUNT..., SUBTOTAL, SUMPRODUCT, RANK
std::span<const TFunctionDef> CriteriaFunctions();   // SUMIF, COUNTIFS, ...
std::span<const TFunctionDef> LogicFunctions();
std::span<const TFunctionDef> InformationFunctions();
std::span<const TFunctionDef> NumberFunctions();
std::span<const TFunctionDef> TrigonometryFunctions();
std::span<const TFunctionDef> IntegerFunctions();  // rounding to multiples, combinations, numerals, sums of squares
std::span<const TFunctionDef> MatrixFunctions();
std::span<const TFunctionDef> StatisticsFunctions();
std::span<const TFunctionDef> RegressionFunctions();    // CORREL, SLOPE, TREND, LINEST, ...
std::span<const TFunctionDef> DistributionFunctions();  // and the tests that stand on them
std::span<const TFunctionDef> DatabaseFunctions();
std::span<const TFunctionDef> TextFunctions();
std::span<const TFunctionDef> TextPartFunctions();  // TEXTBEFORE, TEXTSPLIT, FIXED, UNICHAR, ...
std::span<const TFunctionDef> RegexFunctions();     // and tests of texts
std::span<const TFunctionDef> DateFunctions();
std::span<const TFunctionDef> CalendarFunctions();  // working days, weeks, parts of years
std::span<const TFunctionDef> LookupFunctions();
std::span<const TFunctionDef> ReferenceFunctions();    // ADDRESS, FORMULATEXT, SHEETS, ...
std::span<const TFunctionDef> FinanceFunctions();      // annuities, NPV, IRR
std::span<const TFunctionDef> LoanFunctions();         // interest parts, depreciation, rates, dated cash flows
std::span<const TFunctionDef> SecurityFunctions();     // bonds, bills, coupons
std::span<const TFunctionDef> EngineeringFunctions();  // number bases, bits, CONVERT, Bessel
std::span<const TFunctionDef> ComplexFunctions();
std::span<const TFunctionDef> ArrayFunctions();
std::span<const TFunctionDef> LambdaFunctions();  // rows without bodies: LET, LAMBDA, MAP, ...
std::span<const TFunctionDef> QueryFunctions();
std::span<const TFunctionDef> WebFunctions();
std::span<const TFunctionDef> LiveDataFunctions();     // RTD, SPARKLINE
std::span<const TFunctionDef> PivotFunctions();        // GETPIVOTDATA, FIELDVALUE and the cube family
std::span<const TFunctionDef> EvaluatorFunctions();    // rows without bodies: OFFSET, INDIRECT, ISOMITTED
std::span<const TFunctionDef> UnsupportedFunctions();  // rows without bodies

/// A family's table and what readers know it by.
struct TFunctionFamily {
  std::u16string_view Title;
  std::span<const TFunctionDef> Functions;
};

/// All families, in the order in which documents list them.
TESSARINE_API std::span<const TFunctionFamily> FunctionFamilies();

/// The row of a canonical name, which may be one of its other spellings, or null.
TESSARINE_API const TFunctionDef* FindFunction(std::u16string_view ACanonicalName);

/// All rows, sorted by their first names.
TESSARINE_API std::span<const TFunctionDef* const> AllFunctions();

/// Trims, drops every "$", folds to upper case and strips one of the prefixes "_XLFN._XLWS.", "_XLFN.", "_XLPM.",
/// "COM.MICROSOFT.".
TESSARINE_API std::u16string CanonicalFunctionName(std::u16string_view AName);

/// Calls a function of the basic tier by its canonical name; #NAME? for a name that the tier does not know.
TESSARINE_API TCellValue EvaluateFunction(std::u16string_view AName, std::span<const TFormulaArg> AArgs,
                                          const TFormulaContext& AContext);

/// Calls a function of the further tiers; false for a name that they do not know.
TESSARINE_API bool TryEvaluateExtra(std::u16string_view AName, std::span<const TFormulaArg> AArgs,
                                    const TFormulaContext& AContext, TCellValue& AValue);

/// The names that answer #N/A.
TESSARINE_API bool IsUnsupportedFunction(std::u16string_view ACanonicalName);

/// A rectangle as it stands, a scalar as a rectangle of one cell.
TESSARINE_API TFormulaArg AsRangeArg(const TFormulaArg& AArg);

/// Advice for callers: whether the outermost function of a formula text is known to spill.
TESSARINE_API bool IsDynamicArraySpillFunction(std::u16string_view AName);
TESSARINE_API bool IsDynamicArraySpillFormulaText(std::u16string_view AFormula);

/// Limits on what a formula may generate: cells of an array (#NUM! above), UTF-16 units of a text (#VALUE! above).
constexpr int64_t kMaxGeneratedCells = 1'000'000;
constexpr size_t kMaxGeneratedText = 1'048'576;

}  // namespace tessarine

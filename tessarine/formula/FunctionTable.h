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

/// One spelling of one function: what dispatch, help and completion know of it. Rows of a family are sorted by name.
struct TFunctionDef {
  std::u16string_view Name;  // upper case
  int16_t MinArgs = 0;       // as the user reads it; bodies test their own counts
  int16_t MaxArgs = -1;      // -1: any number
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
std::span<const TFunctionDef> TextFunctions();
std::span<const TFunctionDef> DateFunctions();
std::span<const TFunctionDef> LookupFunctions();
std::span<const TFunctionDef> FinanceFunctions();
std::span<const TFunctionDef> ArrayFunctions();
std::span<const TFunctionDef> EvaluatorFunctions();    // rows without bodies: OFFSET, INDIRECT, ISOMITTED
std::span<const TFunctionDef> UnsupportedFunctions();  // rows without bodies

/// The row of a canonical name, or null.
TESSARINE_API const TFunctionDef* FindFunction(std::u16string_view ACanonicalName);

/// All rows, sorted by name.
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

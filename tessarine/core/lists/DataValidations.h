#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

namespace detail {
class TRectIndex;
}

enum class TDataValidationType : uint8_t {
  dvtNone,
  dvtList,
  dvtWhole,
  dvtDecimal,
  dvtDate,
  dvtTextLength,
  dvtCustom,
};
using enum TDataValidationType;

enum class TDataValidationOperator : uint8_t {
  dvoBetween,
  dvoNotBetween,
  dvoEqual,
  dvoNotEqual,
  dvoGreaterThan,
  dvoLessThan,
  dvoGreaterEqual,
  dvoLessEqual,
};
using enum TDataValidationOperator;

enum class TDataValidationErrorStyle : uint8_t { dvesStop, dvesWarning, dvesInformation };
using enum TDataValidationErrorStyle;

/// What may be entered into some ranges, and what is said about it.
struct TDataValidationRule {
  TText Name;  // optional; named rules are found by it without regard to ASCII case
  std::vector<TCellRange> Ranges;
  TText PromptTitle;
  TText Prompt;
  bool ShowInputMessage = false;  // the prompt is shown
  TDataValidationType ValidationType = dvtNone;
  TDataValidationOperator Operator = dvoBetween;
  TText Formula1;  // the source of a list, or the first bound
  TText Formula2;  // the second bound
  bool AllowBlank = false;
  bool ShowErrorMessage = false;  // the rule's own texts are used
  TText ErrorTitle;
  TText Error;
  TDataValidationErrorStyle ErrorStyle = dvesStop;

  friend bool operator==(const TDataValidationRule&, const TDataValidationRule&) = default;
};

/// The answer to a proposed entry; the texts are for the person, empty when it is accepted.
struct TValidationVerdict {
  bool IsAccepted = true;
  TText Title;
  TText Message;
  TDataValidationErrorStyle Style = dvesStop;
};

struct TValidationPrompt {
  TText Title;
  TText Text;
};

/// The validation rules of a sheet, in order; the first one that covers a cell counts for it.
class TESSARINE_API TDataValidationList {
 public:
  TDataValidationList();
  ~TDataValidationList();
  TDataValidationList(const TDataValidationList&) = delete;
  TDataValidationList& operator=(const TDataValidationList&) = delete;

  void Clear();
  void AddRule(TDataValidationRule ARule);
  /// Puts a changed rule in the place of another; an index out of range is ignored.
  void ReplaceRule(size_t AIndex, TDataValidationRule ARule);
  void DeleteRule(size_t AIndex);

  /// Sets the prompt of the rule of that name, or adds one without a restriction.
  void AddNamedPrompt(TText AName, TText APrompt, TText ATitle, bool AShow);
  /// Adds a range to the rule of that name, which is made when there is none.
  void BindNameToRange(const TText& AName, const TCellRange& ARange);

  bool IsEmpty() const { return FRules.empty(); }
  size_t Count() const { return FRules.size(); }
  const TDataValidationRule& GetRule(size_t AIndex) const { return FRules[AIndex]; }
  auto begin() const { return FRules.begin(); }
  auto end() const { return FRules.end(); }

  /// The last added rule of a name, without regard to ASCII case; null when there is none.
  const TDataValidationRule* FindByName(std::u16string_view AName) const;

  /// The first rule that covers the cell, or null. Valid until the list changes.
  const TDataValidationRule* FindRuleAt(int32_t ACol, int32_t ARow) const;

  /// The prompt to show at a cell, if its rule has one to show.
  std::optional<TValidationPrompt> FindPromptAt(int32_t ACol, int32_t ARow) const;

  /// Whether AText may be entered at the cell. AItems are the items of a list whose source is a range; without them
  /// those of a literal list count. Numbers and dates are read under the current locale, a bound that is none is 0,
  /// and custom formulas accept everything.
  TValidationVerdict ValidateValue(int32_t ACol, int32_t ARow, std::u16string_view AText,
                                   std::span<const TText> AItems = {}) const;

  /// Whether the source of a list reads as a range of cells ("=$A$1:$A$3", "Lists!B2", also "Tax1").
  static bool IsListRangeFormula(std::u16string_view ASource);

  /// The items of a literal list ("a, b,c", quotes around it undone); none for a range.
  static std::vector<TText> ParseListItems(std::u16string_view ASource);

  /// Ranges shrink and go with deleted lines; a rule without ranges goes, unless it has a name.
  void ShiftRows(int64_t AStart, int64_t ADelta) { Shift(saRows, AStart, ADelta); }
  void ShiftColumns(int64_t AStart, int64_t ADelta) { Shift(saColumns, AStart, ADelta); }
  /// ADest is the block's new first line.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saRows, AStart, ACount, ADest); }
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saColumns, AStart, ACount, ADest); }

  /// Rewrites the operands after an edit of the sheet ASheetName, as formulas are; items of literal lists stay as they
  /// are.
  void AdjustFormulas(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ADelta);
  void AdjustFormulasForMove(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ACount,
                             int64_t ADest);

 private:
  void Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta);
  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);
  template <class TRewrite>
  void RewriteOperands(TRewrite&& ARewrite);
  TDataValidationRule* FindNamed(std::u16string_view AName);
  void DropIndex();

  std::vector<TDataValidationRule> FRules;
  /// Rule numbers by rectangle; null until the next question after a change.
  mutable std::unique_ptr<detail::TRectIndex> FIndex;
};

}  // namespace tessarine

#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/formula/FormulaArg.h>

/// What lookups and criteria hold cells against, read once per call.
namespace tessarine::detail {

/// A value in the two forms that equality looks at. A cell equals it when both are numbers (blank 0, Boolean 1 or 0,
/// texts that read as one) and the same number, or, when either is no number, when their display texts are the same
/// without regard to ASCII case. Two numbers that differ are never compared as texts.
///
/// A key makes its text when it is first asked for and holds a buffer, so it is used on one thread at a time. Valid as
/// long as the locale stands.
class TMatchKey {
 public:
  TMatchKey() = default;
  /// The key of a lookup: the value itself.
  explicit TMatchKey(const TValueView& AValue);
  /// The operand of a criterion: a text, and a number when it reads as one.
  explicit TMatchKey(TText AText);

  bool IsNumber() const { return FIsNumber; }
  double Number() const { return FNumber; }  // 0 when IsNumber() is false
  std::u16string_view Text() const {
    if (!FHasText) MakeText();
    return FText.View();
  }

  bool Equals(const TValueView& ACell) const;
  bool EqualsBlank() const { return FIsNumber ? FNumber == 0 : Text().empty(); }

 private:
  void MakeText() const;
  bool EqualsText(const TValueView& ACell) const;

  mutable TText FText;
  mutable bool FHasText = true;
  mutable bool FMayBeNumberText = false;  // no unit in FText that display texts of numbers never have
  bool FIsNumber = false;
  double FNumber = 0;
  mutable std::u16string FBuffer;
};

enum class TCriterionOperator : uint8_t { coEqual, coDiffers, coLess, coLessOrEqual, coGreater, coGreaterOrEqual };
using enum TCriterionOperator;

/// A criterion such as ">=5", "<>a" or "North": its display text cut into an operator and an operand. There are no
/// wildcards. The order operators hold between numbers only.
class TCriterion {
 public:
  TCriterion() = default;
  explicit TCriterion(const TValueView& ACriterion);

  TCriterionOperator Operator() const { return FOperator; }
  const TMatchKey& Operand() const { return FOperand; }

  bool Matches(const TValueView& ACell) const;
  bool MatchesBlank() const { return FMatchesBlank; }

 private:
  TCriterionOperator FOperator = coEqual;
  bool FMatchesBlank = true;
  TMatchKey FOperand;
};

/// The plain form of TMatchKey::Equals: the definition of the result.
bool EqualsKeyPlain(const TValueView& AKey, const TValueView& ACell);

/// The plain form of TCriterion, which reads the criterion anew: the definition of the result.
bool MatchesCriteriaPlain(const TValueView& ACell, const TValueView& ACriterion);

}  // namespace tessarine::detail

#include <tessarine/formula/library/detail/Conditions.h>

#include <algorithm>
#include <optional>

#include <tessarine/formula/library/detail/CellRuns.h>
#include <tessarine/formula/library/detail/RangeIndex.h>

namespace tessarine::detail {

namespace {

using TConditions = std::span<const TCondition>;

constexpr size_t kNoCondition = static_cast<size_t>(-1);

/// Whether all conditions but number AExcept hold at an index.
bool AllHold(TConditions AConditions, int64_t AIndex, size_t AExcept = kNoCondition) {
  for (size_t i = 0; i < AConditions.size(); ++i) {
    if (i != AExcept && !AConditions[i].Criterion.Matches(CellOf(*AConditions[i].Range, AIndex))) return false;
  }
  return true;
}

/// The indexes at which one condition holds, in order, all of them.
struct TCandidates {
  size_t Condition = kNoCondition;
  std::span<const uint32_t> Indexes;
};

/// The shortest list of candidates that an index offers. Conditions that hold for blanks have none: their lists would
/// not be complete.
std::optional<TCandidates> CandidatesOf(TConditions AConditions, TRangeIndexCache* ACache) {
  if (!ACache) return std::nullopt;
  std::optional<TCandidates> best;
  size_t asked = 0;
  const auto listOf = [&](size_t ACondition) -> std::optional<std::span<const uint32_t>> {
    const TCriterion& criterion = AConditions[ACondition].Criterion;
    if (criterion.Operator() != coEqual || criterion.MatchesBlank()) return std::nullopt;
    ++asked;
    const TEqualityIndex* index = ACache->Equality(*AConditions[ACondition].Range);
    return index ? index->Matches(criterion.Operand()) : std::nullopt;
  };
  for (size_t i = 0; i < AConditions.size(); ++i) {
    const auto list = listOf(i);
    if (list && (!best || list->size() < best->Indexes.size())) best = TCandidates{i, *list};
  }
  if (!best || asked == 1) return best;
  // A later index may have taken the room of the best one: its list is asked for again.
  const auto list = listOf(best->Condition);
  if (!list) return std::nullopt;
  return TCandidates{best->Condition, *list};
}

void OfferNumber(const TFormulaArg& AValues, int64_t AIndex, const TBatchSink<double>& ASink) {
  const TValueView value = CellOf(AValues, AIndex);
  if (value.Kind == cvkNumber) ASink(std::span(&value.Number, 1));
}

int64_t CountOneCondition(const TCondition& ACondition, int64_t ACount) {
  int64_t count = 0;
  ForEachRun(*ACondition.Range, [&](int64_t AFirst, int64_t ARun, const TValueView& AValue) {
    if (AFirst >= ACount) return false;
    if (ACondition.Criterion.Matches(AValue)) count += std::min(ARun, ACount - AFirst);
    return true;
  });
  return count;
}

/// One condition over a whole range, by an index.
std::optional<int64_t> TryCountIndexed(const TCondition& ACondition, TRangeIndexCache* ACache) {
  const TCriterion& criterion = ACondition.Criterion;
  const TMatchKey& key = criterion.Operand();
  if (!ACache) return std::nullopt;
  if (criterion.Operator() == coEqual || criterion.Operator() == coDiffers) {
    const TEqualityIndex* index = ACache->Equality(*ACondition.Range);
    const auto list = index ? index->Matches(key) : std::nullopt;
    if (!list) return std::nullopt;
    const int64_t equal = static_cast<int64_t>(list->size()) + (key.EqualsBlank() ? index->BlankCount() : 0);
    return criterion.Operator() == coEqual ? equal : ACondition.Range->CellCount() - equal;
  }
  if (!key.IsNumber()) return 0;
  const TOrderIndex* index = ACache->Order(*ACondition.Range);
  if (!index) return std::nullopt;
  return index->CountOf(criterion);
}

/// Walks the stored cells of a condition that fails for blanks.
int64_t CountAlong(TConditions AConditions, size_t ADriver, int64_t ACount) {
  const TCondition& driver = AConditions[ADriver];
  int64_t count = 0;
  ForEachNonBlank(*driver.Range, [&](int64_t AIndex, const TValueView& AValue) {
    if (AIndex >= ACount) return false;
    if (driver.Criterion.Matches(AValue) && AllHold(AConditions, AIndex, ADriver)) ++count;
    return true;
  });
  return count;
}

/// When every condition holds for blanks, an index fails only where some range has a stored cell: each failing index
/// is counted at the first condition that fails there.
int64_t CountByFailures(TConditions AConditions, int64_t ACount) {
  int64_t failures = 0;
  for (size_t i = 0; i < AConditions.size(); ++i) {
    ForEachNonBlank(*AConditions[i].Range, [&](int64_t AIndex, const TValueView& AValue) {
      if (AIndex >= ACount) return false;
      if (!AConditions[i].Criterion.Matches(AValue) && AllHold(AConditions.first(i), AIndex)) ++failures;
      return true;
    });
  }
  return ACount - failures;
}

}  // namespace

void WalkMatchingNumbers(const TFormulaArg& AValues, TConditions AConditions, int64_t ACount, TRangeIndexCache* ACache,
                         TBatchSink<double> ASink) {
  if (const auto candidates = CandidatesOf(AConditions, ACache)) {
    for (const uint32_t index : candidates->Indexes) {
      if (index >= ACount) break;
      if (AllHold(AConditions, index, candidates->Condition)) OfferNumber(AValues, index, ASink);
    }
    return;
  }
  ForEachNonBlank(AValues, [&](int64_t AIndex, const TValueView& AValue) {
    if (AIndex >= ACount) return false;
    if (AValue.Kind == cvkNumber && AllHold(AConditions, AIndex)) ASink(std::span(&AValue.Number, 1));
    return true;
  });
}

void WalkMatchingNumbersPlain(const TFormulaArg& AValues, TConditions AConditions, int64_t ACount,
                              TBatchSink<double> ASink) {
  for (int64_t index = 0; index < ACount; ++index) {
    if (!AllHold(AConditions, index)) continue;
    const TValueView value = AValues.ViewAt(index);
    if (value.Kind == cvkNumber) ASink(std::span(&value.Number, 1));
  }
}

int64_t CountMatches(TConditions AConditions, int64_t ACount, TRangeIndexCache* ACache) {
  if (AConditions.size() == 1 && ACount == AConditions[0].Range->CellCount()) {
    if (const auto count = TryCountIndexed(AConditions[0], ACache)) return *count;
    return CountOneCondition(AConditions[0], ACount);
  }
  if (const auto candidates = CandidatesOf(AConditions, ACache)) {
    int64_t count = 0;
    for (const uint32_t index : candidates->Indexes) {
      count += index < ACount && AllHold(AConditions, index, candidates->Condition) ? 1 : 0;
    }
    return count;
  }
  for (size_t i = 0; i < AConditions.size(); ++i) {
    if (!AConditions[i].Criterion.MatchesBlank()) return CountAlong(AConditions, i, ACount);
  }
  return CountByFailures(AConditions, ACount);
}

int64_t CountMatchesPlain(TConditions AConditions, int64_t ACount) {
  int64_t count = 0;
  for (int64_t index = 0; index < ACount; ++index) count += AllHold(AConditions, index) ? 1 : 0;
  return count;
}

}  // namespace tessarine::detail

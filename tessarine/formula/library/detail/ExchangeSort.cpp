#include <tessarine/formula/library/detail/ExchangeSort.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <optional>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/formula/library/detail/SortTexts.h>

namespace tessarine::detail {

namespace {

/// Sums over a prefix of counters that change (P. Fenwick, 1994).
class TCounts {
 public:
  /// All counters 0, or all 1.
  explicit TCounts(size_t ACount, bool AOnes = false) : FSums(ACount + 1, 0) {
    if (!AOnes) return;
    for (size_t i = 1; i <= ACount; ++i) FSums[i] = static_cast<uint32_t>(i & (~i + 1));
  }

  void Add(size_t AIndex, uint32_t ADelta) {
    for (size_t i = AIndex + 1; i < FSums.size(); i += i & (~i + 1)) FSums[i] += ADelta;
  }

  /// The sum of the counters before AIndex.
  uint32_t Before(size_t AIndex) const {
    uint32_t sum = 0;
    for (size_t i = AIndex; i > 0; i &= i - 1) sum += FSums[i];
    return sum;
  }

  /// The counter that holds unit ARank (0-based) of all units, which is taken away from it.
  size_t TakeRanked(uint32_t ARank) {
    size_t at = 0;
    for (size_t step = std::bit_floor(FSums.size() - 1); step > 0; step >>= 1) {
      const size_t next = at + step;
      if (next >= FSums.size()) continue;
      if (FSums[next] <= ARank) {
        ARank -= FSums[next];
        at = next;
      } else {
        --FSums[next];
      }
    }
    return at;
  }

 private:
  std::vector<uint32_t> FSums;
};

/// Lays the members of one group out in their final order. AMembers are in order of insertion; ATurns[i] is how often
/// the group was rotated between the insertion of member i and that of the next one (or the end).
///
/// Backwards in time: before the last turns, the member inserted last stood at the end. With k members left, the k free
/// places of AOut form a circle whose head is the place of rank `head`; undoing a rotation moves the head one back, and
/// the member inserted last has the place before the head.
void LayOutGroup(std::span<const uint32_t> AMembers, std::span<const uint32_t> ATurns, uint32_t* AOut) {
  TCounts places(AMembers.size(), true);
  uint32_t head = 0;
  for (auto count = static_cast<uint32_t>(AMembers.size()); count > 0; --count) {
    head = (head + count - ATurns[count - 1] % count) % count;
    const uint32_t rank = (head + count - 1) % count;
    AOut[places.TakeRanked(rank)] = AMembers[count - 1];
    if (rank < head) --head;
  }
}

/// Small groups: the rotations carried out.
void LayOutSmallGroup(std::span<const uint32_t> AMembers, std::span<const uint32_t> ATurns, uint32_t* AOut) {
  for (size_t count = 1; count <= AMembers.size(); ++count) {
    AOut[count - 1] = AMembers[count - 1];
    std::rotate(AOut, AOut + ATurns[count - 1] % count, AOut + count);
  }
}

constexpr size_t kSmallGroup = 24;

}  // namespace

/*
 * Why this is the exchange sort's order. Its comparisons (i, j), i < j, run with i outside and j inside. Two of them
 * matter to one another only when they share a place, and then running j outside and i inside keeps their order: (i, j)
 * and (i, k) by the second place, (i, k) and (j, k) by the first, and (i, j) before (j, k) as j < k. So the sort is an
 * insertion of the elements from left to right, each compared with all sorted places before it from the front. A new
 * element passes everything not above it, takes the first place of the next group, whose former element goes on, passes
 * its equals and takes the first place of the group behind that, and so on: the new element ends at the END of its
 * group, and every group that sorts after it is rotated left by one.
 *
 * What is left is to count. Between two insertions into a group, it is rotated once for each element of a smaller group
 * inserted meanwhile; LayOutGroup turns these counts into places.
 */
std::vector<uint32_t> ExchangeSortTies(std::span<const uint32_t> ASorted, std::span<const uint32_t> AGroupEnds) {
  const size_t count = ASorted.size();
  std::vector<uint32_t> order(ASorted.begin(), ASorted.end());
  if (AGroupEnds.size() == count || AGroupEnds.size() <= 1) return order;  // no ties, or nothing ever passes them

  std::vector<uint32_t> groupOf(count);
  for (uint32_t group = 0, index = 0; group < AGroupEnds.size(); ++group) {
    for (; index < AGroupEnds[group]; ++index) groupOf[ASorted[index]] = group;
  }
  std::vector<uint32_t> smallerBefore(count);  // by position: elements of smaller groups to the left of it
  TCounts inserted(AGroupEnds.size());
  for (size_t position = 0; position < count; ++position) {
    smallerBefore[position] = inserted.Before(groupOf[position]);
    inserted.Add(groupOf[position], 1);
  }
  std::vector<uint32_t> turns;
  for (uint32_t group = 0, start = 0; group < AGroupEnds.size(); start = AGroupEnds[group++]) {
    const auto members = ASorted.subspan(start, AGroupEnds[group] - start);
    if (members.size() < 2) continue;
    turns.resize(members.size());
    for (size_t i = 0; i < members.size(); ++i) {
      const uint32_t later = i + 1 < members.size() ? smallerBefore[members[i + 1]] : start;
      turns[i] = later - smallerBefore[members[i]];
    }
    (members.size() <= kSmallGroup ? LayOutSmallGroup : LayOutGroup)(members, turns, order.data() + start);
  }
  return order;
}

namespace {

/// A position with the key that decides first.
struct TKeyed {
  uint64_t Key;
  uint32_t Position;
};

/// Bits that sort as unsigned integers the way the numbers do; a negative zero is a zero.
uint64_t OrderedBits(double ANumber, bool ADescending) {
  const auto bits = std::bit_cast<uint64_t>(ANumber == 0 ? 0.0 : ANumber);
  const uint64_t ordered = bits >> 63 ? ~bits : bits | uint64_t{1} << 63;
  return ADescending ? ~ordered : ordered;
}

/// Sorts by key and keeps the order of equal keys: one counting pass per byte, those in which all keys agree left out.
void RadixSort(std::vector<TKeyed>& AItems) {
  constexpr size_t kBytes = sizeof(uint64_t);
  std::vector<std::array<uint32_t, 256>> counts(kBytes);
  for (const TKeyed& item : AItems) {
    for (size_t byte = 0; byte < kBytes; ++byte) ++counts[byte][item.Key >> (8 * byte) & 0xFF];
  }
  std::vector<TKeyed> other(AItems.size());
  for (size_t byte = 0; byte < kBytes; ++byte) {
    auto& starts = counts[byte];
    if (starts[AItems.front().Key >> (8 * byte) & 0xFF] == AItems.size()) continue;
    uint32_t sum = 0;
    for (uint32_t& start : starts) sum += std::exchange(start, sum);
    for (const TKeyed& item : AItems) other[starts[item.Key >> (8 * byte) & 0xFF]++] = item;
    AItems.swap(other);
  }
}

/// Sorts by key, equal keys by position, in which order they come.
void SortByKey(std::vector<TKeyed>& AItems) {
  constexpr size_t kFewItems = 256;
  if (AItems.size() > kFewItems) return RadixSort(AItems);
  std::sort(AItems.begin(), AItems.end(), [](const TKeyed& ALeft, const TKeyed& ARight) {
    return ALeft.Key != ARight.Key ? ALeft.Key < ARight.Key : ALeft.Position < ARight.Position;
  });
}

/// Positions in the order of their keys, and where each run of equal keys ends.
struct TSortedRuns {
  std::vector<uint32_t> Positions;
  std::vector<uint32_t> Ends;

  void EndRun() { Ends.push_back(static_cast<uint32_t>(Positions.size())); }
};

std::vector<uint32_t> OrderOfNumbers(std::vector<TKeyed> AItems) {
  SortByKey(AItems);
  TSortedRuns runs;
  runs.Positions.reserve(AItems.size());
  for (size_t i = 0; i < AItems.size(); ++i) {
    if (i > 0 && AItems[i - 1].Key != AItems[i].Key) runs.EndRun();
    runs.Positions.push_back(AItems[i].Position);
  }
  runs.EndRun();
  return ExchangeSortTies(runs.Positions, runs.Ends);
}

/// Adds texts with one key, which are in order of position, to the runs. AAllEqual tells that they are known to be
/// equal.
void AddTextsOfOneKey(std::span<TKeyed> AItems, std::span<const TSortText> ATexts, bool AAllEqual, bool ADescending,
                      TSortedRuns& ARuns) {
  const auto compare = [&](const TKeyed& ALeft, const TKeyed& ARight) {
    return CompareSortTexts(ATexts[ALeft.Position], ATexts[ARight.Position]);
  };
  const bool allEqual = AAllEqual || std::all_of(AItems.begin() + 1, AItems.end(), [&](const TKeyed& AItem) {
                          return compare(AItems.front(), AItem) == 0;
                        });
  if (!allEqual) {
    std::sort(AItems.begin(), AItems.end(), [&](const TKeyed& ALeft, const TKeyed& ARight) {
      const int order = compare(ALeft, ARight);
      return order != 0 ? (order < 0) != ADescending : ALeft.Position < ARight.Position;
    });
  }
  for (size_t i = 0; i < AItems.size(); ++i) {
    if (i > 0 && !allEqual && compare(AItems[i - 1], AItems[i]) != 0) ARuns.EndRun();
    ARuns.Positions.push_back(AItems[i].Position);
  }
  ARuns.EndRun();
}

std::vector<uint32_t> OrderOfTexts(std::span<const TValueView> AKeys, bool ADescending) {
  std::vector<TText> made;
  const std::vector<TSortText> texts = SortTextsOf(AKeys, made);
  const TTextKeys keys(texts);
  std::vector<TKeyed> items(AKeys.size());
  for (uint32_t i = 0; i < items.size(); ++i) items[i] = {ADescending ? ~keys.KeyOf(i) : keys.KeyOf(i), i};
  SortByKey(items);
  TSortedRuns runs;
  runs.Positions.reserve(items.size());
  for (size_t start = 0, end = 0; start < items.size(); start = end) {
    while (end < items.size() && items[end].Key == items[start].Key) ++end;
    AddTextsOfOneKey(std::span(items).subspan(start, end - start), texts, keys.IsWhole(), ADescending, runs);
  }
  return ExchangeSortTies(runs.Positions, runs.Ends);
}

std::vector<uint32_t> OrderOfMixedKeys(std::span<const TValueView> AKeys, bool ADescending) {
  std::vector<TText> made;
  const std::vector<TSortText> texts = SortTextsOf(AKeys, made);
  std::vector<std::optional<double>> numbers;
  TKeyNumbers reader;
  for (const TValueView& key : AKeys) numbers.push_back(reader.NumberOf(key));
  const auto compare = [&](uint32_t ALeft, uint32_t ARight) {
    const std::optional<double>& left = numbers[ALeft];
    const std::optional<double>& right = numbers[ARight];
    int order = 0;
    if (left && right) {
      order = *left < *right ? -1 : *left > *right ? 1 : 0;
    } else {
      order = CompareSortTexts(texts[ALeft], texts[ARight]);
    }
    return ADescending ? -order : order;
  };
  return AKeys.size() <= kMaxMixedKeys ? ExchangeSortPlain(AKeys.size(), compare)
                                       : TolerantMergeSort(AKeys.size(), compare);
}

}  // namespace

std::vector<uint32_t> SortedOrder(std::span<const TValueView> AKeys, bool ADescending) {
  if (AKeys.empty()) return {};
  std::vector<TKeyed> items(AKeys.size());
  size_t numbers = 0;
  bool hasNan = false;
  TKeyNumbers reader;
  for (size_t i = 0; i < AKeys.size(); ++i) {
    const std::optional<double> number = reader.NumberOf(AKeys[i]);
    if (number) ++numbers;
    hasNan = hasNan || (number && std::isnan(*number));
    items[i] = {OrderedBits(number.value_or(0), ADescending), static_cast<uint32_t>(i)};
  }
  if (numbers == AKeys.size() && !hasNan) return OrderOfNumbers(std::move(items));
  if (numbers == 0) return OrderOfTexts(AKeys, ADescending);
  return OrderOfMixedKeys(AKeys, ADescending);
}

std::vector<uint32_t> SortedOrderPlain(std::span<const TValueView> AKeys, bool ADescending) {
  return ExchangeSortPlain(AKeys.size(), [&](uint32_t ALeft, uint32_t ARight) {
    const int order = CompareValues(AKeys[ALeft], AKeys[ARight]);
    return ADescending ? -order : order;
  });
}

}  // namespace tessarine::detail

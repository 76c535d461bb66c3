#pragma once

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <span>
#include <utility>
#include <vector>

#include <tessarine/core/values/CellValue.h>

/// The order in which SORT and its kin leave their rows. It is that of an exchange sort, also among equal keys, which
/// such a sort does not keep in place.
namespace tessarine::detail {

/// The exchange sort itself, over positions 0 to ACount - 1: ACompare(left, right) is above 0 when left belongs behind
/// right. Quadratic; the definition of the result.
template <class F>
std::vector<uint32_t> ExchangeSortPlain(size_t ACount, F&& ACompare) {
  std::vector<uint32_t> order(ACount);
  std::iota(order.begin(), order.end(), 0u);
  for (size_t i = 0; i < ACount; ++i) {
    for (size_t j = i + 1; j < ACount; ++j) {
      if (ACompare(order[i], order[j]) > 0) std::swap(order[i], order[j]);
    }
  }
  return order;
}

/// Merges runs of growing length. Unlike the library's sorts it asks nothing of the comparison: one that contradicts
/// itself only costs the order.
template <class F>
std::vector<uint32_t> TolerantMergeSort(size_t ACount, F&& ACompare) {
  std::vector<uint32_t> order(ACount);
  std::vector<uint32_t> other(ACount);
  std::iota(order.begin(), order.end(), 0u);
  for (size_t length = 1; length < ACount; length *= 2) {
    for (size_t start = 0; start < ACount; start += 2 * length) {
      const size_t middle = std::min(start + length, ACount);
      const size_t end = std::min(start + 2 * length, ACount);
      size_t left = start;
      size_t right = middle;
      for (size_t out = start; out < end; ++out) {
        const bool takeLeft = left < middle && (right >= end || ACompare(order[left], order[right]) <= 0);
        other[out] = order[takeLeft ? left++ : right++];
      }
    }
    order.swap(other);
  }
  return order;
}

/// The result of the exchange sort for keys of a total order, in O(n log n). ASorted holds all positions ordered by
/// key, equal keys by position; AGroupEnds holds, for each run of equal keys in it, the index behind its last one,
/// ascending. At most 2^31 positions.
std::vector<uint32_t> ExchangeSortTies(std::span<const uint32_t> ASorted, std::span<const uint32_t> AGroupEnds);

/// The order of cell values: as numbers where both are numbers, else by display text without regard to ASCII case.
/// Keys that are all numbers, or of which none is one, are ordered exactly as by the exchange sort. Mixed keys have no
/// total order (10 < "1a" < 9 < 10); up to kMaxMixedKeys of them go through the exchange sort itself, more of them
/// through a stable merge sort.
std::vector<uint32_t> SortedOrder(std::span<const TValueView> AKeys, bool ADescending);
std::vector<uint32_t> SortedOrderPlain(std::span<const TValueView> AKeys, bool ADescending);

constexpr size_t kMaxMixedKeys = 10'000;

}  // namespace tessarine::detail

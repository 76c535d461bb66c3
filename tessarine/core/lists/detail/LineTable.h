#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

namespace tessarine::detail {

/// A value for some of the lines (rows or columns) of a sheet: looked up in constant time, walked in ascending order,
/// and paid for by pages of 256 lines. Line numbers that no sheet has are kept as well, at a higher price.
template <class TValue>
class TLineTable {
 public:
  TLineTable() = default;
  TLineTable(const TLineTable& AOther) : FStray(AOther.FStray), FCount(AOther.FCount) {
    FPages.reserve(AOther.FPages.size());
    for (const auto& page : AOther.FPages) FPages.push_back(page ? std::make_unique<TPage>(*page) : nullptr);
  }
  TLineTable(TLineTable&&) noexcept = default;
  TLineTable& operator=(TLineTable AOther) noexcept {
    FPages.swap(AOther.FPages);
    FStray.swap(AOther.FStray);
    std::swap(FCount, AOther.FCount);
    return *this;
  }

  void Clear() { *this = TLineTable(); }
  size_t Count() const { return FCount; }
  bool IsEmpty() const { return FCount == 0; }

  /// Null when the line has no value.
  const TValue* Find(int32_t ALine) const {
    if (!IsPaged(ALine)) {
      const auto found = FStray.find(ALine);
      return found == FStray.end() ? nullptr : &found->second;
    }
    const auto pageNumber = static_cast<size_t>(ALine) / kPageLines;
    if (pageNumber >= FPages.size() || !FPages[pageNumber]) return nullptr;
    const TPage& page = *FPages[pageNumber];
    const size_t slot = static_cast<size_t>(ALine) % kPageLines;
    return page.Has(slot) ? &page.Values[slot] : nullptr;
  }

  void Set(int32_t ALine, TValue AValue) {
    if (!IsPaged(ALine)) {
      if (FStray.insert_or_assign(ALine, AValue).second) ++FCount;
      return;
    }
    const auto pageNumber = static_cast<size_t>(ALine) / kPageLines;
    if (pageNumber >= FPages.size()) FPages.resize(pageNumber + 1);
    if (!FPages[pageNumber]) FPages[pageNumber] = std::make_unique<TPage>();
    TPage& page = *FPages[pageNumber];
    const size_t slot = static_cast<size_t>(ALine) % kPageLines;
    if (!page.Has(slot)) {
      page.Bits[slot / 64] |= uint64_t{1} << (slot % 64);
      ++page.Count;
      ++FCount;
    }
    page.Values[slot] = AValue;
  }

  /// False when the line had no value.
  bool Erase(int32_t ALine) {
    if (!Find(ALine)) return false;
    --FCount;
    if (!IsPaged(ALine)) return FStray.erase(ALine) > 0;
    auto& page = FPages[static_cast<size_t>(ALine) / kPageLines];
    const size_t slot = static_cast<size_t>(ALine) % kPageLines;
    page->Bits[slot / 64] &= ~(uint64_t{1} << (slot % 64));
    if (--page->Count == 0) page.reset();
    return true;
  }

  /// Calls AVisit(line, value) in ascending order of lines. AVisit must not change the table.
  template <class TVisit>
  void ForEach(TVisit&& AVisit) const {
    auto stray = FStray.begin();
    for (; stray != FStray.end() && stray->first < 0; ++stray) AVisit(stray->first, stray->second);
    for (size_t number = 0; number < FPages.size(); ++number)
      if (FPages[number]) VisitPage(number, *FPages[number], AVisit);
    for (; stray != FStray.end(); ++stray) AVisit(stray->first, stray->second);
  }

 private:
  static constexpr size_t kPageLines = 256;
  static constexpr int32_t kPagedLines = int32_t{1}
                                         << 21;  // twice the rows of a sheet: room for rows that were shifted

  struct TPage {
    std::array<uint64_t, kPageLines / 64> Bits{};
    std::array<TValue, kPageLines> Values{};
    size_t Count = 0;

    bool Has(size_t ASlot) const { return (Bits[ASlot / 64] >> (ASlot % 64) & 1) != 0; }
  };

  static bool IsPaged(int32_t ALine) { return ALine >= 0 && ALine < kPagedLines; }

  template <class TVisit>
  static void VisitPage(size_t ANumber, const TPage& APage, TVisit&& AVisit) {
    for (size_t word = 0; word < APage.Bits.size(); ++word)
      for (uint64_t bits = APage.Bits[word]; bits != 0; bits &= bits - 1) {
        const size_t slot = word * 64 + static_cast<size_t>(std::countr_zero(bits));
        AVisit(static_cast<int32_t>(ANumber * kPageLines + slot), APage.Values[slot]);
      }
  }

  std::vector<std::unique_ptr<TPage>> FPages;  // null where no line of a page has a value
  std::map<int32_t, TValue> FStray;            // lines outside the pages
  size_t FCount = 0;
};

}  // namespace tessarine::detail

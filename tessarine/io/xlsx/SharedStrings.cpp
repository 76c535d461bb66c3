#include <tessarine/io/xlsx/SharedStrings.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/platform/Errors.h>

namespace tessarine {

namespace {

/// A hash of a text's units, mixed by multiplication (the constant is 2^64 divided by the golden ratio).
uint32_t HashOfUnits(std::u16string_view AText) {
  constexpr uint64_t kFactor = 0x9E3779B97F4A7C15u;
  uint64_t hash = AText.size() * kFactor;
  const auto mix = [&hash](const char16_t* AUnits, size_t ACount) {
    uint64_t word = 0;
    std::memcpy(&word, AUnits, ACount * sizeof(char16_t));
    hash = (hash ^ word) * kFactor;
    hash ^= hash >> 32;
  };
  constexpr size_t kUnitsPerWord = 4;
  size_t at = 0;
  for (; at + kUnitsPerWord <= AText.size(); at += kUnitsPerWord) mix(AText.data() + at, kUnitsPerWord);
  if (at < AText.size()) mix(AText.data() + at, AText.size() - at);
  return static_cast<uint32_t>(hash);
}

/// The places of texts in a table, found by their hashes: growing needs no look at the texts.
class TPlacesByHash {
 public:
  /// The place of the text for which AIsText(place) holds, or -1.
  template <class TIsText>
  int32_t Find(uint32_t AHash, TIsText&& AIsText) const {
    if (FSlots.empty()) return -1;
    for (size_t at = AHash & Mask(); FSlots[at].Place >= 0; at = (at + 1) & Mask()) {
      if (FSlots[at].Hash == AHash && AIsText(FSlots[at].Place)) return FSlots[at].Place;
    }
    return -1;
  }

  void Add(uint32_t AHash, int32_t APlace) {
    if (++FCount * 2 > FSlots.size()) Grow();
    Put({AHash, APlace});
  }

 private:
  struct TSlot {
    uint32_t Hash = 0;
    int32_t Place = -1;
  };

  size_t Mask() const { return FSlots.size() - 1; }
  void Put(TSlot ASlot) {
    size_t at = ASlot.Hash & Mask();
    while (FSlots[at].Place >= 0) at = (at + 1) & Mask();
    FSlots[at] = ASlot;
  }
  void Grow() {
    constexpr size_t kLeastSlots = 64;
    const std::vector<TSlot> before =
        std::exchange(FSlots, std::vector<TSlot>(std::max(FSlots.size() * 2, kLeastSlots)));
    for (const TSlot& slot : before) {
      if (slot.Place >= 0) Put(slot);
    }
  }

  std::vector<TSlot> FSlots;  // a power of two, at most half of them taken
  size_t FCount = 0;
};

}  // namespace

struct TSharedStringTable::TIndexes {
  // Only writers look texts up, so what Add and AddRich append is entered with the next search: the plain texts from
  // KnownCount on wait for it.
  TPlacesByHash ByText;
  size_t KnownCount = 0;
  boost::unordered_flat_map<int32_t, std::vector<TRichStringRun>> Runs;
};

TSharedStringTable::TSharedStringTable() : FIndexes(std::make_unique<TIndexes>()) {}
TSharedStringTable::~TSharedStringTable() = default;

void TSharedStringTable::Clear() {
  *FIndexes = TIndexes();
  FTexts.clear();
}

void TSharedStringTable::CheckRoom() const {
  if (FTexts.size() >= static_cast<size_t>(std::numeric_limits<int32_t>::max()))
    throw ELimit("a string table holds no more than 2,147,483,647 texts");
}

int32_t TSharedStringTable::Add(TText AText) {
  CheckRoom();
  FTexts.push_back(std::move(AText));
  return Count() - 1;
}

int32_t TSharedStringTable::FindOrAdd(const TText& AText) {
  TIndexes& indexes = *FIndexes;
  const auto find = [&](uint32_t AHash, std::u16string_view AUnits) {
    return indexes.ByText.Find(AHash, [&](int32_t APlace) { return TextAt(APlace).View() == AUnits; });
  };
  for (size_t& known = indexes.KnownCount; known < FTexts.size(); ++known) {
    const auto index = static_cast<int32_t>(known);
    const uint32_t hash = HashOfUnits(FTexts[known]);
    if (!FindRuns(index) && find(hash, FTexts[known]) < 0) indexes.ByText.Add(hash, index);
  }
  const uint32_t hash = HashOfUnits(AText);
  if (const int32_t found = find(hash, AText); found >= 0) return found;
  const int32_t index = Add(AText);
  indexes.ByText.Add(hash, index);
  indexes.KnownCount = FTexts.size();
  return index;
}

int32_t TSharedStringTable::AddRich(std::vector<TRichStringRun> ARuns, TText AText) {
  const int32_t index = Add(std::move(AText));
  FIndexes->Runs.emplace(index, std::move(ARuns));
  return index;
}

TSharedStringItem TSharedStringTable::GetItem(int32_t AIndex) const {
  if (AIndex < 0 || AIndex >= Count())
    throw EArgument("a string table of " + std::to_string(Count()) + " texts has no text " + std::to_string(AIndex));
  TSharedStringItem item;
  item.Text = TextAt(AIndex);
  if (const auto* runs = FindRuns(AIndex)) {
    item.Runs = *runs;
    item.IsRich = true;
  }
  return item;
}

const std::vector<TRichStringRun>* TSharedStringTable::FindRuns(int32_t AIndex) const {
  if (FIndexes->Runs.empty()) return nullptr;
  const auto found = FIndexes->Runs.find(AIndex);
  return found == FIndexes->Runs.end() ? nullptr : &found->second;
}

}  // namespace tessarine

#include <tessarine/formula/library/detail/RangeIndex.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <cstring>
#include <string>
#include <utility>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/library/detail/CellRuns.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Smaller ranges are scanned: an index would not pay for its upkeep.
constexpr int64_t kLeastIndexedCells = 64;

/// An index that answered this often is built anew at once when its range has changed.
constexpr uint32_t kSearchesThatPay = 8;

/// Ranges that are remembered, with an index or without.
constexpr size_t kMaxEntries = 1024;

uint64_t NumberBits(double ANumber) { return std::bit_cast<uint64_t>(ANumber == 0 ? 0.0 : ANumber); }

/// Texts that differ in ASCII case alone differ in bit 5 of some units alone, so the hash leaves that bit out.
constexpr uint64_t kCaseBlind = ~uint64_t{0x0020002000200020};
constexpr uint64_t kMultiplier = 0x9E3779B97F4A7C15u;  // 2^64 over the golden ratio

uint64_t MixWord(uint64_t AHash, uint64_t AWord) {
  const uint64_t product = (AHash ^ (AWord & kCaseBlind)) * kMultiplier;
  return product ^ (product >> 32);
}

uint64_t HashText(std::u16string_view AText) {
  uint64_t hash = AText.size();
  while (AText.size() >= 4) {
    uint64_t word;
    std::memcpy(&word, AText.data(), sizeof word);
    hash = MixWord(hash, word);
    AText.remove_prefix(4);
  }
  uint64_t rest = 0;
  if (!AText.empty()) std::memcpy(&rest, AText.data(), AText.size() * sizeof(char16_t));
  return MixWord(hash, rest) * kMultiplier;
}

}  // namespace

// TEqualityIndex -----------------------------------------------------------------------------------------------------

bool TEqualityIndex::TTextEqual::operator()(const TTextKey& ALeft, const TTextKey& ARight) const {
  return (*this)(TTextProbe{ALeft.Text.View(), ALeft.Hash}, ARight);
}

bool TEqualityIndex::TTextEqual::operator()(const TTextProbe& ALeft, const TTextKey& ARight) const {
  return ALeft.Hash == ARight.Hash && EqualAsciiNoCase(ALeft.Text, ARight.Text.View());
}

/// Files the cells one by one; then Finish lays the members of each group side by side, in order.
class TEqualityIndex::TBuilder {
 public:
  explicit TBuilder(TEqualityIndex& AIndex) : FIndex(AIndex) {}

  void AddBlanks(int64_t AFirst, int64_t ACount) {
    if (FIndex.FBlankCount == 0) FIndex.FFirstBlank = AFirst;
    FIndex.FBlankCount += ACount;
  }

  void Add(uint32_t APosition, const TValueView& AValue) {
    double number = 0;
    if (!AsNumber(AValue, number)) {
      AddText(FIndex.FTexts, DisplayView(AValue, FBuffer), AValue, APosition);
      return;
    }
    if (!std::isnan(number)) AddTo(FIndex.FNumbers.try_emplace(NumberBits(number)).first->second, APosition);
    // A text that reads as a number is met by keys that are numbers alone. The texts of Booleans, and under some
    // locales those of numbers, do not read as numbers.
    if (AValue.Kind == cvkText || (AValue.Kind == cvkNumber && !FNumbersHaveTexts && std::isfinite(number))) return;
    const std::u16string_view text = DisplayView(AValue, FBuffer);
    if (!TextAsNumber(text, number)) AddText(FIndex.FNumberTexts, text, AValue, APosition);
  }

  void Finish() {
    std::vector<uint32_t>& starts = FIndex.FStarts;
    starts.assign(FGroupCount + 1, 0);
    for (const TMember& member : FMembers) ++starts[member.Group];
    uint32_t sum = 0;
    for (uint32_t& start : starts) sum += std::exchange(start, sum);
    FIndex.FPositions.resize(FMembers.size());
    std::vector<uint32_t> next(starts.begin(), starts.end());
    for (const TMember& member : FMembers) FIndex.FPositions[next[member.Group]++] = member.Position;
  }

 private:
  struct TMember {
    uint32_t Group;
    uint32_t Position;
  };
  void AddTo(TGroup& AGroup, uint32_t APosition) {
    if (AGroup.Number == 0) AGroup = {.First = APosition, .Number = ++FGroupCount};
    FMembers.push_back({AGroup.Number - 1, APosition});
  }

  void AddText(TTextGroups& AGroups, std::u16string_view AText, const TValueView& AValue, uint32_t APosition) {
    const TTextProbe probe{AText, HashText(AText)};
    auto found = AGroups.find(probe);
    if (found == AGroups.end()) {
      const bool stands = AValue.Kind == cvkText || AValue.Kind == cvkFormula;
      TText text = stands ? TText::Share(AValue.Block) : TText(AText);
      found = AGroups.emplace(TTextKey{std::move(text), probe.Hash}, TGroup()).first;
    }
    AddTo(found->second, APosition);
  }

  TEqualityIndex& FIndex;
  std::vector<TMember> FMembers;
  uint32_t FGroupCount = 0;
  const bool FNumbersHaveTexts = CurrentFormatSettings().DecimalSeparator != u'.';
  std::u16string FBuffer;
};

TEqualityIndex::TEqualityIndex(const TFormulaArg& AView) {
  TBuilder builder(*this);
  ForEachRun(AView, [&](int64_t AFirst, int64_t ACount, const TValueView& AValue) {
    if (AValue.IsEmpty()) {
      builder.AddBlanks(AFirst, ACount);
    } else {
      builder.Add(static_cast<uint32_t>(AFirst), AValue);
    }
    return true;
  });
  builder.Finish();
}

TEqualityIndex::TFound TEqualityIndex::Find(const TMatchKey& AKey) const {
  TFound found;
  const auto textIn = [&](const TTextGroups& AGroups) -> const TGroup* {
    if (AGroups.empty()) return nullptr;  // and no text need be made of a number
    const auto text = AGroups.find(TTextProbe{AKey.Text(), HashText(AKey.Text())});
    return text != AGroups.end() ? &text->second : nullptr;
  };
  if (AKey.IsNumber()) {
    const auto number = FNumbers.find(NumberBits(AKey.Number()));
    if (number != FNumbers.end()) found.One = &number->second;
  } else {
    found.One = textIn(FNumberTexts);
  }
  found.Other = textIn(FTexts);
  return found;
}

int64_t TEqualityIndex::FirstMatch(const TMatchKey& AKey) const {
  const TFound found = Find(AKey);
  int64_t first = AKey.EqualsBlank() ? FFirstBlank : -1;
  for (const TGroup* group : {found.One, found.Other}) {
    if (group && (first < 0 || group->First < first)) first = group->First;
  }
  return first;
}

int64_t TEqualityIndex::FirstMatch(double ANumber) const {
  if (!FTexts.empty() || ANumber == 0) return FirstMatch(TMatchKey(TValueView::FromNumber(ANumber)));
  const auto found = FNumbers.find(NumberBits(ANumber));
  return found == FNumbers.end() ? -1 : int64_t{found->second.First};
}

std::optional<std::span<const uint32_t>> TEqualityIndex::Matches(const TMatchKey& AKey) const {
  const TFound found = Find(AKey);
  if (found.One && found.Other) return std::nullopt;
  const TGroup* group = found.One ? found.One : found.Other;
  if (!group) return std::span<const uint32_t>();
  const uint32_t start = FStarts[group->Number - 1];
  return std::span(FPositions).subspan(start, FStarts[group->Number] - start);
}

size_t TEqualityIndex::BytesUsed() const {
  const size_t slots = FNumbers.bucket_count() * sizeof(*FNumbers.begin()) +
                       (FTexts.bucket_count() + FNumberTexts.bucket_count()) * sizeof(*FTexts.begin());
  return sizeof *this + slots + (FStarts.capacity() + FPositions.capacity()) * sizeof(uint32_t);
}

// TOrderIndex --------------------------------------------------------------------------------------------------------

TOrderIndex::TOrderIndex(const TFormulaArg& AView) {
  struct TItem {
    double Value;
    int64_t Last;
    int64_t Count;
  };
  std::vector<TItem> items;
  TItem blanks{0, -1, 0};
  ForEachRun(AView, [&](int64_t AFirst, int64_t ACount, const TValueView& AValue) {
    double number = 0;
    if (AValue.IsEmpty()) {
      blanks.Last = AFirst + ACount - 1;
      blanks.Count += ACount;
    } else if (AsNumber(AValue, number) && !std::isnan(number)) {
      items.push_back({number == 0 ? 0.0 : number, AFirst, 1});
    }
    return true;
  });
  if (blanks.Count > 0) items.push_back(blanks);
  std::sort(items.begin(), items.end(), [](const TItem& ALeft, const TItem& ARight) {
    return ALeft.Value != ARight.Value ? ALeft.Value < ARight.Value : ALeft.Last < ARight.Last;
  });
  int64_t before = 0;
  for (const TItem& item : items) {
    if (FValues.empty() || FValues.back() != item.Value) {
      FValues.push_back(item.Value);
      FLast.push_back(item.Last);
      FBefore.push_back(before);
    }
    FLast.back() = item.Last;
    before += item.Count;
  }
  FBefore.push_back(before);
}

int64_t TOrderIndex::LastNotAbove(double ANumber) const {
  const auto behind = std::upper_bound(FValues.begin(), FValues.end(), ANumber);
  if (behind == FValues.begin() || *(behind - 1) < -DBL_MAX) return -1;
  return FLast[static_cast<size_t>(behind - FValues.begin()) - 1];
}

int64_t TOrderIndex::LastNotBelow(double ANumber) const {
  const auto found = std::lower_bound(FValues.begin(), FValues.end(), ANumber);
  if (found == FValues.end() || *found > DBL_MAX) return -1;
  return FLast[static_cast<size_t>(found - FValues.begin())];
}

int64_t TOrderIndex::CountOf(const TCriterion& ACriterion) const {
  const double number = ACriterion.Operand().Number();
  const auto below = [&] {
    return FBefore[static_cast<size_t>(std::lower_bound(FValues.begin(), FValues.end(), number) - FValues.begin())];
  };
  const auto notAbove = [&] {
    return FBefore[static_cast<size_t>(std::upper_bound(FValues.begin(), FValues.end(), number) - FValues.begin())];
  };
  switch (ACriterion.Operator()) {
    case coLess: return below();
    case coLessOrEqual: return notAbove();
    case coGreater: return FBefore.back() - notAbove();
    case coGreaterOrEqual: return FBefore.back() - below();
    case coEqual:
    case coDiffers: break;
  }
  return 0;
}

size_t TOrderIndex::BytesUsed() const {
  return sizeof *this + FValues.capacity() * sizeof(double) + (FLast.capacity() + FBefore.capacity()) * sizeof(int64_t);
}

// TRangeIndexCache ---------------------------------------------------------------------------------------------------

size_t TRangeIndexCache::TRangeHash::operator()(const TRange& ARange) const {
  uint64_t hash = reinterpret_cast<uintptr_t>(ARange.Sheet);
  for (const int32_t part : {ARange.Col, ARange.Row, ARange.Rows, ARange.Cols}) {
    hash = (std::rotl(hash, 19) ^ static_cast<uint32_t>(part)) * kMultiplier;
  }
  return static_cast<size_t>(hash ^ (hash >> 32));
}

size_t TRangeIndexCache::TEntry::BytesUsed() const {
  return (Equality.Index ? Equality.Index->BytesUsed() : 0) + (Order.Index ? Order.Index->BytesUsed() : 0);
}

const TEqualityIndex* TRangeIndexCache::Equality(const TFormulaArg& AView) {
  TEntry* entry = Touch(AView);
  if (!entry) return nullptr;
  const TEqualityIndex* index = Use(entry->Equality, AView);
  if (FBytes > FMaxBytes) MakeRoom(*entry);
  return index;
}

const TOrderIndex* TRangeIndexCache::Order(const TFormulaArg& AView) {
  TEntry* entry = Touch(AView);
  if (!entry) return nullptr;
  const TOrderIndex* index = Use(entry->Order, AView);
  if (FBytes > FMaxBytes) MakeRoom(*entry);
  return index;
}

template <class TIndex>
const TIndex* TRangeIndexCache::Use(TSlot<TIndex>& ASlot, const TFormulaArg& AView) {
  ++ASlot.Searches;
  if (!ASlot.Index && ASlot.Searches >= 2) {
    ASlot.Index = std::make_unique<TIndex>(AView);
    FBytes += ASlot.Index->BytesUsed();
    ++FBuilds;
  }
  return ASlot.Index.get();
}

TRangeIndexCache::TEntry* TRangeIndexCache::Touch(const TFormulaArg& AView) {
  const int64_t count = AView.CellCount();
  if (!AView.IsView() || count < kLeastIndexedCells || count > TEqualityIndex::kMaxCells) return nullptr;
  const TRange range{AView.ViewSheet(), AView.OriginCol, AView.OriginRow, AView.RowCount, AView.ColCount};
  if (!FLastEntry || FLastRange != range) {
    FLastEntry = &FEntries[range];
    FLastRange = range;
    if (FEntries.size() > kMaxEntries) MakeRoom(*FLastEntry);
  }
  FLastEntry->LastUse = ++FUses;
  Refresh(*FLastEntry, AView);
  return FLastEntry;
}

void TRangeIndexCache::Refresh(TEntry& AEntry, const TFormulaArg& AView) {
  const TWorksheet& sheet = *AView.ViewSheet();
  const TCellStore& store = sheet.Store();
  TState state{.Store = &store,
               .Columns = AEntry.State.Columns,
               .Spills = sheet.Spills().Version(),
               .Locale = FormatSettingsVersion(),
               .Sheets = sheet.Owner() ? sheet.Owner()->SheetListVersion() : 0};
  if (AEntry.StoreVersion != store.Version() || AEntry.State.Store != &store) {
    state.Columns = 0;
    for (int32_t i = 0; i < AView.ColCount; ++i) state.Columns += store.ColumnVersion(AView.OriginCol + i);
    AEntry.StoreVersion = store.Version();
  }
  if (state == AEntry.State) return;
  AEntry.State = state;
  FBytes -= AEntry.BytesUsed();
  const auto renew = [](auto& ASlot) {
    const bool paid = ASlot.Index && ASlot.Searches >= kSearchesThatPay;
    ASlot.Index.reset();
    ASlot.Searches = paid ? 1 : 0;
  };
  renew(AEntry.Equality);
  renew(AEntry.Order);
}

void TRangeIndexCache::MakeRoom(const TEntry& AKeep) {
  std::erase_if(FEntries, [&](const auto& AItem) { return &AItem.second != &AKeep && !AItem.second.HasIndex(); });
  while (FEntries.size() > 1 && (FBytes > FMaxBytes || FEntries.size() > kMaxEntries)) {
    auto oldest = FEntries.end();
    for (auto it = FEntries.begin(); it != FEntries.end(); ++it) {
      if (&it->second != &AKeep && (oldest == FEntries.end() || it->second.LastUse < oldest->second.LastUse))
        oldest = it;
    }
    FBytes -= oldest->second.BytesUsed();
    FEntries.erase(oldest);
  }
}

void TRangeIndexCache::Clear() {
  FEntries.clear();
  FLastEntry = nullptr;
  FBytes = 0;
}

}  // namespace tessarine::detail

#include <tessarine/core/reference/detail/FormulaTemplate.h>

#include <array>
#include <cstring>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

namespace {

// A slot stands in the key as one marker unit (kSlot plus its two "$" bits) and four units of numbers.
constexpr char16_t kSlot = 0xE000;
constexpr char16_t kSlotMask = 0xFFFC;
constexpr char16_t kColAbsolute = 1;
constexpr char16_t kRowAbsolute = 2;
constexpr char16_t kVerbatim = 0xE00F;  // first unit of a key without slots whose text holds marker units itself
constexpr size_t kSlotUnits = 5;

enum class TUnitClass : uint8_t { ucOther, ucWord, ucString, ucQuote, ucBracket };

constexpr std::array<TUnitClass, 128> kClasses = [] {
  std::array<TUnitClass, 128> classes{};
  for (char16_t unit = 0; unit < 128; ++unit) {
    const bool word = (unit >= u'0' && unit <= u'9') || (unit >= u'A' && unit <= u'Z') ||
                      (unit >= u'a' && unit <= u'z') || unit == u'_' || unit == u'$';
    classes[unit] = word ? TUnitClass::ucWord : TUnitClass::ucOther;
  }
  classes[u'"'] = TUnitClass::ucString;
  classes[u'\''] = TUnitClass::ucQuote;
  classes[u'['] = TUnitClass::ucBracket;
  return classes;
}();

TUnitClass ClassOf(char16_t AUnit) { return AUnit < 128 ? kClasses[AUnit] : TUnitClass::ucOther; }

struct TWordReference {
  int32_t Col = 0;
  int32_t Row = 0;
  bool ColAbsolute = false;
  bool RowAbsolute = false;
};

/// Reads a reference in canonical spelling from the front of a text; answers its end, or null.
const char16_t* ReadReference(const char16_t* AAt, const char16_t* AEnd, TWordReference& AReference) {
  if (AAt != AEnd && *AAt == u'$') {
    AReference.ColAbsolute = true;
    ++AAt;
  }
  int32_t col = 0;
  const char16_t* const letters = AAt;
  while (AAt != AEnd && *AAt >= u'A' && *AAt <= u'Z' && AAt - letters < 4) col = col * 26 + (*AAt++ - u'A' + 1);
  if (AAt == letters || AAt - letters > 3 || col > kMaxCol) return nullptr;
  if (AAt != AEnd && *AAt == u'$') {
    AReference.RowAbsolute = true;
    ++AAt;
  }
  int32_t row = 0;
  const char16_t* const digits = AAt;
  if (AAt == AEnd || *AAt == u'0') return nullptr;
  while (AAt != AEnd && *AAt >= u'0' && *AAt <= u'9' && AAt - digits < 8) row = row * 10 + (*AAt++ - u'0');
  if (AAt == digits || row > kMaxRow) return nullptr;
  AReference.Col = col;
  AReference.Row = row;
  return AAt;
}

/// Whether what stands around a word lets it be a cell reference and nothing else.
bool StandsAlone(std::u16string_view AText, size_t AStart, size_t AEnd) {
  if (AStart > 0 && AText[AStart - 1] == u'.') return false;
  if (AEnd < AText.size() && (AText[AEnd] == u'.' || AText[AEnd] == u'!')) return false;
  size_t next = AEnd;
  while (next < AText.size() && AText[next] == u' ') ++next;
  return next >= AText.size() || AText[next] != u'(';
}

/// Writes a slot and answers the end of what was written.
char16_t* WriteSlot(const TWordReference& AReference, int32_t ACol, int32_t ARow, char16_t* AOut) {
  const auto col = static_cast<uint32_t>(AReference.ColAbsolute ? AReference.Col : AReference.Col - ACol);
  const auto row = static_cast<uint32_t>(AReference.RowAbsolute ? AReference.Row : AReference.Row - ARow);
  AOut[0] = static_cast<char16_t>(kSlot | (AReference.ColAbsolute ? kColAbsolute : 0) |
                                  (AReference.RowAbsolute ? kRowAbsolute : 0));
  AOut[1] = static_cast<char16_t>(col & 0xFFFF);
  AOut[2] = static_cast<char16_t>(col >> 16);
  AOut[3] = static_cast<char16_t>(row & 0xFFFF);
  AOut[4] = static_cast<char16_t>(row >> 16);
  return AOut + kSlotUnits;
}

int32_t ReadDistance(const char16_t* AAt) {
  return static_cast<int32_t>(static_cast<uint32_t>(AAt[0]) | (static_cast<uint32_t>(AAt[1]) << 16));
}

/// The slot whose marker stands at AAt, without its place in a text.
TReferenceSlot ReadSlot(const char16_t* AAt) {
  TReferenceSlot slot;
  slot.ColAbsolute = (AAt[0] & kColAbsolute) != 0;
  slot.RowAbsolute = (AAt[0] & kRowAbsolute) != 0;
  slot.Col = ReadDistance(AAt + 1);
  slot.Row = ReadDistance(AAt + 3);
  return slot;
}

/// The end of a run that starts with a delimiter: behind the next one, or the end of the text.
size_t EndOfQuoted(std::u16string_view AText, size_t AStart) {
  const size_t end = AText.find(AText[AStart], AStart + 1);
  return end == AText.npos ? AText.size() : end + 1;
}

/// The end of a structured reference's bracket part.
size_t EndOfBracket(std::u16string_view AText, size_t AStart) {
  size_t at = AStart + 1;
  while (at < AText.size() && AText[at] == u' ') ++at;
  if (at < AText.size() && AText[at] == u'[') ++at;
  while (at < AText.size() && AText[at] == u' ') ++at;
  if (at < AText.size() && AText[at] == u'\'') return EndOfQuoted(AText, at);
  const size_t end = AText.find_first_of(u",[]", at);
  return end == AText.npos ? AText.size() : end;
}

/// Whether a text holds units that mean something else in a key.
bool HoldsMarkers(std::u16string_view AText) {
  bool found = false;
  for (const char16_t unit : AText) found |= (unit & kSlotMask) == kSlot;
  return found || (!AText.empty() && AText.front() == kVerbatim);
}

char16_t* CopyUnits(std::u16string_view AText, char16_t* AOut) {
  if (!AText.empty()) std::memcpy(AOut, AText.data(), AText.size() * sizeof(char16_t));
  return AOut + AText.size();
}

/// The most units that a key takes: the shortest reference has two and becomes a slot.
size_t KeyLimit(std::u16string_view AText) { return AText.size() / 2 * kSlotUnits + 2; }

struct TBuiltKey {
  size_t Length;
  bool HasSlots;
};

/// Writes the relative form of a formula text into AKey, which has room for KeyLimit(AText) units.
TBuiltKey BuildKey(std::u16string_view AText, int32_t ACol, int32_t ARow, char16_t* AKey) {
  char16_t* out = AKey;
  if (HoldsMarkers(AText)) {
    *out++ = kVerbatim;
    return {static_cast<size_t>(CopyUnits(AText, out) - AKey), false};
  }
  bool hasSlots = false;
  size_t copied = 0;
  for (size_t at = 0; at < AText.size();) {
    switch (ClassOf(AText[at])) {
      case TUnitClass::ucOther: ++at; break;
      case TUnitClass::ucString:
      case TUnitClass::ucQuote: at = EndOfQuoted(AText, at); break;
      case TUnitClass::ucBracket: at = EndOfBracket(AText, at); break;
      case TUnitClass::ucWord: {
        size_t end = at + 1;
        while (end < AText.size() && ClassOf(AText[end]) == TUnitClass::ucWord) ++end;
        TWordReference reference;
        const char16_t* const wordEnd = AText.data() + end;
        if (AText[at] <= u'Z' && ReadReference(AText.data() + at, wordEnd, reference) == wordEnd &&
            StandsAlone(AText, at, end)) {
          out = WriteSlot(reference, ACol, ARow, CopyUnits(AText.substr(copied, at - copied), out));
          copied = end;
          hasSlots = true;
        }
        at = end;
        break;
      }
    }
  }
  out = CopyUnits(AText.substr(copied), out);
  return {static_cast<size_t>(out - AKey), hasSlots};
}

/// A multiply-and-fold hash over the key's bytes.
uint64_t HashKey(std::u16string_view AKey) {
  uint64_t hash = 0x9E3779B97F4A7C15u ^ AKey.size();
  const auto mix = [&hash](uint64_t ABits) {
    hash = (hash ^ ABits) * 0xD6E8FEB86659FD93u;
    hash ^= hash >> 32;
  };
  size_t at = 0;
  for (; at + 4 <= AKey.size(); at += 4) {
    uint64_t bits;
    std::memcpy(&bits, AKey.data() + at, sizeof bits);
    mix(bits);
  }
  uint64_t rest = 0;
  std::memcpy(&rest, AKey.data() + at, (AKey.size() - at) * sizeof(char16_t));
  mix(rest);
  return hash;
}

/// Calls AVerbatim(view) and ASlot(TReferenceSlot with distances) in the order of the text.
template <class TVerbatim, class TSlotFn>
void WalkKey(std::u16string_view AKey, TVerbatim&& AVerbatim, TSlotFn&& ASlot) {
  if (!AKey.empty() && AKey.front() == kVerbatim) {
    AVerbatim(AKey.substr(1));
    return;
  }
  size_t from = 0;
  for (size_t at = 0; at < AKey.size();) {
    if ((AKey[at] & kSlotMask) != kSlot) {
      ++at;
      continue;
    }
    if (at > from) AVerbatim(AKey.substr(from, at - from));
    ASlot(ReadSlot(AKey.data() + at));
    at += kSlotUnits;
    from = at;
  }
  if (from < AKey.size()) AVerbatim(AKey.substr(from));
}

void AppendSlot(const TReferenceSlot& ASlot, int32_t ACol, int32_t ARow, std::u16string& AText) {
  if (ASlot.ColAbsolute) AText += u'$';
  AppendColLetters(ASlot.ColAbsolute ? ASlot.Col : ASlot.Col + ACol, AText);
  if (ASlot.RowAbsolute) AText += u'$';
  char16_t digits[12];
  size_t at = std::size(digits);
  auto row = static_cast<uint32_t>(ASlot.RowAbsolute ? ASlot.Row : ASlot.Row + ARow);
  do {
    digits[--at] = static_cast<char16_t>(u'0' + row % 10);
    row /= 10;
  } while (row != 0);
  AText.append(digits + at, std::size(digits) - at);
}

}  // namespace

void TFormulaTemplate::AppendTextAt(int32_t ACol, int32_t ARow, std::u16string& AText) const {
  WalkKey(
      FKey, [&](std::u16string_view APiece) { AText += APiece; },
      [&](const TReferenceSlot& ASlot) { AppendSlot(ASlot, ACol, ARow, AText); });
}

TText TFormulaTemplate::TextAt(int32_t ACol, int32_t ARow) const {
  std::u16string text;
  AppendTextAt(ACol, ARow, text);
  return TText(text);
}

std::vector<TReferenceSlot> TFormulaTemplate::SlotsAt(int32_t ACol, int32_t ARow) const {
  std::vector<TReferenceSlot> slots;
  std::u16string text;
  WalkKey(
      FKey, [&](std::u16string_view APiece) { text += APiece; },
      [&](TReferenceSlot ASlot) {
        ASlot.Offset = text.size();
        AppendSlot(ASlot, ACol, ARow, text);
        ASlot.Length = text.size() - ASlot.Offset;
        slots.push_back(ASlot);
      });
  return slots;
}

/// Whether Intern would answer this template for a text standing in the cell (ACol, ARow), without building its key.
/// A text that follows the key unit for unit, with references inside the sheet in place of the slots, has this key:
/// the scan for references looks at nothing but the units themselves and those around them.
bool TFormulaTemplate::TryMatch(std::u16string_view AText, int32_t ACol, int32_t ARow) const {
  if (!FKey.empty() && FKey.front() == kVerbatim) return false;
  const char16_t* key = FKey.data();
  const char16_t* const keyEnd = key + FKey.size();
  const char16_t* at = AText.data();
  const char16_t* const end = at + AText.size();
  while (key != keyEnd) {
    if ((*key & kSlotMask) != kSlot) {
      if (at == end || *at != *key) return false;
      ++at;
      ++key;
      continue;
    }
    const TReferenceSlot slot = ReadSlot(key);
    TWordReference reference;
    at = ReadReference(at, end, reference);
    if (!at || reference.ColAbsolute != slot.ColAbsolute || reference.RowAbsolute != slot.RowAbsolute ||
        reference.Col != (slot.ColAbsolute ? slot.Col : slot.Col + ACol) ||
        reference.Row != (slot.RowAbsolute ? slot.Row : slot.Row + ARow)) {
      return false;
    }
    key += kSlotUnits;
  }
  return at == end;
}

TFormulaPool::~TFormulaPool() {
  for (TFormulaTemplate* item : FTemplates) delete item;
}

TFormulaTemplate* TFormulaPool::Intern(std::u16string_view AText, int32_t ACol, int32_t ARow) {
  TFormulaTemplate*& recent = FRecent[static_cast<uint32_t>(ACol) % kRecentCount];
  if (!recent || !recent->TryMatch(AText, ACol, ARow)) return recent = InternPlain(AText, ACol, ARow);
  ++recent->FRefCount;
  return recent;
}

TFormulaTemplate* TFormulaPool::InternPlain(std::u16string_view AText, int32_t ACol, int32_t ARow) {
  char16_t shortKey[256];
  std::vector<char16_t> longKey;
  char16_t* key = shortKey;
  if (KeyLimit(AText) > std::size(shortKey)) {
    longKey.resize(KeyLimit(AText));
    key = longKey.data();
  }
  const TBuiltKey built = BuildKey(AText, ACol, ARow, key);
  const std::u16string_view view(key, built.Length);
  const TLookup lookup{view, HashKey(view)};
  if (const auto found = FTemplates.find(lookup); found != FTemplates.end()) {
    ++(*found)->FRefCount;
    return *found;
  }
  auto created = std::make_unique<TFormulaTemplate>();
  created->FKey = view;
  created->FHash = lookup.Hash;
  created->FHasSlots = built.HasSlots;
  created->FRefCount = 1;
  FTemplates.insert(created.get());
  return created.release();
}

void TFormulaPool::Release(TFormulaTemplate* ATemplate) {
  if (--ATemplate->FRefCount != 0) return;
  FTemplates.erase(ATemplate);
  for (TFormulaTemplate*& recent : FRecent) {
    if (recent == ATemplate) recent = nullptr;
  }
  delete ATemplate;
}

}  // namespace tessarine::detail

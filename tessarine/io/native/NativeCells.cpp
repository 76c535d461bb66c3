#include <tessarine/io/native/detail/NativeCells.h>

#include <cstring>

namespace tessarine::detail {

namespace {

/// Goes past AText if it stands at AAt.
template <const std::string_view& AText>
bool Pass(TJsonPlace& AAt) {
  if (std::memcmp(AAt, AText.data(), AText.size()) != 0) return false;
  AAt += AText.size();
  return true;
}

/// Goes to the closing quote of the text whose first character is at AAt.
template <bool AIsSound>
bool PassText(TJsonPlace& AAt, TNativeValueSpelling& AValue) {
  const TJsonPlace start = AAt;
  unsigned char seen = 0;
  bool hasEscapes = false;
  for (;; ++AAt) {
    const auto byte = static_cast<unsigned char>(*AAt);
    if (byte == '"') break;
    if (byte == '\\') {
      if (!AIsSound) return false;
      hasEscapes = true;
      ++AAt;
    } else if (!AIsSound && byte < 0x20) {
      return false;
    }
    seen |= byte;
  }
  AValue.Text = {start, static_cast<size_t>(AAt - start)};
  AValue.IsPlain = !hasEscapes && seen < 0x80;
  return true;
}

}  // namespace

template <bool AIsSound>
TJsonPlace TryReadWrittenValue(TJsonPlace AAt, TNativeValueSpelling& AValue) {
  if (!Pass<kNativeKind>(AAt)) return nullptr;
  const auto kind = static_cast<uint8_t>(*AAt++ - '0');
  if (kind > static_cast<uint8_t>(cvkFormula)) return nullptr;
  AValue.Kind = static_cast<TCellValueKind>(kind);
  switch (AValue.Kind) {
    case cvkNumber: {
      if (!Pass<kNativeNoText>(AAt)) return nullptr;
      const TJsonPlace end = JsonNumberEnd(AAt);
      if (!end) return nullptr;
      AValue.Number = {AAt, static_cast<size_t>(end - AAt)};
      AAt = end;
      return Pass<kNativeTail>(AAt) ? AAt : nullptr;
    }
    case cvkText:
      if (!Pass<kNativeText>(AAt) || !PassText<AIsSound>(AAt, AValue)) return nullptr;
      return Pass<kNativeTextTail>(AAt) ? AAt : nullptr;
    case cvkFormula:
      if (!Pass<kNativeFormulaHead>(AAt) || !PassText<AIsSound>(AAt, AValue)) return nullptr;
      return *++AAt == '}' ? AAt + 1 : nullptr;
    case cvkEmpty:
    case cvkBoolean:
    case cvkError: break;
  }
  if (!Pass<kNativeNoText>(AAt) || *AAt++ != '0' || !Pass<kNativeBoolean>(AAt)) return nullptr;
  AValue.Boolean = *AAt == 't';
  if (std::memcmp(AAt, AValue.Boolean ? "true" : "false", AValue.Boolean ? 4 : 5) != 0) return nullptr;
  AAt += AValue.Boolean ? 4 : 5;
  if (!Pass<kNativeError>(AAt)) return nullptr;
  const auto error = static_cast<uint8_t>(*AAt++ - '0');
  if (error > static_cast<uint8_t>(ceSpill)) return nullptr;
  AValue.Error = error;
  if (!Pass<kNativeFormula>(AAt)) return nullptr;
  return AAt[0] == '"' && AAt[1] == '}' ? AAt + 2 : nullptr;
}

template TJsonPlace TryReadWrittenValue<false>(TJsonPlace, TNativeValueSpelling&);
template TJsonPlace TryReadWrittenValue<true>(TJsonPlace, TNativeValueSpelling&);

TJsonPlace SkipWrittenValue(TJsonPlace AObject) {
  TNativeValueSpelling value;
  return TryReadWrittenValue<false>(AObject, value);
}

}  // namespace tessarine::detail

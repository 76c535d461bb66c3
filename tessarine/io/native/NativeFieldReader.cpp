#include <tessarine/io/native/detail/NativeFieldReader.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

#include <tessarine/platform/Base64.h>
#include <tessarine/platform/Errors.h>

namespace tessarine::detail {

namespace {

/// What the records of a document may take in memory: a document that this system writes needs a fraction of it.
constexpr size_t kFreeRecordBytes = size_t{64} << 20;
constexpr size_t kRecordBytesPerByte = 16;

std::string_view NameOfKind(TJsonKind AKind) {
  switch (AKind) {
    case jkObject: return "an object";
    case jkArray: return "an array";
    case jkText: return "a text";
    case jkNumber: return "a number";
    case jkTrue:
    case jkFalse: return "a truth value";
    case jkNull: break;
  }
  return "null";
}

/// Reads a whole number of up to nine digits that ends its element or member at once, as nearly all do.
bool TryShortInteger(TJsonPlace AAt, int32_t& AResult) {
  constexpr int kMostDigits = 9;
  const bool isNegative = *AAt == '-';
  if (isNegative) ++AAt;
  int32_t value = 0;
  int digits = 0;
  for (; *AAt >= '0' && *AAt <= '9' && digits < kMostDigits; ++AAt, ++digits) value = value * 10 + (*AAt - '0');
  if (digits == 0 || (*AAt != ',' && *AAt != '}' && *AAt != ']')) return false;
  AResult = isNegative ? -value : value;
  return true;
}

bool IsPlainAscii(std::string_view ARaw) {
  return std::all_of(ARaw.begin(), ARaw.end(),
                     [](char AByte) { return static_cast<unsigned char>(AByte) < 0x80 && AByte != '\\'; });
}

}  // namespace

// ---- the document

TNativeDocument::TNativeDocument(const TJsonText& AText)
    : FText(AText), FAllowance(kFreeRecordBytes + kRecordBytesPerByte * AText.Text().size()) {}

void TNativeDocument::Take(size_t ABytes, TJsonPlace AWhere) {
  if (ABytes > FAllowance)
    throw ELimit(FText.Describe(AWhere) +
                 ": the document's records need more memory than a text of its size may ask for");
  FAllowance -= ABytes;
}

void TNativeDocument::FailType(TJsonPlace AValue, std::string_view AWanted) const {
  throw EFileFormat(FText.Describe(AValue) + ": expected " + std::string(AWanted) + ", found " +
                    std::string(NameOfKind(TJsonText::KindOf(AValue))));
}

bool TNativeDocument::ReadBoolean(TJsonPlace AValue) const {
  const TJsonKind kind = TJsonText::KindOf(AValue);
  if (kind != jkTrue && kind != jkFalse) FailType(AValue, "true or false");
  return kind == jkTrue;
}

double TNativeDocument::ReadNumber(TJsonPlace AValue) const {
  if (TJsonText::KindOf(AValue) != jkNumber) FailType(AValue, "a number");
  return TJsonText::Number(AValue);
}

int64_t TNativeDocument::ReadInteger(TJsonPlace AValue, int64_t ALeast, int64_t AMost) const {
  const double number = ReadNumber(AValue);
  if (number != std::trunc(number) || number < static_cast<double>(ALeast) || number > static_cast<double>(AMost)) {
    throw EFileFormat(FText.Describe(AValue) + ": expected a whole number from " + std::to_string(ALeast) + " to " +
                      std::to_string(AMost) + ", found " + FText.SpellingOf(AValue).substr(0, 40));
  }
  return static_cast<int64_t>(number);
}

int32_t TNativeDocument::ReadInt32(TJsonPlace AValue) const {
  int32_t number = 0;
  if (TryShortInteger(AValue, number)) return number;
  using TLimits = std::numeric_limits<int32_t>;
  return static_cast<int32_t>(ReadInteger(AValue, TLimits::min(), TLimits::max()));
}

TText TNativeDocument::ReadText(TJsonPlace AValue) const {
  if (TJsonText::KindOf(AValue) != jkText) FailType(AValue, "a text");
  return DecodeText(TJsonText::RawText(AValue));
}

std::optional<uint32_t> TNativeDocument::ReadColor(TJsonPlace AValue) const {
  const std::string spelling = FText.SpellingOf(AValue);
  uint32_t color = 0;
  const auto result = std::from_chars(spelling.data(), spelling.data() + spelling.size(), color);
  if (spelling.empty() || result.ec != std::errc() || result.ptr != spelling.data() + spelling.size()) return {};
  return color;
}

TText TNativeDocument::DecodeText(std::string_view ARaw) {
  if (IsPlainAscii(ARaw)) {
    return TText::Build(ARaw.size(), [&](char16_t* AUnits) {
      for (const char byte : ARaw) *AUnits++ = static_cast<char16_t>(byte);
    });
  }
  std::u16string text;
  TJsonText::AppendDecoded(ARaw, text);
  return text;
}

// ---- objects

TNativeObject::TNativeObject(const TNativeDocument& ADocument, TJsonPlace AObject) : FPlace(Only(AObject, jkObject)) {
  if (!FPlace) return;
  size_t escaped = 0;
  ADocument.Json().ForEachMember(FPlace, [&](std::string_view AName, TJsonPlace AValue) -> TJsonPlace {
    FMembers.push_back({AName, AValue});
    escaped += AName.find('\\') == AName.npos ? 0 : 1;
    return nullptr;
  });
  FDecodedNames.reserve(escaped);
  for (TMember& member : FMembers) {
    if (escaped == 0 || member.Name.find('\\') == member.Name.npos) continue;
    member.Name = FDecodedNames.emplace_back(TNativeDocument::DecodeText(member.Name).ToUtf8());
  }
  if (FMembers.size() <= kFew) return;
  for (size_t index = 0; index < FMembers.size(); ++index) FByName.try_emplace(FMembers[index].Name, index);
}

TJsonPlace TNativeObject::Find(std::string_view AName) {
  const TMember* member = nullptr;
  if (FByName.empty()) {
    const auto found =
        std::find_if(FMembers.begin(), FMembers.end(), [&](const TMember& AMember) { return AMember.Name == AName; });
    if (found != FMembers.end()) member = &*found;
  } else if (const auto found = FByName.find(AName); found != FByName.end()) {
    member = &FMembers[found->second];
  }
  return member && TJsonText::KindOf(member->Value) != jkNull ? member->Value : nullptr;
}

// ---- fields

void TNativeFieldReader::Color(std::string_view AName, uint32_t& AValue) {
  if (const TJsonPlace place = FObject.Find(AName)) AValue = FDocument.ReadColor(place).value_or(kOpaqueBlack);
}

void TNativeFieldReader::Bytes(std::string_view AName, std::vector<std::byte>& AValue) {
  const TJsonPlace place = FObject.Find(AName);
  if (place) AValue = DecodeBase64(FDocument.ReadText(place).ToUtf8());
}

void TNativeFieldReader::Read(TJsonPlace APlace, float& AValue) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  AValue = static_cast<float>(std::clamp(FDocument.ReadNumber(APlace), -kLargest, kLargest));
}

void TNativeFieldReader::Read(TJsonPlace APlace, uint32_t& AValue) {
  AValue = static_cast<uint32_t>(FDocument.ReadInteger(APlace, 0, std::numeric_limits<uint32_t>::max()));
}

/// A whole number that is no byte counts as missing.
void TNativeFieldReader::Read(TJsonPlace APlace, uint8_t& AValue) {
  const int32_t number = FDocument.ReadInt32(APlace);
  if (number >= 0 && number <= std::numeric_limits<uint8_t>::max()) AValue = static_cast<uint8_t>(number);
}

void TNativeFieldReader::Read(TJsonPlace APlace, int64_t& AValue) {
  constexpr double kTwoTo63 = 9223372036854775808.0;
  const double number = FDocument.ReadNumber(APlace);
  if (number >= kTwoTo63) {
    AValue = std::numeric_limits<int64_t>::max();
  } else {
    AValue = number < -kTwoTo63 ? std::numeric_limits<int64_t>::min() : static_cast<int64_t>(number);
  }
}

void TNativeFieldReader::Read(TJsonPlace APlace, TCellFormat& AValue) {
  if (TJsonText::KindOf(APlace) != jkObject) return;
  TNativeObject object(FDocument, APlace);
  TNativeFieldReader reader(FDocument, object);
  if (object.FindObject("font")) {
    VisitNativeFields(reader, AValue);
  } else {
    VisitFlatFormatFields(reader, AValue);
  }
}

}  // namespace tessarine::detail

#include <tessarine/platform/Xml.h>

#include <algorithm>
#include <cstring>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/detail/MessageText.h>
#include <tessarine/platform/detail/XmlScan.h>

namespace tessarine {
namespace {

/// Characters are checked this far ahead, so that the scanner finds the bytes in the cache.
constexpr std::ptrdiff_t kCheckAhead = 64 * 1024;

/// Up to here each attribute is compared with all before it, beyond they are sorted.
constexpr size_t kFewAttributes = 16;

constexpr std::string_view kUtf8Mark = "\xef\xbb\xbf";
constexpr std::string_view kUtf16LittleMark = "\xff\xfe";
constexpr std::string_view kUtf16BigMark = "\xfe\xff";

std::string QuotedXmlName(std::string_view AName) {
  std::string text = "\"";
  text += ForMessage(AName, 60);
  text += '"';
  return text;
}

char FoldedXmlChar(char AChar) { return AChar >= 'A' && AChar <= 'Z' ? static_cast<char>(AChar + 32) : AChar; }

/// Names are short: a loop that mostly ends at once costs less than the call of a library function.
bool SameBytes(const char* ALeft, const char* ARight, size_t ASize) {
  for (size_t i = 0; i < ASize; ++i) {
    if (ALeft[i] != ARight[i]) return false;
  }
  return true;
}

bool SameXmlName(std::string_view ALeft, std::string_view ARight) {
  return ALeft.size() == ARight.size() && SameBytes(ALeft.data(), ARight.data(), ALeft.size());
}

std::string_view XmlView(const char* AFrom, const char* AEnd) { return {AFrom, static_cast<size_t>(AEnd - AFrom)}; }

bool IsXmlCodePoint(uint32_t APoint) {
  if (APoint < 0x20) return APoint == '\t' || APoint == '\n' || APoint == '\r';
  return APoint < 0xd800 || (APoint >= 0xe000 && APoint <= 0xfffd) || (APoint >= 0x10000 && APoint <= 0x10ffff);
}

bool IsPublicIdChar(char AChar) {
  const char folded = FoldedXmlChar(AChar);
  return (folded >= 'a' && folded <= 'z') || (AChar >= '0' && AChar <= '9') ||
         std::string_view(" \r\n-'()+,./:=?;!*#@$_%").find(AChar) != std::string_view::npos;
}

/// APlace is that in the declaration: 1 version (any is taken), 2 encoding, 3 standalone.
bool IsDeclarationValue(std::string_view AValue, size_t APlace) {
  if (APlace == 3) return AValue == "yes" || AValue == "no";
  if (APlace == 2 && (AValue.empty() || FoldedXmlChar(AValue[0]) < 'a' || FoldedXmlChar(AValue[0]) > 'z')) return false;
  return std::all_of(AValue.begin(), AValue.end(), [](char AChar) {
    return static_cast<unsigned char>(AChar) < 0x80 && AChar != ':' && IsXml(AChar, xcName);
  });
}

void AppendXmlCodePoint(uint32_t APoint, std::string& AOut) {
  const auto add = [&AOut](uint32_t AByte) { AOut += static_cast<char>(AByte); };
  if (APoint < 0x80) return add(APoint);
  if (APoint < 0x800) {
    add(0xc0 | (APoint >> 6));
  } else {
    if (APoint < 0x10000) {
      add(0xe0 | (APoint >> 12));
    } else {
      add(0xf0 | (APoint >> 18));
      add(0x80 | ((APoint >> 12) & 0x3f));
    }
    add(0x80 | ((APoint >> 6) & 0x3f));
  }
  add(0x80 | (APoint & 0x3f));
}

}  // namespace

TXmlReader::TXmlReader(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits)
    : FPartName(ForMessage(APartName)), FLimits(ALimits.Clamped()) {
  Decode(ABytes);
}

void TXmlReader::Decode(std::string_view ABytes) {
  std::string_view text = ABytes;
  const bool isLittle = ABytes.starts_with(kUtf16LittleMark);
  if (ABytes.starts_with(kUtf8Mark)) {
    text.remove_prefix(kUtf8Mark.size());
  } else if (isLittle || ABytes.starts_with(kUtf16BigMark)) {
    if (ABytes.size() % 2 != 0) throw EFileFormat(FPartName + ": UTF-16 text with an odd number of bytes");
    std::u16string units((ABytes.size() - 2) / 2, u'\0');
    const size_t high = isLittle ? 1 : 0;
    for (size_t i = 0; i < units.size(); ++i) {
      const char* const pair = ABytes.data() + 2 + 2 * i;
      units[i] = static_cast<char16_t>((static_cast<unsigned char>(pair[high]) << 8) |
                                       static_cast<unsigned char>(pair[1 - high]));
    }
    FTranscoded = Utf16ToUtf8(units);
    text = FTranscoded;
  }
  FBegin = FPos = FChecked = text.data();
  FEnd = FBegin + text.size();
}

TXmlEvent TXmlReader::Next() {
  if (FIsSelfClosing) {
    FIsSelfClosing = false;
    FAttributes.clear();
    return FEvent = xeEndElement;
  }
  if (FEvent == xeEndElement) --FDepth;
  FEvent = xeText;  // in case of an exception
  FAttributes.clear();
  FEvent = ReadEvent();
  if (FPos > FChecked) CheckCharsTo(FPos);
  return FEvent;
}

TXmlEvent TXmlReader::ReadEvent() {
  for (;;) {
    if (FPos == FEnd) return ReadEndOfDocument();
    if (*FPos != '<') {
      if (ReadText()) return xeText;
      continue;
    }
    switch (FEnd - FPos > 1 ? FPos[1] : '\0') {
      case '/': ReadEndTag(); return xeEndElement;
      case '!':
        if (ReadMarkupDeclaration()) return xeText;
        break;
      case '?': SkipInstruction(); break;
      default: ReadStartTag(); return xeStartElement;
    }
  }
}

TXmlEvent TXmlReader::ReadEndOfDocument() {
  if (FDepth != 0) Fail("the document ends before the element " + QuotedXmlName(FOpen[FDepth - 1]) + " is closed");
  if (!FHasRoot) Fail("the document has no root element");
  return xeEnd;
}

void TXmlReader::CheckCharsTo(const char* APos) {
  const char* const stop = FEnd - FChecked > kCheckAhead ? std::max(APos, FChecked + kCheckAhead) : FEnd;
  FChecked = CheckXmlChars(FChecked, stop, FEnd);
  if (FChecked < stop) {
    const bool isControl = static_cast<unsigned char>(*FChecked) < 0x20;
    FailAt(FChecked, isControl ? "a control character that XML does not allow" : "bytes that are no valid UTF-8 text");
  }
}

void TXmlReader::ReadStartTag() {
  const char* const start = FPos++;
  const std::string_view name = ReadName("an element");
  if (FDepth == 0 && FHasRoot) FailAt(start, "a second root element " + QuotedXmlName(name));
  FHasRoot = true;
  if (FDepth == FLimits.MaxXmlDepth) {
    throw ELimit(PlaceOf(start) + "elements are nested deeper than the limit of " + std::to_string(FDepth));
  }
  if (FDepth == FOpen.size()) FOpen.emplace_back();
  FOpen[FDepth++] = name;
  FUndecoded.clear();
  for (;;) {
    const bool hasBlanks = SkipBlanks();
    if (FPos == FEnd) FailAt(start, "the tag " + QuotedXmlName(name) + " is not closed");
    if (*FPos == '>') {
      ++FPos;
      break;
    }
    if (*FPos == '/') {
      if (FEnd - FPos < 2 || FPos[1] != '>') Fail("\"/\" inside the tag " + QuotedXmlName(name));
      FPos += 2;
      FIsSelfClosing = true;
      break;
    }
    if (!hasBlanks) Fail("a blank is missing in the tag " + QuotedXmlName(name));
    ReadAttribute();
  }
  if (FAttributes.size() > kFewAttributes) RefuseDoubledAttribute();
  if (!FUndecoded.empty()) DecodeAttributes(start);
}

void TXmlReader::ReadAttribute() {
  const std::string_view name = ReadName("an attribute");
  SkipBlanks();
  if (FPos == FEnd || *FPos != '=') Fail("the attribute " + QuotedXmlName(name) + " has no value");
  ++FPos;
  SkipBlanks();
  if (FPos == FEnd || (*FPos != '"' && *FPos != '\''))
    Fail("the value of attribute " + QuotedXmlName(name) + " is not quoted");
  const char quote = *FPos++;
  const char* const start = FPos;
  bool isRaw = false;
  for (;;) {
    FPos = FindXmlValueStop(FPos, FEnd, quote);
    if (FPos == FEnd) FailAt(start, "the value of attribute " + QuotedXmlName(name) + " is not closed");
    if (*FPos == quote) break;
    if (*FPos == '<') Fail("\"<\" in the value of attribute " + QuotedXmlName(name));
    isRaw = true;
    ++FPos;
  }
  if (FAttributes.size() == FLimits.MaxXmlAttributes) {
    throw ELimit(PlaceOf(start) + "an element has more attributes than the limit of " +
                 std::to_string(FAttributes.size()));
  }
  if (FAttributes.size() < kFewAttributes) {
    for (const TXmlAttribute& other : FAttributes) {
      if (SameXmlName(other.Name, name)) FailAt(start, "the attribute " + QuotedXmlName(name) + " is given twice");
    }
  }
  if (isRaw) FUndecoded.push_back(static_cast<uint32_t>(FAttributes.size()));
  FAttributes.push_back({name, XmlView(start, FPos)});
  ++FPos;
}

void TXmlReader::RefuseDoubledAttribute() const {
  std::vector<std::string_view> names;
  names.reserve(FAttributes.size());
  for (const TXmlAttribute& attribute : FAttributes) names.push_back(attribute.Name);
  std::sort(names.begin(), names.end());
  const auto doubled = std::adjacent_find(names.begin(), names.end());
  if (doubled != names.end()) Fail("the attribute " + QuotedXmlName(*doubled) + " is given twice");
}

/// Decoded, a value is never longer than it was, so the tag's length is room enough for all of them.
void TXmlReader::DecodeAttributes(const char* ATagStart) {
  FDecodedValues.clear();
  FDecodedValues.reserve(static_cast<size_t>(FPos - ATagStart));
  for (const uint32_t index : FUndecoded) {
    std::string_view& value = FAttributes[index].Value;
    const size_t start = FDecodedValues.size();
    const char* const end = value.data() + value.size();
    for (const char* at = value.data(); at != end;) {
      if (*at == '&') {
        at = AppendReference(at, end, FDecodedValues);
        continue;
      }
      if (*at == '\r' && end - at > 1 && at[1] == '\n') ++at;  // one line end, one blank
      FDecodedValues += IsXml(*at, xcBlank) ? ' ' : *at;
      ++at;
    }
    value = std::string_view(FDecodedValues).substr(start);
  }
}

void TXmlReader::ReadEndTag() {
  const char* const start = FPos;
  FPos += 2;
  if (FDepth == 0) FailAt(start, "an end tag without its start tag");
  const std::string_view name = FOpen[FDepth - 1];
  const auto left = static_cast<size_t>(FEnd - FPos);
  const bool matches = left > name.size() && SameBytes(FPos, name.data(), name.size());
  if (matches) FPos += name.size();
  if (matches && *FPos == '>') {
    ++FPos;
    return;
  }
  if (!matches || IsXml(*FPos, xcName)) {
    FPos = start + 2;
    const std::string_view found = ReadName("an end tag");
    FailAt(start, "the end tag " + QuotedXmlName(found) + " does not match the element " + QuotedXmlName(name));
  }
  SkipBlanks();
  if (FPos == FEnd || *FPos != '>') FailAt(start, "the end tag " + QuotedXmlName(name) + " is not closed");
  ++FPos;
}

/// Reads up to the next tag. Outside the root only blanks may stand, and they give no event.
bool TXmlReader::ReadText() {
  if (FDepth == 0) {
    SkipBlanks();
    if (FPos != FEnd && *FPos != '<') Fail("text outside the root element");
    return false;
  }
  const char* const start = FPos;
  for (;;) {
    FPos = FindXmlTextStop(FPos, FEnd);
    if (FPos == FEnd || *FPos == '<') break;
    if (*FPos != ']') {
      DecodeText(start);
      return true;
    }
    if (StartsWith("]]>")) Fail("\"]]>\" in a text");
    ++FPos;
  }
  FText = XmlView(start, FPos);
  return true;
}

/// The slow path of ReadText for texts with references or carriage returns; FPos is at the first of them.
void TXmlReader::DecodeText(const char* AFrom) {
  FDecodedText.assign(AFrom, FPos);
  while (FPos != FEnd && *FPos != '<') {
    if (*FPos == '&') {
      FPos = AppendReference(FPos, FEnd, FDecodedText);
      continue;
    }
    if (StartsWith("]]>")) Fail("\"]]>\" in a text");
    if (*FPos == '\r') {
      FDecodedText += '\n';
      FPos += StartsWith("\r\n") ? 2 : 1;
      continue;
    }
    const char* const stop = FindXmlTextStop(FPos + 1, FEnd);
    FDecodedText.append(FPos, stop);
    FPos = stop;
  }
  FText = FDecodedText;
}

/// What begins with "<!". True when it gave a text.
bool TXmlReader::ReadMarkupDeclaration() {
  if (StartsWith("<!--")) {
    SkipComment();
    return false;
  }
  if (StartsWith("<![CDATA[")) return ReadCData();
  if (!StartsWith("<!DOCTYPE")) Fail("an unknown declaration");
  SkipDocType();
  return false;
}

void TXmlReader::SkipComment() {
  FPos += 4;
  const char* const end = FindOrFail("--", "a comment");
  if (FEnd - end < 3 || end[2] != '>') FailAt(end, "\"--\" in a comment");
  FPos = end + 3;
}

bool TXmlReader::ReadCData() {
  if (FDepth == 0) Fail("text outside the root element");
  FPos += 9;
  const char* const end = FindOrFail("]]>", "a CDATA section");
  FText = XmlView(FPos, end);
  if (FText.find('\r') != std::string_view::npos) {
    FDecodedText.clear();
    for (size_t i = 0; i < FText.size(); ++i) {
      if (FText[i] == '\r' && i + 1 < FText.size() && FText[i + 1] == '\n') continue;
      FDecodedText += FText[i] == '\r' ? '\n' : FText[i];
    }
    FText = FDecodedText;
  }
  FPos = end + 3;
  return !FText.empty();
}

/// <!DOCTYPE name> with an optional external identifier, which is never looked at.
void TXmlReader::SkipDocType() {
  const char* const start = FPos;
  if (FHasRoot || FHasDocType) Fail("a document type declaration at a wrong place");
  FHasDocType = true;
  FPos += 9;
  if (!SkipBlanks()) Fail("a blank is missing in the document type declaration");
  ReadName("a document type");
  const bool hasBlanks = SkipBlanks();
  if (hasBlanks && (StartsWith("SYSTEM") || StartsWith("PUBLIC"))) {
    const bool isPublic = *FPos == 'P';
    FPos += 6;
    if (isPublic) {
      const std::string_view id = ReadIdentifier();
      if (!std::all_of(id.begin(), id.end(), IsPublicIdChar)) Fail("a bad public identifier of the document type");
    }
    ReadIdentifier();
    SkipBlanks();
  }
  if (FPos != FEnd && *FPos == '[') {
    FailAt(start, "a document type with declarations of its own is not accepted, for safety");
  }
  if (FPos == FEnd || *FPos != '>') FailAt(start, "the document type declaration is not closed");
  ++FPos;
}

std::string_view TXmlReader::ReadIdentifier() {
  if (!SkipBlanks()) Fail("a blank is missing in the document type declaration");
  return ReadQuoted("the document type declaration");
}

void TXmlReader::SkipInstruction() {
  const char* const start = FPos;
  FPos += 2;
  const std::string_view target = ReadName("a processing instruction");
  if (EqualXmlNames(target, "xml")) {
    if (start != FBegin || target != "xml")
      FailAt(start, "an XML declaration that is not at the start of the document");
    return ReadDeclaration();
  }
  if (!StartsWith("?>") && !SkipBlanks()) Fail("a blank is missing in a processing instruction");
  FPos = FindOrFail("?>", "a processing instruction") + 2;
}

/// version, then encoding, then standalone; the last two may be missing. The encoding is not obeyed, only its form
/// is checked.
void TXmlReader::ReadDeclaration() {
  size_t next = 0;
  for (;;) {
    const bool hasBlanks = SkipBlanks();
    if (StartsWith("?>")) break;
    if (!hasBlanks) Fail("a blank is missing in the XML declaration");
    const std::string_view name = ReadName("the XML declaration");
    SkipBlanks();
    if (FPos == FEnd || *FPos != '=') Fail("\"=\" is missing in the XML declaration");
    ++FPos;
    const std::string_view value = ReadQuoted("the XML declaration");
    const size_t place = name == "version" ? 1 : name == "encoding" ? 2 : name == "standalone" ? 3 : 0;
    if (place <= next || (next == 0 && place != 1)) {
      Fail("unexpected " + QuotedXmlName(name) + " in the XML declaration");
    }
    if (!IsDeclarationValue(value, place)) Fail("a bad value of " + QuotedXmlName(name) + " in the XML declaration");
    next = place;
  }
  if (next == 0) Fail("the XML declaration has no version");
  FPos += 2;
}

bool TXmlReader::StartsWith(std::string_view AText) const {
  return static_cast<size_t>(FEnd - FPos) >= AText.size() && std::memcmp(FPos, AText.data(), AText.size()) == 0;
}

/// The next place of AText from FPos on.
const char* TXmlReader::FindOrFail(std::string_view AText, std::string_view AWhat) const {
  const size_t at = XmlView(FPos, FEnd).find(AText);
  if (at == std::string_view::npos) Fail(std::string(AWhat) + " is not closed");
  return FPos + at;
}

bool TXmlReader::SkipBlanks() {
  const char* at = FPos;
  while (at != FEnd && IsXml(*at, xcBlank)) ++at;
  const bool hasMoved = at != FPos;
  FPos = at;
  return hasMoved;
}

std::string_view TXmlReader::ReadName(std::string_view AWhat) {
  const char* const start = FPos;
  const char* at = start;
  if (at == FEnd || !IsXml(*at, xcNameStart)) Fail("the name of " + std::string(AWhat) + " is missing or not valid");
  do {
    ++at;
  } while (at != FEnd && IsXml(*at, xcName));
  FPos = at;
  return XmlView(start, at);
}

/// Blanks and a text in quotes.
std::string_view TXmlReader::ReadQuoted(std::string_view AWhat) {
  SkipBlanks();
  if (FPos == FEnd || (*FPos != '"' && *FPos != '\'')) Fail("a quote is missing in " + std::string(AWhat));
  const char* const start = FPos + 1;
  const size_t length = XmlView(start, FEnd).find(*FPos);
  if (length == std::string_view::npos) Fail(std::string(AWhat) + " is not closed");
  FPos = start + length + 1;
  return {start, length};
}

/// Decodes the reference at AFrom, which is at its "&", and returns the place behind it.
const char* TXmlReader::AppendReference(const char* AFrom, const char* AEnd, std::string& AOut) const {
  static constexpr struct {
    std::string_view Text;
    char Char;
  } kEntities[] = {{"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
  const std::string_view rest = XmlView(AFrom, AEnd);
  if (rest.starts_with("&#")) return AppendCharReference(AFrom, AEnd, AOut);
  for (const auto& entity : kEntities) {
    if (!rest.starts_with(entity.Text)) continue;
    AOut += entity.Char;
    return AFrom + entity.Text.size();
  }
  const char* end = AFrom + 1;
  while (end != AEnd && IsXml(*end, xcName)) ++end;
  if (end == AEnd || *end != ';' || end == AFrom + 1) FailAt(AFrom, "\"&\" that begins no entity");
  FailAt(AFrom, "the entity " + QuotedXmlName(XmlView(AFrom + 1, end)) + " is not defined");
}

const char* TXmlReader::AppendCharReference(const char* AFrom, const char* AEnd, std::string& AOut) const {
  const bool isHex = AEnd - AFrom > 2 && AFrom[2] == 'x';
  const char* at = AFrom + (isHex ? 3 : 2);
  const char* const digits = at;
  uint32_t point = 0;
  for (; at != AEnd; ++at) {
    const char folded = FoldedXmlChar(*at);
    uint32_t digit = 16;
    if (folded >= '0' && folded <= '9') digit = static_cast<uint32_t>(folded - '0');
    if (isHex && folded >= 'a' && folded <= 'f') digit = static_cast<uint32_t>(folded - 'a') + 10;
    if (digit == 16) break;
    point = std::min<uint32_t>(point * (isHex ? 16 : 10) + digit, 0x110000);
  }
  if (at == digits || at == AEnd || *at != ';') FailAt(AFrom, "a character reference that is not complete");
  if (!IsXmlCodePoint(point)) FailAt(AFrom, "a reference to a character that XML does not allow");
  AppendXmlCodePoint(point, AOut);
  return at + 1;
}

std::string TXmlReader::PlaceOf(const char* APos) const {
  size_t line = 1;
  for (const char* at = FBegin; at != APos; ++at) {
    if (*at == '\n' || (*at == '\r' && (at + 1 == FEnd || at[1] != '\n'))) ++line;
  }
  return FPartName + ", line " + std::to_string(line) + ": ";
}

void TXmlReader::FailAt(const char* APos, std::string_view AFinding) const {
  throw EFileFormat(PlaceOf(APos) + std::string(AFinding));
}

std::string_view TXmlReader::LocalName() const { return XmlLocalName(Name()); }

std::optional<std::string_view> TXmlReader::FindAttribute(std::string_view AName) const {
  return FindXmlAttribute(FAttributes, AName);
}

void TXmlReader::SkipElement() {
  const size_t depth = FDepth;
  for (;;) {
    const TXmlEvent event = Next();
    if (event == xeEnd || (event == xeEndElement && FDepth == depth)) return;
  }
}

/// Errors are left to Next(), but for bad characters, which are found at their place in either way.
bool TXmlReader::TryReadStartTag(std::string_view AName) {
  const size_t depth = FEvent == xeEndElement ? FDepth - 1 : FDepth;
  if (FIsSelfClosing || depth == 0 || depth >= FLimits.MaxXmlDepth) return false;
  const char* at = FPos;
  const char* const end = FEnd;
  const size_t size = AName.size();
  if (static_cast<size_t>(end - at) < size + 2 || *at != '<' || !SameBytes(at + 1, AName.data(), size)) return false;
  const std::string_view name(at + 1, size);
  at += size + 1;
  FAttributes.clear();
  uint32_t letters = 0;  // the names that were met, a bit each
  while (end - at > 4 && *at == ' ') {
    const char letter = at[1];
    if (letter < 'a' || letter > 'z' || at[2] != '=' || at[3] != '"') return false;
    const uint32_t bit = 1u << (letter - 'a');
    const char* const value = at + 4;
    const char* stop = value;
    while (stop != end && !IsXml(*stop, xcValueStop)) ++stop;
    if ((letters & bit) != 0 || stop == end || *stop != '"') return false;
    letters |= bit;
    if (FAttributes.size() == FLimits.MaxXmlAttributes) return false;
    FAttributes.push_back({{at + 1, 1}, XmlView(value, stop)});
    at = stop + 1;
  }
  const bool isSelfClosing = end - at >= 2 && at[0] == '/' && at[1] == '>';
  if (!isSelfClosing && (at == end || *at != '>')) return false;
  FEvent = xeText;  // in case of an exception
  if (depth == FOpen.size()) FOpen.emplace_back();
  FOpen[depth] = name;
  FDepth = depth + 1;
  FIsSelfClosing = isSelfClosing;
  FPos = at + (isSelfClosing ? 2 : 1);
  if (FPos > FChecked) CheckCharsTo(FPos);
  FEvent = xeStartElement;
  return true;
}

bool TXmlReader::TryReadEndTag() {
  if (FIsSelfClosing || FDepth == 0 || FEvent == xeEnd) return false;
  const size_t depth = FEvent == xeEndElement ? FDepth - 1 : FDepth;
  if (depth == 0) return false;
  const std::string_view name = FOpen[depth - 1];
  const char* const at = FPos;
  if (static_cast<size_t>(FEnd - at) < name.size() + 3 || at[0] != '<' || at[1] != '/' || at[name.size() + 2] != '>')
    return false;
  if (!SameBytes(at + 2, name.data(), name.size())) return false;
  FEvent = xeText;  // in case of an exception
  FAttributes.clear();
  FDepth = depth;
  FPos = at + name.size() + 3;
  if (FPos > FChecked) CheckCharsTo(FPos);
  FEvent = xeEndElement;
  return true;
}

bool TXmlReader::TryReadLeaf(std::string_view AName, std::string_view& AText) {
  const size_t depth = FEvent == xeEndElement ? FDepth - 1 : FDepth;
  if (FIsSelfClosing || depth == 0 || depth >= FLimits.MaxXmlDepth) return false;
  const size_t size = AName.size();
  const char* at = FPos;
  if (static_cast<size_t>(FEnd - at) < size + 2 || *at != '<' || at[size + 1] != '>') return false;
  if (!SameBytes(at + 1, AName.data(), size)) return false;
  const std::string_view name(at + 1, size);
  const char* const text = at + size + 2;
  at = FindXmlTextStop(text, FEnd);
  if (static_cast<size_t>(FEnd - at) < size + 3 || *at != '<' || at[1] != '/' || at[size + 2] != '>') return false;
  if (!SameBytes(at + 2, AName.data(), size)) return false;
  FEvent = xeText;  // in case of an exception
  FAttributes.clear();
  if (depth == FOpen.size()) FOpen.emplace_back();
  FOpen[depth] = name;
  FDepth = depth + 1;
  FPos = at + size + 3;
  if (FPos > FChecked) CheckCharsTo(FPos);
  FEvent = xeEndElement;
  AText = XmlView(text, at);
  return true;
}

void AppendElementText(TXmlReader& AReader, std::string& AOut) {
  const size_t depth = AReader.Depth();
  for (;;) {
    const TXmlEvent event = AReader.Next();
    if (event == xeText) AOut += AReader.Text();
    if (event == xeEnd || (event == xeEndElement && AReader.Depth() == depth)) return;
  }
}

std::string ReadElementText(TXmlReader& AReader) {
  std::string text;
  AppendElementText(AReader, text);
  return text;
}

std::optional<std::string_view> FindXmlAttribute(std::span<const TXmlAttribute> AAttributes, std::string_view AName) {
  const TXmlAttribute* similar = nullptr;
  for (const TXmlAttribute& attribute : AAttributes) {
    if (!XmlLocalNameIs(attribute.Name, AName)) continue;
    if (SameXmlName(attribute.Name, AName)) return attribute.Value;
    if (similar == nullptr) similar = &attribute;
  }
  if (similar == nullptr) return std::nullopt;
  return similar->Value;
}

std::string_view XmlLocalName(std::string_view AName) { return AName.substr(AName.rfind(':') + 1); }

bool EqualXmlNames(std::string_view ALeft, std::string_view ARight) {
  return std::equal(ALeft.begin(), ALeft.end(), ARight.begin(), ARight.end(),
                    [](char AOne, char AOther) { return FoldedXmlChar(AOne) == FoldedXmlChar(AOther); });
}

}  // namespace tessarine

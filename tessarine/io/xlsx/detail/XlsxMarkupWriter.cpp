#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

void BeginAttribute(std::string_view AName, std::string& AOut) {
  AOut += ' ';
  AOut += AName;
  AOut += "=\"";
}

constexpr std::array<bool, 128> MakePlainUnits() {
  std::array<bool, 128> plain = {};
  for (size_t unit = 32; unit < 127; ++unit) plain[unit] = true;
  for (const unsigned char unit : {'&', '<', '>', '"', '_'}) plain[unit] = false;
  return plain;
}
constexpr std::array<bool, 128> kPlainUnits = MakePlainUnits();

}  // namespace

void AppendXlsxAttr(std::string_view AName, std::u16string_view AValue, std::string& AOut) {
  BeginAttribute(AName, AOut);
  AppendXmlAttribute(AValue, AOut);
  AOut += '"';
}

void AppendXlsxTextAttr(std::string_view AName, std::u16string_view AText, std::string& AOut) {
  BeginAttribute(AName, AOut);
  AppendXlsxAttribute(AText, AOut);
  AOut += '"';
}

void AppendXlsxWord(std::string_view AName, std::string_view AValue, std::string& AOut) {
  BeginAttribute(AName, AOut);
  AOut += AValue;
  AOut += '"';
}

void AppendXlsxInt(std::string_view AName, int64_t AValue, std::string& AOut) {
  BeginAttribute(AName, AOut);
  AppendDecimal(AValue, AOut);
  AOut += '"';
}

void AppendXlsxNumber(std::string_view AName, double AValue, std::string& AOut) {
  if (!std::isfinite(AValue)) return;
  BeginAttribute(AName, AOut);
  AppendFileNumber(AValue, AOut);
  AOut += '"';
}

void AppendXlsxBool(std::string_view AName, bool AValue, std::string& AOut) {
  AppendXlsxWord(AName, AValue ? "1" : "0", AOut);
}

void AppendXlsxFlag(std::string_view AName, bool AValue, std::string& AOut) {
  if (AValue) AppendXlsxWord(AName, "1", AOut);
}

void AppendXlsxRef(std::string_view AName, const TCellRange& ARange, std::string& AOut) {
  AppendXlsxWord(AName, Utf16ToUtf8(ARange.ToA1()), AOut);
}

void AppendDecimal(int64_t AValue, std::string& AOut) {
  char text[24];
  AOut.append(text, std::to_chars(std::begin(text), std::end(text), AValue).ptr);
}

void AppendXlsxElement(std::string_view AName, std::u16string_view AText, std::string& AOut) {
  ((AOut += '<') += AName) += '>';
  AppendXlsxText(AText, AOut);
  ((AOut += "</") += AName) += '>';
}

void AppendShortDecimal(double AValue, int ADigits, std::string& AOut) {
  char text[400];  // the largest double has 309 digits before the point
  const auto [end, error] = std::to_chars(std::begin(text), std::end(text), AValue, std::chars_format::fixed, ADigits);
  std::string_view shown = error == std::errc() ? std::string_view(text, static_cast<size_t>(end - text)) : "0";
  if (shown.find('.') != shown.npos) {
    while (shown.ends_with('0')) shown.remove_suffix(1);
    if (shown.ends_with('.')) shown.remove_suffix(1);
  }
  AOut += shown == "-0" ? "0" : shown;
}

void AppendXlsxRgb(uint32_t AColor, std::string& AOut) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  AOut += "FF";
  for (int shift = 20; shift >= 0; shift -= 4) AOut += kDigits[AColor >> shift & 15];
}

bool TryAppendPlain(std::u16string_view AText, std::string& AOut) {
  const size_t start = AOut.size();
  AOut.resize(start + AText.size());
  char* out = AOut.data() + start;
  for (const char16_t unit : AText) {
    if (unit >= kPlainUnits.size() || !kPlainUnits[unit]) {
      AOut.resize(start);
      return false;
    }
    *out++ = static_cast<char>(unit);
  }
  return true;
}

void AppendXlsxString(std::u16string_view AText, std::string& AOut) {
  if (!TryAppendPlain(AText, AOut)) AppendXlsxText(AText, AOut);
}

void ReserveForRest(size_t ADone, size_t AAll, size_t ABytes, size_t AGuess, std::string& AOut) {
  const size_t perItem = ADone == 0 ? AGuess : ABytes / ADone + 1;
  const size_t wanted = AOut.size() + (AAll - ADone) * (perItem + perItem / 16);
  if (wanted > AOut.capacity()) AOut.reserve(wanted);
}

/// Most texts have neither blanks at their ends nor escapes, so nothing in them asks for the attribute.
void AppendXlsxSpacedElement(std::string_view AName, std::u16string_view AText, std::string& AOut) {
  const size_t start = AOut.size();
  const bool hasOuterBlank = AText.starts_with(u' ') || AText.ends_with(u' ');
  ((AOut += '<') += AName) += '>';
  if (hasOuterBlank || !TryAppendPlain(AText, AOut)) {
    AOut.resize(start);
    (AOut += '<') += AName;
    if (hasOuterBlank || AText.find_first_of(u"\t\n\r") != AText.npos) AOut += " xml:space=\"preserve\"";
    AOut += '>';
    AppendXlsxText(AText, AOut);
  }
  ((AOut += "</") += AName) += '>';
}

TCellRange XlsxInsideSheet(const TCellRange& ARange) {
  TCellRange range = ARange.Normalize();
  if (range.EndCol < 1 || range.EndRow < 1 || range.StartCol > kMaxCol || range.StartRow > kMaxRow) return {};
  range.StartCol = std::max(range.StartCol, 1);
  range.StartRow = std::max(range.StartRow, 1);
  range.EndCol = std::min(range.EndCol, kMaxCol);
  range.EndRow = std::min(range.EndRow, kMaxRow);
  return range;
}

}  // namespace tessarine::detail

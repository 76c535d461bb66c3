#include <tessarine/platform/XmlText.h>

#include <array>
#include <cstdint>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>
#include <tessarine/platform/detail/Surrogates.h>

namespace tessarine {

namespace {

/// What to do with an ASCII unit.
enum TClass : uint8_t { clPlain, clEntity, clLineEnd, clTab, clIllegal, clUnderscore };

constexpr std::array<TClass, 128> MakeClasses() {
  std::array<TClass, 128> classes = {};
  for (size_t i = 0; i < 32; ++i) classes[i] = clIllegal;
  classes['\t'] = clTab;
  classes['\n'] = clTab;
  classes['\r'] = clLineEnd;
  classes['&'] = classes['<'] = classes['>'] = classes['"'] = clEntity;
  classes['_'] = clUnderscore;
  return classes;
}
constexpr std::array<TClass, 128> kClasses = MakeClasses();

std::string_view Entity(char AUnit) {
  switch (AUnit) {
    case '&': return "&amp;";
    case '<': return "&lt;";
    case '>': return "&gt;";
    default: return "&quot;";
  }
}

void AppendReference(char16_t AUnit, std::string& AOut) {
  AOut += "&#";
  AOut += std::to_string(static_cast<int>(AUnit));
  AOut += ';';
}

/// "_x000D_"
void AppendEscape(char16_t AUnit, std::string& AOut) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  AOut += "_x";
  for (int shift = 12; shift >= 0; shift -= 4) AOut += kDigits[AUnit >> shift & 15];
  AOut += '_';
}

bool IsNonCharacter(char16_t AUnit) { return AUnit >= 0xFFFE; }

/// The forms differ in what becomes of tabs and line ends, of underscores and of what XML cannot carry.
enum class TForm : uint8_t { Element, Attribute, EscapedElement, EscapedAttribute };

constexpr bool IsAttribute(TForm AForm) { return AForm == TForm::Attribute || AForm == TForm::EscapedAttribute; }
constexpr bool IsEscaped(TForm AForm) { return AForm == TForm::EscapedElement || AForm == TForm::EscapedAttribute; }

/// Whether the form of a unit in the file begins with "_".
template <TForm Form>
bool BecomesUnderscore(char16_t AUnit) {
  if (AUnit >= kClasses.size()) return IsNonCharacter(AUnit);
  const TClass kind = kClasses[AUnit];
  return kind == clUnderscore || kind == clIllegal || (kind == clLineEnd && Form == TForm::EscapedElement);
}

/// Whether what begins with an underscore would be read as an escape, as it stands or with that of its last unit.
template <TForm Form>
bool BeginsEscape(std::u16string_view AText) {
  constexpr size_t kLast = 6;  // of _xHHHH_
  if (AText.size() <= kLast || !BecomesUnderscore<Form>(AText[kLast])) return false;
  std::u16string piece(AText.substr(0, kLast));
  piece += u'_';
  std::u16string buffer;
  return UnescapeXlsxText(piece, buffer).size() == 1;
}

template <TForm Form>
void AppendOne(std::u16string_view AText, size_t AAt, TClass AClass, std::string& AOut) {
  const char16_t unit = AText[AAt];
  const auto plain = static_cast<char>(unit);
  switch (AClass) {
    case clEntity: AOut += Entity(plain); break;
    case clTab:
    case clLineEnd:
      if constexpr (IsAttribute(Form))
        AppendReference(unit, AOut);
      else if (IsEscaped(Form) && AClass == clLineEnd)
        AppendEscape(unit, AOut);
      else
        AOut += plain;
      break;
    case clIllegal:
      if constexpr (IsEscaped(Form)) AppendEscape(unit, AOut);
      break;
    case clUnderscore:
      if (IsEscaped(Form) && BeginsEscape<Form>(AText.substr(AAt)))
        AppendEscape(unit, AOut);
      else
        AOut += plain;
      break;
    case clPlain: AOut += plain;
  }
}

template <TForm Form>
void AppendForm(std::u16string_view AText, std::string& AOut) {
  for (size_t i = 0; i < AText.size(); ++i) {
    const char16_t unit = AText[i];
    if (unit < 128) {
      const TClass kind = kClasses[unit];
      if (kind == clPlain)
        AOut += static_cast<char>(unit);
      else
        AppendOne<Form>(AText, i, kind, AOut);
    } else if (IsHighSurrogate(unit) && i + 1 < AText.size() && IsLowSurrogate(AText[i + 1])) {
      AppendUtf16AsUtf8(AText.substr(i, 2), AOut);
      ++i;
    } else if (!IsNonCharacter(unit)) {
      AppendUtf16AsUtf8(AText.substr(i, 1), AOut);
    } else if constexpr (IsEscaped(Form)) {
      AppendEscape(unit, AOut);
    }
  }
}

}  // namespace

void AppendXmlText(std::u16string_view AText, std::string& AOut) { AppendForm<TForm::Element>(AText, AOut); }
void AppendXmlText(std::string_view AText, std::string& AOut) { AppendXmlText(Utf8ToUtf16(AText), AOut); }
void AppendXmlAttribute(std::u16string_view AText, std::string& AOut) { AppendForm<TForm::Attribute>(AText, AOut); }
void AppendXmlAttribute(std::string_view AText, std::string& AOut) { AppendXmlAttribute(Utf8ToUtf16(AText), AOut); }
void AppendXlsxText(std::u16string_view AText, std::string& AOut) { AppendForm<TForm::EscapedElement>(AText, AOut); }
void AppendXlsxAttribute(std::u16string_view AText, std::string& AOut) {
  AppendForm<TForm::EscapedAttribute>(AText, AOut);
}

}  // namespace tessarine

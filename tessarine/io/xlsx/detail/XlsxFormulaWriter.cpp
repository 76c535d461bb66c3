#include <tessarine/io/xlsx/detail/XlsxFormulaWriter.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/io/xlsx/detail/XlsxFormulas.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kParameterPrefix = u"_xlpm.";

bool IsWordUnit(char16_t AUnit) {
  return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'.' || AUnit == u'\\' ||
         AUnit == u'?' || AUnit >= 0x80;
}

/// Whether a function's name, with or without the prefix of newer functions, is ANamed.
bool IsFunction(std::u16string_view AWord, std::u16string_view ANamed) {
  constexpr std::u16string_view kFunctionPrefix = u"_xlfn.";
  if (AWord.size() > kFunctionPrefix.size() &&
      EqualAsciiNoCase(AWord.substr(0, kFunctionPrefix.size()), kFunctionPrefix))
    AWord.remove_prefix(kFunctionPrefix.size());
  return EqualAsciiNoCase(AWord, ANamed);
}

/// Behind the bracket that closes the one at AStart.
size_t AfterBrackets(std::u16string_view AText, size_t AStart) {
  size_t at = AStart;
  for (int depth = 0; at < AText.size(); ++at) {
    if (AText[at] == u'[') ++depth;
    if (AText[at] == u']' && --depth == 0) return at + 1;
  }
  return at;
}

/// Walks over a formula and copies it, with prefixes put in.
class TParameterMarker {
 public:
  explicit TParameterMarker(std::u16string_view AText) : FText(AText) {}

  std::u16string Run() {
    while (FAt < FText.size()) Step();
    return std::move(FOut);
  }

 private:
  enum class TCallKind : uint8_t { ckOther, ckLet, ckLambda };
  struct TCall {
    TCallKind Kind = TCallKind::ckOther;
    size_t Argument = 0;
    size_t BoundBefore = 0;
  };

  void Step() {
    const char16_t unit = FText[FAt];
    if (unit == u'"' || unit == u'\'') return CopyQuoted(unit);
    if (unit == u'[') return CopyBrackets();
    if (IsWordUnit(unit)) return CopyWord();
    if (unit == u'(' || unit == u'{') {
      FCalls.push_back({FNext, 0, FBound.size()});
      FNext = TCallKind::ckOther;
    } else if ((unit == u')' || unit == u'}') && !FCalls.empty()) {
      FBound.resize(FCalls.back().BoundBefore);
      FCalls.pop_back();
    } else if (unit == u',' && !FCalls.empty()) {
      ++FCalls.back().Argument;
    }
    FIsArgumentStart = unit == u'(' || unit == u',' || (FIsArgumentStart && unit <= u' ');
    Copy(1);
  }

  void Copy(size_t ACount) {
    FOut += FText.substr(FAt, ACount);
    FAt += ACount;
  }

  /// Up to the quote that closes; a doubled one closes and opens again.
  void CopyQuoted(char16_t AQuote) {
    const size_t end = std::min(FText.find(AQuote, FAt + 1), FText.size() - 1);
    FIsArgumentStart = false;
    Copy(end + 1 - FAt);
  }

  void CopyBrackets() {
    FIsArgumentStart = false;
    Copy(AfterBrackets(FText, FAt) - FAt);
  }

  void CopyWord() {
    size_t end = FAt;
    while (end < FText.size() && IsWordUnit(FText[end])) ++end;
    const std::u16string_view word = FText.substr(FAt, end - FAt);
    const char16_t before = FAt > 0 ? FText[FAt - 1] : u'\0';
    const char16_t after = end < FText.size() ? FText[end] : u'\0';
    const bool isStart = std::exchange(FIsArgumentStart, false);
    const auto isReference = [](char16_t AUnit) { return AUnit == u'$' || AUnit == u':' || AUnit == u'!'; };
    if (after == u'(') FNext = KindOf(word);
    if (!isReference(before) && !isReference(after) && !IsAsciiDigit(word.front())) {
      if (isStart && Declares(end)) FBound.push_back(ToAsciiUpper(word));
      if (IsBound(word)) FOut += kParameterPrefix;
    }
    Copy(word.size());
  }

  static TCallKind KindOf(std::u16string_view AWord) {
    if (IsFunction(AWord, u"LET")) return TCallKind::ckLet;
    return IsFunction(AWord, u"LAMBDA") ? TCallKind::ckLambda : TCallKind::ckOther;
  }

  /// Whether the word that ends at AEnd is a whole argument in a place where names are bound. The last argument of
  /// either function is what they give.
  bool Declares(size_t AEnd) const {
    if (FCalls.empty()) return false;
    const TCall& call = FCalls.back();
    const bool isPlace = call.Kind == TCallKind::ckLambda || (call.Kind == TCallKind::ckLet && call.Argument % 2 == 0);
    while (AEnd < FText.size() && FText[AEnd] <= u' ') ++AEnd;
    return isPlace && AEnd < FText.size() && FText[AEnd] == u',';
  }

  bool IsBound(std::u16string_view AWord) const {
    return !FBound.empty() && std::find(FBound.begin(), FBound.end(), ToAsciiUpper(AWord)) != FBound.end();
  }

  std::u16string_view FText;
  size_t FAt = 0;
  std::u16string FOut;
  std::vector<TCall> FCalls;           // that are open
  std::vector<std::u16string> FBound;  // in capitals
  TCallKind FNext = TCallKind::ckOther;
  bool FIsArgumentStart = false;
};

/// Whether a call of one of the two functions may be in the text.
bool MayBindParameters(std::u16string_view AText) {
  for (size_t at = AText.find(u'('); at != AText.npos; at = AText.find(u'(', at + 1)) {
    size_t start = at;
    while (start > 0 && IsWordUnit(AText[start - 1])) --start;
    const std::u16string_view word = AText.substr(start, at - start);
    if (IsFunction(word, u"LET") || IsFunction(word, u"LAMBDA")) return true;
  }
  return false;
}

/// In front of functions of later versions, of add-ins and of macros, alone or one behind the other.
constexpr std::u16string_view kNamePrefixes[] = {u"_xlfn.", u"_xlws.", u"_xludf.", u"_xleta.", u"_xll."};

/// The length of the prefix at the start of AText in whatever case; 0 without one.
size_t PrefixLength(std::u16string_view AText) {
  for (const std::u16string_view prefix : kNamePrefixes) {
    if (EqualAsciiNoCase(AText.substr(0, prefix.size()), prefix)) return prefix.size();
  }
  return 0;
}

std::u16string LowerPrefixes(std::u16string_view AFormula) {
  std::u16string text(AFormula);
  for (size_t at = 0; at < text.size();) {
    const char16_t unit = text[at];
    if (unit == u'"' || unit == u'\'') {
      at = std::min(text.find(unit, at + 1), text.size() - 1) + 1;
    } else if (unit == u'[') {
      at = AfterBrackets(text, at);
    } else if (IsWordUnit(unit)) {
      for (size_t length = 0; (length = PrefixLength(std::u16string_view(text).substr(at))) > 0; at += length)
        std::transform(text.begin() + static_cast<ptrdiff_t>(at), text.begin() + static_cast<ptrdiff_t>(at + length),
                       text.begin() + static_cast<ptrdiff_t>(at), AsciiLower);
      while (at < text.size() && IsWordUnit(text[at])) ++at;
    } else {
      ++at;
    }
  }
  return text;
}

/// Whether the reader puts an "@" before this text.
bool GetsSign(std::u16string_view AText) {
  return AText.find(u'@') == AText.npos && IsDynamicArraySpillFormulaText(AText);
}

std::u16string_view WithoutEquals(std::u16string_view AText) {
  if (AText.starts_with(u'=')) AText.remove_prefix(1);
  return AText;
}

}  // namespace

std::u16string MarkXlsxParameters(std::u16string_view AFormula) {
  if (!MayBindParameters(AFormula)) return std::u16string(AFormula);
  std::u16string marked = TParameterMarker(AFormula).Run();
  std::u16string back = marked;
  StripXlsxParameterPrefixes(back);
  return back == AFormula ? marked : std::u16string(AFormula);
}

std::u16string XlsxFormulaText(std::u16string_view AFormula) {
  std::u16string text = MarkXlsxParameters(AFormula);
  return text.find(u'_') == text.npos ? text : LowerPrefixes(text);
}

const TXlsxFormulaWriter::TShape& TXlsxFormulaWriter::ShapeOf(const TFormulaTemplate& ATemplate, int32_t ACol) {
  const auto col = static_cast<size_t>(ACol);
  if (col >= FShapes.size()) FShapes.resize(col + 1);
  TShape& shape = FShapes[col];
  if (shape.Template == &ATemplate) return shape;
  const std::u16string_view text = WithoutEquals(FText);
  shape = {&ATemplate};
  shape.DropsSign = !FIsLiteral && text.starts_with(u'@') && GetsSign(text.substr(1));
  shape.IsArrayOfOne = !FIsLiteral && GetsSign(text);
  shape.MayBeRespelled = !FIsLiteral && (text.find(u'_') != text.npos || MayBindParameters(text));
  return shape;
}

void TXlsxFormulaWriter::Append(const TFormulaTemplate& ATemplate, int32_t ACol, int32_t ARow, const TCellRange* ABlock,
                                std::string& AOut) {
  FText.clear();
  ATemplate.AppendTextAt(ACol, ARow, FText);
  const TShape& shape = ShapeOf(ATemplate, ACol);
  std::u16string_view text = WithoutEquals(FText);
  // An empty element is damage to other programs, and no formula to the reader.
  if (text.empty() && !FIsLiteral) return;
  if (ABlock || shape.IsArrayOfOne) {
    const TCellRange own{ACol, ARow, ACol, ARow};
    AOut += "<f t=\"array\"";
    AppendXlsxRef("ref", ABlock ? *ABlock : own, AOut);
    AOut += '>';
    if (ABlock) text.remove_prefix(std::min(text.find_first_not_of(u"@+"), text.size()));
  } else {
    AOut += "<f>";
    if (shape.DropsSign) text.remove_prefix(1);
  }
  if (shape.MayBeRespelled) {
    AppendXlsxString(XlsxFormulaText(text), AOut);
  } else {
    AppendXlsxString(text, AOut);
  }
  AOut += "</f>";
}

}  // namespace tessarine::detail

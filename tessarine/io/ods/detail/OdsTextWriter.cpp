#include <tessarine/io/ods/detail/OdsTextWriter.h>

#include <array>
#include <cstddef>

#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

/// ASCII that stands for itself inside a paragraph, blanks aside.
constexpr std::array<bool, 128> MakePlain() {
  std::array<bool, 128> plain = {};
  for (size_t i = 33; i < 128; ++i) plain[i] = i != '&' && i != '<' && i != '>' && i != '"';
  return plain;
}
constexpr std::array<bool, 128> kPlain = MakePlain();

bool IsPlain(char16_t AUnit) { return AUnit < 128 && kPlain[AUnit]; }
bool IsLineEnd(char16_t AUnit) { return AUnit == u'\n' || AUnit == u'\r'; }
bool IsIllegal(char16_t AUnit) { return (AUnit < 32 && AUnit != u'\t' && !IsLineEnd(AUnit)) || AUnit >= 0xFFFE; }

class TParagraphs {
 public:
  TParagraphs(std::u16string_view AHref, std::string& AOut) : FHref(AHref), FOut(AOut) { Open(); }

  void Put(const TOdsTextPiece& APiece) {
    FStyle = APiece.TextStyle;
    OpenSpan();
    const std::u16string_view text = APiece.Text;
    // A CR LF between two pieces is one line end.
    for (size_t i = FEndsInReturn && text.starts_with(u'\n') ? 1 : 0; i < text.size();) i = PutAt(text, i);
    FEndsInReturn = text.ends_with(u'\r');
    CloseSpan();
  }

  size_t Finish() {
    Close();
    return FLeftOut;
  }

 private:
  size_t PutAt(std::u16string_view AText, size_t AAt) {
    const char16_t unit = AText[AAt];
    if (IsPlain(unit)) {
      FOut += static_cast<char>(unit);
      return AAt + 1;
    }
    if (unit == u' ') return PutBlanks(AText, AAt);
    if (unit == u'\t') {
      FOut += "<text:tab/>";
      return AAt + 1;
    }
    if (IsLineEnd(unit)) {
      BreakLine();
      return AAt + (unit == u'\r' && AAt + 1 < AText.size() && AText[AAt + 1] == u'\n' ? 2 : 1);
    }
    size_t end = AAt;
    for (; end < AText.size() && !IsPlain(AText[end]) && AText[end] != u' ' && AText[end] != u'\t' &&
           !IsLineEnd(AText[end]);
         ++end)
      FLeftOut += IsIllegal(AText[end]) ? 1 : 0;
    AppendXmlText(AText.substr(AAt, end - AAt), FOut);
    return end;
  }

  /// A blank between two other characters stands for itself, all others are counted.
  size_t PutBlanks(std::u16string_view AText, size_t AAt) {
    size_t end = AAt;
    while (end < AText.size() && AText[end] == u' ') ++end;
    size_t count = end - AAt;
    if (AAt > 0 && !IsLineEnd(AText[AAt - 1]) && AText[AAt - 1] != u'\t' && end < AText.size() &&
        !IsLineEnd(AText[end])) {
      FOut += ' ';
      --count;
    }
    if (count == 1) FOut += "<text:s/>";
    if (count > 1) FOut.append("<text:s text:c=\"").append(std::to_string(count)).append("\"/>");
    return end;
  }

  void BreakLine() {
    CloseSpan();
    Close();
    Open();
    OpenSpan();
  }

  void Open() {
    FOut += "<text:p>";
    if (FHref.empty()) return;
    FOut += "<text:a xlink:type=\"simple\" xlink:href=\"";
    AppendXmlAttribute(FHref, FOut);
    FOut += "\">";
  }
  void Close() {
    if (!FHref.empty()) FOut += "</text:a>";
    FOut += "</text:p>";
  }
  void OpenSpan() {
    if (FStyle > 0) FOut.append("<text:span text:style-name=\"T").append(std::to_string(FStyle)).append("\">");
  }
  void CloseSpan() {
    if (FStyle > 0) FOut += "</text:span>";
  }

  std::u16string_view FHref;
  std::string& FOut;
  int32_t FStyle = 0;
  bool FEndsInReturn = false;  // the piece before
  size_t FLeftOut = 0;
};

}  // namespace

size_t AppendOdsParagraphs(std::u16string_view AText, std::u16string_view AHref, std::string& AOut) {
  const TOdsTextPiece piece{AText, 0};
  return AppendOdsParagraphs({&piece, 1}, AHref, AOut);
}

size_t AppendOdsParagraphs(std::span<const TOdsTextPiece> APieces, std::u16string_view AHref, std::string& AOut) {
  TParagraphs paragraphs(AHref, AOut);
  for (const TOdsTextPiece& piece : APieces) paragraphs.Put(piece);
  return paragraphs.Finish();
}

bool OdsLineEndsComeBack(std::u16string_view AText) {
  for (size_t i = 0; i < AText.size(); ++i) {
    if (AText[i] == u'\n') return false;
    if (AText[i] != u'\r') continue;
    if (i + 1 == AText.size() || AText[i + 1] != u'\n') return false;
    ++i;
  }
  return true;
}

}  // namespace tessarine::detail

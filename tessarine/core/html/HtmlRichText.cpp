#include <tessarine/core/html/HtmlRichText.h>

#include <algorithm>
#include <vector>

#include <tessarine/core/html/Html.h>
#include <tessarine/core/html/detail/HtmlScan.h>
#include <tessarine/core/html/detail/HtmlText.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using detail::THtmlScanner;

// Fonts deeper than this are counted, but no longer kept: their text has the deepest font that is.
constexpr size_t kMaxFontDepth = 4096;

constexpr std::u16string_view kVoidTags[] = {u"br", u"hr", u"img", u"input", u"meta", u"link", u"col"};

// What opening tags do to the font.

void MakeBold(TCellFontInfo& AFont) { AFont.Bold = true; }
void MakeItalic(TCellFontInfo& AFont) { AFont.Italic = true; }
void MakeUnderlined(TCellFontInfo& AFont) { AFont.Underline = usSingle; }
void MakeStruckOut(TCellFontInfo& AFont) { AFont.Strikethrough = true; }
void MakeSubscript(TCellFontInfo& AFont) { AFont.Script = spSubscript; }
void MakeSuperscript(TCellFontInfo& AFont) { AFont.Script = spSuperscript; }

template <int Size>
void MakeHeading(TCellFontInfo& AFont) {
  AFont.Bold = true;
  AFont.Size = Size;
}

struct TTagFont {
  std::u16string_view Name;
  void (*Apply)(TCellFontInfo& AFont);
};

constexpr TTagFont kTagFonts[] = {
    {u"b", MakeBold},         {u"strong", MakeBold},     {u"i", MakeItalic},         {u"em", MakeItalic},
    {u"u", MakeUnderlined},   {u"s", MakeStruckOut},     {u"strike", MakeStruckOut}, {u"del", MakeStruckOut},
    {u"sub", MakeSubscript},  {u"sup", MakeSuperscript}, {u"h1", MakeHeading<24>},   {u"h2", MakeHeading<18>},
    {u"h3", MakeHeading<14>},
};

float PointsOfFontSize(std::u16string_view ASize) {
  constexpr float kPoints[] = {8, 10, 12, 14, 18, 24, 36};
  const std::u16string_view size = TrimSpaces(ASize);
  if (size.size() != 1 || size[0] < u'1' || size[0] > u'7') return 12;
  return kPoints[size[0] - u'1'];
}

void ApplyFontTag(const THtmlScanner& ATag, TCellFontInfo& AFont) {
  const auto color = HtmlUnescape(ATag.Attribute(u"color"));
  if (!color.empty()) AFont.Color = TColorRef::FromARGB(CssColorToARGB(color));
  const auto face = HtmlUnescape(ATag.Attribute(u"face"));
  if (!face.empty()) ApplyCssToFont(u"font-family:" + face, AFont);
  const auto size = ATag.Attribute(u"size");
  if (!size.empty()) AFont.Size = PointsOfFontSize(size);
}

/// The font inside of a tag.
void ApplyTag(const THtmlScanner& ATag, TCellFontInfo& AFont) {
  for (const TTagFont& tag : kTagFonts) {
    if (ATag.NameIs(tag.Name)) tag.Apply(AFont);
  }
  if (ATag.NameIs(u"font")) ApplyFontTag(ATag, AFont);
  const std::u16string_view style = ATag.Attribute(u"style");
  if (!style.empty()) ApplyCssToFont(HtmlUnescape(style), AFont);
}

/// Collects text under a stack of fonts.
class TRunBuilder {
 public:
  explicit TRunBuilder(const TCellFontInfo& ABase) : FFonts{ABase} {}

  void Push(const THtmlScanner& ATag) {
    if (FFonts.size() >= kMaxFontDepth) {
      ++FUncounted;
      return;
    }
    FFonts.push_back(FFonts.back());
    ApplyTag(ATag, FFonts.back());
  }

  void Pop() {
    if (FUncounted > 0) {
      --FUncounted;
    } else if (FFonts.size() > 1) {
      FFonts.pop_back();
    }
  }

  void Append(std::u16string_view AText) {
    if (AText.empty()) return;
    if (!FText.empty() && !(FRuns.back().Font == FFonts.back())) EndRun();
    if (FText.empty()) FRuns.push_back({{}, FFonts.back()});
    FText += AText;
  }

  bool HasText() const { return !FRuns.empty(); }

  TRichTextRuns Take() {
    EndRun();
    return std::move(FRuns);
  }

 private:
  void EndRun() {
    if (!FRuns.empty()) FRuns.back().Text = TText(FText);
    FText.clear();
  }

  std::vector<TCellFontInfo> FFonts;  // never empty
  size_t FUncounted = 0;
  TRichTextRuns FRuns;
  std::u16string FText;  // of the last run
};

/// Whether a tag only speaks to browsers, as "<!DOCTYPE>", "<![if x]>" and "<?xml?>" do, which nothing closes.
bool IsDeclaration(const THtmlScanner& ATag) { return ATag.Name().starts_with(u'!') || ATag.Name().starts_with(u'?'); }

void AddTag(const THtmlScanner& ATag, TRunBuilder& ABuilder) {
  if (IsDeclaration(ATag)) return;
  if (ATag.NameIsAnyOf(kVoidTags)) {
    if (ATag.NameIs(u"br")) ABuilder.Append(u"\n");
    return;
  }
  if (ATag.IsClosing()) {
    ABuilder.Pop();
    return;
  }
  if (ATag.NameIsAnyOf(detail::kHtmlBlocks) && ABuilder.HasText()) ABuilder.Append(u"\n");
  if (!ATag.IsSelfClosing()) ABuilder.Push(ATag);
}

std::u16string StyleOf(const TCellFontInfo& AFont, const TCellFontInfo& ABase) {
  std::u16string style;
  if (AFont.Name != ABase.Name) style += u"font-family:" + HtmlEscape(AFont.Name) + u";";
  if (AFont.Size != ABase.Size)
    style += u"font-size:" + GeneralNumberText(RoundToEven(static_cast<double>(AFont.Size))) + u"pt;";
  if (!(AFont.Color == ABase.Color)) style += u"color:" + ColorRefToCssHex(AFont.Color) + u";";
  return style;
}

void Wrap(std::u16string& AHtml, std::u16string_view ATag) {
  AHtml.insert(0, u"<" + std::u16string(ATag) + u">");
  AHtml += u"</" + std::u16string(ATag) + u">";
}

std::u16string RunToHtml(const TRichTextRun& ARun, const TCellFontInfo& ABase) {
  std::u16string html = HtmlEscape(ARun.Text);
  const TCellFontInfo& font = ARun.Font;
  if (font == ABase) return html;
  if (font.Bold) Wrap(html, u"b");
  if (font.Italic) Wrap(html, u"i");
  if (font.Underline != usNone) Wrap(html, u"u");
  if (font.Strikethrough) Wrap(html, u"s");
  if (font.Script != spNormal) Wrap(html, font.Script == spSubscript ? u"sub" : u"sup");
  const std::u16string style = StyleOf(font, ABase);
  if (!style.empty()) html = u"<span style=\"" + style + u"\">" + html + u"</span>";
  return html;
}

}  // namespace

TRichTextRuns HtmlToRichText(std::u16string_view AHtml, const TCellFontInfo& ABaseFont) {
  TRunBuilder builder(ABaseFont);
  THtmlScanner html(AHtml, detail::kHtmlUnreadable);
  for (auto piece = html.Next(); piece != detail::hpEnd; piece = html.Next()) {
    if (piece == detail::hpTag) {
      AddTag(html, builder);
    } else {
      builder.Append(detail::FoldHtmlText(html.Text()));
    }
  }
  return builder.Take();
}

std::u16string HtmlToPlain(std::u16string_view AHtml) { return RichTextToPlain(HtmlToRichText(AHtml)); }

std::u16string RichTextToHtml(const TRichTextRuns& ARuns, const TCellFontInfo& ABaseFont) {
  std::u16string html;
  for (const TRichTextRun& run : ARuns) html += RunToHtml(run, ABaseFont);
  return html;
}

bool RichTextHasFormatting(const TRichTextRuns& ARuns, const TCellFontInfo& ABase) {
  return std::any_of(ARuns.begin(), ARuns.end(), [&](const TRichTextRun& ARun) { return !(ARun.Font == ABase); });
}

std::u16string RichTextToPlain(const TRichTextRuns& ARuns) {
  std::u16string text;
  for (const TRichTextRun& run : ARuns) text += run.Text.View();
  return text;
}

}  // namespace tessarine

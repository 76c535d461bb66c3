#include <tessarine/io/xlsx/detail/XlsxPageWriter.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>

namespace tessarine::detail {

namespace {

void AppendOptions(const TPageSetup& ASetup, std::string& AOut) {
  if (!ASetup.PrintHeadings && !ASetup.PrintGridlines && !ASetup.CenterHorizontally && !ASetup.CenterVertically) return;
  AOut += "<printOptions";
  AppendXlsxFlag("horizontalCentered", ASetup.CenterHorizontally, AOut);
  AppendXlsxFlag("verticalCentered", ASetup.CenterVertically, AOut);
  AppendXlsxFlag("headings", ASetup.PrintHeadings, AOut);
  AppendXlsxFlag("gridLines", ASetup.PrintGridlines, AOut);
  AOut += "/>";
}

/// All six have to be there.
void AppendMargins(const TPageSetup& ASetup, std::string& AOut) {
  const TPageSetup standard;
  const struct {
    std::string_view Name;
    double TPageSetup::*Margin;
  } margins[] = {
      {"left", &TPageSetup::MarginLeft},     {"right", &TPageSetup::MarginRight},
      {"top", &TPageSetup::MarginTop},       {"bottom", &TPageSetup::MarginBottom},
      {"header", &TPageSetup::MarginHeader}, {"footer", &TPageSetup::MarginFooter},
  };
  AOut += "<pageMargins";
  for (const auto& margin : margins) {
    const double value = ASetup.*margin.Margin;
    AppendXlsxNumber(margin.Name, std::isfinite(value) ? value : standard.*margin.Margin, AOut);
  }
  AOut += "/>";
}

void AppendPage(const TPageSetup& ASetup, std::string& AOut) {
  constexpr std::string_view kComments[] = {"", "atEnd", "asDisplayed"};
  constexpr std::string_view kErrors[] = {"", "blank", "dash", "NA"};
  AOut += "<pageSetup";
  if (ASetup.PaperSize() != psCustom) AppendXlsxInt("paperSize", PaperSizeToOOXML(ASetup.PaperSize()), AOut);
  if (!ASetup.FitToPage && ASetup.ScalePercent != 100) AppendXlsxInt("scale", ASetup.ScalePercent, AOut);
  if (ASetup.FirstPageNumber > 0) AppendXlsxInt("firstPageNumber", ASetup.FirstPageNumber, AOut);
  if (ASetup.FitToPage) {
    AppendXlsxInt("fitToWidth", ASetup.FitToWidth, AOut);
    AppendXlsxInt("fitToHeight", ASetup.FitToHeight, AOut);
  }
  if (ASetup.PageOrder == poOverThenDown) AppendXlsxWord("pageOrder", "overThenDown", AOut);
  AppendXlsxWord("orientation", ASetup.Orientation == poLandscape ? "landscape" : "portrait", AOut);
  AppendXlsxFlag("blackAndWhite", ASetup.BlackAndWhite, AOut);
  AppendXlsxFlag("draft", ASetup.DraftQuality, AOut);
  if (ASetup.CommentsMode != pcmNone)
    AppendXlsxWord("cellComments", kComments[static_cast<size_t>(ASetup.CommentsMode)], AOut);
  AppendXlsxFlag("useFirstPageNumber", ASetup.FirstPageNumber > 0, AOut);
  if (ASetup.ErrorsMode != pemDisplayed)
    AppendXlsxWord("errors", kErrors[static_cast<size_t>(ASetup.ErrorsMode)], AOut);
  AOut += "/>";
}

void AppendSection(std::string_view AName, const THeaderFooterSection& ASection, std::string& AOut) {
  if (ASection.IsEmpty()) return;
  std::u16string text;
  if (!ASection.Left.IsEmpty()) (text += u"&L") += ASection.Left.View();
  if (!ASection.Center.IsEmpty()) (text += u"&C") += ASection.Center.View();
  if (!ASection.Right.IsEmpty()) (text += u"&R") += ASection.Right.View();
  AppendXlsxElement(AName, text, AOut);
}

void AppendHeaderFooter(const TPageSetup& ASetup, std::string& AOut) {
  if (ASetup.Header.IsEmpty() && ASetup.Footer.IsEmpty()) return;
  AOut += "<headerFooter>";
  AppendSection("oddHeader", ASetup.Header, AOut);
  AppendSection("oddFooter", ASetup.Footer, AOut);
  AOut += "</headerFooter>";
}

/// A break of the model stands before its line, one of the file behind the line before it.
void AppendBreaks(std::string_view AName, const std::vector<int32_t>& ABreaks, int32_t ALastLine, int32_t ALastAcross,
                  std::string& AOut) {
  const auto end = std::upper_bound(ABreaks.begin(), ABreaks.end(), ALastLine);
  if (end == ABreaks.begin()) return;
  (AOut += '<') += AName;
  AppendXlsxInt("count", end - ABreaks.begin(), AOut);
  AppendXlsxInt("manualBreakCount", end - ABreaks.begin(), AOut);
  AOut += '>';
  for (auto line = ABreaks.begin(); line != end; ++line) {
    AOut += "<brk";
    AppendXlsxInt("id", *line - 1, AOut);
    AppendXlsxInt("max", ALastAcross - 1, AOut);
    AOut += " man=\"1\"/>";
  }
  ((AOut += "</") += AName) += '>';
}

}  // namespace

void AppendXlsxPageSetup(const TPageSetup& APageSetup, std::string& AOut) {
  AppendOptions(APageSetup, AOut);
  AppendMargins(APageSetup, AOut);
  AppendPage(APageSetup, AOut);
  AppendHeaderFooter(APageSetup, AOut);
  AppendBreaks("rowBreaks", APageSetup.RowBreaks(), kMaxRow, kMaxCol, AOut);
  AppendBreaks("colBreaks", APageSetup.ColBreaks(), kMaxCol, kMaxRow, AOut);
}

}  // namespace tessarine::detail

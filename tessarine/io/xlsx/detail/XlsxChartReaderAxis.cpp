#include <tessarine/io/xlsx/detail/XlsxChartParts.h>
#include <tessarine/io/xlsx/detail/XlsxChartWords.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kFullTurn = 21'600'000;  // 60,000ths of a degree

struct TOptionalNumber {
  bool Has = false;
  double Value = 0;
};

TOptionalNumber ReadNumber(const TXmlNode* AParent, std::string_view AName) {
  TOptionalNumber number;
  number.Has = TryParseFileNumber(XlsxTrim(XlsxChildVal(AParent, AName)), number.Value);
  return number;
}

TOptionalNumber ReadTurn(const TXmlNode* ABody) {
  const TXmlNode* const body = XmlFindChild(ABody, "bodyPr");
  if (!XmlHasAttr(body, "rot")) return {};
  return {true, static_cast<double>(XlsxWholeAttr(body, "rot", 0, -kFullTurn, kFullTurn))};
}

void ReadScale(const TXmlNode* AAxis, TSheetChartAxisInfo& AInfo) {
  const TXmlNode* const scaling = XmlFindChild(AAxis, "scaling");
  const auto take = [](TOptionalNumber ANumber, bool& AHas, double& AValue) {
    AHas = ANumber.Has;
    if (ANumber.Has) AValue = ANumber.Value;
  };
  take(ReadNumber(scaling, "min"), AInfo.HasMin, AInfo.MinVal);
  take(ReadNumber(scaling, "max"), AInfo.HasMax, AInfo.MaxVal);
  take(ReadNumber(AAxis, "majorUnit"), AInfo.HasMajorUnit, AInfo.MajorUnitVal);
  take(ReadNumber(AAxis, "minorUnit"), AInfo.HasMinorUnit, AInfo.MinorUnitVal);
  AInfo.OrientationMaxMin = EqualXmlNames(XlsxChildVal(scaling, "orientation"), "maxMin");
}

void ReadGridlines(const TXmlNode* ALines, const TTessarineTheme* ATheme, bool& AHas, TSheetChartStroke& AStroke) {
  AHas = ALines != nullptr;
  AStroke = XlsxReadStroke(XmlFindChild(XmlFindChild(ALines, "spPr"), "ln"), ATheme);
}

void ReadTitle(const TXmlNode* ATitle, const TTessarineTheme* ATheme, TSheetChartAxisInfo& AInfo) {
  if (!ATitle) return;
  const TXmlNode* const text = XmlFindChild(ATitle, "tx");
  const TXmlNode* const rich = XmlFindChild(text, "rich");
  const TXmlNode* const body = rich ? rich : XmlFindChild(ATitle, "txPr");
  const std::u16string title = XlsxChartText(text);
  AInfo.Title = title.empty() ? TText(u"Axis Title") : TText(title);
  AInfo.TitleFont = XlsxTextBodyFont(body, ATheme);
  const TOptionalNumber turn = ReadTurn(body);
  AInfo.HasTitleRotation = turn.Has;
  AInfo.TitleRotation = static_cast<int32_t>(turn.Value);
  AInfo.Layout = XlsxReadLayout(ATitle);
}

void ReadLabels(const TXmlNode* AAxis, const TTessarineTheme* ATheme, TSheetChartAxisInfo& AInfo) {
  const TXmlNode* const text = XmlFindChild(AAxis, "txPr");
  AInfo.Font = XlsxTextBodyFont(text, ATheme);
  const TOptionalNumber turn = ReadTurn(text);
  AInfo.HasTickLabelRotation = turn.Has;
  AInfo.TickLabelRotation = static_cast<int32_t>(turn.Value);
  AInfo.TickLblPos = XlsxValueOfWord(kXlsxTickLabels, XlsxChildVal(AAxis, "tickLblPos"), ctlpNextTo);
  AInfo.NumFmt = XlsxText(XmlAttr(XmlFindChild(AAxis, "numFmt"), "formatCode"));
}

}  // namespace

TSheetChartAxisInfo XlsxReadAxis(const TXmlNode* AAxis, const TXlsxChartContext& AContext) {
  TSheetChartAxisInfo info = TSheetChartAxisInfo::OfNewChart();
  info.Deleted = XmlChildBool(AAxis, "delete");
  info.Line = XlsxReadStroke(XmlFindChild(XmlFindChild(AAxis, "spPr"), "ln"), AContext.Theme);
  ReadGridlines(XmlFindChild(AAxis, "majorGridlines"), AContext.Theme, info.MajorGridlines, info.MajorGridStroke);
  ReadGridlines(XmlFindChild(AAxis, "minorGridlines"), AContext.Theme, info.MinorGridlines, info.MinorGridStroke);
  info.MajorTickMark = XlsxValueOfWord(kXlsxTickMarks, XlsxChildVal(AAxis, "majorTickMark"), info.MajorTickMark);
  info.MinorTickMark = XlsxValueOfWord(kXlsxTickMarks, XlsxChildVal(AAxis, "minorTickMark"), info.MinorTickMark);
  ReadScale(AAxis, info);
  ReadLabels(AAxis, AContext.Theme, info);
  ReadTitle(XmlFindChild(AAxis, "title"), AContext.Theme, info);
  const std::string_view between = XlsxChildVal(AAxis, "crossBetween");
  info.HasCrossBetween = !between.empty();
  info.CrossBetweenMidCat = EqualXmlNames(between, "midCat");
  info.AxPos = TText::FromUtf8(XlsxChildVal(AAxis, "axPos"));
  const std::string_view crosses = XlsxChildVal(AAxis, "crosses");
  info.Crosses = crosses.empty() ? TText(u"autoZero") : TText::FromUtf8(crosses);
  return info;
}

}  // namespace tessarine::detail

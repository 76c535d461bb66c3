#include <tessarine/io/xlsx/detail/XlsxDrawingPresets.h>

#include <algorithm>
#include <string>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kNames =
    "accentBorderCallout1 accentBorderCallout2 accentBorderCallout3 accentCallout1 accentCallout2 accentCallout3 "
    "actionButtonBackPrevious actionButtonBeginning actionButtonBlank actionButtonDocument actionButtonEnd "
    "actionButtonForwardNext actionButtonHelp actionButtonHome actionButtonInformation actionButtonMovie "
    "actionButtonReturn actionButtonSound arc bentArrow bentConnector2 bentConnector3 bentConnector4 bentConnector5 "
    "bentUpArrow bevel blockArc borderCallout1 borderCallout2 borderCallout3 bracePair bracketPair callout1 callout2 "
    "callout3 can chartPlus chartStar chartX chevron chord circularArrow cloud cloudCallout corner cornerTabs cube "
    "curvedConnector2 curvedConnector3 curvedConnector4 curvedConnector5 curvedDownArrow curvedLeftArrow "
    "curvedRightArrow curvedUpArrow decagon diagStripe diamond dodecagon donut doubleWave downArrow downArrowCallout "
    "ellipse ellipseRibbon ellipseRibbon2 flowChartAlternateProcess flowChartCollate flowChartConnector "
    "flowChartDecision flowChartDelay flowChartDisplay flowChartDocument flowChartExtract flowChartInputOutput "
    "flowChartInternalStorage flowChartMagneticDisk flowChartMagneticDrum flowChartMagneticTape flowChartManualInput "
    "flowChartManualOperation flowChartMerge flowChartMultidocument flowChartOfflineStorage "
    "flowChartOffpageConnector flowChartOnlineStorage flowChartOr flowChartPredefinedProcess flowChartPreparation "
    "flowChartProcess flowChartPunchedCard flowChartPunchedTape flowChartSort flowChartSummingJunction "
    "flowChartTerminator foldedCorner frame funnel gear6 gear9 halfFrame heart heptagon hexagon homePlate "
    "horizontalScroll irregularSeal1 irregularSeal2 leftArrow leftArrowCallout leftBrace leftBracket "
    "leftCircularArrow leftRightArrow leftRightArrowCallout leftRightCircularArrow leftRightRibbon leftRightUpArrow "
    "leftUpArrow lightningBolt line lineInv mathDivide mathEqual mathMinus mathMultiply mathNotEqual mathPlus moon "
    "nonIsoscelesTrapezoid noSmoking notchedRightArrow octagon parallelogram pentagon pie pieWedge plaque plaqueTabs "
    "plus quadArrow quadArrowCallout rect ribbon ribbon2 rightArrow rightArrowCallout rightBrace rightBracket "
    "round1Rect round2DiagRect round2SameRect roundRect rtTriangle smileyFace snip1Rect snip2DiagRect snip2SameRect "
    "snipRoundRect squareTabs star10 star12 star16 star24 star32 star4 star5 star6 star7 star8 straightConnector1 "
    "stripedRightArrow sun swooshArrow teardrop trapezoid triangle upArrow upArrowCallout upDownArrow "
    "upDownArrowCallout uturnArrow verticalScroll wave wedgeEllipseCallout wedgeRectCallout wedgeRoundRectCallout";

/// Shapes with one adjustment, which then has no number.
constexpr std::string_view kSingleAdjustment =
    "bevel bracePair bracketPair can chevron cube diagStripe donut foldedCorner hexagon homePlate horizontalScroll "
    "leftBracket moon noSmoking octagon parallelogram plaque plus rightBracket round1Rect roundRect smileyFace "
    "snip1Rect star10 star12 star16 star24 star32 star4 star5 star6 star7 star8 sun teardrop trapezoid triangle "
    "verticalScroll";

constexpr std::string_view kConnectors = "line straightConnector1";

/// The word of a list, whose words are divided by blanks, that is AName but for case; empty for none.
std::string_view FindName(std::string_view AList, std::string_view AName) {
  for (size_t at = 0; at < AList.size();) {
    const size_t end = std::min(AList.find(' ', at), AList.size());
    if (EqualXmlNames(AList.substr(at, end - at), AName)) return AList.substr(at, end - at);
    at = end + 1;
  }
  return {};
}

}  // namespace

TXlsxPreset XlsxPresetOf(std::u16string_view AName) {
  const std::string name = Utf16ToUtf8(AName);
  if (EqualXmlNames(name, "connector")) return {"straightConnector1", true};
  const std::string_view known = FindName(kNames, name);
  if (known.empty()) return {"rect"};
  TXlsxPreset preset{known, !FindName(kConnectors, known).empty()};
  if (!FindName(kSingleAdjustment, known).empty()) preset.Adjustment = "adj";
  return preset;
}

}  // namespace tessarine::detail

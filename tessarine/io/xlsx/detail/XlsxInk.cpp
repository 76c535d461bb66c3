#include <tessarine/io/xlsx/detail/XlsxInk.h>

#include <algorithm>
#include <cstdint>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr double kMaxTipCm = 100;
constexpr uint8_t kMaskPenOpacity = 128;  // a marker lets through what it covers

/// Centimetres of one unit.
constexpr TXlsxWord<double> kUnits[] = {
    {"cm", 1}, {"mm", 0.1}, {"m", 100}, {"in", 2.54}, {"pt", 2.54 / 72}, {"pc", 2.54 / 6}, {"himetric", 0.001},
};

/// 0 for what is no length.
double LengthCm(const TXmlNode* AProperty) {
  const double length =
      XmlAttrFloat(AProperty, "value", 0) * XlsxValueOfWord(kUnits, XmlAttr(AProperty, "units", "himetric"), 0.0);
  return length > 0 ? std::min(length, kMaxTipCm) : 0;
}

struct TPen {
  double WidthCm = 0;
  double HeightCm = 0;
  bool IsMask = false;
  double Transparency = 0;  // 255: nothing is seen
};

TPen PenOf(const TXmlNode* ABrush) {
  TPen pen;
  for (const TXmlNode* property : TXmlElements(ABrush)) {
    if (!XmlLocalNameIs(property, "brushProperty")) continue;
    const std::string_view name = XmlAttr(property, "name");
    if (EqualXmlNames(name, "width")) pen.WidthCm = LengthCm(property);
    if (EqualXmlNames(name, "height")) pen.HeightCm = LengthCm(property);
    if (EqualXmlNames(name, "rasterOp")) pen.IsMask = EqualXmlNames(XmlAttr(property, "value"), "maskPen");
    if (EqualXmlNames(name, "transparency"))
      pen.Transparency = std::clamp(XmlAttrFloat(property, "value", 0), 0.0, 255.0);
  }
  return pen;
}

uint8_t OpacityOf(const TPen& APen) {
  if (APen.Transparency > 0) return static_cast<uint8_t>(255 - RoundToEven(APen.Transparency));
  return APen.IsMask ? kMaskPenOpacity : uint8_t{255};
}

}  // namespace

void ParseInkMl(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits,
                TSheetDrawing& ADrawing) {
  if (ABytes.empty()) return;
  const TXmlTree tree(ABytes, APartName, ALimits);
  const TXmlNode* const brush = XmlFindDescendant(tree.Root(), "brush");
  if (!brush) return;
  const TPen pen = PenOf(brush);
  ADrawing.InkTipWidthCm = pen.WidthCm;
  ADrawing.InkTipHeightCm = pen.HeightCm > 0 ? pen.HeightCm : pen.WidthCm;
  ADrawing.ImageOpacity = OpacityOf(pen);
}

}  // namespace tessarine::detail

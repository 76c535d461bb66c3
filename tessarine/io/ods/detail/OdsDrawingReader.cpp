#include <tessarine/io/ods/detail/OdsDrawingReader.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numbers>
#include <utility>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/ods/detail/OdsChartReader.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr double kEmuPerOdsCm = 360'000;
constexpr double kMaxCm = 1e6;  // positions and sizes beyond this are cut

int64_t EmuOfCm(double ACm) { return std::llround(std::clamp(ACm, -kMaxCm, kMaxCm) * kEmuPerOdsCm); }

double LengthAttr(const TXmlNode* ANode, std::string_view AName) { return OdsParseLengthCm(XmlAttr(ANode, AName)); }

// ---- position

/// A drawing's box in centimetres and its turn in degrees, clockwise.
struct TOdsBox {
  double X = 0;
  double Y = 0;
  double Width = 0;
  double Height = 0;
  double Turn = 0;
};

/// The box around the ends of a line.
void SetLineBox(const TXmlNode* ANode, TOdsBox& ABox) {
  const double x1 = LengthAttr(ANode, "x1");
  const double x2 = LengthAttr(ANode, "x2");
  const double y1 = LengthAttr(ANode, "y1");
  const double y2 = LengthAttr(ANode, "y2");
  ABox = {std::min(x1, x2), std::min(y1, y2), std::fabs(x2 - x1), std::fabs(y2 - y1), 0};
}

void SetCircleBox(const TXmlNode* ANode, TOdsBox& ABox) {
  const double rx = XmlHasAttr(ANode, "r") ? LengthAttr(ANode, "r") : LengthAttr(ANode, "rx");
  const double ry = XmlHasAttr(ANode, "r") ? rx : LengthAttr(ANode, "ry");
  ABox = {LengthAttr(ANode, "cx") - rx, LengthAttr(ANode, "cy") - ry, 2 * rx, 2 * ry, 0};
}

/// The arguments of the call that begins behind AOpen: up to two, separated by blanks or a comma.
size_t ReadArguments(std::string_view AText, size_t AOpen, std::string_view (&AArguments)[2]) {
  const size_t close = std::min(AText.find(')', AOpen), AText.size());
  size_t count = 0;
  for (size_t at = AOpen; at < close && count < 2;) {
    at = std::min(AText.find_first_not_of(" ,", at), close);
    const size_t end = std::min(AText.find_first_of(" ,)", at), close);
    if (end > at) AArguments[count++] = AText.substr(at, end - at);
    at = end + 1;
  }
  return close;
}

/// Applies "rotate (0.5) translate (1cm 2cm)" in this order to the middle of the box. Angles are radians against the
/// clock. The box keeps its size and gets the turn.
void ApplyTransform(std::string_view AText, TOdsBox& ABox) {
  double x = ABox.X + ABox.Width / 2;
  double y = ABox.Y + ABox.Height / 2;
  double turn = 0;
  for (size_t at = 0; at < AText.size();) {
    const size_t open = AText.find('(', at);
    if (open == AText.npos) break;
    const std::string_view name = AText.substr(at, open - at);
    std::string_view arguments[2];
    at = ReadArguments(AText, open + 1, arguments) + 1;
    if (name.find("rotate") != name.npos) {
      double angle = 0;
      if (!TryParseFileNumber(arguments[0], angle) || std::fabs(angle) > 1e6) continue;
      const double sine = std::sin(angle);
      const double cosine = std::cos(angle);
      const double turned = x * cosine + y * sine;
      y = y * cosine - x * sine;
      x = turned;
      turn -= angle;
    } else if (name.find("translate") != name.npos) {
      x += OdsParseLengthCm(arguments[0]);
      y += OdsParseLengthCm(arguments[1]);
    }
  }
  ABox.X = x - ABox.Width / 2;
  ABox.Y = y - ABox.Height / 2;
  ABox.Turn = turn * 180 / std::numbers::pi;
}

TOdsBox BoxOf(const TXmlNode* ANode) {
  TOdsBox box{LengthAttr(ANode, "x"), LengthAttr(ANode, "y"), LengthAttr(ANode, "width"), LengthAttr(ANode, "height"),
              0};
  if (XmlHasAttr(ANode, "x1")) SetLineBox(ANode, box);
  if (XmlHasAttr(ANode, "cx")) SetCircleBox(ANode, box);
  if (const std::string_view transform = XmlAttr(ANode, "transform"); !transform.empty())
    ApplyTransform(transform, box);
  return box;
}

TDrawingAnchor AnchorOf(const TOdsBox& ABox, TCellAddress ACell) {
  TDrawingAnchor anchor;
  anchor.ExtCxEmu = EmuOfCm(ABox.Width);
  anchor.ExtCyEmu = EmuOfCm(ABox.Height);
  if (ACell.IsValid()) {
    anchor.Kind = dakOneCell;
    anchor.FromCol = anchor.ToCol = ACell.Col;
    anchor.FromRow = anchor.ToRow = ACell.Row;
    anchor.FromColOffEmu = EmuOfCm(ABox.X);
    anchor.FromRowOffEmu = EmuOfCm(ABox.Y);
  } else {
    anchor.Kind = dakAbsolute;
    anchor.PosXEmu = EmuOfCm(ABox.X);
    anchor.PosYEmu = EmuOfCm(ABox.Y);
  }
  return anchor;
}

/// Degrees as drawings have them: 60,000ths, from 0 to below a full turn.
int32_t RotationUnits(double ATurn) {
  constexpr int32_t kUnitsPerDegree = 60'000;
  const double degrees = std::fmod(ATurn, 360);
  return static_cast<int32_t>(std::lround((degrees < 0 ? degrees + 360 : degrees) * kUnitsPerDegree)) %
         (360 * kUnitsPerDegree);
}

// ---- kinds

struct TShapeName {
  std::string_view Name;
  std::u16string_view Preset;
};
constexpr TShapeName kOdsShapes[] = {{"custom-shape", u"rect"}, {"rect", u"rect"}, {"ellipse", u"ellipse"},
                                     {"circle", u"ellipse"},    {"line", u"line"}, {"polygon", u"rect"},
                                     {"polyline", u"rect"},     {"path", u"rect"}, {"connector", u"line"}};

/// What the geometry of a custom shape is called here.
struct TGeometryName {
  std::string_view Type;
  std::u16string_view Preset;
};
constexpr TGeometryName kReadGeometries[] = {
    {"right-triangle", u"rtTriangle"},
    {"rttriangle", u"rtTriangle"},
    {"triangle", u"triangle"},
    {"isosceles-triangle", u"triangle"},
    {"ellipse", u"ellipse"},
    {"rect", u"rect"},
    {"rectangle", u"rect"},
    {"round-rectangle", u"roundRect"},
    {"diamond", u"diamond"},
};

struct TPathName {
  std::string_view Start;
  std::u16string_view Preset;
};
constexpr TPathName kReadPaths[] = {{"M 0 21600 L 21600 21600 0 0 ", u"rtTriangle"},
                                    {"M 10800 0 L 21600 21600 0 21600 ", u"triangle"},
                                    {"M ?f0 0 L 21600 21600 0 21600 ", u"triangle"}};

std::u16string_view PresetOf(const TXmlNode* AGeometry) {
  std::string type(XmlAttr(AGeometry, "type"));
  for (char& unit : type) unit = unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + 32) : unit;
  std::string_view name = type;
  if (name.starts_with("ooxml-")) name.remove_prefix(6);
  for (const TGeometryName& geometry : kReadGeometries)
    if (geometry.Type == name) return geometry.Preset;
  const std::string_view path = XmlAttr(AGeometry, "enhanced-path", XmlAttr(AGeometry, "path"));
  for (const TPathName& known : kReadPaths)
    if (path.starts_with(known.Start)) return known.Preset;
  return path.find("?f0 ?f3") == path.npos ? u"rect" : u"triangle";
}

struct TImageType {
  std::string_view Extension;
  std::u16string_view Type;
};
constexpr TImageType kOdsImageTypes[] = {{".jpg", u"image/jpeg"}, {".jpeg", u"image/jpeg"},   {".gif", u"image/gif"},
                                         {".bmp", u"image/bmp"},  {".svg", u"image/svg+xml"}, {".tif", u"image/tiff"},
                                         {".tiff", u"image/tiff"}};

std::u16string_view OdsImageTypeOf(std::string_view APart) {
  const size_t dot = APart.rfind('.');
  const std::string_view extension = dot == APart.npos ? std::string_view() : APart.substr(dot);
  for (const TImageType& type : kOdsImageTypes)
    if (EqualXmlNames(type.Extension, extension)) return type.Type;
  return u"image/png";
}

/// The name of a part inside the package; empty for a link that leads out of it.
std::string PartOf(std::string_view AHref) {
  if (AHref.starts_with("./")) AHref.remove_prefix(2);
  while (AHref.starts_with('/')) AHref.remove_prefix(1);
  while (AHref.ends_with('/')) AHref.remove_suffix(1);
  const bool leadsOut = AHref.find(':') != AHref.npos || AHref.starts_with("..");
  return leadsOut ? std::string() : std::string(AHref);
}

std::u16string ParagraphsOf(const TXmlNode* ANode) {
  std::u16string text;
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(child, "p")) continue;
    if (!text.empty()) text += u"\r\n";
    text += XmlNodeText16(child);
  }
  return text;
}

}  // namespace

// ---- reading

bool TOdsDrawingReader::IsDrawing(std::string_view ALocalName) {
  if (ALocalName == "frame" || ALocalName == "g" || ALocalName == "a") return true;
  return std::any_of(std::begin(kOdsShapes), std::end(kOdsShapes),
                     [&](const TShapeName& AShape) { return AShape.Name == ALocalName; });
}

void TOdsDrawingReader::Read(TXmlReader& AReader, TWorksheet& ASheet, TCellAddress ACell) {
  const TXmlTree tree(AReader, FContext.Options.Limits);
  // Groups and links are opened, however deep they stand in one another.
  std::vector<const TXmlNode*> open{tree.Root()};
  while (!open.empty()) {
    const TXmlNode* const node = open.back();
    open.pop_back();
    const std::string_view name = XmlLocalName(node);
    if (name != "g" && name != "a") {
      ReadNode(node, ASheet, ACell);
      continue;
    }
    const size_t first = open.size();
    for (const TXmlNode* child : TXmlElements(node))
      if (IsDrawing(XmlLocalName(child))) open.push_back(child);
    std::reverse(open.begin() + static_cast<std::ptrdiff_t>(first), open.end());
  }
}

void TOdsDrawingReader::ReadNode(const TXmlNode* ANode, TWorksheet& ASheet, TCellAddress ACell) {
  TXlsxBudget::Take(
      FContext.Budget.Drawings, 1, [] { return std::string("content.xml"); }, "the drawings");
  TPending pending;
  pending.Sheet = &ASheet;
  pending.Drawing = std::make_unique<TSheetDrawing>();
  TSheetDrawing& drawing = *pending.Drawing;
  const TOdsBox box = BoxOf(ANode);
  drawing.Anchor = AnchorOf(box, ACell);
  drawing.Rotation = RotationUnits(box.Turn);
  drawing.Name = TText::FromUtf8(XmlAttr(ANode, "name"));
  drawing.ZOrder = XmlAttrInt(ANode, "z-index", 0);
  if (XmlLocalNameIs(ANode, "frame")) {
    ReadFrame(ANode, pending);
  } else {
    ReadShape(ANode, pending);
  }
  if (drawing.Kind == sdkUnknown) {
    FContext.ReportDropped("drawing", ASheet.Name().ToUtf8(), 1, XmlAttr(ANode, "name"));
    return;
  }
  FPending.push_back(std::move(pending));
}

/// An object counts before the picture that stands for it.
void TOdsDrawingReader::ReadFrame(const TXmlNode* ANode, TPending& APending) const {
  TSheetDrawing& drawing = *APending.Drawing;
  if (const TXmlNode* const object = XmlFindChild(ANode, "object")) {
    APending.ObjectPart = PartOf(XmlAttr(object, "href"));
    if (!APending.ObjectPart.empty()) drawing.Kind = sdkChart;
    return;
  }
  if (const TXmlNode* const image = XmlFindChild(ANode, "image")) {
    APending.ImagePart = PartOf(XmlAttr(image, "href"));
    if (!APending.ImagePart.empty()) drawing.Kind = sdkPicture;
    return;
  }
  if (const TXmlNode* const box = XmlFindChild(ANode, "text-box")) {
    ReadShape(ANode, APending);
    drawing.IsTextBox = true;
    drawing.Text = TText(ParagraphsOf(box));
  }
}

void TOdsDrawingReader::ReadShape(const TXmlNode* ANode, TPending& APending) const {
  TSheetDrawing& drawing = *APending.Drawing;
  drawing.Kind = sdkShape;
  const std::string_view name = XmlLocalName(ANode);
  for (const TShapeName& shape : kOdsShapes)
    if (shape.Name == name) drawing.PresetGeom = TText(shape.Preset);
  if (const TXmlNode* const geometry = XmlFindChild(ANode, "enhanced-geometry")) {
    drawing.PresetGeom = TText(PresetOf(geometry));
    drawing.FlipH = XmlAttr(geometry, "mirror-horizontal") == "true";
    drawing.FlipV = XmlAttr(geometry, "mirror-vertical") == "true";
  }
  if (name == "line") {
    drawing.FlipH = LengthAttr(ANode, "x2") < LengthAttr(ANode, "x1");
    drawing.FlipV = LengthAttr(ANode, "y2") < LengthAttr(ANode, "y1");
    drawing.HasFill = false;
  }
  drawing.Text = TText(ParagraphsOf(ANode));
  const auto style = FContext.Styles.TryGetGraphicStyle(XmlAttr(ANode, "style-name"));
  if (!style) return;
  drawing.HasFill = drawing.HasFill && style->HasFill;
  drawing.HasLine = style->HasStroke;
  if (style->FillColor) drawing.FillColor = OdsBgrColor(*style->FillColor);
  if (style->StrokeColor) drawing.LineColor = OdsBgrColor(*style->StrokeColor);
  if (style->StrokeWidthCm > 0) drawing.LineWidthEmu = EmuOfCm(style->StrokeWidthCm);
}

// ---- giving to the sheets

void TOdsDrawingReader::Apply(const TXlsxPackage& APackage) {
  std::stable_sort(FPending.begin(), FPending.end(), [](const TPending& ALeft, const TPending& ARight) {
    return ALeft.Drawing->ZOrder < ARight.Drawing->ZOrder;
  });
  for (TPending& pending : FPending) {
    if (Complete(APackage, pending)) {
      pending.Sheet->Drawings().Add(std::move(pending.Drawing));
    } else {
      FContext.ReportDropped(pending.ObjectPart.empty() ? "picture" : "embedded object", pending.Sheet->Name().ToUtf8(),
                             1, pending.ImagePart + pending.ObjectPart);
    }
  }
  FPending.clear();
}

/// False when the part that the drawing needs is missing or holds something else.
bool TOdsDrawingReader::Complete(const TXlsxPackage& APackage, TPending& APending) {
  if (APending.Drawing->Kind == sdkShape) return true;
  FContext.Options.Control.CheckStop();
  const std::string part = APending.ObjectPart.empty() ? APending.ImagePart : APending.ObjectPart + "/content.xml";
  TXlsxBudget::Take(
      FContext.Budget.DrawingBytes, static_cast<size_t>(APackage.DeclaredSize(part)), [&] { return part; },
      "the pictures and charts");
  const TByteBuffer bytes = APackage.ReadPart(part);
  if (bytes.IsEmpty()) return false;
  if (!APending.ObjectPart.empty()) {
    TOdsChartReader reader(FContext.Options.Limits, FContext.Budget.ChartPoints);
    const bool isChart = reader.Read(bytes.Text(), part, *APending.Drawing);
    if (reader.HasLeftOut())
      FContext.ReportDropped("points of a chart", APending.Sheet->Name().ToUtf8(), 1, "their references stay");
    return isChart;
  }
  APending.Drawing->SetImage(bytes.Bytes(), TText(OdsImageTypeOf(part)));
  return true;
}

}  // namespace tessarine::detail

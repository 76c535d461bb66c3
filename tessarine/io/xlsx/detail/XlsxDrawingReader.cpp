#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxChartReader.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingRoom.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingShapes.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingWords.h>
#include <tessarine/io/xlsx/detail/XlsxDrawings.h>
#include <tessarine/io/xlsx/detail/XlsxInk.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr int32_t kMaxDrawings = 65'536;  // of one sheet

constexpr TXlsxWord<std::u16string_view> kImageTypes[] = {
    {".jpg", u"image/jpeg"},  {".jpeg", u"image/jpeg"}, {".gif", u"image/gif"},
    {".emf", u"image/x-emf"}, {".wmf", u"image/x-wmf"},
};

constexpr TXlsxWord<TDrawingAnchorKind> kAnchors[] = {
    {"twoCellAnchor", dakTwoCell},
    {"oneCellAnchor", dakOneCell},
    {"absoluteAnchor", dakAbsolute},
};

enum class TObjectKind : uint8_t { Picture, Chart, Shape, Group, Alternatives, Other };

constexpr TXlsxWord<TObjectKind> kObjects[] = {
    {"pic", TObjectKind::Picture}, {"graphicFrame", TObjectKind::Chart},
    {"sp", TObjectKind::Shape},    {"cxnSp", TObjectKind::Shape},
    {"grpSp", TObjectKind::Group}, {"AlternateContent", TObjectKind::Alternatives},
};

TObjectKind ObjectKindOf(const TXmlNode* ANode) {
  return XlsxValueOfWord(kObjects, XmlLocalName(ANode), TObjectKind::Other);
}

/// AText in lower case (ASCII).
std::string Lowered(std::string_view AText) {
  std::string text(AText);
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char AChar) { return AChar >= 'A' && AChar <= 'Z' ? static_cast<char>(AChar + 32) : AChar; });
  return text;
}

/// The name of a file in lower case.
std::string FileNameOf(std::string_view APath) { return Lowered(APath.substr(APath.rfind('/') + 1)); }

TText ImageTypeOf(std::string_view APart) {
  const size_t dot = APart.rfind('.');
  const std::string_view extension = dot == std::string_view::npos ? std::string_view() : APart.substr(dot);
  return TText(XlsxValueOfWord(kImageTypes, extension, std::u16string_view(u"image/png")));
}

// ---- anchors

/// A 0-based line of a file as a 1-based one that exists.
int32_t LineOf(const TXmlNode* ACorner, std::string_view AName, int32_t ALast) {
  int32_t value = 0;
  if (!TryParseInt32(XlsxTrim(XmlNodeText(XmlFindChild(ACorner, AName))), value)) return 1;
  return std::clamp(value, 0, ALast - 1) + 1;
}

int64_t OffsetOf(const TXmlNode* ACorner, std::string_view AName) {
  return XlsxEmu(XlsxTrim(XmlNodeText(XmlFindChild(ACorner, AName))), 0);
}

void ReadCorner(const TXmlNode* ACorner, int32_t& ACol, int32_t& ARow, int64_t& AColOffset, int64_t& ARowOffset) {
  if (!ACorner) return;
  ACol = LineOf(ACorner, "col", kMaxCol);
  ARow = LineOf(ACorner, "row", kMaxRow);
  AColOffset = OffsetOf(ACorner, "colOff");
  ARowOffset = OffsetOf(ACorner, "rowOff");
}

/// The place of an object inside its anchor, wherever its kind keeps it.
const TXmlNode* TransformOf(const TXmlNode* AObject) {
  for (const char* properties : {"spPr", "grpSpPr"})
    if (const TXmlNode* found = XmlFindChild(XmlFindChild(AObject, properties), "xfrm")) return found;
  return XmlFindChild(AObject, "xfrm");
}

/// Sets the extent when AExtent states one of at least 1 in both directions.
bool TryReadExtent(const TXmlNode* AExtent, TDrawingAnchor& AAnchor) {
  const int64_t cx = XlsxEmuAttr(AExtent, "cx", 0);
  const int64_t cy = XlsxEmuAttr(AExtent, "cy", 0);
  if (cx < 1 || cy < 1) return false;
  AAnchor.ExtCxEmu = cx;
  AAnchor.ExtCyEmu = cy;
  return true;
}

TDrawingAnchor ReadAnchor(const TXmlNode* ANode, TDrawingAnchorKind AKind, const TXmlNode* AObject) {
  TDrawingAnchor anchor;
  anchor.Kind = AKind;
  if (AKind != dakAbsolute)
    ReadCorner(XmlFindChild(ANode, "from"), anchor.FromCol, anchor.FromRow, anchor.FromColOffEmu, anchor.FromRowOffEmu);
  if (AKind != dakTwoCell) {
    const TXmlNode* const extent = XmlFindChild(ANode, "ext");
    anchor.ExtCxEmu = XlsxEmuAttr(extent, "cx", 0);
    anchor.ExtCyEmu = XlsxEmuAttr(extent, "cy", 0);
  }
  if (AKind == dakAbsolute) {
    const TXmlNode* const position = XmlFindChild(ANode, "pos");
    anchor.PosXEmu = XlsxEmuAttr(position, "x", 0);
    anchor.PosYEmu = XlsxEmuAttr(position, "y", 0);
  }
  if (AKind != dakTwoCell) return anchor;
  if (EqualXmlNames(XmlAttr(ANode, "editAs"), "oneCell") &&
      TryReadExtent(XmlFindChild(TransformOf(AObject), "ext"), anchor))
    anchor.Kind = dakOneCell;
  else
    ReadCorner(XmlFindChild(ANode, "to"), anchor.ToCol, anchor.ToRow, anchor.ToColOffEmu, anchor.ToRowOffEmu);
  return anchor;
}

// ---- objects

/// What an anchor holds: an object, or ink with the picture that stands for it.
struct TAnchored {
  const TXmlNode* Object = nullptr;
  const TXmlNode* Ink = nullptr;
};

const TXmlNode* FirstObject(const TXmlNode* AParent) {
  for (const TXmlNode* child : TXmlElements(AParent))
    if (ObjectKindOf(child) < TObjectKind::Alternatives) return child;
  return nullptr;
}

TAnchored Alternative(const TXmlNode* AAlternatives) {
  const TXmlNode* const choice = XmlFindChild(AAlternatives, "Choice");
  const TXmlNode* const fallback = XmlFindChild(AAlternatives, "Fallback");
  if (const TXmlNode* ink = XmlFindChild(choice, "contentPart")) return {FirstObject(fallback), ink};
  const TXmlNode* const object = FirstObject(choice);
  return {object ? object : FirstObject(fallback), nullptr};
}

TAnchored AnchoredIn(const TXmlNode* AAnchor) {
  for (const TXmlNode* child : TXmlElements(AAnchor)) {
    const TObjectKind kind = ObjectKindOf(child);
    if (kind == TObjectKind::Other) continue;
    return kind == TObjectKind::Alternatives ? Alternative(child) : TAnchored{child, nullptr};
  }
  return {nullptr, XmlFindChild(AAnchor, "contentPart")};
}

/// Reads one drawing part.
class TDrawingPartReader {
 public:
  TDrawingPartReader(const TXlsxPackage& APackage, std::string APart, TWorksheet& ASheet, const TTessarineTheme& ATheme,
                     TFileReport* AReport)
      : FPackage(APackage),
        FPart(std::move(APart)),
        FDrawings(ASheet.Drawings()),
        FTheme(ATheme),
        FReport(AReport),
        FRoom(&APackage) {}

  /// Nothing happens when the part is missing.
  void Read(std::string_view ASheetRelId) {
    const TByteBuffer bytes = FPackage.ReadPart(FPart);
    if (bytes.IsEmpty()) return;
    const TXmlTree tree(bytes.Text(), FPart, FPackage.Limits());
    FDrawings.Bag().SetSheetRelId(TText::FromUtf8(ASheetRelId));
    FDrawings.Bag().SetDrawingPart(TText::FromUtf8(FPart), bytes.Bytes());
    ReadOwnRelationships();
    for (const TXmlNode* child : TXmlElements(tree.Root())) ReadRootChild(child);
  }

 private:
  void Drop(std::string_view AFeature, std::string_view ANote, uint64_t ACount = 1) {
    if (FReport) FReport->Add(AFeature, ffDropped, FPart, ACount, ANote);
  }

  void ReadOwnRelationships() {
    const std::string name = XlsxRelationshipsPart(FPart);
    const TByteBuffer bytes = FPackage.ReadPart(name);
    if (bytes.IsEmpty()) return;
    FDrawings.Bag().SetDrawingRels(TText::FromUtf8(name), bytes.Bytes());
    FRelationships = XlsxParseRelationships(bytes.Text(), name, FPackage.Limits());
  }

  void ReadRootChild(const TXmlNode* ANode) {
    const auto row = std::find_if(std::begin(kAnchors), std::end(kAnchors),
                                  [ANode](const auto& ARow) { return EqualXmlNames(ARow.Word, XmlLocalName(ANode)); });
    if (row == std::end(kAnchors)) return Drop("drawing anchor", XmlLocalName(ANode));
    const TAnchored anchored = AnchoredIn(ANode);
    if (!anchored.Object && !anchored.Ink) return Drop("drawing object", "an anchor without a known object");
    if (FDrawings.Count() >= kMaxDrawings || !FRoom.TryTake(sizeof(TSheetDrawing)))
      return Drop("drawing", "more than the reader takes of one sheet");
    auto drawing = std::make_unique<TSheetDrawing>();
    drawing->Anchor = ReadAnchor(ANode, row->Value, anchored.Object);
    ReadNames(anchored, *drawing);
    if (anchored.Object) ReadObject(anchored.Object, *drawing);
    if (anchored.Ink) ReadInk(anchored.Ink, *drawing);
    FDrawings.Add(std::move(drawing));
  }

  /// Name and visibility stand in the one child that begins with "nv".
  static void ReadNames(const TAnchored& AAnchored, TSheetDrawing& ADrawing) {
    for (const TXmlNode* child : TXmlElements(AAnchored.Object ? AAnchored.Object : AAnchored.Ink)) {
      const TXmlNode* const names = XmlFindChild(child, "cNvPr");
      if (!names) continue;
      ADrawing.Name = TText::FromUtf8(XmlAttr(names, "name"));
      ADrawing.Hidden = XlsxAttrIsOn(names->Attributes, "hidden");
      return;
    }
  }

  void ReadObject(const TXmlNode* AObject, TSheetDrawing& ADrawing) {
    switch (ObjectKindOf(AObject)) {
      case TObjectKind::Picture: return ReadPicture(AObject, ADrawing);
      case TObjectKind::Chart: return ReadFrame(AObject, ADrawing);
      case TObjectKind::Shape: return ReadXlsxShape(AObject, FTheme, ADrawing);
      case TObjectKind::Group: return Drop("group shape", "only its place is kept");
      case TObjectKind::Alternatives:
      case TObjectKind::Other: return;
    }
  }

  /// The name of the part that a relationship of the drawing part leads to; empty for none.
  std::string PartOf(std::string_view AId) const {
    const TXlsxRelationship* const relationship = FRelationships.Find(AId);
    return relationship ? XlsxResolveTarget(FPart, relationship->Target) : std::string();
  }

  /// The bytes of a part, kept in the bag; null when it is missing or there is no room for one more copy of it.
  const TDrawingBytes* KeepPart(const std::string& APart) {
    if (APart.empty()) return nullptr;
    TSheetDrawingBag& bag = FDrawings.Bag();
    const TText path = TText::FromUtf8(APart);
    auto found = bag.Parts().find(path);
    if (found == bag.Parts().end()) {
      const TByteBuffer bytes = FPackage.ReadPart(APart);
      if (bytes.IsEmpty()) return nullptr;
      bag.AddPart(path, bytes.Bytes());
      return &bag.Parts().find(path)->second;
    }
    if (FRoom.TryTake(found->second.size())) return &found->second;
    Drop("drawing part", "named more often than the reader takes");
    return nullptr;
  }

  static std::string_view TextOf(const TDrawingBytes& ABytes) {
    return {reinterpret_cast<const char*>(ABytes.data()), ABytes.size()};
  }

  void ReadPicture(const TXmlNode* APicture, TSheetDrawing& ADrawing) {
    ADrawing.Kind = sdkPicture;
    ReadXlsxTransform(TransformOf(APicture), ADrawing);
    const TXmlNode* const blip = XmlFindDescendant(APicture, "blip");
    const TXmlNode* const opacity = XmlFindChild(blip, "alphaModFix");
    ADrawing.ImageOpacity =
        static_cast<uint8_t>((XlsxWholeAttr(opacity, "amt", 100'000, 0, 100'000) * 255 + 50'000) / 100'000);
    const std::string part = PartOf(XmlAttr(blip, "embed"));
    if (const TDrawingBytes* bytes = KeepPart(part)) ADrawing.SetImage(*bytes, ImageTypeOf(part));
  }

  void ReadInk(const TXmlNode* AInk, TSheetDrawing& ADrawing) {
    ADrawing.Kind = sdkPicture;
    const std::string part = PartOf(XmlAttr(AInk, "id"));
    const TDrawingBytes* const bytes = KeepPart(part);
    if (!bytes) return;
    ADrawing.SetInkMl(*bytes);
    ParseInkMl(TextOf(*bytes), part, FPackage.Limits(), ADrawing);
  }

  /// A frame may hold other things than charts: diagrams, slicers. Of these only the place is known.
  void ReadFrame(const TXmlNode* AFrame, TSheetDrawing& ADrawing) {
    const TXmlNode* const chart = XmlFindDescendant(AFrame, "chart");
    if (!chart) return Drop("graphic frame", "it holds no chart; only its place is kept");
    ADrawing.Kind = sdkChart;
    const std::string part = PartOf(XmlAttr(chart, "id"));
    const TDrawingBytes* const bytes = KeepPart(part);
    if (!bytes) return;
    const TXlsxChartContext context{&FTheme, FRoom, FPackage.Limits()};
    const uint64_t losses = FRoom.Losses();
    ParseChartSpace(TextOf(*bytes), part, context, ADrawing);
    Drop("chart point or series", "more than the reader takes; a refresh of the chart reads the cells",
         FRoom.Losses() - losses);
    ADrawing.ChartSpaceXml = *bytes;
    ReadChartStyle(part, context, ADrawing);
  }

  void ReadChartStyle(const std::string& AChartPart, const TXlsxChartContext& AContext, TSheetDrawing& ADrawing) {
    const std::string name = XlsxRelationshipsPart(AChartPart);
    const TDrawingBytes* const bytes = KeepPart(name);
    if (!bytes) return;
    std::string stylePart;
    std::string colorsPart;
    for (const TXlsxRelationship& row : XlsxParseRelationships(TextOf(*bytes), name, FPackage.Limits())) {
      const std::string file = FileNameOf(row.Target);
      const std::string part = XlsxResolveTarget(AChartPart, row.Target);
      if (XlsxChartLinkOf(row.Type))
        KeepPart(part);
      else if (file.find("color") != std::string::npos)
        colorsPart = colorsPart.empty() ? part : colorsPart;
      else if (file.find("style") != std::string::npos)
        stylePart = stylePart.empty() ? part : stylePart;
    }
    if (const TDrawingBytes* style = KeepPart(stylePart)) ADrawing.ChartStyleXml = *style;
    if (const TDrawingBytes* colors = KeepPart(colorsPart)) ADrawing.ChartColorsXml = *colors;
    ParseChartStyleParts(TextOf(ADrawing.ChartStyleXml), stylePart, TextOf(ADrawing.ChartColorsXml), colorsPart,
                         AContext, ADrawing);
  }

  const TXlsxPackage& FPackage;
  const std::string FPart;
  TSheetDrawingList& FDrawings;
  const TTessarineTheme& FTheme;
  TFileReport* const FReport;  // may be null
  TXlsxDrawingRoom FRoom;
  TXlsxRelationships FRelationships;
};

}  // namespace

void LoadSheetDrawings(const TXlsxPackage& APackage, std::string_view ASheetPart,
                       const TXlsxRelationships& ARelationships, TWorksheet& ASheet, const TTessarineTheme& ATheme,
                       TFileReport* AReport) {
  const TXlsxRelationship* drawing = nullptr;
  for (const TXlsxRelationship& relationship : ARelationships) {
    const std::string type = Lowered(relationship.Type);
    const bool isVml = type.find("vml") != std::string::npos;
    if (isVml && AReport) AReport->Add("VML drawing", ffDropped, ASheetPart);
    if (!drawing && !isVml && type.find("/drawing") != std::string::npos) drawing = &relationship;
  }
  if (!drawing) return;
  TDrawingPartReader(APackage, XlsxResolveTarget(ASheetPart, drawing->Target), ASheet, ATheme, AReport)
      .Read(drawing->Id);
}

}  // namespace tessarine::detail

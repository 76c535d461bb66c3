#include <tessarine/io/xlsx/detail/XlsxReport.h>

#include <algorithm>
#include <iterator>

#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

struct TXlsxLostKind {
  std::string_view Name;
  std::string_view Feature;
};

/// Elements of a sheet part that stand for one thing each.
constexpr TXlsxLostKind kSheetThings[] = {
    {"cfRule", "conditional format"},
    {"sparkline", "sparkline"},
    {"dataValidation", "data validation"},
    {"slicer", "slicer"},
    {"timelineRef", "timeline"},
    {"control", "form control"},
    {"oleObject", "embedded object"},
    {"sheetProtection", "sheet protection"},
    {"protectedRange", "protected range"},
    {"scenario", "scenario"},
    {"customSheetView", "custom view"},
    {"dataConsolidate", "consolidation"},
    {"ignoredError", "ignored error mark"},
    {"cellWatch", "watched cell"},
    {"cellSmartTag", "smart tag"},
    {"customPr", "custom property"},
    {"webPublishItem", "web publication"},
    {"sortState", "sort state"},
    {"picture", "background picture"},
    {"legacyDrawingHF", "header picture"},
};

/// Elements of the workbook part, the same.
constexpr TXlsxLostKind kWorkbookThings[] = {
    {"workbookProtection", "workbook protection"},
    {"fileSharing", "write reservation"},
    {"customWorkbookView", "custom view"},
    {"functionGroup", "function group"},
    {"oleSize", "embedded view size"},
    {"webPublishing", "web publication"},
};

/// Parts by the beginning of their names; the first that fits names the kind.
constexpr TXlsxLostKind kPartKinds[] = {
    {"xl/comments", "comment part"},
    {"xl/threadedComments/", "threaded comment part"},
    {"xl/persons/", "list of persons"},
    {"xl/externalLinks/", "external link"},
    {"xl/vbaProject", "macro project"},
    {"xl/vbaData", "macro project"},
    {"xl/macrosheets/", "macro sheet"},
    {"xl/dialogsheets/", "dialog sheet"},
    {"xl/calcChain", "calculation chain"},
    {"xl/printerSettings/", "printer settings"},
    {"customXml/", "custom XML part"},
    {"xl/pivotCache/pivotCacheRecords", "pivot records"},
    {"xl/pivotCache/", "pivot cache"},
    {"xl/pivotTables/", "pivot table"},
    {"xl/ctrlProps/", "form control"},
    {"xl/activeX/", "form control"},
    {"xl/embeddings/", "embedded object"},
    {"xl/connections", "data connections"},
    {"xl/queryTables/", "query table"},
    {"xl/metadata", "cell metadata"},
    {"xl/richData/", "rich data"},
    {"xl/slicers/", "slicer part"},
    {"xl/slicerCaches/", "slicer part"},
    {"xl/timelines/", "timeline part"},
    {"xl/timelineCaches/", "timeline part"},
    {"xl/webextensions/", "web extension"},
    {"xl/diagrams/", "diagram part"},
    {"xl/charts/chartEx", "extended chart"},
    {"xl/charts/", "chart part"},
    {"xl/drawings/", "drawing"},
    {"xl/media/", "picture"},
    {"xl/model/", "data model"},
    {"xl/revisions/", "revision log"},
    {"xl/xmlMaps", "XML map"},
    {"xl/volatileDependencies", "list of live data"},
    {"xl/customProperty", "custom property"},
    {"xl/customData/", "custom data"},
    {"xl/worksheets/", "unlisted sheet"},
    {"xl/tables/", "table"},
    {"xl/theme/", "theme"},
    {"docProps/thumbnail", "preview picture"},
    {"docProps/", "document properties"},
    {"package/services/metadata/", "document properties"},
    {"docMetadata/", "document properties"},
};

const TXlsxLostKind* FindThing(const TXlsxLostKind* AFirst, const TXlsxLostKind* ALast, std::string_view AElement) {
  const auto* const found =
      std::find_if(AFirst, ALast, [&](const TXlsxLostKind& AKind) { return XmlLocalNameIs(AElement, AKind.Name); });
  return found == ALast ? nullptr : found;
}

/// What every package has, folders, and drawings in the old markup, which are counted where sheets refer to them.
bool IsScaffold(std::string_view APart) {
  constexpr std::string_view kOldDrawing = "xl/drawings/vmlDrawing";
  return APart.ends_with('/') || EqualXmlNames(APart.substr(0, kOldDrawing.size()), kOldDrawing) ||
         EqualXmlNames(APart, "[Content_Types].xml") || APart.starts_with("_rels/") ||
         APart.find("/_rels/") != APart.npos;
}

std::string_view FeatureOfPart(std::string_view APart) {
  const auto* const found = std::find_if(std::begin(kPartKinds), std::end(kPartKinds), [&](const TXlsxLostKind& AKind) {
    return EqualXmlNames(APart.substr(0, AKind.Name.size()), AKind.Name);
  });
  return found == std::end(kPartKinds) ? "part" : found->Feature;
}

void CountWorkbookThing(const TXmlNode* ANode, const TXlsxReport& AReport) {
  const TXlsxLostKind* const thing = FindThing(std::begin(kWorkbookThings), std::end(kWorkbookThings), ANode->Name);
  if (thing) AReport.Drop(thing->Feature);
}

}  // namespace

void TXlsxReport::Drop(std::string_view AFeature, uint64_t ACount, std::string_view ANote) const {
  if (Report) Report->Add(AFeature, ffDropped, Where, ACount, ANote);
}

void TXlsxReport::Rewrite(std::string_view AFeature, uint64_t ACount, std::string_view ANote) const {
  if (Report) Report->Add(AFeature, ffRewritten, Where, ACount, ANote);
}

/// An extension without a thing that is known counts as one itself; of two forms of one thing the first counts.
void PassOverXlsxSection(TXmlReader& AReader, const TXlsxReport& AReport) {
  if (!AReport.IsWanted()) {
    AReader.SkipElement();
    return;
  }
  const size_t depth = AReader.Depth();
  bool isKnown = false;
  std::string extension;
  for (TXmlEvent event = AReader.Event(); event != xeEnd; event = AReader.Next()) {
    if (event == xeEndElement) {
      const bool isExtension = AReader.Depth() == depth + 1 && AReader.LocalNameIs("ext");
      if (isExtension && !isKnown) AReport.Drop("extension", 1, extension);
      if (AReader.Depth() == depth) return;
    }
    if (event != xeStartElement) continue;
    if (AReader.LocalNameIs("Fallback")) {
      AReader.SkipElement();
    } else if (AReader.Depth() == depth + 1 && AReader.LocalNameIs("ext")) {
      isKnown = false;
      extension = XlsxAttr(AReader.Attributes(), "uri");
    } else if (const TXlsxLostKind* const thing =
                   FindThing(std::begin(kSheetThings), std::end(kSheetThings), AReader.Name())) {
      isKnown = true;
      AReport.Drop(thing->Feature);
    }
  }
}

void ReportXlsxWorkbookSettings(const TXmlNode* AWorkbook, const TXlsxReport& AReport) {
  if (!AReport.IsWanted()) return;
  for (const TXmlNode* section : TXmlElements(AWorkbook)) {
    if (XmlLocalNameIs(section, "workbookPr") && XlsxAttrIsOn(section->Attributes, "date1904"))
      AReport.Drop("1904 date system", 1, "all dates show four years and a day too early");
    CountWorkbookThing(section, AReport);
    for (const TXmlNode* node : TXmlElements(section)) CountWorkbookThing(node, AReport);
  }
}

void ReportUnreadXlsxParts(const TXlsxPackage& APackage, TFileReport& AReport) {
  APackage.ForEachUnreadPart([&](std::string_view APart) {
    if (!IsScaffold(APart)) AReport.Add(FeatureOfPart(APart), ffDropped, {}, 1, APart);
  });
}

}  // namespace tessarine::detail

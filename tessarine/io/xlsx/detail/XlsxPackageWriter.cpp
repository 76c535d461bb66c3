#include <tessarine/io/xlsx/detail/XlsxPackageWriter.h>

#include <algorithm>
#include <iterator>
#include <utility>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kMaxPartName = 1000;  // bytes

constexpr std::string_view kDrawingType = "application/vnd.openxmlformats-officedocument.drawing+xml";

/// Types by extension, of what drawings refer to.
constexpr struct {
  std::string_view Extension;
  std::string_view Type;
} kExtensionTypes[] = {
    {"png", "image/png"},
    {"jpeg", "image/jpeg"},
    {"jpg", "image/jpeg"},
    {"gif", "image/gif"},
    {"emf", "image/x-emf"},
    {"bmp", "image/bmp"},
    {"wmf", "image/x-wmf"},
    {"svg", "image/svg+xml"},
    {"tif", "image/tiff"},
    {"tiff", "image/tiff"},
    {"webp", "image/webp"},
    {"vml", "application/vnd.openxmlformats-officedocument.vmlDrawing"},
    {"xlsx", "application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"},
};
constexpr std::string_view kUnknownType = "application/octet-stream";

/// Types of XML parts by what their paths hold; the first that fits counts.
constexpr struct {
  std::string_view Folder;
  std::string_view InName;
  std::string_view Type;
} kXmlTypes[] = {
    {"/charts/", "style", "application/vnd.ms-office.chartstyle+xml"},
    {"/charts/", "colors", "application/vnd.ms-office.chartcolorstyle+xml"},
    {"/charts/", "chartex", "application/vnd.ms-office.chartex+xml"},
    {"/charts/", "", "application/vnd.openxmlformats-officedocument.drawingml.chart+xml"},
    {"/drawings/", "", "application/vnd.openxmlformats-officedocument.drawingml.chartshapes+xml"},
    {"/diagrams/", "data", "application/vnd.openxmlformats-officedocument.drawingml.diagramData+xml"},
    {"/diagrams/", "layout", "application/vnd.openxmlformats-officedocument.drawingml.diagramLayout+xml"},
    {"/diagrams/", "quickstyle", "application/vnd.openxmlformats-officedocument.drawingml.diagramStyle+xml"},
    {"/diagrams/", "colors", "application/vnd.openxmlformats-officedocument.drawingml.diagramColors+xml"},
    {"/diagrams/", "drawing", "application/vnd.ms-office.drawingml.diagramDrawing+xml"},
    {"/ink/", "", "application/inkml+xml"},
    {"/theme/", "themeoverride", "application/vnd.openxmlformats-officedocument.themeOverride+xml"},
};

char FoldedUnit(char AUnit) { return AUnit >= 'A' && AUnit <= 'Z' ? static_cast<char>(AUnit + ('a' - 'A')) : AUnit; }

/// A path of the model as the name of a part: without a leading "/"; empty for one that cannot be a name.
std::string PartName(const TText& APath) {
  std::string name = APath.ToUtf8();
  std::replace(name.begin(), name.end(), '\\', '/');
  name.erase(0, std::min(name.find_first_not_of('/'), name.size()));
  const bool isOdd = name.size() > kMaxPartName || name.ends_with('/') || name.find("//") != name.npos ||
                     ("/" + name + "/").find("/../") != std::string::npos ||
                     ("/" + name + "/").find("/./") != std::string::npos ||
                     std::any_of(name.begin(), name.end(), [](char AUnit) { return AUnit >= 0 && AUnit < ' '; });
  return isOdd ? std::string() : name;
}

/// The relationships part beside a part.
std::string RelationshipsName(std::string_view APart) {
  const size_t slash = APart.rfind('/');
  const size_t start = slash == APart.npos ? 0 : slash + 1;
  return std::string(APart.substr(0, start)) + "_rels/" + std::string(APart.substr(start)) + ".rels";
}

std::string_view ExtensionOf(std::string_view AName) {
  const size_t dot = AName.rfind('.');
  const bool hasOne = dot != AName.npos && AName.find('/', dot) == AName.npos;
  return hasOne ? AName.substr(dot + 1) : std::string_view();
}

std::string_view XmlTypeOf(std::string_view AFoldedPath) {
  if (AFoldedPath.find("/_rels/") != AFoldedPath.npos) return {};
  const std::string_view file = AFoldedPath.substr(AFoldedPath.rfind('/') + 1);
  for (const auto& row : kXmlTypes) {
    if (AFoldedPath.find(row.Folder) != AFoldedPath.npos && file.find(row.InName) != file.npos) return row.Type;
  }
  return {};
}

}  // namespace

// ---- which parts

std::string TXlsxBagPlan::Folded(std::string_view AName) {
  std::string name(AName);
  std::transform(name.begin(), name.end(), name.begin(), FoldedUnit);
  return name;
}

bool TXlsxBagPlan::TryAdd(const TText& APath, std::span<const std::byte> AContent, TXlsxBagParts& AParts) {
  std::string name = PartName(APath);
  if (name.empty() || !FNames.insert(Folded(name)).second) {
    ++AParts.LeftOut;
    return false;
  }
  AParts.Parts.push_back({std::move(name), AContent});
  return true;
}

TXlsxBagParts TXlsxBagPlan::Next(const TSheetDrawingBag& ABag) {
  TXlsxBagParts parts;
  if (!ABag.HasDrawing()) return parts;
  // Two sheets may have come with one drawing part.
  const std::string drawing = PartName(ABag.DrawingPartPath());
  if (FDrawings.contains(Folded(drawing))) {
    parts.Drawing = drawing;
    return parts;
  }
  if (!TryAdd(ABag.DrawingPartPath(), ABag.DrawingXml(), parts)) return parts;
  parts.Drawing = drawing;
  FDrawings.insert(Folded(drawing));
  if (!ABag.DrawingRelsXml().empty()) TryAdd(TText::FromUtf8(RelationshipsName(drawing)), ABag.DrawingRelsXml(), parts);
  for (const auto& [path, content] : ABag.Parts()) TryAdd(path, content, parts);
  return parts;
}

// ---- types

void TXlsxContentTypes::AddDefault(std::string_view AExtension, std::string_view AType) {
  if (!FExtensions.insert(std::string(AExtension)).second) return;
  FDefaults += "<Default";
  AppendXlsxAttr("Extension", Utf8ToUtf16(AExtension), FDefaults);
  AppendXlsxWord("ContentType", AType, FDefaults);
  FDefaults += "/>";
}

void TXlsxContentTypes::AddOverride(std::string_view AName, std::string_view ATypeTail) {
  FOverrides += "<Override";
  AppendXlsxAttr("PartName", u'/' + Utf8ToUtf16(AName), FOverrides);
  std::string type(ATypeTail);
  if (type.find('/') == type.npos) type.insert(0, kXlsxTypeStem);
  AppendXlsxWord("ContentType", type, FOverrides);
  FOverrides += "/>";
}

void TXlsxContentTypes::AddBag(const TXlsxBagParts& AParts) {
  for (const auto& part : AParts.Parts) {
    std::string path = "/" + part.Name;
    std::transform(path.begin(), path.end(), path.begin(), FoldedUnit);
    const std::string_view extension = ExtensionOf(path);
    if (part.Name == AParts.Drawing) {
      AddOverride(part.Name, kDrawingType);
    } else if (extension == "xml") {
      if (const std::string_view type = XmlTypeOf(path); !type.empty()) AddOverride(part.Name, type);
    } else if (extension.empty()) {
      AddOverride(part.Name, kUnknownType);
    } else {
      const auto* const known = std::find_if(std::begin(kExtensionTypes), std::end(kExtensionTypes),
                                             [&](const auto& ARow) { return ARow.Extension == extension; });
      AddDefault(extension, known == std::end(kExtensionTypes) ? kUnknownType : known->Type);
    }
  }
}

std::string TXlsxContentTypes::Part() const {
  return std::string(kXmlHead) + "<Types xmlns=\"http://schemas.openxmlformats.org/package/2006/content-types\">" +
         FDefaults + FOverrides + "</Types>";
}

}  // namespace tessarine::detail

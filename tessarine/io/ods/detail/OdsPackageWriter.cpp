#include <tessarine/io/ods/detail/OdsPackageWriter.h>

#include <tessarine/Version.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kXmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

struct TPictureType {
  std::string_view ContentType;
  std::string_view Extension;
};
constexpr TPictureType kPictureTypes[] = {
    {"image/jpeg", "jpg"},    {"image/jpg", "jpg"},  {"image/gif", "gif"},   {"image/bmp", "bmp"},
    {"image/svg+xml", "svg"}, {"image/tiff", "tif"}, {"image/x-emf", "emf"}, {"image/emf", "emf"},
    {"image/x-wmf", "wmf"},   {"image/wmf", "wmf"},  {"image/webp", "webp"},
};

void AppendEntry(std::string_view APath, std::string_view AMediaType, bool AHasVersion, std::string& AOut) {
  AOut += "<manifest:file-entry manifest:full-path=\"";
  AppendXmlAttribute(APath, AOut);
  if (AHasVersion) AOut += "\" manifest:version=\"1.2";
  AOut.append("\" manifest:media-type=\"").append(AMediaType).append("\"/>");
}

}  // namespace

std::string TOdsWriteBag::AddPicture(std::span<const std::byte> ABytes, std::string_view AContentType) {
  std::string_view extension = "png";
  std::string_view type = "image/png";
  for (const TPictureType& known : kPictureTypes) {
    if (known.ContentType != AContentType) continue;
    extension = known.Extension;
    type = known.ContentType;
  }
  std::string path = "Pictures/image" + std::to_string(++FPictures) + ".";
  path += extension;
  AddPart(path, std::string(reinterpret_cast<const char*>(ABytes.data()), ABytes.size()), std::string(type));
  return path;
}

std::string_view OdsNamespaces() {
  return " xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
         " xmlns:style=\"urn:oasis:names:tc:opendocument:xmlns:style:1.0\""
         " xmlns:text=\"urn:oasis:names:tc:opendocument:xmlns:text:1.0\""
         " xmlns:table=\"urn:oasis:names:tc:opendocument:xmlns:table:1.0\""
         " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\""
         " xmlns:fo=\"urn:oasis:names:tc:opendocument:xmlns:xsl-fo-compatible:1.0\""
         " xmlns:xlink=\"http://www.w3.org/1999/xlink\""
         " xmlns:number=\"urn:oasis:names:tc:opendocument:xmlns:datastyle:1.0\""
         " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
         " xmlns:chart=\"urn:oasis:names:tc:opendocument:xmlns:chart:1.0\""
         " xmlns:of=\"urn:oasis:names:tc:opendocument:xmlns:of:1.2\""
         " xmlns:calcext=\"urn:org:documentfoundation:names:experimental:calc:xmlns:calcext:1.0\""
         " xmlns:tessarine=\"urn:tessarine:names:ods:1.0\"";
}

std::string OdsManifest(const TOdsWriteBag& ABag) {
  std::string xml(kXmlHead);
  xml +=
      "<manifest:manifest xmlns:manifest=\"urn:oasis:names:tc:opendocument:xmlns:manifest:1.0\""
      " manifest:version=\"1.2\">";
  AppendEntry("/", "application/vnd.oasis.opendocument.spreadsheet", true, xml);
  for (const char* part : {"content.xml", "styles.xml", "meta.xml"}) AppendEntry(part, "text/xml", false, xml);
  for (const TOdsZipPart& part : ABag.Parts()) AppendEntry(part.Path, part.MediaType, part.Path.ends_with('/'), xml);
  return xml + "</manifest:manifest>";
}

std::string OdsMeta() {
  std::string xml(kXmlHead);
  xml +=
      "<office:document-meta xmlns:office=\"urn:oasis:names:tc:opendocument:xmlns:office:1.0\""
      " xmlns:meta=\"urn:oasis:names:tc:opendocument:xmlns:meta:1.0\" office:version=\"1.2\">"
      "<office:meta><meta:generator>Tessarine/";
  return xml.append(Version()).append("</meta:generator></office:meta></office:document-meta>");
}

std::string OdsStyles(std::string_view AStyles) {
  std::string xml(kXmlHead);
  xml.append("<office:document-styles").append(OdsNamespaces()).append(" office:version=\"1.2\"><office:styles>");
  return xml.append(AStyles).append("</office:styles></office:document-styles>");
}

}  // namespace tessarine::detail

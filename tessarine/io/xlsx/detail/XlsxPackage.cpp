#include <tessarine/io/xlsx/detail/XlsxPackage.h>

#include <algorithm>
#include <utility>

#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

/// The folder of a part with its "/" at the end; empty for a part at the root.
std::string_view PartFolder(std::string_view APartName) { return APartName.substr(0, APartName.rfind('/') + 1); }

std::string WithSlashes(std::string_view ATarget) {
  std::string target(ATarget);
  std::replace(target.begin(), target.end(), '\\', '/');
  return target;
}

}  // namespace

void TXlsxRelationships::Add(TXlsxRelationship ARelationship) {
  FById.try_emplace(ARelationship.Id, FItems.size());
  FItems.push_back(std::move(ARelationship));
}

const TXlsxRelationship* TXlsxRelationships::Find(std::string_view AId) const {
  const auto found = FById.find(std::string(AId));
  return found == FById.end() ? nullptr : &FItems[found->second];
}

TByteBuffer TXlsxPackage::ReadPart(std::string_view AName) const {
  const auto index = FZip.Find(AName);
  if (!index) return {};
  FIsRead[*index] = true;
  TByteBuffer content = FZip.Read(*index);
  FBytesRead += content.Size();
  return content;
}

uint64_t TXlsxPackage::DeclaredSize(std::string_view AName) const {
  const auto index = FZip.Find(AName);
  return index ? FZip.DeclaredSize(*index) : 0;
}

bool TXlsxPackage::HasRoomFor(uint64_t ABytes) const {
  const uint64_t half = FLimits.MaxTotalBytes / 2;
  const uint64_t read = FBytesRead;
  return ABytes <= half && read <= half - ABytes;
}

bool TXlsxPackage::TryTakeRoom(uint64_t ABytes) const {
  if (!HasRoomFor(ABytes)) return false;
  FBytesRead += ABytes;
  return true;
}

uint64_t TXlsxPackage::NoteUse(std::string_view AName) const {
  const auto index = FZip.Find(AName);
  if (!index) return 0;
  const bool wasUsed = FIsUsed[*index];
  FIsUsed[*index] = true;
  return wasUsed ? FZip.DeclaredSize(*index) : 0;
}

TXlsxRelationships TXlsxPackage::ReadRelationships(std::string_view APartName) const {
  const std::string name = XlsxRelationshipsPart(APartName);
  const TByteBuffer bytes = ReadPart(name);
  if (bytes.IsEmpty()) return {};
  return XlsxParseRelationships(bytes.Text(), name, FLimits);
}

std::string XlsxRelationshipsPart(std::string_view APartName) {
  const std::string_view folder = PartFolder(APartName);
  std::string name(folder);
  ((name += "_rels/") += APartName.substr(folder.size())) += ".rels";
  return name;
}

TXlsxRelationships XlsxParseRelationships(std::string_view ABytes, std::string_view AName, const TReadLimits& ALimits) {
  TXlsxRelationships relationships;
  const TXmlTree tree(ABytes, AName, ALimits);
  for (const TXmlNode* node : TXmlElements(tree.Root())) {
    if (!XmlLocalNameIs(node, "Relationship")) continue;
    relationships.Add(
        {std::string(XmlAttr(node, "Id")), std::string(XmlAttr(node, "Type")), std::string(XmlAttr(node, "Target"))});
  }
  return relationships;
}

std::string XlsxWorkbookTarget(std::string_view ATarget) {
  std::string target = WithSlashes(ATarget);
  if (EqualXmlNames(std::string_view(target).substr(0, 4), "/xl/")) return target.substr(1);
  return "xl/" + target;
}

std::string XlsxResolveTarget(std::string_view ASourcePart, std::string_view ATarget) {
  const std::string target = WithSlashes(ATarget);
  std::string path;
  if (!target.starts_with('/')) path = PartFolder(ASourcePart);
  path += target;
  std::string name;
  for (size_t at = 0; at <= path.size();) {
    const size_t end = std::min(path.find('/', at), path.size());
    const std::string_view segment = std::string_view(path).substr(at, end - at);
    at = end + 1;
    if (segment.empty() || segment == ".") continue;
    if (segment == "..") {
      name.resize(name.rfind('/') == std::string::npos ? 0 : name.rfind('/'));
      continue;
    }
    if (!name.empty()) name += '/';
    name += segment;
  }
  return name;
}

}  // namespace tessarine::detail

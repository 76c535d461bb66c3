#include <tessarine/platform/XmlTree.h>

#include <algorithm>
#include <cstring>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>

namespace tessarine {
namespace {

/// The node behind ANode in document order within ATop: its first child if AIntoChildren, else its next sibling, else
/// that of the nearest ancestor that has one. Null at the end.
const TXmlNode* NextNode(const TXmlNode* ANode, const TXmlNode* ATop, bool AIntoChildren) {
  if (AIntoChildren && ANode->FirstChild != nullptr) return ANode->FirstChild;
  while (ANode != ATop && ANode->NextSibling == nullptr) ANode = ANode->Parent;
  return ANode == ATop ? nullptr : ANode->NextSibling;
}

std::string RawText(const TXmlNode* ANode) {
  std::string text;
  for (const TXmlNode* node = ANode; node != nullptr; node = NextNode(node, ANode, true)) text += node->Text;
  return text;
}

}  // namespace

TXmlTree::TXmlTree(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits) {
  TXmlReader reader(ABytes, APartName, ALimits);
  FTexts.emplace_back(reader.BytesTotal());
  Build(reader, nullptr, ALimits.Clamped());
  LinkAttributes();
}

TXmlTree::TXmlTree(TXmlReader& AReader, const TReadLimits& ALimits) {
  TXmlNode* const root = AddElement(AReader, nullptr);
  FLastChildren.push_back(nullptr);
  Build(AReader, root, ALimits.Clamped());
  LinkAttributes();
}

/// Reads on to the end of AOpen, or of the document when that is null.
void TXmlTree::Build(TXmlReader& AReader, TXmlNode* AOpen, const TReadLimits& ALimits) {
  TXmlNode* open = AOpen;
  for (;;) {
    const TXmlEvent event = AReader.Next();
    if (FNodes.size() + FAttributes.size() > ALimits.MaxXmlTreeNodes) {
      throw ELimit(AReader.PartName() + ": the part has more elements, texts and attributes than the limit of " +
                   std::to_string(ALimits.MaxXmlTreeNodes));
    }
    switch (event) {
      case xeStartElement:
        open = AddElement(AReader, open);
        FLastChildren.push_back(nullptr);
        break;
      case xeText: Add(open)->Text = Keep(AReader.Text()); break;
      case xeEndElement:
        open = const_cast<TXmlNode*>(open->Parent);
        FLastChildren.pop_back();
        if (AOpen != nullptr && open == nullptr) return;
        break;
      case xeEnd: return;
    }
  }
}

TXmlNode* TXmlTree::AddElement(const TXmlReader& AReader, TXmlNode* AParent) {
  TXmlNode* const node = Add(AParent);
  node->Name = Keep(AReader.Name());
  const size_t first = FAttributes.size();
  for (const TXmlAttribute& attribute : AReader.Attributes()) {
    FAttributes.push_back({Keep(attribute.Name), Keep(attribute.Value)});
  }
  node->Attributes = {FAttributes.data() + first, FAttributes.size() - first};
  return node;
}

TXmlNode* TXmlTree::Add(TXmlNode* AParent) {
  TXmlNode* const node = &FNodes.emplace_back();
  node->Parent = AParent;
  if (AParent == nullptr) return node;
  TXmlNode*& last = FLastChildren.back();
  (last == nullptr ? AParent->FirstChild : last->NextSibling) = node;
  last = node;
  return node;
}

std::string_view TXmlTree::Keep(std::string_view AText) {
  constexpr size_t kBlockBytes = 4096;
  if (AText.empty()) return {};
  if (FTexts.empty() || FTexts.back().Size() - FTextsUsed < AText.size()) {
    FTexts.emplace_back(std::max(kBlockBytes, AText.size()));
    FTextsUsed = 0;
  }
  char* const place = reinterpret_cast<char*>(FTexts.back().Data()) + FTextsUsed;
  std::memcpy(place, AText.data(), AText.size());
  FTextsUsed += AText.size();
  return {place, AText.size()};
}

/// The list of attributes has moved while it grew; now that it rests, nodes get their true places in it.
void TXmlTree::LinkAttributes() {
  const TXmlAttribute* next = FAttributes.data();
  for (TXmlNode& node : FNodes) {
    node.Attributes = {next, node.Attributes.size()};
    next += node.Attributes.size();
  }
}

std::string_view XmlLocalName(const TXmlNode* ANode) {
  return ANode == nullptr ? std::string_view() : XmlLocalName(ANode->Name);
}

bool XmlLocalNameIs(const TXmlNode* ANode, std::string_view ALocalName) {
  return ANode != nullptr && XmlLocalNameIs(ANode->Name, ALocalName);
}

const TXmlNode* XmlFindChild(const TXmlNode* ANode, std::string_view ALocalName) {
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (XmlLocalNameIs(child, ALocalName)) return child;
  }
  return nullptr;
}

const TXmlNode* XmlFindDescendant(const TXmlNode* ANode, std::string_view ALocalName) {
  const TXmlNode* node = ANode;
  while (node != nullptr) {
    node = NextNode(node, ANode, true);
    if (XmlLocalNameIs(node, ALocalName)) return node;
  }
  return nullptr;
}

std::string_view XmlAttr(const TXmlNode* ANode, std::string_view AName, std::string_view ADefault) {
  if (ANode == nullptr) return ADefault;
  return FindXmlAttribute(ANode->Attributes, AName).value_or(ADefault);
}

bool XmlHasAttr(const TXmlNode* ANode, std::string_view AName) {
  return ANode != nullptr && FindXmlAttribute(ANode->Attributes, AName).has_value();
}

int32_t XmlAttrInt(const TXmlNode* ANode, std::string_view AName, int32_t ADefault) {
  int32_t value = 0;
  return TryParseInt32(XmlAttr(ANode, AName), value) ? value : ADefault;
}

double XmlAttrFloat(const TXmlNode* ANode, std::string_view AName, double ADefault) {
  double value = 0;
  return TryParseFileNumber(XmlAttr(ANode, AName), value) ? value : ADefault;
}

bool XmlBoolVal(const TXmlNode* ANode, bool ADefault) {
  if (ANode == nullptr) return false;
  if (!XmlHasAttr(ANode, "val")) return ADefault;
  const std::string_view value = XmlAttr(ANode, "val");
  return value != "0" && !EqualXmlNames(value, "false") && !EqualXmlNames(value, "off");
}

bool XmlChildBool(const TXmlNode* ANode, std::string_view ALocalName) {
  return XmlBoolVal(XmlFindChild(ANode, ALocalName), true);
}

std::u16string XmlNodeText16(const TXmlNode* ANode) { return UnescapeXlsxText(Utf8ToUtf16(RawText(ANode))); }

std::string XmlNodeText(const TXmlNode* ANode) { return UnescapeXlsxText(RawText(ANode)); }

std::u16string XmlCollectLocalText16(const TXmlNode* ANode, std::string_view ALocalName) {
  std::u16string text;
  if (ANode == nullptr) return text;
  const TXmlNode* node = NextNode(ANode, ANode, true);
  while (node != nullptr) {
    const bool isMatch = XmlLocalNameIs(node, ALocalName);
    if (isMatch) text += XmlNodeText16(node);
    node = NextNode(node, ANode, !isMatch);
  }
  return text;
}

std::string XmlCollectLocalText(const TXmlNode* ANode, std::string_view ALocalName) {
  return Utf16ToUtf8(XmlCollectLocalText16(ANode, ALocalName));
}

}  // namespace tessarine

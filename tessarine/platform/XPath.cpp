#include <tessarine/platform/XPath.h>

#include <algorithm>
#include <new>
#include <utility>

#include <pugixml.hpp>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/detail/XPathCost.h>

namespace tessarine {

namespace {

// Visits of nodes that one selection may take by the bound on its cost.
constexpr double kMaxCost = 4e7;

/// Reads the document with our own reader, which proves that it is well-formed and within the limits, so that the
/// library below meets nothing unusual. Throws as the reader does.
detail::TXmlShape MeasureXml(std::string_view AXml) {
  struct TOpen {
    double Nodes = 0;
    double Bytes = 0;
    double Children = 0;
  };
  detail::TXmlShape shape;
  std::vector<TOpen> open(1);
  TXmlReader reader(AXml, "document");
  while (reader.Next() != xeEnd) {
    switch (reader.Event()) {
      case xeStartElement:
        open.back().Children += 1;
        open.push_back({1.0 + static_cast<double>(reader.AttributeCount()), 0, 0});
        for (const TXmlAttribute& attribute : reader.Attributes())
          shape.TextBytes += static_cast<double>(attribute.Value.size());
        shape.Depth = std::max(shape.Depth, static_cast<double>(reader.Depth()));
        break;
      case xeText:
        open.back().Children += 1;
        open.back().Nodes += 1;
        open.back().Bytes += static_cast<double>(reader.Text().size());
        shape.TextBytes += static_cast<double>(reader.Text().size());
        break;
      case xeEndElement: {
        const TOpen element = open.back();
        open.pop_back();
        open.back().Nodes += element.Nodes;
        open.back().Bytes += element.Bytes;
        shape.SiblingPairs += element.Children * element.Children;
        shape.TreeTexts += element.Nodes * element.Bytes;
        break;
      }
      case xeEnd: break;
    }
  }
  shape.Nodes += open.back().Nodes;
  return shape;
}

/// Appends the text of a node and of all below it; false as soon as it is longer than ARoom, which is lowered by it.
bool AppendText(const pugi::xml_node& ANode, std::string& AText, size_t& ARoom) {
  const auto append = [&](std::string_view APiece) {
    if (APiece.size() > ARoom) return false;
    ARoom -= APiece.size();
    AText += APiece;
    return true;
  };
  pugi::xml_node node = ANode;
  while (true) {
    if (node.type() == pugi::node_pcdata || node.type() == pugi::node_cdata) {
      if (!append(node.value())) return false;
    }
    if (node.first_child()) {
      node = node.first_child();
      continue;
    }
    while (node != ANode && !node.next_sibling()) node = node.parent();
    if (node == ANode) return true;
    node = node.next_sibling();
  }
}

bool AppendText(const pugi::xpath_node& ANode, std::string& AText, size_t& ARoom) {
  if (!ANode.attribute()) return AppendText(ANode.node(), AText, ARoom);
  const std::string_view value = ANode.attribute().value();
  if (value.size() > ARoom) return false;
  ARoom -= value.size();
  AText += value;
  return true;
}

TXPathSelection TextsOf(const pugi::xpath_node_set& ANodes, const TXPathLimits& ALimits) {
  TXPathSelection selection;
  if (ANodes.size() > ALimits.MaxNodes) return {xoTooMuch, {}};
  size_t room = ALimits.MaxTextBytes;
  std::string text;
  for (const pugi::xpath_node& node : ANodes) {
    text.clear();
    if (!AppendText(node, text, room)) return {xoTooMuch, {}};
    selection.Texts.push_back(Utf8ToUtf16(text));
  }
  return selection;
}

}  // namespace

struct TXPathDocument::TDocument {
  pugi::xml_document Xml;
  detail::TXmlShape Shape;
};

TXPathDocument::TXPathDocument(std::unique_ptr<TDocument> ADocument) : FDocument(std::move(ADocument)) {}
TXPathDocument::TXPathDocument(TXPathDocument&&) noexcept = default;
TXPathDocument& TXPathDocument::operator=(TXPathDocument&&) noexcept = default;
TXPathDocument::~TXPathDocument() = default;

std::optional<TXPathDocument> TXPathDocument::TryLoad(std::u16string_view AXml) {
  const std::string xml = Utf16ToUtf8(TrimSpaces(AXml));
  auto document = std::make_unique<TDocument>();
  try {
    document->Shape = MeasureXml(xml);
  } catch (const ETessarineError&) {
    return std::nullopt;
  }
  constexpr unsigned kOptions = pugi::parse_cdata | pugi::parse_escapes | pugi::parse_wconv_attribute | pugi::parse_eol;
  if (!document->Xml.load_buffer(xml.data(), xml.size(), kOptions, pugi::encoding_utf8)) return std::nullopt;
  return TXPathDocument(std::move(document));
}

TXPathSelection TXPathDocument::Select(std::u16string_view AXPath, const TXPathLimits& ALimits) const {
  const std::string xpath = Utf16ToUtf8(AXPath);
  if (xpath.find('\0') != std::string::npos) return {xoBadExpression, {}};
  const auto cost = detail::XPathCostBound(xpath, FDocument->Shape);
  if (!cost) return {xoBadExpression, {}};
  if (*cost > kMaxCost) return {xoTooCostly, {}};
  try {
    pugi::xpath_node_set nodes = FDocument->Xml.select_nodes(xpath.c_str());
    nodes.sort();
    return TextsOf(nodes, ALimits);
  } catch (const pugi::xpath_exception&) {
    return {xoBadExpression, {}};
  } catch (const std::bad_alloc&) {
    return {xoTooMuch, {}};
  }
}

}  // namespace tessarine

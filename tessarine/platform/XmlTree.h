#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <iterator>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/platform/ByteBuffer.h>
#include <tessarine/platform/Xml.h>

namespace tessarine {

/// An element or a text of a TXmlTree, which owns it and all that it points to.
struct TXmlNode {
  std::string_view Name;  ///< full name of an element, empty for a text
  std::string_view Text;  ///< of a text; never empty there
  std::span<const TXmlAttribute> Attributes;
  const TXmlNode* Parent = nullptr;
  const TXmlNode* FirstChild = nullptr;
  const TXmlNode* NextSibling = nullptr;

  bool IsElement() const { return !Name.empty(); }
};

/// A document as a tree, for small parts; big ones are read with TXmlReader. White space is preserved. Building,
/// walking and freeing are iterative, so depth is no danger.
class TXmlTree {
 public:
  /// Reads a document to its end. Throws as TXmlReader does, and ELimit for more than MaxXmlTreeNodes. The bytes are
  /// not needed afterwards.
  TXmlTree(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits = {});

  /// Called at a start event: reads that element as a tree of its own and goes on to its end event. Throws likewise;
  /// the limit counts the nodes of this tree.
  TXmlTree(TXmlReader& AReader, const TReadLimits& ALimits);
  TXmlTree(TXmlTree&&) noexcept = default;
  TXmlTree& operator=(TXmlTree&&) noexcept = default;

  const TXmlNode* Root() const { return &FNodes.front(); }

 private:
  void Build(TXmlReader& AReader, TXmlNode* AOpen, const TReadLimits& ALimits);
  TXmlNode* AddElement(const TXmlReader& AReader, TXmlNode* AParent);
  TXmlNode* Add(TXmlNode* AParent);
  std::string_view Keep(std::string_view AText);
  void LinkAttributes();

  std::deque<TXmlNode> FNodes;             // in document order; addresses are stable
  std::vector<TXmlNode*> FLastChildren;    // of the open elements, while building
  std::vector<TXmlAttribute> FAttributes;  // of all elements in document order
  std::vector<TByteBuffer> FTexts;         // one for a document, whose decoded texts are never longer than itself
  size_t FTextsUsed = 0;                   // of the last one
};

/// The element children of a node, for range loops; none for null.
class TXmlElements {
 public:
  class TIterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = const TXmlNode*;
    using difference_type = std::ptrdiff_t;
    using pointer = const value_type*;
    using reference = value_type;

    explicit TIterator(const TXmlNode* ANode = nullptr) : FNode(ANode) { SkipTexts(); }
    const TXmlNode* operator*() const { return FNode; }
    TIterator& operator++() {
      FNode = FNode->NextSibling;
      SkipTexts();
      return *this;
    }
    TIterator operator++(int) {
      const TIterator before = *this;
      ++*this;
      return before;
    }
    friend bool operator==(const TIterator&, const TIterator&) = default;

   private:
    void SkipTexts() {
      while (FNode != nullptr && !FNode->IsElement()) FNode = FNode->NextSibling;
    }
    const TXmlNode* FNode;
  };

  explicit TXmlElements(const TXmlNode* AParent) : FFirst(AParent == nullptr ? nullptr : AParent->FirstChild) {}
  TIterator begin() const { return TIterator(FFirst); }
  TIterator end() const { return TIterator(); }

 private:
  const TXmlNode* FFirst;
};

// Lookups. All take null for "no node", and are blind to prefixes and to the case of ASCII letters.

/// The part of the name behind the last ":"; empty for null.
std::string_view XmlLocalName(const TXmlNode* ANode);
bool XmlLocalNameIs(const TXmlNode* ANode, std::string_view ALocalName);

/// The first element child with that local name, or null.
const TXmlNode* XmlFindChild(const TXmlNode* ANode, std::string_view ALocalName);

/// The first element below ANode in document order with that local name, or null.
const TXmlNode* XmlFindDescendant(const TXmlNode* ANode, std::string_view ALocalName);

/// The attribute that FindXmlAttribute finds, else ADefault.
std::string_view XmlAttr(const TXmlNode* ANode, std::string_view AName, std::string_view ADefault = {});
bool XmlHasAttr(const TXmlNode* ANode, std::string_view AName);

/// The attribute's whole text as a decimal integer, or as a number with "." whatever the locale; else ADefault.
int32_t XmlAttrInt(const TXmlNode* ANode, std::string_view AName, int32_t ADefault);
double XmlAttrFloat(const TXmlNode* ANode, std::string_view AName, double ADefault);

/// False for null; ADefault without the attribute "val"; false when that is "0", "false" or "off"; else true.
bool XmlBoolVal(const TXmlNode* ANode, bool ADefault);

/// XmlBoolVal of the child with that name, true when the child has no "val".
bool XmlChildBool(const TXmlNode* ANode, std::string_view ALocalName);

/// All text of and below ANode in document order, passed through UnescapeXlsxText. The first form is exact, in the
/// second a lone surrogate is U+FFFD.
std::u16string XmlNodeText16(const TXmlNode* ANode);
std::string XmlNodeText(const TXmlNode* ANode);

/// The texts of all elements below ANode with that local name, one behind the other, not looking inside a match.
std::u16string XmlCollectLocalText16(const TXmlNode* ANode, std::string_view ALocalName);
std::string XmlCollectLocalText(const TXmlNode* ANode, std::string_view ALocalName);

}  // namespace tessarine

#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

/// How much work an XPath expression may be at the most.
namespace tessarine::detail {

/// What of a document decides the cost of selecting from it.
struct TXmlShape {
  double Nodes = 1;         // elements, attributes and texts
  double TextBytes = 0;     // of them all
  double Depth = 1;         // of the deepest element
  double SiblingPairs = 0;  // over all elements, the squares of the counts of their children
  double TreeTexts = 0;     // over all elements, the nodes below times the bytes of text below
};

inline constexpr size_t kMaxXPathLength = 8192;
inline constexpr size_t kMaxXPathTokens = 512;  // the library below recurses as deep as a path is long
inline constexpr size_t kMaxXPathNesting = 64;

/// An upper bound on the nodes visited and on the texts read; nothing when the expression is too long or nested
/// too deep. Any bytes are welcome: what is no expression has some cost, too.
///
/// A step visits the nodes of the document once, times what its axis may repeat for one node of a set: ancestors and
/// descendants the depth, siblings the average count of them, preceding and following all nodes. At the top a set is
/// freed of its duplicates behind each step. Inside of predicates a set is made anew for each node, so that the factors
/// of a path multiply with one another and with those around; a path from the root multiplies with all nodes there, and
/// so does a comparison of two sets anywhere.
std::optional<double> XPathCostBound(std::string_view AXPath, const TXmlShape& AShape);

}  // namespace tessarine::detail

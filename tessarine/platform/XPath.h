#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

enum class TXPathOutcome : uint8_t {
  xoDone,
  xoBadExpression,  // it is none, selects no nodes but a value, or is too long or too deep
  xoTooCostly,      // it could take too long on this document
  xoTooMuch,        // it selects more nodes or text than was allowed
};
using enum TXPathOutcome;

struct TXPathSelection {
  TXPathOutcome Outcome = xoDone;
  std::vector<std::u16string> Texts;  // string-values in document order
};

/// What a selection may give.
struct TXPathLimits {
  size_t MaxNodes = 1'000'000;
  size_t MaxTextBytes = size_t{64} << 20;  // of all texts, in UTF-8
};

/// An XML document from which nodes are selected with XPath 1.0. Names are compared with their prefixes; local-name()
/// is blind to them. Texts of nothing but white space between tags are left out.
///
/// Documents and expressions may be hostile. There is no DTD and no entity but the predefined ones; nesting is bounded
/// in both; and an expression that could cost too much on the document, judged by bounds on its axes and predicates, is
/// refused before it is tried. Nothing throws.
class TESSARINE_API TXPathDocument {
 public:
  TXPathDocument(TXPathDocument&&) noexcept;
  TXPathDocument& operator=(TXPathDocument&&) noexcept;
  ~TXPathDocument();

  /// Nothing for what is no well-formed XML or exceeds the limits of readers. White space around it does not count.
  static std::optional<TXPathDocument> TryLoad(std::u16string_view AXml);

  TXPathSelection Select(std::u16string_view AXPath, const TXPathLimits& ALimits = {}) const;

 private:
  struct TDocument;
  explicit TXPathDocument(std::unique_ptr<TDocument> ADocument);

  std::unique_ptr<TDocument> FDocument;
};

}  // namespace tessarine

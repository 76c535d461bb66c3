#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/formula/Ast.h>

namespace tessarine {

/// Turns the text of one formula into a tree. There are no failures: what cannot be read is a node of kind ankError
/// with ceValue, at its place in the tree or instead of the whole.
class TESSARINE_API TFormulaParser {
 public:
  /// How deep a tree may nest: leaves, calls and array literals count one each, and so does each unbroken chain of
  /// left-associative operators or of signs, however long. Parentheses do not count. A formula that nests deeper is an
  /// error node, so walks of a tree may recurse wherever they take such chains in a loop.
  static constexpr size_t kMaxDepth = 512;

  /// The leading "=" is optional; an empty formula is an error node.
  static std::unique_ptr<TAstNode> Parse(std::u16string_view AText);
};

}  // namespace tessarine

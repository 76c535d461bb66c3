#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

enum class TAstNodeKind : uint8_t {
  ankNumber,
  ankString,
  ankBool,
  ankError,
  ankCellRef,
  ankRange,
  ankSheetRef,
  ankTableRef,
  ankUnary,
  ankBinary,
  ankFunc,
  ankArrayLit,
};
using enum TAstNodeKind;

/// One node of a formula's tree; owns its children. Only the members of its kind are set. Freeing a tree of any
/// depth needs no recursion.
class TESSARINE_API TAstNode {
 public:
  explicit TAstNode(TAstNodeKind AKind) : Kind(AKind) {}
  ~TAstNode();
  TAstNode(const TAstNode&) = delete;
  TAstNode& operator=(const TAstNode&) = delete;

  TAstNodeKind Kind;
  bool BooleanValue = false;          // ankBool
  TCellErrorCode ErrorCode = ceNone;  // ankError
  double Number = 0;                  // ankNumber
  std::u16string Text;                // literals and references as written; names in upper case; a table's name
  int32_t Col = 0;                    // first column, 1-based
  int32_t Row = 0;
  int32_t Col2 = 0;                // ankRange: last column; ankArrayLit: number of columns
  int32_t Row2 = 0;                // ankRange: last row; ankArrayLit: number of rows
  std::u16string SheetName;        // ankRange, ankSheetRef; empty without prefix
  std::u16string ColumnName;       // ankTableRef
  std::u16string Op;               // ankUnary, ankBinary
  std::unique_ptr<TAstNode> Left;  // ankUnary: the operand
  std::unique_ptr<TAstNode> Right;
  std::vector<std::unique_ptr<TAstNode>> Args;  // ankFunc; ankArrayLit: its cells row by row

  /// Source span of a reference token: 0-based offset (a leading "=" counted) and length. For tools and the compiler.
  int32_t StartIndex = 0;
  int32_t Length = 0;

 private:
  void DetachChildren(TAstNode*& APending) noexcept;

  TAstNode* FNextToFree = nullptr;  // links the nodes that a destructor still has to free
};

/// A deep copy; null gives null.
TESSARINE_API std::unique_ptr<TAstNode> CloneAstNode(const TAstNode* ANode);

/// The tree as a line of text, for tests and tools: "(+ 1 (* A1 2))". References are written by their numbers, without
/// "$" ("Sheet1!A1:B2"; a whole column reads "A1:A1048576"), array literals as "{1 2; 3 4}".
TESSARINE_API std::u16string DumpAst(const TAstNode* ANode);

}  // namespace tessarine

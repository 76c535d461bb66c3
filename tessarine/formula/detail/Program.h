#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/formula/Ast.h>
#include <tessarine/formula/FunctionTable.h>

namespace tessarine::detail {

enum class TOperator : uint8_t {
  opAdd,
  opSub,
  opMul,
  opDiv,
  opPow,
  opConcat,
  opEq,
  opNe,
  opLt,
  opGt,
  opLe,
  opGe,
  opPlus,
  opMinus,
  opAt
};
using enum TOperator;

/// Constructs that the evaluator knows by itself, by canonical name. The condition on the argument count is tested
/// when the call is evaluated.
enum class TSpecialForm : uint8_t {
  sfNone,
  sfIf,
  sfIfError,
  sfIfNa,
  sfIsOmitted,
  sfIndirect,
  sfOffset,
  sfChoose,
  sfRow,
  sfColumn,
  sfLet,
  sfLambda,
  sfMap,
  sfByRow,
  sfByCol,
  sfReduce,
  sfScan,
  sfMakeArray
};

/// A node of a compiled formula. Children precede their parents in TProgram::Nodes, left before right.
struct TProgramNode {
  enum TRelative : uint8_t { rlCol = 1, rlRow = 2, rlCol2 = 4, rlRow2 = 8 };

  TAstNodeKind Kind = ankError;
  TOperator Op = opAdd;  // ankUnary, ankBinary
  TSpecialForm Special = TSpecialForm::sfNone;
  uint8_t Relative = 0;  // which of the four numbers are distances from the formula's cell
  TCellErrorCode ErrorCode = ceNone;
  bool BooleanValue = false;
  bool IsIdentifier = false;  // ankFunc without arguments
  int32_t Col = 0;            // references; ankArrayLit: Col2, Row2 hold the shape
  int32_t Row = 0;
  int32_t Col2 = 0;
  int32_t Row2 = 0;
  uint32_t FirstChild = 0;  // into TProgram::Children: Left (and Right), or the arguments
  uint32_t ChildCount = 0;
  double Number = 0;
  TText Text;       // string literal; raw upper-case name of ankFunc; a table's name
  TText SheetName;  // prefix, empty without one
  TText ColumnName;
  TText CanonicalName;                     // ankFunc
  const TFunctionDef* Function = nullptr;  // ankFunc; null for a name that no tier knows
};

/// A rectangle that a formula reads, resolved at a cell; corners ordered, not cut to any bounds.
struct TRelativeRect {
  int32_t Col, Row, Col2, Row2;
};

/// A formula compiled once for all cells that share its template: its tree, flat, with references relative to the
/// cell. What can only be known at run time (sheets, tables, names, locals) stays by name.
class TProgram final : public TFormulaProgram {
 public:
  std::vector<TProgramNode> Nodes;  // the last one is the root; never empty
  std::vector<uint32_t> Children;   // node indexes

  /// True when a slot of the template turned out to stand where the grammar reads no reference: this program then
  /// fits only the cell it was compiled at and is not kept.
  bool IsPositionBound = false;

  // What the compiler found out once, for guards of fast paths. False is a promise, true only a possibility.
  // ProgramFlags.cpp tells for each what it counts in to be safe.
  bool HasCalls = false;         // any ankFunc
  bool HasIdentifiers = false;   // zero-argument identifiers: locals, tables, names, functions such as PI
  bool ReadsPosition = false;    // ROW(), COLUMN(), @, intersecting ranges, bare [Col], INDIRECT, SINGLE, names
  bool ReadsUntracked = false;   // INDIRECT, OFFSET, references in array literals; HasIdentifiers stands for names
  bool HasOrderEffects = false;  // random numbers, the clock, web and real-time data, unknown functions
  bool MaySpill = false;         // the root may yield a rectangle
  bool HasTableRefs = false;
  bool HasSheetRefs = false;
  /// A range that spans all rows or columns at the cell the program was compiled at. One whose two ends move
  /// differently (A$1:A9) may span them at other cells: users of the rectangle test what they get.
  bool HasWholeLines = false;
  /// The root calls the body of a function that is a mapping from arguments to a value, and no argument of it has
  /// anything to evaluate but arithmetic. Unlike the flags above a promise when true.
  bool IsDirectCall = false;

  mutable std::vector<TFormulaArg> CallArgs;  // of a direct call, kept from one evaluation to the next

  const TProgramNode& Root() const { return Nodes.back(); }
  const TProgramNode& Child(const TProgramNode& ANode, uint32_t AIndex) const {
    return Nodes[Children[ANode.FirstChild + AIndex]];
  }

  /// The four numbers of a reference node at a cell. Range corners are returned as written, not ordered.
  static TRelativeRect RectAt(const TProgramNode& ANode, int32_t ACol, int32_t ARow) {
    return {ANode.Col + ((ANode.Relative & TProgramNode::rlCol) ? ACol : 0),
            ANode.Row + ((ANode.Relative & TProgramNode::rlRow) ? ARow : 0),
            ANode.Col2 + ((ANode.Relative & TProgramNode::rlCol2) ? ACol : 0),
            ANode.Row2 + ((ANode.Relative & TProgramNode::rlRow2) ? ARow : 0)};
  }
};

/// Compiles a formula text with absolute references only (as Evaluate needs it: no cell).
std::unique_ptr<TProgram> CompileText(std::u16string_view AText);

/// Compiles the formula of a template as it stands at a cell.
std::unique_ptr<TProgram> CompileTemplate(const TFormulaTemplate& ATemplate, int32_t ACol, int32_t ARow);

/// The template's program, compiled at the first call and kept. For a position-bound one a fresh program for this
/// cell is compiled into AOwned and returned.
const TProgram& ProgramOf(const TFormulaTemplate& ATemplate, int32_t ACol, int32_t ARow,
                          std::unique_ptr<TProgram>& AOwned);

}  // namespace tessarine::detail

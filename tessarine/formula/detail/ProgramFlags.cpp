#include <tessarine/formula/detail/ProgramFlags.h>

#include <algorithm>
#include <iterator>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/formula/detail/Program.h>

namespace tessarine::detail {

namespace {

constexpr uint8_t kPosition = 1;   // answers by the cell entered last
constexpr uint8_t kUntracked = 2;  // reads what stands in none of its references
constexpr uint8_t kOrder = 4;      // the moment of the call shows, or the call acts on something outside the cell

struct TNamedTraits {
  std::u16string_view Name;
  uint8_t Traits;
};

/// Functions that are more than a mapping from arguments to a value; sorted by canonical name.
constexpr TNamedTraits kTraits[] = {
    {u"CUBEKPIMEMBER", kUntracked},
    {u"CUBEMEMBER", kUntracked},
    {u"CUBEMEMBERPROPERTY", kUntracked},
    {u"CUBERANKEDMEMBER", kUntracked},
    {u"CUBESET", kUntracked},
    {u"CUBESETCOUNT", kUntracked},
    {u"CUBEVALUE", kUntracked},
    {u"DETECTLANGUAGE", kOrder},
    {u"GETPIVOTDATA", kUntracked},
    {u"GOOGLEFINANCE", kOrder},
    {u"GOOGLETRANSLATE", kOrder},
    {u"IMPORTDATA", kOrder},
    {u"IMPORTFEED", kOrder},
    {u"IMPORTHTML", kOrder},
    {u"IMPORTRANGE", kOrder},
    {u"IMPORTXML", kOrder},
    {u"INDIRECT", kPosition | kUntracked},
    {u"NOW", kOrder},
    {u"OFFSET", kUntracked},
    {u"RAND", kOrder},
    {u"RANDARRA", kOrder},
    {u"RANDARRAY", kOrder},
    {u"RANDBETWEEN", kOrder},
    {u"RTD", kPosition | kOrder},
    {u"SINGLE", kPosition},
    {u"SPARKLINE", kPosition | kOrder},
    {u"STOCKHISTORY", kOrder},
    {u"TODAY", kOrder},
    {u"TRANSLATE", kOrder},
    {u"WEBSERVICE", kOrder},
};
static_assert(std::is_sorted(std::begin(kTraits), std::end(kTraits),
                             [](const TNamedTraits& ALeft, const TNamedTraits& ARight) {
                               return ALeft.Name < ARight.Name;
                             }));

uint8_t TraitsOf(std::u16string_view ACanonicalName) {
  const auto found =
      std::lower_bound(std::begin(kTraits), std::end(kTraits), ACanonicalName,
                       [](const TNamedTraits& AItem, std::u16string_view AName) { return AItem.Name < AName; });
  return found != std::end(kTraits) && found->Name == ACanonicalName ? found->Traits : 0;
}

bool IsReference(const TProgramNode& ANode) {
  return ANode.Kind == ankCellRef || ANode.Kind == ankRange || ANode.Kind == ankSheetRef || ANode.Kind == ankTableRef;
}

bool IsMultiCell(const TProgramNode& ANode) { return ANode.Kind == ankRange || ANode.Kind == ankTableRef; }

/// Whether a rectangle as a child of this node may be cut to the one cell beside the formula. Functions take it whole;
/// operators do so only in argument position, which is not looked into here; branches and conditions are scalar. The
/// forms that look at the node alone (ROW, COLUMN) are counted as taking it whole.
bool MayIntersectChildren(const TProgramNode& ANode) {
  switch (ANode.Special) {
    case TSpecialForm::sfIf:
    case TSpecialForm::sfIfError:
    case TSpecialForm::sfIfNa:
    case TSpecialForm::sfChoose:
    case TSpecialForm::sfIndirect: return true;
    default: return ANode.Kind != ankFunc;
  }
}

bool SpansWholeLines(const TProgramNode& ANode, int32_t ACol, int32_t ARow) {
  const TRelativeRect rect = TProgram::RectAt(ANode, ACol, ARow);
  const bool allRows = std::min(rect.Row, rect.Row2) <= 1 && std::max(rect.Row, rect.Row2) >= kMaxRow;
  const bool allCols = std::min(rect.Col, rect.Col2) <= 1 && std::max(rect.Col, rect.Col2) >= kMaxCol;
  return allRows || allCols;
}

/// A zero-argument identifier may be a defined name, also where a function of that name exists: its text is evaluated
/// beside the formula and may read any cell. A call of a name that no tier knows counts as having effects.
void AddCallFlags(TProgram& AProgram, const TProgramNode& ANode) {
  const uint8_t traits = TraitsOf(ANode.CanonicalName);
  AProgram.HasCalls = true;
  AProgram.HasIdentifiers |= ANode.IsIdentifier;
  AProgram.ReadsPosition |= ANode.IsIdentifier || (traits & kPosition) != 0;
  AProgram.ReadsUntracked |= (traits & kUntracked) != 0;
  AProgram.HasOrderEffects |= (traits & kOrder) != 0;
  if (!ANode.Function && ANode.Special == TSpecialForm::sfNone && !ANode.IsIdentifier) AProgram.HasOrderEffects = true;
}

void AddReferenceFlags(TProgram& AProgram, const TProgramNode& ANode, int32_t ACol, int32_t ARow) {
  AProgram.HasTableRefs |= ANode.Kind == ankTableRef;
  AProgram.HasSheetRefs |= ANode.Kind == ankSheetRef || !ANode.SheetName.IsEmpty();
  AProgram.ReadsPosition |= ANode.Kind == ankTableRef && ANode.Text.IsEmpty();
  AProgram.HasWholeLines |= ANode.Kind == ankRange && SpansWholeLines(ANode, ACol, ARow);
}

/// References inside array literals make no edges in the dependency graph.
bool HasReferencesInArrays(const TProgram& AProgram) {
  std::vector<bool> inArray(AProgram.Nodes.size(), false);
  for (size_t i = AProgram.Nodes.size(); i-- > 0;) {
    const TProgramNode& node = AProgram.Nodes[i];
    if (inArray[i] && IsReference(node)) return true;
    if (!inArray[i] && node.Kind != ankArrayLit) continue;
    for (uint32_t k = 0; k < node.ChildCount; ++k) inArray[AProgram.Children[node.FirstChild + k]] = true;
  }
  return false;
}

/// Whether a call at the root may yield a rectangle by itself; branches are for the caller to look into.
bool MayCallSpill(const TProgramNode& ANode) {
  switch (ANode.Special) {
    case TSpecialForm::sfIf:
    case TSpecialForm::sfIfError:
    case TSpecialForm::sfIfNa:
    case TSpecialForm::sfChoose:
    case TSpecialForm::sfIsOmitted:
    case TSpecialForm::sfIndirect:
    case TSpecialForm::sfRow:
    case TSpecialForm::sfColumn: return false;
    case TSpecialForm::sfOffset:
    case TSpecialForm::sfLet:
    case TSpecialForm::sfLambda:
    case TSpecialForm::sfMap:
    case TSpecialForm::sfByRow:
    case TSpecialForm::sfByCol:
    case TSpecialForm::sfReduce:
    case TSpecialForm::sfScan:
    case TSpecialForm::sfMakeArray: return true;
    case TSpecialForm::sfNone: break;
  }
  const TFunctionDef* const function = ANode.Function;
  return !function || function->Tier == ftrArray || function->Tier == ftrEvaluator || function->ArrayBody ||
         function->ArrayMinArgs > 0;
}

bool HasBranches(const TProgramNode& ANode) {
  return ANode.Special == TSpecialForm::sfIf || ANode.Special == TSpecialForm::sfIfError ||
         ANode.Special == TSpecialForm::sfIfNa || ANode.Special == TSpecialForm::sfChoose;
}

/// Operators yield scalars at the root; signs and branches pass on what they hold.
bool MayRootSpill(const TProgram& AProgram) {
  std::vector<uint32_t> open{static_cast<uint32_t>(AProgram.Nodes.size() - 1)};
  while (!open.empty()) {
    const TProgramNode& node = AProgram.Nodes[open.back()];
    open.pop_back();
    if (node.Kind == ankRange || node.Kind == ankArrayLit || (node.Kind == ankFunc && MayCallSpill(node))) return true;
    const bool passesOn = node.Kind == ankUnary ? node.Op != opAt : node.Kind == ankFunc && HasBranches(node);
    if (!passesOn) continue;
    for (uint32_t k = 0; k < node.ChildCount; ++k) open.push_back(AProgram.Children[node.FirstChild + k]);
  }
  return false;
}

/// Long literals count among the cells that arguments hold at one time, which only the plain way does.
bool IsShortLiteral(const TProgramNode& ANode) {
  constexpr size_t kShort = 512;
  const bool isOther = ANode.Kind == ankNumber || ANode.Kind == ankBool || ANode.Kind == ankError;
  return isOther || (ANode.Kind == ankString && ANode.Text.Length() <= kShort);
}

/// Arguments that the direct call knows. A sign alone, unlike arithmetic, leaves a cell its place; only with a minus is
/// it a number in every case.
bool IsDirectArg(const TProgramNode& ANode) {
  switch (ANode.Kind) {
    case ankCellRef:
    case ankSheetRef:
    case ankRange: return true;
    case ankUnary: return ANode.Op == opMinus;
    case ankBinary: return ANode.Op <= opPow;
    default: return IsShortLiteral(ANode);
  }
}

bool IsDirect(const TProgram& AProgram) {
  const TProgramNode& root = AProgram.Root();
  const bool isCall = root.Kind == ankFunc && root.ChildCount > 0 && root.Special == TSpecialForm::sfNone &&
                      root.Function && root.Function->Body &&
                      (root.Function->Tier == ftrBasic || root.Function->Tier == ftrExtra);
  if (!isCall || AProgram.HasOrderEffects || AProgram.ReadsUntracked) return false;
  for (uint32_t i = 0; i < root.ChildCount; ++i) {
    if (!IsDirectArg(AProgram.Child(root, i))) return false;
  }
  return true;
}

}  // namespace

void FindProgramFlags(TProgram& AProgram, int32_t ACol, int32_t ARow) {
  bool hasArrays = false;
  for (const TProgramNode& node : AProgram.Nodes) {
    if (node.Kind == ankFunc) AddCallFlags(AProgram, node);
    if (IsReference(node)) AddReferenceFlags(AProgram, node, ACol, ARow);
    hasArrays |= node.Kind == ankArrayLit;
    const bool asksWhere = node.Kind == ankUnary ? node.Op == opAt
                                                 : node.IsIdentifier && (node.Special == TSpecialForm::sfRow ||
                                                                         node.Special == TSpecialForm::sfColumn);
    AProgram.ReadsPosition |= asksWhere;
    if (node.ChildCount == 0 || !MayIntersectChildren(node)) continue;
    for (uint32_t k = 0; k < node.ChildCount; ++k)
      AProgram.ReadsPosition |= IsMultiCell(AProgram.Nodes[AProgram.Children[node.FirstChild + k]]);
  }
  AProgram.ReadsPosition |= AProgram.Root().Kind == ankTableRef;
  AProgram.ReadsUntracked |= hasArrays && HasReferencesInArrays(AProgram);
  AProgram.MaySpill = MayRootSpill(AProgram);
  AProgram.IsDirectCall = IsDirect(AProgram);
}

}  // namespace tessarine::detail

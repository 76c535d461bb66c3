#include <tessarine/formula/detail/Evaluation.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/formula/detail/EvaluationStack.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Without a leading "[digits]" of another book, a leading "$", and the quotes around it.
std::u16string PlainSheetName(std::u16string_view AName) {
  if (!AName.empty() && AName.front() == u'[') {
    size_t end = 1;
    while (end < AName.size() && IsAsciiDigit(AName[end])) ++end;
    if (end > 1 && end + 1 < AName.size() && AName[end] == u']') AName.remove_prefix(end + 1);
  }
  if (!AName.empty() && AName.front() == u'$') AName.remove_prefix(1);
  std::u16string name(AName);
  if (name.size() < 2 || name.front() != u'\'' || name.back() != u'\'') return name;
  name = name.substr(1, name.size() - 2);
  for (size_t at = name.find(u"''"); at != std::u16string::npos; at = name.find(u"''", at + 1)) name.erase(at, 1);
  return name;
}

const TSheetTable* FindTable(const TWorksheet* ASheet, std::u16string_view AName) {
  return ASheet && !ASheet->Tables().IsEmpty() ? ASheet->Tables().FindByName(AName) : nullptr;
}

}  // namespace

/// Marks a defined name as being evaluated. When the evaluation is suspended the mark stays: the loop over waiting
/// readers takes it off.
class TEvaluation::TNameGuard {
 public:
  TNameGuard(TEvaluation& AOwner, TText AName) : FOwner(AOwner), FCount(AOwner.FVisitingNames.size()) {
    FOwner.FVisitingNames.push_back(std::move(AName));
  }
  ~TNameGuard() {
    if (!FOwner.FSuspending && FOwner.FVisitingNames.size() > FCount) FOwner.FVisitingNames.resize(FCount);
  }
  TNameGuard(const TNameGuard&) = delete;
  TNameGuard& operator=(const TNameGuard&) = delete;

 private:
  TEvaluation& FOwner;
  size_t FCount;
};

int32_t TEvaluation::ResolveSheetIndex(int32_t ACurrentSheet, std::u16string_view AName) const {
  if (AName.empty()) return ACurrentSheet < 0 ? FWorkbook.ActiveSheetIndex() : ACurrentSheet;
  const std::u16string plain = PlainSheetName(AName);
  const int32_t index = FWorkbook.FindSheetIndex(plain);
  return index >= 0 || plain == AName ? index : FWorkbook.FindSheetIndex(AName);
}

/// ResolveSheetIndex for the names of programs, which are the same few texts again and again.
int32_t TEvaluation::SheetOf(const TProgramFrame& AFrame, const TText& AName) {
  if (AName.IsEmpty()) return AFrame.SheetIndex;
  if (FSheetNamesVersion != FWorkbook.SheetListVersion()) {
    for (TSheetName& entry : FSheetNames) entry = TSheetName();
    FSheetNamesVersion = FWorkbook.SheetListVersion();
  }
  for (const TSheetName& entry : FSheetNames) {
    if (entry.Name.Block() == AName.Block()) return entry.SheetIndex;
  }
  const int32_t index = ResolveSheetIndex(AFrame.SheetIndex, AName);
  FSheetNames[FNextSheetName++ % kSheetNames] = {AName, index};
  return index;
}

TInterpreter::TTableArea TEvaluation::ResolveTableColumn(int32_t ACurrentSheet, std::u16string_view ATable,
                                                         std::u16string_view AColumn) const {
  const std::u16string_view name = TrimSpaces(ATable);
  std::u16string_view column = TrimSpaces(AColumn);
  if (column.starts_with(u'@')) column = TrimSpaces(column.substr(1));
  TInterpreter::TTableArea area;
  area.SheetIndex = ACurrentSheet;
  const TWorksheet* current = FWorkbook.GetSheet(ACurrentSheet);
  const TSheetTable* table = nullptr;
  if (name.empty()) {
    if (current && EvalCol >= 1 && EvalRow >= 1) table = current->Tables().FindContaining(EvalCol, EvalRow);
  } else {
    table = FindTable(current, name);
    for (int32_t i = 0; !table && i < FWorkbook.SheetCount(); ++i) {
      table = FindTable(FWorkbook.GetSheet(i), name);
      area.SheetIndex = i;
    }
  }
  if (table) area.Range = column.empty() ? table->DataRange() : table->ColumnDataRange(column);
  area.Found = table && area.Range.EndRow >= area.Range.StartRow;
  if (!area.Found) area = TInterpreter::TTableArea();
  return area;
}

const TEvaluation::TNamedProgram& TEvaluation::FindNamed(std::u16string_view AName) {
  if (FNamedVersion != FWorkbook.NamesVersion()) {
    FNamed.clear();
    FNamedVersion = FWorkbook.NamesVersion();
  }
  const auto known = FNamed.find(AName);
  if (known != FNamed.end()) return known->second;
  constexpr size_t kMostNames = 4096;  // of names that do not exist, above all
  if (FNamed.size() >= kMostNames) FNamed.clear();
  TNamedProgram& entry = FNamed[std::u16string(AName)];
  const TText* formula = FWorkbook.FindNormalizedName(TWorkbook::NormalizeName(AName));
  entry.Exists = formula != nullptr;
  if (formula) entry.Text = *formula;
  return entry;
}

/// A defined name yields one value: its text in scalar mode on the sheet that reads it.
TCellValue TEvaluation::EvalNamedFormula(std::u16string_view AName, int32_t ASheetIndex) {
  const TNamedProgram& entry = FindNamed(AName);
  if (!entry.Exists) return TCellValue::FromError(ceName);
  const std::u16string name = TWorkbook::NormalizeName(AName);
  for (const TText& visiting : FVisitingNames) {
    if (visiting == std::u16string_view(name)) return TCellValue::FromError(ceCirc);
  }
  if (StackUsed() > kNameStack) return TCellValue::FromError(ceValue);
  std::shared_ptr<const TProgram> program = entry.Program;
  if (!program || !Options.ReusePrograms) {
    program = CompileText(entry.Text);
    FNamed.find(AName)->second.Program = program;
  }
  const TNameGuard guard(*this, TText(name));
  const int32_t sheet = ASheetIndex < 0 ? FWorkbook.ActiveSheetIndex() : ASheetIndex;
  return EvalNode(TProgramFrame{*program, 0, 0, sheet}, program->Root());
}

}  // namespace tessarine::detail

#include <tessarine/core/sheet/detail/FormulaMover.h>

#include <algorithm>
#include <utility>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kRegionBits = 2;
constexpr size_t kMaxPlannedSlots = 64 / kRegionBits;

/// Whether the slots from AAt on make up the end of a reference token: one corner, or two with ":" between them.
bool IsMadeOfSlots(const std::vector<TReferenceSlot>& ASlots, size_t AAt, size_t ACount, size_t AFirst, size_t AEnd) {
  if (AAt + ACount > ASlots.size() || ASlots[AAt].Offset != AFirst) return false;
  const TReferenceSlot& last = ASlots[AAt + ACount - 1];
  if (last.Offset + last.Length != AEnd) return false;
  return ACount == 1 || ASlots[AAt].Offset + ASlots[AAt].Length + 1 == last.Offset;
}

}  // namespace

/// What the place of a formula and its references in the regions of the edit come to.
struct TFormulaMover::TReading {
  bool IsUnchanged = true;
  bool LeavesSheet = false;
  uint64_t Regions = 0;
  int64_t LastAlike = 0;  // up to this line of the formula all of it stays the same
};

TFormulaMover::TFormulaMover(TFormulaPool& APool, TShiftAxis AAxis)
    : FPool(APool), FKeepsText(true), FEdit{AAxis, false, 1, 0, 1}, FOnSheet(false) {}

TFormulaMover::TFormulaMover(TFormulaPool& APool, const TLineEdit& AEdit, std::u16string_view ASheetName, bool AOnSheet)
    : FPool(APool),
      FKeepsText(false),
      FEdit(AEdit),
      FSheetName(ASheetName),
      FPrefix(QuoteSheetName(ASheetName) + u'!'),
      FOnSheet(AOnSheet) {}

TFormulaMover::~TFormulaMover() {
  for (auto& [key, plan] : FPlans) {
    for (const TOutcome& outcome : plan->Outcomes) FPool.Release(outcome.Template);
    FPool.Release(plan->Template);
  }
}

TFormulaTemplate* TFormulaMover::MovedPlain(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow, int32_t ANewCol,
                                            int32_t ANewRow) {
  std::u16string text;
  ATemplate->AppendTextAt(ACol, ARow, text);
  if (!FKeepsText) text = FEdit.Rewritten(text, FSheetName, FOnSheet);
  TFormulaTemplate* const moved = FPool.Intern(text, ANewCol, ANewRow);
  if (moved == ATemplate) FPool.Release(moved);
  return moved;
}

/// Finds out which slots of a template the edit can touch.
void TFormulaMover::MakePlan(TPlan& APlan, TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow) const {
  APlan.ByText = false;
  APlan.Slots.clear();
  const std::vector<TReferenceSlot> slots = ATemplate->SlotsAt(ACol, ARow);
  for (const TReferenceSlot& slot : slots) {
    const bool rows = FEdit.Axis == saRows;
    APlan.Slots.push_back({rows ? slot.Row : slot.Col, rows ? slot.RowAbsolute : slot.ColAbsolute, FOnSheet});
  }
  APlan.ByText = slots.size() > kMaxPlannedSlots;
  if (FKeepsText || APlan.ByText) return;
  if (ATemplate->RewriteKind == TFormulaTemplate::rkPlain) return;
  APlan.ByText = true;
  if (ATemplate->RewriteKind == TFormulaTemplate::rkByText) return;

  std::u16string text;
  ATemplate->AppendTextAt(ACol, ARow, text);
  ATemplate->RewriteKind = TFormulaTemplate::rkByText;
  // Rewritten for a sheet that nothing names: the same text, or the rewriting changes more than references.
  if (AdjustFormula(text, {}, false, saRows, 1, 1) != text) return;
  TFormulaTokenizer tokenizer(text);
  TFormulaToken token;
  size_t at = 0;
  bool isNamed = false;
  for (tokenizer.NextToken(token); token.Kind != ftEnd; tokenizer.NextToken(token)) {
    if (token.Kind != ftCellRef && token.Kind != ftRangeRef && token.Kind != ftSheetRef) continue;
    const auto start = static_cast<size_t>(token.StartIndex);
    const std::u16string_view source = std::u16string_view(text).substr(start, static_cast<size_t>(token.Length));
    const size_t mark = token.SheetName.empty() ? 0 : source.rfind(u'!') + 1;
    const size_t corners = source.find(u':', mark) == source.npos ? 1 : 2;
    if (!IsMadeOfSlots(slots, at, corners, start + mark, start + source.size())) return;
    if (!token.SheetName.empty()) {
      isNamed = true;
      const bool isAffected = EqualAsciiNoCase(token.SheetName, FSheetName);
      if (isAffected && source.substr(0, mark) != FPrefix) {  // its spelling changes, too: for this edit alone
        ATemplate->RewriteKind = TFormulaTemplate::rkUnknown;
        return;
      }
      for (size_t i = 0; i < corners; ++i) APlan.Slots[at + i].IsAffected = isAffected;
    }
    at += corners;
  }
  if (at != slots.size()) return;
  APlan.ByText = false;
  // References with a sheet have to be held against the name of the edited one each time.
  ATemplate->RewriteKind = isNamed ? TFormulaTemplate::rkUnknown : TFormulaTemplate::rkPlain;
}

TFormulaMover::TPlan& TFormulaMover::PlanOf(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow) {
  if (FLast && FLast->Template == ATemplate) return *FLast;
  const auto found = FPlans.find(ATemplate);
  if (found != FPlans.end()) return *(FLast = found->second.get());
  if (ATemplate->RefCount() == 1) {
    MakePlan(FSingle, ATemplate, ACol, ARow);
    return FSingle;
  }
  auto plan = std::make_unique<TPlan>();
  MakePlan(*plan, ATemplate, ACol, ARow);
  plan->Template = ATemplate;
  FPool.Retain(ATemplate);
  FLast = plan.get();
  FPlans.emplace(ATemplate, std::move(plan));
  return *FLast;
}

TFormulaMover::TReading TFormulaMover::Read(const TPlan& APlan, int32_t ALine, int32_t ANewLine) const {
  TReading reading;
  const int64_t distance = int64_t{ANewLine} - ALine;
  const int64_t limit = FEdit.Axis == saRows ? kMaxRow : kMaxCol;
  reading.LastAlike = limit;
  for (const TPlannedSlot& slot : APlan.Slots) {
    const int64_t line = slot.IsAbsolute ? slot.Index : int64_t{ALine} + slot.Index;
    int64_t moved = line;
    reading.Regions <<= kRegionBits;
    if (slot.IsAffected) {
      reading.Regions |= FEdit.Region(line);
      const std::optional<int64_t> index = FEdit.NewIndex(line);
      moved = index ? *index : 0;
      reading.LeavesSheet |= moved > limit || (index && moved < 1);
      reading.IsUnchanged &= index.has_value();
      if (!slot.IsAbsolute)
        reading.LastAlike =
            std::min(reading.LastAlike, ALine + std::min(FEdit.RegionEnd(line), limit - (moved - line)) - line);
    }
    reading.IsUnchanged &= moved - line == (slot.IsAbsolute ? 0 : distance);
  }
  return reading;
}

/// Equal to MovedPlain: the text at the new place has the template's own key when every reference keeps its distance,
/// or its line where it is absolute; and cells whose references go the same ways get texts with one and the same key.
TFormulaTemplate* TFormulaMover::Moved(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow, int32_t ANewCol,
                                       int32_t ANewRow) {
  const bool rows = FEdit.Axis == saRows;
  const int32_t line = rows ? ARow : ACol;
  const int32_t newLine = rows ? ANewRow : ANewCol;
  if (FKeepsText && (line == newLine || !ATemplate->HasSlots())) return ATemplate;
  if (FLast && FLast->Template == ATemplate && line >= FLast->KeptFirst && line <= FLast->KeptLast &&
      newLine - line == FLast->KeptDistance) {
    return ATemplate;
  }
  TPlan& plan = PlanOf(ATemplate, ACol, ARow);
  if (plan.ByText) return MovedPlain(ATemplate, ACol, ARow, ANewCol, ANewRow);
  const TReading reading = Read(plan, line, newLine);
  // A reference that leaves the sheet is one no longer, even where it keeps its distance.
  if (reading.LeavesSheet) return MovedPlain(ATemplate, ACol, ARow, ANewCol, ANewRow);
  if (reading.IsUnchanged) {
    plan.KeptFirst = line;
    plan.KeptLast = static_cast<int32_t>(reading.LastAlike);
    plan.KeptDistance = newLine - line;
    return ATemplate;
  }
  if (&plan == &FSingle) return MovedPlain(ATemplate, ACol, ARow, ANewCol, ANewRow);
  const int64_t distance = int64_t{newLine} - line;
  for (TOutcome& outcome : plan.Outcomes) {
    if (outcome.Regions != reading.Regions || outcome.Distance != distance) continue;
    std::swap(outcome, plan.Outcomes.front());
    TFormulaTemplate* const moved = plan.Outcomes.front().Template;
    if (moved != ATemplate) FPool.Retain(moved);
    return moved;
  }
  TFormulaTemplate* const moved = MovedPlain(ATemplate, ACol, ARow, ANewCol, ANewRow);
  FPool.Retain(moved);
  plan.Outcomes.insert(plan.Outcomes.begin(), {reading.Regions, distance, moved});
  return moved;
}

}  // namespace tessarine::detail

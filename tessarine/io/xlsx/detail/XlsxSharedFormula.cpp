#include <tessarine/io/xlsx/detail/XlsxSharedFormula.h>

#include <algorithm>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/reference/detail/FormulaTemplate.h>

namespace tessarine::detail {

namespace {

// Longer texts are rare and not worth the probes.
constexpr size_t kLongestTemplate = 8192;

/// A line away from ALine inside the bounds, by AStep where there is room; ALine itself when there is no other.
int32_t LineAwayFrom(int32_t ALine, int32_t AFirst, int32_t ALast, int32_t AStep) {
  if (ALine < ALast) return ALine + std::min(AStep, ALast - ALine);
  return ALine - std::min(AStep, ALine - AFirst);
}

}  // namespace

void TXlsxSharedFormula::TextAtPlain(TCellAddress AAddress, std::u16string& AOut) const {
  AOut = OffsetSharedFormula(FText, int64_t{AAddress.Col} - FAddress.Col, int64_t{AAddress.Row} - FAddress.Row);
}

bool TXlsxSharedFormula::TextAt(TCellAddress AAddress, TFormulaPool& APool, std::u16string& AOut) {
  if (TryTextAt(AAddress, AOut)) return true;
  TextAtPlain(AAddress, AOut);
  if (FState == TState::tsUnused) {
    FState = TState::tsUsed;
  } else if (FState == TState::tsUsed && AAddress != FAddress && AAddress.IsValid()) {
    Prepare(AAddress, AOut, APool);
  }
  return false;
}

/// Texts of cells that a formula was filled over differ in their references alone, so they are written from a template
/// instead of being cut into tokens each time: 0.1 us against 1 us for a short one. That the template has exactly the
/// references that move is proved where it is made.
bool TXlsxSharedFormula::TryTextAt(TCellAddress AAddress, std::u16string& AOut) const {
  if (FState != TState::tsTemplate || AAddress == FAddress || !FArea.ContainsAddress(AAddress)) return false;
  AOut.clear();
  FTemplate->AppendTextAt(AAddress.Col, AAddress.Row, AOut);
  return true;
}

/// Makes the template from the text in one cell and holds it against the plain texts in two others that are elsewhere
/// in both directions: a reference that moves in only one of them makes them differ.
void TXlsxSharedFormula::Prepare(TCellAddress AAddress, std::u16string_view AText, TFormulaPool& APool) {
  if (AText.find(u"#REF!") != AText.npos) return;  // a reference left the sheet here; elsewhere it may not
  FState = TState::tsPlain;
  if (AText.size() > kLongestTemplate) return;
  FTemplate = APool.Intern(AText, AAddress.Col, AAddress.Row);
  if (!BoundArea() || !FArea.ContainsAddress(AAddress)) return;
  const auto awayFrom = [&](TCellAddress AFrom, int32_t AStep) {
    return TCellAddress{LineAwayFrom(AFrom.Col, FArea.StartCol, FArea.EndCol, AStep),
                        LineAwayFrom(AFrom.Row, FArea.StartRow, FArea.EndRow, AStep)};
  };
  const TCellAddress near = awayFrom(AAddress, 7);
  if (AgreesAt(near) && AgreesAt(awayFrom(near, 5000))) FState = TState::tsTemplate;
}

bool TXlsxSharedFormula::BoundArea() {
  int64_t firstCol = 1, lastCol = kMaxCol, firstRow = 1, lastRow = kMaxRow;
  for (const TReferenceSlot& slot : FTemplate->SlotsAt(FAddress.Col, FAddress.Row)) {
    if (!slot.ColAbsolute) {
      firstCol = std::max<int64_t>(firstCol, int64_t{1} - slot.Col);
      lastCol = std::min<int64_t>(lastCol, int64_t{kMaxCol} - slot.Col);
    }
    if (!slot.RowAbsolute) {
      firstRow = std::max<int64_t>(firstRow, int64_t{1} - slot.Row);
      lastRow = std::min<int64_t>(lastRow, int64_t{kMaxRow} - slot.Row);
    }
  }
  if (firstCol > lastCol || firstRow > lastRow) return false;
  FArea = {static_cast<int32_t>(firstCol), static_cast<int32_t>(firstRow), static_cast<int32_t>(lastCol),
           static_cast<int32_t>(lastRow)};
  return true;
}

bool TXlsxSharedFormula::AgreesAt(TCellAddress AAddress) const {
  std::u16string plain;
  std::u16string text;
  TextAtPlain(AAddress, plain);
  FTemplate->AppendTextAt(AAddress.Col, AAddress.Row, text);
  return text == plain;
}

}  // namespace tessarine::detail

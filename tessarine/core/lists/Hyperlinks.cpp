#include <tessarine/core/lists/Hyperlinks.h>

#include <algorithm>
#include <array>
#include <limits>
#include <utility>
#include <vector>

#include <tessarine/core/lists/detail/RectIndex.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

/// Cells modulo 2^64: sums and differences stay right whatever the corners are.
uint64_t CellCount(const TCellRange& ARange) {
  return static_cast<uint64_t>(int64_t{ARange.EndCol} - ARange.StartCol + 1) *
         static_cast<uint64_t>(int64_t{ARange.EndRow} - ARange.StartRow + 1);
}

/// What AHole leaves of ARange, at most four pieces: above, below, left and right of it. Both meet.
std::vector<TCellRange> PiecesAround(const TCellRange& ARange, const TCellRange& AHole) {
  std::vector<TCellRange> pieces;
  TCellRange middle = ARange;
  if (AHole.StartRow > ARange.StartRow) {
    pieces.push_back({ARange.StartCol, ARange.StartRow, ARange.EndCol, AHole.StartRow - 1});
    middle.StartRow = AHole.StartRow;
  }
  if (AHole.EndRow < ARange.EndRow) {
    pieces.push_back({ARange.StartCol, AHole.EndRow + 1, ARange.EndCol, ARange.EndRow});
    middle.EndRow = AHole.EndRow;
  }
  if (AHole.StartCol > ARange.StartCol)
    pieces.push_back({ARange.StartCol, middle.StartRow, AHole.StartCol - 1, middle.EndRow});
  if (AHole.EndCol < ARange.EndCol) pieces.push_back({AHole.EndCol + 1, middle.StartRow, ARange.EndCol, middle.EndRow});
  return pieces;
}

int32_t LineNumber(int64_t AValue) {
  return static_cast<int32_t>(
      std::clamp<int64_t>(AValue, std::numeric_limits<int32_t>::min(), std::numeric_limits<int32_t>::max()));
}

/// ARange after a move, cut where the move tears it: lines that keep their neighbours stay in one piece.
std::vector<TCellRange> MovedPieces(const TCellRange& ARange, TShiftAxis AAxis, int64_t AStart, int64_t ACount,
                                    int64_t ADest) {
  const bool byRow = AAxis == saRows;
  const int64_t first = byRow ? ARange.StartRow : ARange.StartCol;
  const int64_t last = byRow ? ARange.EndRow : ARange.EndCol;
  // The first lines of the stretches that a move carries each as a whole.
  std::array<int64_t, 6> cuts = {first, AStart, AStart + ACount, ADest, ADest + ACount, last + 1};
  std::sort(cuts.begin(), cuts.end());
  std::vector<TCellRange> pieces;
  for (size_t i = 0; i + 1 < cuts.size(); ++i) {
    const int64_t from = std::max(cuts[i], first);
    const int64_t to = std::min(cuts[i + 1] - 1, last);
    if (from > to) continue;
    TCellRange piece = ARange;
    (byRow ? piece.StartRow : piece.StartCol) = LineNumber(MoveIndex(from, AStart, ACount, ADest));
    (byRow ? piece.EndRow : piece.EndCol) = LineNumber(MoveIndex(to, AStart, ACount, ADest));
    pieces.push_back(piece);
  }
  return pieces;
}

}  // namespace

/// Invariants:
/// 1. Records in use do not overlap; a free record has no target and stands in FreeRecords.
/// 2. Index names exactly the records in use by their ranges; CellTotal is the sum of their cells.
struct THyperlinkList::TState {
  struct TRecord {
    TCellRange Range;
    TText Target;
  };

  std::vector<TRecord> Records;
  std::vector<uint32_t> FreeRecords;
  detail::TRectIndex Index;
  uint64_t CellTotal = 0;

  void Add(const TCellRange& ARange, TText ATarget) {
    uint32_t number = static_cast<uint32_t>(Records.size());
    if (FreeRecords.empty()) {
      Records.emplace_back();
    } else {
      number = FreeRecords.back();
      FreeRecords.pop_back();
    }
    Records[number] = {ARange, std::move(ATarget)};
    Index.Insert(number, ARange);
    CellTotal += CellCount(ARange);
  }

  TText Take(uint32_t ANumber) {
    TRecord& record = Records[ANumber];
    Index.Remove(ANumber, record.Range);
    CellTotal -= CellCount(record.Range);
    FreeRecords.push_back(ANumber);
    return std::exchange(record.Target, TText());
  }

  void ClearRange(const TCellRange& ARange) {
    for (const uint32_t number : Index.CandidatesIn(ARange)) {
      const TCellRange range = Records[number].Range;
      if (!range.Intersects(ARange)) continue;
      const TText target = Take(number);
      for (const TCellRange& piece : PiecesAround(range, ARange)) Add(piece, target);
    }
  }

  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
    if (ACount < 1 || AStart == ADest) return;
    const std::vector<TRecord> old = std::exchange(Records, {});
    FreeRecords.clear();
    Index.Clear();
    CellTotal = 0;
    for (const TRecord& record : old) {
      if (record.Target.IsEmpty()) continue;
      for (const TCellRange& piece : MovedPieces(record.Range, AAxis, AStart, ACount, ADest)) Add(piece, record.Target);
    }
  }
};

THyperlinkList::THyperlinkList() : FState(std::make_unique<TState>()) {}
THyperlinkList::~THyperlinkList() = default;
THyperlinkList::THyperlinkList(const THyperlinkList& AOther) : FState(std::make_unique<TState>(*AOther.FState)) {}
THyperlinkList& THyperlinkList::operator=(const THyperlinkList& AOther) {
  if (this != &AOther) FState = std::make_unique<TState>(*AOther.FState);
  return *this;
}

void THyperlinkList::Clear() { *FState = {}; }

void THyperlinkList::SetHyperlink(int32_t ACol, int32_t ARow, const TText& ATarget) {
  SetHyperlinkRange({ACol, ARow, ACol, ARow}, ATarget);
}

void THyperlinkList::SetHyperlinkRange(const TCellRange& ARange, const TText& ATarget) {
  const TCellRange range = ARange.Normalize();
  FState->ClearRange(range);
  if (!TrimSpaces(ATarget).empty()) FState->Add(range, ATarget);
}

void THyperlinkList::ClearHyperlink(int32_t ACol, int32_t ARow) { FState->ClearRange({ACol, ARow, ACol, ARow}); }

void THyperlinkList::ClearHyperlinkRange(const TCellRange& ARange) { FState->ClearRange(ARange.Normalize()); }

std::optional<TText> THyperlinkList::FindHyperlink(int32_t ACol, int32_t ARow) const {
  const TText* target = nullptr;
  FState->Index.VisitAt(ACol, ARow, [&](uint32_t ANumber) {
    if (FState->Records[ANumber].Range.Contains(ACol, ARow)) target = &FState->Records[ANumber].Target;
    return target != nullptr;
  });
  return target ? std::optional(*target) : std::nullopt;
}

int64_t THyperlinkList::Count() const {
  return static_cast<int64_t>(std::min<uint64_t>(FState->CellTotal, std::numeric_limits<int64_t>::max()));
}

bool THyperlinkList::IsEmpty() const { return FState->Records.size() == FState->FreeRecords.size(); }

void THyperlinkList::ForEach(const std::function<void(const TCellRange& ARange, const TText& ATarget)>& AVisit) const {
  for (const TState::TRecord& record : FState->Records)
    if (!record.Target.IsEmpty()) AVisit(record.Range, record.Target);
}

void THyperlinkList::MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) {
  FState->Move(saRows, AStart, ACount, ADest);
}

void THyperlinkList::MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) {
  FState->Move(saColumns, AStart, ACount, ADest);
}

}  // namespace tessarine

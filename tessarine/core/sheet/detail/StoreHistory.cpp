#include <tessarine/core/sheet/detail/StoreHistory.h>

#include <utility>

#include <tessarine/core/sheet/detail/FormulaMover.h>

namespace tessarine::detail {

namespace {

uint64_t PlaceKey(int32_t ACol, int32_t ARow) {
  return static_cast<uint64_t>(static_cast<uint32_t>(ACol)) << 32 | static_cast<uint32_t>(ARow);
}

/// Formulas come along with their cells; what they refer to is none of its business.
class TTemplateKeeper final : public IFormulaMover {
 public:
  TFormulaTemplate* Moved(TFormulaTemplate* ATemplate, int32_t, int32_t, int32_t, int32_t) override {
    return ATemplate;
  }
};

}  // namespace

TStoreChange::~TStoreChange() {
  for (const TFormulaRun& run : Formulas) Pool.Release(run.Template);
}

void TStoreChange::NoteFormula(int32_t ACol, int32_t ARow, TFormulaTemplate* ATemplate) {
  if (!Formulas.empty()) {
    TFormulaRun& last = Formulas.back();
    if (last.Col == ACol && last.LastRow + 1 == ARow && last.Template == ATemplate) {
      last.LastRow = ARow;
      Pool.Release(ATemplate);
      return;
    }
  }
  Formulas.push_back({ACol, ARow, ARow, ATemplate});
}

void TStoreChange::NoteCell(const TCellStore& AStore, int32_t ACol, int32_t ARow) {
  if (!AStore.Find(ACol, ARow)) {
    if (!Cells.Find(ACol, ARow)) FreeKeys.insert(PlaceKey(ACol, ARow));
  } else if (!FreeKeys.contains(PlaceKey(ACol, ARow)) && !Cells.Find(ACol, ARow)) {
    Cells.Set(ACol, ARow, AStore.Get(ACol, ARow));
  }
}

// ---- the store's part

TStoreSnapshot TCellStore::Capture() {
  if (!FKeeper) FKeeper = std::make_shared<TStoreKeeper>(TStoreKeeper{this, nullptr});
  if (!FVersionNow) FVersionNow = std::make_shared<TStoreVersion>();
  FOpenChange.reset();
  return {FKeeper, FVersionNow};
}

void TCellStore::Retire(std::unique_ptr<TCellStore> AStore) {
  if (!AStore || AStore->FKeeper.use_count() < 2) return;
  const std::shared_ptr<TStoreKeeper> keeper = std::move(AStore->FKeeper);
  keeper->Orphan = std::move(AStore);
}

/// Makes the present state an earlier one; null when nobody holds it.
TStoreChange* TCellStore::BeginChange() {
  FOpenChange.reset();
  if (!FVersionNow) return nullptr;
  if (FVersionNow.use_count() == 1) {
    FVersionNow.reset();
    return nullptr;
  }
  auto next = std::make_shared<TStoreVersion>();
  FVersionNow->Change = std::make_unique<TStoreChange>(FPool);
  FVersionNow->Next = next;
  TStoreChange* const change = FVersionNow->Change.get();
  FOpenChange = FVersionNow;
  FVersionNow = std::move(next);
  return change;
}

void TCellStore::NoteWrite(int32_t ACol, int32_t ARow) {
  const std::shared_ptr<TStoreVersion> open = FOpenChange.lock();
  if (TStoreChange* const change = open ? open->Change.get() : BeginChange()) change->NoteCell(*this, ACol, ARow);
}

bool TCellStore::DiffersInTextsOnly(const TStoreSnapshot& ASnapshot) const {
  const TStoreVersion* version = ASnapshot.Version.get();
  for (; version && version->Next; version = version->Next.get()) {
    const TStoreChange& change = *version->Change;
    if (!change.Map.IsIdentity() || change.Cells.CellCount() != 0 || !change.FreeKeys.empty()) return false;
  }
  return version && version == FVersionNow.get();
}

bool TCellStore::ReturnTo(const TStoreSnapshot& ASnapshot) {
  std::vector<std::shared_ptr<TStoreVersion>> path;
  for (auto version = ASnapshot.Version; version; version = version->Next) path.push_back(version);
  if (path.empty() || path.back() != FVersionNow) return false;
  FOpenChange.reset();
  FVersionNow.reset();  // the writes below are no changes of their own
  while (path.size() > 1) {
    const std::shared_ptr<TStoreVersion> from = std::move(path.back());
    path.pop_back();
    TStoreVersion& target = *path.back();
    const std::unique_ptr<TStoreChange> change = std::move(target.Change);
    target.Next.reset();
    if (from.use_count() > 1) {  // somebody may want it back
      from->Change = std::make_unique<TStoreChange>(FPool);
      from->Next = path.back();
    }
    Apply(*change, from->Change.get());
  }
  FVersionNow = std::move(path.back());
  return true;
}

/// Goes one state back. AInverse, if not null, learns the way forth.
void TCellStore::Apply(const TStoreChange& AChange, TStoreChange* AInverse) {
  const bool staysInPlace = AChange.Map.IsIdentity();
  const TLineMap back = AChange.Map.Inverse();
  if (AInverse) AInverse->Map = back;
  TTemplateKeeper keeper;
  if (!staysInPlace) RearrangeLogged(AChange.Map, keeper, AInverse);
  const bool rows = back.Axis == saRows;
  for (const TFormulaRun& run : AChange.Formulas) {
    for (int32_t row = run.FirstRow; row <= run.LastRow; ++row) {
      TFormulaRecord* const record = FindRecord(run.Col, row);
      if (!record) continue;
      if (AInverse) {
        AInverse->NoteFormula(rows ? run.Col : back.NewLine(run.Col), rows ? back.NewLine(row) : row, record->Template);
      } else {
        FPool.Release(record->Template);
      }
      FPool.Retain(run.Template);
      record->Template = run.Template;
      ClearCached(run.Col, *record);
    }
  }
  if (!AChange.Formulas.empty()) ++FFormulaVersion;
  // What an edit of lines has thrown away or cleared, the edit itself throws away again.
  TStoreChange* const inverse = staysInPlace ? AInverse : nullptr;
  AChange.Cells.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot&) {
    if (inverse) inverse->NoteCell(*this, ACol, ARow);
    Set(ACol, ARow, AChange.Cells.Get(ACol, ARow));
  });
  for (const uint64_t key : AChange.FreeKeys) {
    const auto col = static_cast<int32_t>(key >> 32);
    const auto row = static_cast<int32_t>(key & 0xFFFFFFFFu);
    if (inverse) inverse->NoteCell(*this, col, row);
    Remove(col, row);
  }
}

}  // namespace tessarine::detail

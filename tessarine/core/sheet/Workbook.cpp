#include <tessarine/core/sheet/Workbook.h>

#include <algorithm>
#include <functional>
#include <string>
#include <string_view>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

// Up to this many sheets a walk finds a name as quickly as the dictionary.
constexpr size_t kFewSheets = 8;

}  // namespace

TWorkbookClearedHook TessarineNotifyWorkbookCleared = nullptr;
TCellEditBlockedHook TessarineCellEditBlocked = nullptr;

struct TWorkbook::TTables {
  struct THash {
    using is_transparent = void;
    size_t operator()(std::u16string_view AText) const { return std::hash<std::u16string_view>()(AText); }
  };
  struct TEqual {
    using is_transparent = void;
    bool operator()(std::u16string_view ALeft, std::u16string_view ARight) const { return ALeft == ARight; }
  };
  struct TNoCaseHash {
    size_t operator()(std::u16string_view AText) const {
      uint64_t hash = 0xCBF29CE484222325u;  // FNV-1a over the folded units
      for (const char16_t unit : AText) hash = (hash ^ AsciiUpper(unit)) * 0x100000001B3u;
      return static_cast<size_t>(hash ^ (hash >> 32));
    }
  };
  struct TNoCaseEqual {
    bool operator()(std::u16string_view ALeft, std::u16string_view ARight) const {
      return EqualAsciiNoCase(ALeft, ARight);
    }
  };
  using TTextMap = boost::unordered_flat_map<std::u16string, TText, THash, TEqual>;

  TTextMap Names;  // by normalised name
  TTextMap WebCache;
  // The first sheet of each name, under the sheets' own texts, and the version of the sheet list that it stands for.
  boost::unordered_flat_map<std::u16string_view, int32_t, TNoCaseHash, TNoCaseEqual> SheetsByName;
  uint64_t SheetsByNameVersion = 0;
};

TWorkbook::TWorkbook()
    : FPool(std::make_unique<detail::TFormulaPool>()),
      FStyleSheet(std::make_unique<TTessarineStyleSheet>()),
      FTheme(std::make_unique<TTessarineTheme>()),
      FPivotCaches(std::make_unique<TPivotCacheList>()),
      FOlapConnections(std::make_unique<TOlapConnectionList>()),
      FTables(std::make_unique<TTables>()),
      FUndoManager(std::make_unique<TUndoManager>()) {
  NewWorkbook();
}

TWorkbook::~TWorkbook() {
  if (TessarineNotifyWorkbookCleared) TessarineNotifyWorkbookCleared(*this);
}

void TWorkbook::NewWorkbook() {
  if (TessarineNotifyWorkbookCleared) TessarineNotifyWorkbookCleared(*this);
  ClearSheets();
  AddSheet(u"Sheet1");
  FActiveSheetIndex = 0;
  FStyleSheet->Clear();
  FTheme->SetDefaultOfficeTheme();
  FPivotCaches->Clear();
  FOlapConnections->Clear();
  ClearNamedFormulas();
  ClearWebCache();
  FModified = false;
  FUpdateLock = 0;
  FPendingModified = false;
  FStructureProtected = false;
  FUndoManager->Clear();
}

// ---- sheets

TWorksheet& TWorkbook::AddSheet(TTextArg AName) {
  FSheets.push_back(std::make_unique<TWorksheet>(TText(AName.View()), this, *FPool));
  ++FSheetListVersion;
  return *FSheets.back();
}

void TWorkbook::RemoveSheet(int32_t AIndex) {
  if (!GetSheet(AIndex)) return;
  FSheets.erase(FSheets.begin() + AIndex);
  ++FSheetListVersion;
  if (FActiveSheetIndex >= SheetCount()) FActiveSheetIndex = std::max(SheetCount() - 1, 0);
  MarkModified();
}

void TWorkbook::ClearSheets() {
  FSheets.clear();
  FActiveSheetIndex = 0;
  ++FSheetListVersion;
}

TWorksheet* TWorkbook::GetSheet(int32_t AIndex) const {
  return AIndex >= 0 && AIndex < SheetCount() ? FSheets[static_cast<size_t>(AIndex)].get() : nullptr;
}

void TWorkbook::SetActiveSheetIndex(int32_t AIndex) {
  if (GetSheet(AIndex)) FActiveSheetIndex = AIndex;
}

int32_t TWorkbook::FindSheetIndex(std::u16string_view AName) const {
  if (FSheets.size() <= kFewSheets) {
    for (size_t index = 0; index < FSheets.size(); ++index) {
      if (EqualAsciiNoCase(FSheets[index]->Name(), AName)) return static_cast<int32_t>(index);
    }
    return -1;
  }
  if (FTables->SheetsByNameVersion != FSheetListVersion) {
    FTables->SheetsByName.clear();
    for (size_t index = 0; index < FSheets.size(); ++index)
      FTables->SheetsByName.try_emplace(FSheets[index]->Name().View(), static_cast<int32_t>(index));
    FTables->SheetsByNameVersion = FSheetListVersion;
  }
  const auto found = FTables->SheetsByName.find(AName);
  return found == FTables->SheetsByName.end() ? -1 : found->second;
}

TWorksheet* TWorkbook::FindSheet(TTextArg AName) const { return GetSheet(FindSheetIndex(AName.View())); }

int32_t TWorkbook::IndexOfSheet(const TWorksheet* ASheet) const {
  for (size_t index = 0; index < FSheets.size(); ++index) {
    if (FSheets[index].get() == ASheet) return static_cast<int32_t>(index);
  }
  return -1;
}

int32_t TWorkbook::VisibleSheetCount() const {
  return static_cast<int32_t>(
      std::count_if(FSheets.begin(), FSheets.end(), [](const auto& ASheet) { return ASheet->IsVisible(); }));
}

int32_t TWorkbook::FirstVisibleSheetIndex() const {
  const auto found =
      std::find_if(FSheets.begin(), FSheets.end(), [](const auto& ASheet) { return ASheet->IsVisible(); });
  return found == FSheets.end() ? -1 : static_cast<int32_t>(found - FSheets.begin());
}

void TWorkbook::EnsureActiveSheetVisible() {
  const TWorksheet* active = ActiveSheet();
  if ((active && active->IsVisible()) || FSheets.empty()) return;
  FActiveSheetIndex = std::max(FirstVisibleSheetIndex(), 0);
}

void TWorkbook::SetSheetVisibility(int32_t AIndex, TSheetVisibility AVisibility) {
  TWorksheet* sheet = GetSheet(AIndex);
  if (!sheet || sheet->Visibility() == AVisibility) return;
  if (AVisibility != svVisible && sheet->IsVisible() && VisibleSheetCount() < 2)
    throw EState("Cannot hide the only visible worksheet");
  sheet->SetVisibility(AVisibility);
  if (AIndex == FActiveSheetIndex && AVisibility != svVisible) EnsureActiveSheetVisible();
  MarkModified();
}

// ---- defined names

std::u16string TWorkbook::NormalizeName(std::u16string_view AName) {
  std::u16string name;
  for (const char16_t unit : TrimSpaces(AName)) {
    if (unit != u'$') name += AsciiUpper(unit);
  }
  return name;
}

void TWorkbook::SetNamedFormula(TTextArg AName, TTextArg AFormula) {
  std::u16string name = NormalizeName(AName);
  if (name.empty()) return;
  TText formula = TCellValue::FromFormula(TrimSpaces(AFormula)).Text;
  FTables->Names.insert_or_assign(std::move(name), std::move(formula));
  ++FNamesVersion;
}

std::optional<TText> TWorkbook::FindNamedFormula(TTextArg AName) const {
  const TText* formula = FindNormalizedName(NormalizeName(AName));
  return formula ? std::optional<TText>(*formula) : std::nullopt;
}

const TText* TWorkbook::FindNormalizedName(std::u16string_view AName) const {
  const auto found = FTables->Names.find(AName);
  return found == FTables->Names.end() ? nullptr : &found->second;
}

void TWorkbook::ClearNamedFormulas() {
  FTables->Names.clear();
  ++FNamesVersion;
}

bool TWorkbook::RemoveNamedFormula(TTextArg AName) {
  if (FTables->Names.erase(NormalizeName(AName)) == 0) return false;
  ++FNamesVersion;
  return true;
}

bool TWorkbook::HasNamedFormulas() const { return !FTables->Names.empty(); }

std::vector<TText> TWorkbook::NamedFormulaNames() const {
  std::vector<TText> names;
  names.reserve(FTables->Names.size());
  for (const auto& [name, formula] : FTables->Names) names.emplace_back(name);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::pair<TText, TText>> TWorkbook::CopyNamedFormulas() const {
  std::vector<std::pair<TText, TText>> names;
  names.reserve(FTables->Names.size());
  for (const auto& [name, formula] : FTables->Names) names.emplace_back(TText(name), formula);
  std::sort(names.begin(), names.end());
  return names;
}

void TWorkbook::RestoreNamedFormulas(const std::vector<std::pair<TText, TText>>& ANames) {
  ClearNamedFormulas();
  for (const auto& [name, formula] : ANames) FTables->Names.insert_or_assign(std::u16string(name.View()), formula);
}

void TWorkbook::RewriteNamedFormulas(const std::function<std::u16string(std::u16string_view)>& ARewrite) {
  for (auto& [name, formula] : FTables->Names) {
    const std::u16string rewritten = ARewrite(formula);
    if (rewritten == formula.View()) continue;
    formula = TText(rewritten);
    ++FNamesVersion;
  }
}

// ---- results of web functions

std::optional<TText> TWorkbook::TryGetWebCache(TTextArg AKey) const {
  const auto found = FTables->WebCache.find(AKey.View());
  return found == FTables->WebCache.end() ? std::nullopt : std::optional<TText>(found->second);
}

void TWorkbook::PutWebCache(TTextArg AKey, TTextArg AValue) {
  FTables->WebCache.insert_or_assign(std::u16string(AKey.View()), TText(AValue.View()));
}

void TWorkbook::ClearWebCache() { FTables->WebCache.clear(); }

// ---- change tracking

void TWorkbook::FireModified() {
  const TWorkbookModifiedEvent handler = FOnModified;  // a handler may put another one in its place
  if (handler) handler(*this);
}

void TWorkbook::MarkModified() {
  FModified = true;
  if (FUpdateLock > 0) {
    FPendingModified = true;
  } else if (FOnModified) {
    FireModified();
  }
}

void TWorkbook::EndUpdate() {
  if (FUpdateLock == 0) return;
  if (--FUpdateLock > 0 || !FPendingModified) return;
  FPendingModified = false;
  FModified = true;
  FireModified();
}

void TWorkbook::ClearModified() {
  FModified = false;
  FPendingModified = false;
}

}  // namespace tessarine

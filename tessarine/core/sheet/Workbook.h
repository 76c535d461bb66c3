#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

class TWorkbook;
class TWorksheet;
class TTessarineStyleSheet;
class TTessarineTheme;
class TUndoManager;
enum class TShiftAxis : uint8_t;
class TOlapConnectionList;
class TPivotCacheList;
class IHttpClient;
class ITessarineStockHistoryProvider;
class ITessarineRtdProvider;
class ITessarineGoogleFinanceProvider;
class ITessarineTranslateProvider;
class ITessarineImportRangeProvider;

namespace detail {
class TFormulaPool;
struct TLineEdit;
}  // namespace detail

using TWorkbookModifiedEvent = std::function<void(TWorkbook& ASender)>;

/// Global hooks, unset at first. A module that installs one keeps the previous value, calls it from its own hook and
/// puts it back when it goes. Set before use: they are not synchronised.
using TWorkbookClearedHook = void (*)(TWorkbook& AWorkbook);
using TCellEditBlockedHook = bool (*)(TWorkbook& AWorkbook, TWorksheet& ASheet, int32_t ACol, int32_t ARow);
extern TESSARINE_API TWorkbookClearedHook
    TessarineNotifyWorkbookCleared;  // at the start of NewWorkbook and of the destructor
extern TESSARINE_API TCellEditBlockedHook TessarineCellEditBlocked;  // before a cell edit begins; true forbids it

/// A document: its sheets in order, formats, theme, defined names, what a host has registered for it, and the
/// modified flag with its batching. Not synchronised: one thread at a time uses a workbook.
class TESSARINE_API TWorkbook {
 public:
  /// A new workbook with one sheet named "Sheet1".
  TWorkbook();
  ~TWorkbook();
  TWorkbook(const TWorkbook&) = delete;
  TWorkbook& operator=(const TWorkbook&) = delete;

  /// Throws everything away but the providers and starts over with one sheet named "Sheet1", not modified.
  void NewWorkbook();

  // ---- sheets; indexes are 0-based
  /// Appends a sheet. Neither tests the name nor marks the workbook modified.
  TWorksheet& AddSheet(TTextArg AName);
  /// Frees a sheet, the last one too; an index out of range is ignored.
  void RemoveSheet(int32_t AIndex);
  /// Frees all sheets: for readers, which add their own.
  void ClearSheets();
  int32_t SheetCount() const { return static_cast<int32_t>(FSheets.size()); }
  /// Null for an index out of range.
  TWorksheet* GetSheet(int32_t AIndex) const;
  TWorksheet* ActiveSheet() const { return GetSheet(FActiveSheetIndex); }
  int32_t ActiveSheetIndex() const { return FActiveSheetIndex; }
  void SetActiveSheetIndex(int32_t AIndex);
  /// The first sheet of that name without regard to ASCII case, or null; the index form gives -1.
  TWorksheet* FindSheet(TTextArg AName) const;
  int32_t FindSheetIndex(std::u16string_view AName) const;
  /// The sheet's position, or -1 for a sheet of another workbook.
  int32_t IndexOfSheet(const TWorksheet* ASheet) const;
  int32_t VisibleSheetCount() const;
  int32_t FirstVisibleSheetIndex() const;
  void EnsureActiveSheetVisible();
  /// Throws EState, "Cannot hide the only visible worksheet", rather than hide the last visible sheet.
  void SetSheetVisibility(int32_t AIndex, TSheetVisibility AVisibility);

  // ---- defined names; trimmed, without "$", in upper case on every access
  /// Adds or replaces; a formula without a leading "=" gets one, a blank one is stored as the empty text.
  void SetNamedFormula(TTextArg AName, TTextArg AFormula);
  std::optional<TText> FindNamedFormula(TTextArg AName) const;
  /// For callers that normalised the name already; null when there is none. Valid until the names change.
  const TText* FindNormalizedName(std::u16string_view AName) const;
  void ClearNamedFormulas();
  /// False when there is no such name.
  bool RemoveNamedFormula(TTextArg AName);
  /// All names, sorted.
  std::vector<TText> NamedFormulaNames() const;
  bool HasNamedFormulas() const;
  static std::u16string NormalizeName(std::u16string_view AName);

  /// All names with their formulas, sorted; and all of them put back exactly as given.
  std::vector<std::pair<TText, TText>> CopyNamedFormulas() const;
  void RestoreNamedFormulas(const std::vector<std::pair<TText, TText>>& ANames);

  // ---- structure: edits of a sheet that keep references right in the whole workbook
  /// Formulas of all sheets, validations, charts and defined names follow; a reference to deleted lines becomes #REF!.
  /// Inserted lines inside a table take over formats and formulas. Results of changed formulas go, and all of the
  /// edited sheet: recalculate afterwards. Marks the workbook modified. Nothing at all happens for a sheet that does
  /// not exist, a start outside the sheet or a count below 1.
  void InsertRows(int32_t ASheetIndex, int32_t AStart, int32_t ACount);
  void DeleteRows(int32_t ASheetIndex, int32_t AStart, int32_t ACount);
  void InsertColumns(int32_t ASheetIndex, int32_t AStart, int32_t ACount);
  void DeleteColumns(int32_t ASheetIndex, int32_t AStart, int32_t ACount);
  /// Puts ACount lines from AStart before the line ADest of the old numbering.
  void MoveRows(int32_t ASheetIndex, int32_t AStart, int32_t ACount, int32_t ADest);
  void MoveColumns(int32_t ASheetIndex, int32_t AStart, int32_t ACount, int32_t ADest);

  /// Reversible edits of this workbook; 100 levels. Structural ones: core/undo/StructureCommands.h.
  TUndoManager& UndoManager() { return *FUndoManager; }

  // ---- results of web functions
  std::optional<TText> TryGetWebCache(TTextArg AKey) const;
  void PutWebCache(TTextArg AKey, TTextArg AValue);
  void ClearWebCache();

  /// The host's permission for functions that fetch from the network. Without it every fetch of the library fails as an
  /// unreachable server does; texts in the web cache and the providers below, which are the host's own, still answer.
  /// Survives NewWorkbook.
  bool NetworkAllowed() const { return FNetworkAllowed; }
  void SetNetworkAllowed(bool AValue) { FNetworkAllowed = AValue; }

  // ---- change tracking
  void BeginUpdate() { ++FUpdateLock; }
  void EndUpdate();
  bool IsUpdating() const { return FUpdateLock > 0; }
  bool IsModified() const { return FModified; }
  /// Outside an update fires OnModified each time; inside one the flag is set at once and the event waits.
  void MarkModified();
  void ClearModified();
  /// What every sheet's changes come to: MarkModified.
  void SheetChanged() { MarkModified(); }
  void SetOnModified(TWorkbookModifiedEvent AHandler) { FOnModified = std::move(AHandler); }
  bool HasOnModified() const { return static_cast<bool>(FOnModified); }

  bool IsStructureProtected() const { return FStructureProtected; }
  void SetStructureProtected(bool AValue) { FStructureProtected = AValue; }

  TTessarineStyleSheet& StyleSheet() { return *FStyleSheet; }
  const TTessarineStyleSheet& StyleSheet() const { return *FStyleSheet; }
  TTessarineTheme& Theme() { return *FTheme; }
  const TTessarineTheme& Theme() const { return *FTheme; }

  /// The sources of pivot tables, and the connections to cubes; a new workbook has none.
  TPivotCacheList& PivotCaches() { return *FPivotCaches; }
  const TPivotCacheList& PivotCaches() const { return *FPivotCaches; }
  TOlapConnectionList& OlapConnections() { return *FOlapConnections; }
  const TOlapConnectionList& OlapConnections() const { return *FOlapConnections; }

  // ---- providers of external data, set by the host; they survive NewWorkbook
  std::shared_ptr<ITessarineStockHistoryProvider> StockHistoryProvider;
  std::shared_ptr<ITessarineRtdProvider> RtdProvider;
  std::shared_ptr<ITessarineGoogleFinanceProvider> GoogleFinanceProvider;
  std::shared_ptr<ITessarineTranslateProvider> TranslateProvider;
  std::shared_ptr<ITessarineImportRangeProvider> ImportRangeProvider;
  /// Fetches for the web functions; null: the client of the process.
  std::shared_ptr<IHttpClient> HttpClient;

  // ---- for the engine's own floors
  detail::TFormulaPool& FormulaPool() { return *FPool; }
  /// Raised by every change of the list of sheets, their order and names; and of the defined names.
  uint64_t SheetListVersion() const { return FSheetListVersion; }
  uint64_t NamesVersion() const { return FNamesVersion; }
  void NoteSheetRenamed() { ++FSheetListVersion; }

 private:
  struct TTables;  // dictionaries: defined names, web results, sheets by name

  void FireModified();
  void InsertLines(int32_t ASheetIndex, TShiftAxis AAxis, int32_t AStart, int32_t ACount);
  void EditAndMark(int32_t ASheetIndex, const std::optional<detail::TLineEdit>& AEdit);
  void EditLines(TWorksheet& ASheet, const detail::TLineEdit& AEdit);
  void RewriteNamedFormulas(const std::function<std::u16string(std::u16string_view)>& ARewrite);

  std::unique_ptr<detail::TFormulaPool> FPool;  // before the sheets: their records hold its templates
  std::vector<std::unique_ptr<TWorksheet>> FSheets;
  int32_t FActiveSheetIndex = 0;
  std::unique_ptr<TTessarineStyleSheet> FStyleSheet;
  std::unique_ptr<TTessarineTheme> FTheme;
  std::unique_ptr<TPivotCacheList> FPivotCaches;
  std::unique_ptr<TOlapConnectionList> FOlapConnections;
  std::unique_ptr<TTables> FTables;
  bool FModified = false;
  int32_t FUpdateLock = 0;
  bool FPendingModified = false;
  bool FStructureProtected = false;
  bool FNetworkAllowed = true;
  TWorkbookModifiedEvent FOnModified;
  uint64_t FSheetListVersion = 1;
  uint64_t FNamesVersion = 1;
  std::unique_ptr<TUndoManager> FUndoManager;  // last: its commands hold states of the sheets' stores
};

}  // namespace tessarine

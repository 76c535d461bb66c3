#pragma once

/// The public types by name, for headers that only point to them.

#include <cstdint>

namespace tessarine {

// Values and addresses
class TText;
class TTextArg;
struct TCellAddress;
struct TCellRange;
struct TCellValue;
struct TValueView;
enum class TCellErrorCode : uint8_t;
enum class TCellValueKind : uint8_t;
enum class TSheetVisibility : uint8_t;
enum class TTessarineFileFormat : uint8_t;

// Formats
class TTessarineStyleSheet;
class TTessarineTheme;
struct TBorderSide;
struct TCellAlignmentInfo;
struct TCellBorderInfo;
struct TCellFillInfo;
struct TCellFontInfo;
struct TCellFormat;
struct TColorRef;
struct TNumberFillSplit;
struct TNumberFormatColor;

// Workbook, sheet and cell
class TWorkbook;
class TWorksheet;
struct TCell;
struct TRichTextRun;
struct TSheetViewOptions;
struct TSparklineData;

// What a sheet owns
class IDigitMeasurer;
class TCellCommentList;
class TConditionalFormatList;
class TDataValidationList;
class THyperlinkList;
class TMergedCellList;
class TOlapConnection;
class TOlapConnectionList;
class TPageSetup;
class TPivotCache;
class TPivotCacheList;
class TPivotTable;
class TRowColSizing;
class TSheetAutoFilter;
class TSheetDrawingBag;
class TSheetDrawingList;
class TSheetPivotTableList;
class TSheetSlicer;
class TSheetSlicerList;
class TSheetTable;
class TSheetTableList;
class TSpillMap;
struct TAutoFilterColumn;
struct TAutoFilterState;
struct TCellComment;
struct TConditionalFormatRule;
struct TDataValidationRule;
struct TDrawingAnchor;
struct THeaderFooterSection;
struct TMergeAnchor;
struct TMergedRange;
struct TOutlineGroup;
struct TSheetChartSeries;
struct TSheetChartSubplot;
struct TSheetDrawing;
struct TSheetSavedView;
struct TPaperDimensions;
struct TPrintJobSettings;
struct TSheetRangeText;
struct TSpillRange;
struct TValidationPrompt;
struct TValidationVerdict;

// Undo
class IUndoCommand;
class TCellEditCommand;
class TColResizeCommand;
class TDrawingAddCommand;
class TDrawingAnchorCommand;
class TDrawingChartCommand;
class TDrawingDeleteCommand;
class TDrawingLegendCommand;
class TDrawingTitleCommand;
class TMergeCommand;
class TMultiCellEditCommand;
class TPivotFilterCommand;
class TRowColMoveCommand;
class TRowColShiftCommand;
class TRowResizeCommand;
class TSheetCommand;
class TSlicerSelectionCommand;
class TUndoManager;
struct TCellSnapshot;
struct TSheetSortKey;

// What a host may set
class TTessarineNamedRanges;
class TTessarineUiTheme;
struct TBehaviorSettings;
struct TProtectionSettings;
struct TTabBarSettings;
struct TViewSettings;

// The network
class IHttpClient;
class TTessarineHttp;
struct THttpRequest;
struct THttpResponse;

// HTML and the clipboard
class IClipboard;
class TMemoryClipboard;
struct TClipboardItem;
struct THtmlPastedCell;

// Providers of external data
class ITessarineGoogleFinanceProvider;
class ITessarineImportRangeProvider;
class ITessarineRtdProvider;
class ITessarineStockHistoryProvider;
class ITessarineTranslateProvider;
class TYahooStockHistoryProvider;
struct TProviderBlock;
struct TStockHistoryBar;

// Writing documents from host programs
class TAuthoringSheet;
class TAuthoringWorkbook;
class TRichFlags;
class TSheetCellRef;
class TSheetRangeRef;
class TSheetValue;
class TWorkbookNamesFacade;
class TWorkbookStylesFacade;

// Formulas
class TAstNode;
class ILambdaClosure;
class TLambdaClosure;
class TFormulaArg;
class TFormulaAssist;
class TFormulaDependencyGraph;
class TFormulaEvaluator;
class TFormulaParser;
class TFormulaTokenizer;
class TTessarineRtdHub;
struct TCellId;
struct TFormulaToken;
struct TAutocompletePrefix;
struct TFormulaColorSpan;
struct TFormulaRefHighlight;
struct TFunctionDef;
struct TRtdCellRef;
struct TRtdTopicKey;

// Files
class TCsvIO;
class TFileReport;
class TOdsReader;
class TOdsWriter;
class TSharedStringTable;
class TTsrIO;
class TXlsxReader;
class TXlsxWriter;
struct TCsvExportOptions;
struct TCsvImportOptions;
struct TFileReportItem;
struct TOdsReadOptions;
struct TOdsWriteOptions;
struct TRichStringRun;
struct TSharedStringItem;
struct TTsrReadOptions;
struct TTsrWriteOptions;
struct TXlsxReadOptions;
struct TXlsxWriteOptions;

// Platform
class EArgument;
class ECancelled;
class EFileAccess;
class EFileFormat;
class ELimit;
class ENetwork;
class EState;
class ETessarineError;
class IFileLayer;
class IReadStream;
class IWriteStream;
struct TFormatSettings;
struct TReadLimits;
struct TTessarineProgressEvent;
struct TWorkControl;

}  // namespace tessarine

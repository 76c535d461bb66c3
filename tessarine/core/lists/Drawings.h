#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/lists/Charts.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

enum class TDrawingAnchorKind : uint8_t { dakTwoCell, dakOneCell, dakAbsolute };
using enum TDrawingAnchorKind;

enum class TSheetDrawingKind : uint8_t { sdkPicture, sdkChart, sdkShape, sdkUnknown };
using enum TSheetDrawingKind;

/// The content of a file or of a part of one.
using TDrawingBytes = std::vector<std::byte>;

/// EMU (914,400 to the inch) to pixels; dots per inch below 1 mean 96.
TESSARINE_API float EmuToPixels(int64_t AEmu, int32_t ADpi);
/// Rounded to the nearest EMU; what 64 bits cannot hold stays at their limit, what is no number is 0.
TESSARINE_API int64_t PixelsToEmu(float APixels, int32_t ADpi);

/// Where a drawing lies. A two-cell anchor has its corners in cells, a one-cell anchor a corner and an extent, an
/// absolute one a position and an extent. Rows and columns are 1-based, offsets and extents EMU.
struct TDrawingAnchor {
  TDrawingAnchorKind Kind = dakTwoCell;
  int32_t FromCol = 1;
  int32_t FromRow = 1;
  int64_t FromColOffEmu = 0;
  int64_t FromRowOffEmu = 0;
  int32_t ToCol = 2;
  int32_t ToRow = 2;
  int64_t ToColOffEmu = 0;
  int64_t ToRowOffEmu = 0;
  int64_t ExtCxEmu = 0;
  int64_t ExtCyEmu = 0;
  int64_t PosXEmu = 0;
  int64_t PosYEmu = 0;

  /// Over the cell A1.
  static TDrawingAnchor Empty() { return {}; }

  friend bool operator==(const TDrawingAnchor&, const TDrawingAnchor&) = default;
};

/// What floats over a sheet: a picture, a chart, a shape, a text box or ink. Kind tells which fields count. Colours are
/// 0x00BBGGRR.
struct TESSARINE_API TSheetDrawing {
  TDrawingAnchor Anchor;
  TSheetDrawingKind Kind = sdkUnknown;
  TText Name;
  TText LinkedPivotName;  // the pivot table that a chart shows
  bool Hidden = false;
  int32_t ZOrder = 0;

  // ---- pictures
  TDrawingBytes ImageBytes;
  TText ContentType;  // MIME type of the picture
  uint8_t ImageOpacity = 255;

  // ---- charts
  TSheetChartType ChartType = sctUnknown;
  bool Stacked = false;
  TText Title;
  bool ShowLegend = true;
  bool ShowDataTable = false;
  bool DataTableShowKeys = true;
  TSheetChartLegendPos LegendPos = clpBottom;
  int32_t GapWidth = 150;  // percent
  int32_t Overlap = 0;     // percent
  bool ChartIs3D = false;
  int32_t ViewRotX = 15;  // degrees
  int32_t ViewRotY = 20;  // degrees
  int32_t ViewPerspective = 30;
  bool ViewRightAngleAxes = true;
  std::vector<TSheetChartSeries> Series;
  std::vector<TSheetChartSubplot> Subplots;  // of a combination

  // ---- shapes and text boxes
  TText PresetGeom{u"rect"};
  uint32_t FillColor = 0xFFFFFF;
  bool HasFill = true;
  uint32_t LineColor = 0;
  bool HasLine = true;
  int64_t LineWidthEmu = 12700;  // one point
  int32_t Rotation = 0;
  bool FlipH = false;
  bool FlipV = false;
  TText Text;
  bool TextBold = false;
  float TextSize = 11;
  uint32_t TextColor = 0;
  int32_t TextHAlign = 0;
  int32_t TextVAlign = 0;
  bool TextWrap = true;
  bool IsTextBox = false;
  int64_t TextInsetLeftEmu = 91440;
  int64_t TextInsetRightEmu = 91440;
  int64_t TextInsetTopEmu = 45720;
  int64_t TextInsetBottomEmu = 45720;
  int32_t GeomAdj1 = 0;  // the shape's first adjustment

  // ---- ink
  TDrawingBytes InkMlBytes;
  double InkTipWidthCm = 0;
  double InkTipHeightCm = 0;

  // ---- more of charts
  TSheetChartFill ChartAreaFill;
  TSheetChartStroke ChartAreaLine;
  TSheetChartFill PlotAreaFill;
  TSheetChartStroke PlotAreaLine;
  TSheetChartFont ChartTitleFont;
  std::vector<TSheetChartTextRun> ChartTitleRuns;
  TSheetChartFont ChartLegendFont;
  TSheetChartAxisInfo ChartValueAxis = TSheetChartAxisInfo::OfNewChart();
  TSheetChartAxisInfo ChartCatAxis = TSheetChartAxisInfo::OfNewChart();
  int32_t DoughnutHolePct = 75;
  int32_t FirstSliceAng = 0;  // degrees
  std::vector<uint32_t> ChartPalette;
  TSheetChartManualLayout TitleLayout;
  TSheetChartManualLayout LegendLayout;
  TSheetChartManualLayout PlotLayout;
  bool RoundedCorners = false;
  TText DispBlanksAs{u"gap"};
  bool PlotVisOnly = true;
  int32_t ChartStyleId = 2;
  TDrawingBytes ChartSpaceXml;  // the chart, its style and its colours as the file had them
  TDrawingBytes ChartStyleXml;
  TDrawingBytes ChartColorsXml;
  TSheetChartAxisInfo ChartValueAxis2 = TSheetChartAxisInfo::OfNewChart();
  bool HasSecondaryValueAxis = false;
  bool PlotVaryColors = false;
  TSheetChartRadarStyle RadarStyle = crsMarker;
  TSheetChartScatterStyle ScatterStyle = cssLineMarker;
  bool PercentStacked = false;
  bool HasDropLines = false;
  bool HasHiLowLines = false;
  bool HasUpDownBars = false;
  TSheetChartMarkerSymbol StyleMarker = cmsDiamond;
  float StyleMarkerSizePt = 5;
  TSheetChartDataLabels PlotLabels;

  /// A copy that shares nothing that could be changed.
  std::unique_ptr<TSheetDrawing> Clone() const { return std::make_unique<TSheetDrawing>(*this); }

  // Private copies of what is passed.
  void SetImage(std::span<const std::byte> ABytes, TText AContentType);
  void SetInkMl(std::span<const std::byte> ABytes) { InkMlBytes.assign(ABytes.begin(), ABytes.end()); }
  void SetSeries(std::vector<TSheetChartSeries> ASeries) { Series = std::move(ASeries); }
  void SetSubplots(std::vector<TSheetChartSubplot> ASubplots) { Subplots = std::move(ASubplots); }

  /// AVisit(TSheetChartSeries&) for every series, those of the groups of a combination last.
  template <class TVisit>
  void ForEachSeries(TVisit&& AVisit) {
    for (TSheetChartSeries& series : Series) AVisit(series);
    for (TSheetChartSubplot& subplot : Subplots)
      for (TSheetChartSeries& series : subplot.Series) AVisit(series);
  }

  friend bool operator==(const TSheetDrawing&, const TSheetDrawing&) = default;
};

/// The drawing part of the file that a sheet was read from, its relationships and the parts they name, byte for byte,
/// so that they can be written back. Paths are those inside the package.
class TESSARINE_API TSheetDrawingBag {
 public:
  void Clear() { *this = {}; }

  void SetDrawingPart(TText APath, std::span<const std::byte> ABytes);
  void SetDrawingRels(TText APath, std::span<const std::byte> ABytes);
  /// Adds or replaces; an empty path is ignored.
  void AddPart(TText APath, std::span<const std::byte> ABytes);
  /// Whether there is a drawing part with content.
  bool HasDrawing() const { return !FDrawingPartPath.IsEmpty() && !FDrawingXml.empty(); }

  /// The id of the sheet's relationship to its drawing part.
  const TText& SheetRelId() const { return FSheetRelId; }
  void SetSheetRelId(TText AId) { FSheetRelId = std::move(AId); }
  const TText& DrawingPartPath() const { return FDrawingPartPath; }
  const TDrawingBytes& DrawingXml() const { return FDrawingXml; }
  const TText& DrawingRelsPath() const { return FDrawingRelsPath; }
  const TDrawingBytes& DrawingRelsXml() const { return FDrawingRelsXml; }
  const std::map<TText, TDrawingBytes>& Parts() const { return FParts; }

 private:
  TText FSheetRelId;
  TText FDrawingPartPath;
  TDrawingBytes FDrawingXml;
  TText FDrawingRelsPath;
  TDrawingBytes FDrawingRelsXml;
  std::map<TText, TDrawingBytes> FParts;
};

/// The drawings of a sheet, the lowest first. Indexes are 0-based.
class TESSARINE_API TSheetDrawingList {
 public:
  TSheetDrawingList() = default;
  TSheetDrawingList(const TSheetDrawingList&) = delete;
  TSheetDrawingList& operator=(const TSheetDrawingList&) = delete;

  /// Appends a drawing; a null one is ignored. Gives its index, or -1.
  int32_t Add(std::unique_ptr<TSheetDrawing> ADrawing);
  /// A null drawing is ignored; an index below 0 counts as 0, one past the end appends.
  void Insert(int32_t AIndex, std::unique_ptr<TSheetDrawing> ADrawing);
  /// Takes a drawing out, the bag stays; null for an index out of range.
  std::unique_ptr<TSheetDrawing> Extract(int32_t AIndex);
  /// Frees a drawing, and with the last one what the bag holds; an index out of range is ignored.
  void Delete(int32_t AIndex);
  /// Frees all drawings and what the bag holds.
  void Clear();

  int32_t Count() const { return static_cast<int32_t>(FItems.size()); }
  /// Null for an index out of range.
  TSheetDrawing* GetItem(int32_t AIndex) const;
  /// -1 for a drawing of another list.
  int32_t IndexOf(const TSheetDrawing* ADrawing) const;

  TSheetDrawingBag& Bag() { return FBag; }
  const TSheetDrawingBag& Bag() const { return FBag; }

  /// Rewrites the references of all chart series after an edit of the sheet ASheetName, as formulas are.
  void AdjustFormulas(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ADelta);
  void AdjustFormulasForMove(std::u16string_view ASheetName, bool AOnSheet, bool ARows, int64_t AStart, int64_t ACount,
                             int64_t ADest);

  /// Anchors follow their cells, offsets stay. A drawing goes when the line of a one-cell anchor or both lines of a
  /// two-cell anchor were deleted; an edge in deleted lines moves to the next line kept. The bag stays.
  void ShiftRows(int64_t AStart, int64_t ADelta) { Shift(saRows, AStart, ADelta); }
  void ShiftColumns(int64_t AStart, int64_t ADelta) { Shift(saColumns, AStart, ADelta); }
  /// ADest is the block's new first line. Corners that a move turns over are exchanged.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saRows, AStart, ACount, ADest); }
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saColumns, AStart, ACount, ADest); }

 private:
  bool IsIndex(int32_t AIndex) const { return AIndex >= 0 && AIndex < Count(); }
  void Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta);
  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);
  template <class TRewrite>
  void RewriteFormulas(TRewrite&& ARewrite);

  std::vector<std::unique_ptr<TSheetDrawing>> FItems;  // never null
  TSheetDrawingBag FBag;
};

}  // namespace tessarine

#pragma once

#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/io/native/detail/NativeFields.h>

namespace tessarine::detail {

// Continues NativeFields.h for what the model keeps behind operations: records of the same fields, which the reader and
// the writer carry over. Their defaults are those of a document.

/// The settings of a sheet that stand ahead of its lists.
struct TNativeSheetHead {
  bool ShowGridLines = true;
  bool ShowHeaders = true;
  bool ShowFormulas = false;
  bool ShowZeros = true;
  bool R1C1 = false;
  bool Protected = false;
  int32_t FrozenRows = 0;
  int32_t FrozenCols = 0;
  int32_t Zoom = 100;
  bool RightToLeft = false;
  TText Visibility = u"visible";
};

void VisitNativeFields(auto& AVisit, ANative<TNativeSheetHead> auto& AHead) {
  AVisit("showGridLines", AHead.ShowGridLines);
  AVisit("showHeaders", AHead.ShowHeaders);
  AVisit("showFormulas", AHead.ShowFormulas);
  AVisit("showZeros", AHead.ShowZeros);
  AVisit("r1c1", AHead.R1C1);
  AVisit("protected", AHead.Protected);
  AVisit("frozenRows", AHead.FrozenRows);
  AVisit("frozenCols", AHead.FrozenCols);
  AVisit("zoom", AHead.Zoom);
  AVisit("rightToLeft", AHead.RightToLeft);
  AVisit("visibility", AHead.Visibility);
}

struct TNativeSavedView {
  int32_t ActiveCol = 1;
  int32_t ActiveRow = 1;
  int32_t TopLeftCol = 0;
  int32_t TopLeftRow = 0;
  bool TabSelected = false;
  std::vector<TText> Selection;  // ranges
};

void VisitNativeFields(auto& AVisit, ANative<TNativeSavedView> auto& AView) {
  AVisit("activeCol", AView.ActiveCol);
  AVisit("activeRow", AView.ActiveRow);
  AVisit.When(AView.TopLeftCol > 0, "topLeftCol", AView.TopLeftCol);
  AVisit.When(AView.TopLeftRow > 0, "topLeftRow", AView.TopLeftRow);
  AVisit.When(AView.TabSelected, "tabSelected", AView.TabSelected);
  AVisit.When(!AView.Selection.empty(), "selection", AView.Selection);
}

struct TNativeComment {
  TText Author;
  TText Text;
};

void VisitNativeFields(auto& AVisit, ANative<TNativeComment> auto& AComment) {
  AVisit("author", AComment.Author);
  AVisit("text", AComment.Text);
}

struct TNativeAutoFilter {
  bool Active = false;
  TCellRange Range;
  std::vector<TAutoFilterColumn> Columns;
};

void VisitNativeFields(auto& AVisit, ANative<TNativeAutoFilter> auto& AFilter) {
  AVisit("active", AFilter.Active);
  AVisit("range", AFilter.Range);
  AVisit("columns", AFilter.Columns);
}

struct TNativeTable {
  TText Name;
  TText DisplayName;
  TCellRange Ref;
  bool HasHeaderRow = true;
  bool HasTotalsRow = false;
  bool ShowAutoFilter = true;
  bool ShowRowStripes = true;
  bool ShowColumnStripes = false;
  TText StyleName;
  std::vector<TText> ColumnNames;
};

void VisitTableNames(auto& AVisit, ANative<TNativeTable> auto& ATable) { AVisit("name", ATable.Name); }

void VisitTableFields(auto& AVisit, ANative<TNativeTable> auto& ATable) {
  AVisit("displayName", ATable.DisplayName);
  AVisit("ref", ATable.Ref);
  AVisit("hasHeaderRow", ATable.HasHeaderRow);
  AVisit("hasTotalsRow", ATable.HasTotalsRow);
  AVisit("showAutoFilter", ATable.ShowAutoFilter);
  AVisit("showRowStripes", ATable.ShowRowStripes);
  AVisit("showColumnStripes", ATable.ShowColumnStripes);
  AVisit("styleName", ATable.StyleName);
  AVisit("columnNames", ATable.ColumnNames);
}

struct TNativePivotCache {
  int32_t Id = 0;
  TPivotCacheSourceKind SourceKind = pcsWorksheet;
  TText SourceSheet;
  TCellRange SourceRange;
  TText ConnectionId;
  std::vector<TText> FieldNames;
  std::vector<TText> MultiRanges;
};

void VisitNativeFields(auto& AVisit, ANative<TNativePivotCache> auto& ACache) {
  AVisit("id", ACache.Id);
  AVisit("sourceKind", ACache.SourceKind);
  AVisit("sourceSheet", ACache.SourceSheet);
  AVisit("sourceRange", ACache.SourceRange);
  AVisit("connectionId", ACache.ConnectionId);
  AVisit("fieldNames", ACache.FieldNames);
  AVisit("multiRanges", ACache.MultiRanges);
}

struct TNativePivotTable {
  TText Name;
  int32_t CacheId = 1;
  TText Dest = u"A1";
  bool RowGrandTotals = true;
  bool ColGrandTotals = true;
  TPivotLayoutForm LayoutForm = plfCompact;
  TText StyleName = u"PivotStyleMedium2";
  int32_t HeaderRowCount = 1;
  std::vector<TPivotFieldRef> Fields;
};

void VisitNativeFields(auto& AVisit, ANative<TNativePivotTable> auto& APivot) {
  AVisit("name", APivot.Name);
  AVisit("cacheId", APivot.CacheId);
  AVisit("dest", APivot.Dest);
  AVisit("rowGrandTotals", APivot.RowGrandTotals);
  AVisit("colGrandTotals", APivot.ColGrandTotals);
  AVisit("layoutForm", APivot.LayoutForm);
  AVisit("styleName", APivot.StyleName);
  AVisit("headerRowCount", APivot.HeaderRowCount);
  AVisit("fields", APivot.Fields);
}

struct TNativeSlicer {
  TText Name = u"Slicer";
  TSlicerKind Kind = skSlicer;
  int32_t CacheId = 1;
  int32_t FieldIndex = 0;
  TText Anchor = u"A1";
  int32_t WidthCols = 3;
  int32_t HeightRows = 8;
  TSlicerTimelineLevel TimelineLevel = stlMonths;
  std::vector<TText> Selected;
  std::vector<TText> PivotNames;
};

void VisitNativeFields(auto& AVisit, ANative<TNativeSlicer> auto& ASlicer) {
  AVisit("name", ASlicer.Name);
  AVisit("kind", ASlicer.Kind);
  AVisit("cacheId", ASlicer.CacheId);
  AVisit("fieldIndex", ASlicer.FieldIndex);
  AVisit("anchor", ASlicer.Anchor);
  AVisit("widthCols", ASlicer.WidthCols);
  AVisit("heightRows", ASlicer.HeightRows);
  AVisit("timelineLevel", ASlicer.TimelineLevel);
  AVisit("selected", ASlicer.Selected);
  AVisit("pivotNames", ASlicer.PivotNames);
}

struct TNativeConnection {
  TText Id;
  TText Provider = u"mock";
  TText ConnectionString;
  TText Catalog;
  TText Cube;
};

void VisitNativeFields(auto& AVisit, ANative<TNativeConnection> auto& AConnection) {
  AVisit("id", AConnection.Id);
  AVisit("provider", AConnection.Provider);
  AVisit("connectionString", AConnection.ConnectionString);
  AVisit("catalog", AConnection.Catalog);
  AVisit("cube", AConnection.Cube);
}

struct TNativeDrawingBag {
  TText SheetRelId;
  TText DrawingPartPath;
  TDrawingBytes DrawingXml;
  TText DrawingRelsPath;
  TDrawingBytes DrawingRelsXml;
};

/// The parts of the package stand behind these under "parts", by path.
void VisitNativeFields(auto& AVisit, ANative<TNativeDrawingBag> auto& ABag) {
  AVisit("sheetRelId", ABag.SheetRelId);
  AVisit("drawingPartPath", ABag.DrawingPartPath);
  AVisit.AllBytes("drawingXmlBase64", ABag.DrawingXml);
  AVisit("drawingRelsPath", ABag.DrawingRelsPath);
  AVisit.AllBytes("drawingRelsXmlBase64", ABag.DrawingRelsXml);
}

}  // namespace tessarine::detail

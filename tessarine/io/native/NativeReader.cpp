#include <algorithm>
#include <limits>
#include <memory>
#include <string>
#include <utility>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/io/native/detail/NativeCells.h>
#include <tessarine/io/native/detail/NativeListFields.h>
#include <tessarine/io/native/detail/NativeSheetReader.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

namespace tessarine {

namespace detail {

namespace {

/// Reads a whole document into a workbook.
class TNativeReader {
 public:
  TNativeReader(TWorkbook& AWorkbook, const TJsonText& AText, const TTsrReadOptions& AOptions)
      : FWorkbook(AWorkbook), FOptions(AOptions), FDocument(AText), FRoot(FDocument, AText.Root()) {}

  void Read();

 private:
  void ReadTheme();
  void ReadStyles();
  void ReadNames();
  void ReadPivotCaches();
  void ReadConnections();
  void ReadSheets();
  template <class TReadOne>
  void ForEachObject(TJsonPlace AArray, TReadOne&& AReadOne);

  TWorkbook& FWorkbook;
  const TTsrReadOptions& FOptions;
  TNativeDocument FDocument;
  TNativeObject FRoot;
};

/// AReadOne(place, 1-based position) for each element that is an object.
template <class TReadOne>
void TNativeReader::ForEachObject(TJsonPlace AArray, TReadOne&& AReadOne) {
  size_t position = 0;
  FDocument.Json().ForEachElement(AArray, [&](TJsonPlace AElement) {
    ++position;
    if (TJsonText::KindOf(AElement) == jkObject) AReadOne(AElement, position);
  });
}

void TNativeReader::Read() {
  FWorkbook.NewWorkbook();
  FWorkbook.ClearSheets();
  ReadTheme();
  ReadStyles();
  ReadNames();
  ReadPivotCaches();
  ReadConnections();
  ReadSheets();
  if (FWorkbook.SheetCount() == 0) FWorkbook.AddSheet(u"Sheet1");
  TNativeFieldReader reader(FDocument, FRoot);
  int32_t active = 0;
  reader("activeSheet", active);
  FWorkbook.SetActiveSheetIndex(active);
  bool isProtected = false;
  reader("structureProtected", isProtected);
  FWorkbook.SetStructureProtected(isProtected);
  FWorkbook.EnsureActiveSheetVisible();
  FWorkbook.ClearModified();
}

void TNativeReader::ReadTheme() {
  TTessarineTheme& theme = FWorkbook.Theme();
  theme.SetDefaultOfficeTheme();
  TNativeObject object(FDocument, FRoot.FindObject("theme"));
  TNativeFieldReader reader(FDocument, object);
  TText font = theme.MajorFont();
  reader("majorFont", font);
  theme.SetMajorFont(font);
  font = theme.MinorFont();
  reader("minorFont", font);
  theme.SetMinorFont(font);
  const TJsonPlace colors = object.FindArray("colors");
  if (!colors) return;
  theme.ClearColors();
  FDocument.Json().ForEachElement(
      colors, [&](TJsonPlace AColor) { theme.AddColor(FDocument.ReadColor(AColor).value_or(kOpaqueBlack)); });
}

void TNativeReader::ReadStyles() {
  TTessarineStyleSheet& styles = FWorkbook.StyleSheet();
  styles.Clear();
  TNativeObject object(FDocument, FRoot.FindObject("styles"));
  const TJsonPlace formats = object.FindArray("cellXfs");
  if (!formats) return;
  styles.ClearCellXfs();
  TNativeFieldReader reader(FDocument, object);
  ForEachObject(formats, [&](TJsonPlace AFormat, size_t) {
    FDocument.Take(sizeof(TCellFormat), AFormat);
    TCellFormat format;
    reader.Read(AFormat, format);
    styles.AddCellXf(std::move(format));
  });
}

void TNativeReader::ReadNames() {
  FWorkbook.ClearNamedFormulas();
  const TJsonPlace names = FRoot.FindObject("namedFormulas");
  if (!names) return;
  FDocument.Json().ForEachMember(names, [&](std::string_view AName, TJsonPlace AFormula) -> TJsonPlace {
    if (TJsonText::KindOf(AFormula) == jkText)
      FWorkbook.SetNamedFormula(TNativeDocument::DecodeText(AName), FDocument.ReadText(AFormula));
    return nullptr;
  });
}

void TNativeReader::ReadPivotCaches() {
  const TJsonPlace caches = FRoot.FindArray("pivotCaches");
  if (!caches) return;
  FWorkbook.PivotCaches().Clear();
  ForEachObject(caches, [&](TJsonPlace ACache, size_t APosition) {
    FDocument.Take(sizeof(TPivotCache), ACache);
    TNativeObject object(FDocument, ACache);
    TNativeFieldReader reader(FDocument, object);
    TNativePivotCache fields;
    fields.Id = static_cast<int32_t>(std::min<size_t>(APosition, std::numeric_limits<int32_t>::max()));
    VisitNativeFields(reader, fields);
    auto cache = std::make_unique<TPivotCache>(fields.Id);
    cache->SourceKind = fields.SourceKind;
    cache->SourceSheet = fields.SourceSheet;
    cache->SourceRange = fields.SourceRange;
    cache->ConnectionId = fields.ConnectionId;
    cache->SetFieldNames(std::move(fields.FieldNames));
    cache->MultiRanges = std::move(fields.MultiRanges);
    FWorkbook.PivotCaches().Add(std::move(cache));
  });
}

void TNativeReader::ReadConnections() {
  const TJsonPlace connections = FRoot.FindArray("connections");
  if (!connections) return;
  FWorkbook.OlapConnections().Clear();
  ForEachObject(connections, [&](TJsonPlace AConnection, size_t APosition) {
    FDocument.Take(sizeof(TOlapConnection), AConnection);
    TNativeObject object(FDocument, AConnection);
    TNativeFieldReader reader(FDocument, object);
    TNativeConnection fields;
    fields.Id = TText::FromUtf8("Conn" + std::to_string(APosition));
    VisitNativeFields(reader, fields);
    auto connection = std::make_unique<TOlapConnection>(fields.Id);
    connection->Provider = fields.Provider;
    connection->ConnectionString = fields.ConnectionString;
    connection->Catalog = fields.Catalog;
    connection->Cube = fields.Cube;
    FWorkbook.OlapConnections().Add(std::move(connection));
  });
}

void TNativeReader::ReadSheets() {
  const TJsonPlace sheets = FRoot.FindArray("sheets");
  if (!sheets) return;
  TNativeSheetReader reader(FDocument, FOptions, FWorkbook);
  ForEachObject(sheets, [&](TJsonPlace ASheet, size_t APosition) {
    FOptions.Control.CheckStop();
    if (FWorkbook.SheetCount() >= static_cast<int32_t>(FOptions.Limits.MaxEntries)) {
      throw ELimit(FDocument.Json().Describe(ASheet) + ": more sheets than the limit of " +
                   std::to_string(FOptions.Limits.MaxEntries));
    }
    reader.Read(ASheet, APosition);
  });
}

}  // namespace

}  // namespace detail

void TTsrIO::LoadFromFile(TWorkbook& AWorkbook, const std::string& AFileName, const TTsrReadOptions& AOptions) {
  const TSharedReadStream file = OpenSharedReadStream(AFileName);
  LoadFromStream(AWorkbook, *file.Stream, AOptions);
}

void TTsrIO::LoadFromStream(TWorkbook& AWorkbook, IReadStream& AStream, const TTsrReadOptions& AOptions) {
  TTsrReadOptions options = AOptions;
  options.Limits = options.Limits.Clamped();
  options.Control.CheckStop();
  options.Control.Report(ppLoading, 0);
  detail::TJsonText text = detail::TJsonText::FromStream(AStream, options.Limits.MaxTotalBytes);
  if (!text.IsSound(detail::SkipWrittenValue) || detail::TJsonText::KindOf(text.Root()) != detail::jkObject) return;
  options.Control.CheckStop();
  detail::TNativeReader(AWorkbook, text, options).Read();
  options.Control.Report(ppLoading, 1);
}

}  // namespace tessarine

#include <algorithm>
#include <string>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/io/native/detail/NativeListFields.h>
#include <tessarine/io/native/detail/NativeSheetWriter.h>
#include <tessarine/platform/Files.h>

namespace tessarine {

namespace detail {

namespace {

/// Writes a whole workbook.
class TNativeWriter {
 public:
  TNativeWriter(const TWorkbook& AWorkbook, IWriteStream& AStream, const TTsrWriteOptions& AOptions)
      : FWorkbook(AWorkbook), FOptions(AOptions), FOutput(AStream), FJson(FOutput.Json()), FFields(FJson) {}

  void Write();

 private:
  void WriteTheme();
  void WriteStyles();
  void WriteNames();
  void WritePivotCaches();
  void WriteConnections();
  void WriteSheets();
  void Drop(std::string_view AFeature, uint64_t ACount);

  const TWorkbook& FWorkbook;
  const TTsrWriteOptions& FOptions;
  TNativeOutput FOutput;
  TJsonWriter& FJson;
  TNativeFieldWriter FFields;
};

void TNativeWriter::Drop(std::string_view AFeature, uint64_t ACount) {
  if (FOptions.Report && ACount > 0) FOptions.Report->Add(AFeature, ffDropped, {}, ACount);
}

void TNativeWriter::Write() {
  FJson.BeginObject();
  FFields("version", TText(u"1.4"));
  WriteTheme();
  WriteStyles();
  WriteNames();
  WritePivotCaches();
  WriteConnections();
  WriteSheets();
  FFields("activeSheet", FWorkbook.ActiveSheetIndex());
  FFields("structureProtected", FWorkbook.IsStructureProtected());
  FJson.EndObject();
  FOutput.Flush();
}

void TNativeWriter::WriteTheme() {
  const TTessarineTheme& theme = FWorkbook.Theme();
  FJson.Name("theme");
  FJson.BeginObject();
  FFields("majorFont", theme.MajorFont());
  FFields("minorFont", theme.MinorFont());
  FFields("colors", theme.Colors());
  FJson.EndObject();
}

void TNativeWriter::WriteStyles() {
  FJson.Name("styles");
  FJson.BeginObject();
  FJson.Name("cellXfs");
  FJson.BeginArray();
  for (const TCellFormat& format : FWorkbook.StyleSheet().CellXfs()) {
    FFields.Write(format);
    FOutput.Pass();
  }
  FJson.EndArray();
  FJson.EndObject();
}

void TNativeWriter::WriteNames() {
  FJson.Name("namedFormulas");
  FJson.BeginObject();
  for (const auto& [name, formula] : FWorkbook.CopyNamedFormulas()) {
    FFields(name.ToUtf8(), formula);
    FOutput.Pass();
  }
  FJson.EndObject();
}

void TNativeWriter::WritePivotCaches() {
  if (FWorkbook.PivotCaches().IsEmpty()) return;
  FJson.Name("pivotCaches");
  FJson.BeginArray();
  for (const auto& cache : FWorkbook.PivotCaches()) {
    FFields.Write(TNativePivotCache{cache->Id(), cache->SourceKind, cache->SourceSheet, cache->SourceRange,
                                    cache->ConnectionId, cache->FieldNames(), cache->MultiRanges});
    Drop("number format of a pivot field", cache->FieldNumberFormats.size());
    Drop("slicer filter of a pivot cache", cache->SlicerFilters().size());
    FOutput.Pass();
  }
  FJson.EndArray();
}

void TNativeWriter::WriteConnections() {
  if (FWorkbook.OlapConnections().IsEmpty()) return;
  FJson.Name("connections");
  FJson.BeginArray();
  for (const auto& connection : FWorkbook.OlapConnections()) {
    FFields.Write(TNativeConnection{connection->Id, connection->Provider, connection->ConnectionString,
                                    connection->Catalog, connection->Cube});
    Drop("member set of a connection", connection->MockMembers().size());
    Drop("measure of a connection", connection->MockMeasures().size());
    FOutput.Pass();
  }
  FJson.EndArray();
}

void TNativeWriter::WriteSheets() {
  size_t total = 0;
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index)
    total += FWorkbook.GetSheet(index)->Store().CellCount() + 1;
  size_t done = 0;
  FJson.Name("sheets");
  FJson.BeginArray();
  TNativeSheetWriter writer(FOutput, FOptions);
  for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index) {
    const TWorksheet& sheet = *FWorkbook.GetSheet(index);
    const size_t own = sheet.Store().CellCount() + 1;
    writer.Write(sheet, static_cast<double>(done) / static_cast<double>(total),
                 static_cast<double>(own) / static_cast<double>(total));
    done += own;
  }
  FJson.EndArray();
}

}  // namespace

}  // namespace detail

void TTsrIO::SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, const TTsrWriteOptions& AOptions) {
  SaveToFileViaTemp(AFileName, [&](IWriteStream& AStream) { SaveToStream(AWorkbook, AStream, AOptions); });
  AWorkbook.ClearModified();
}

void TTsrIO::SaveToStream(const TWorkbook& AWorkbook, IWriteStream& AStream, const TTsrWriteOptions& AOptions) {
  AOptions.Control.CheckStop();
  detail::TNativeWriter(AWorkbook, AStream, AOptions).Write();
  AOptions.Control.Report(ppSaving, 1);
}

}  // namespace tessarine

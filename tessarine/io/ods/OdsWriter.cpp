#include <tessarine/io/ods/OdsWriter.h>

#include <utility>

#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/Slicers.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/detail/SaveBook.h>
#include <tessarine/io/ods/detail/OdsDrawingWriter.h>
#include <tessarine/io/ods/detail/OdsExactMarks.h>
#include <tessarine/io/ods/detail/OdsListWriter.h>
#include <tessarine/io/ods/detail/OdsPackageWriter.h>
#include <tessarine/io/ods/detail/OdsSheetWriter.h>
#include <tessarine/io/ods/detail/OdsStyleWriter.h>
#include <tessarine/io/xlsx/detail/XlsxThemeWriter.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/ZipWriter.h>

namespace tessarine {

namespace {

/// What a cell takes in the content, for the first reservation.
constexpr size_t kBytesPerCell = 96;

/// Counts what the format has no place for.
void ReportDropped(const TWorksheet& ASheet, TFileReport& AReport) {
  const std::string where = ASheet.Name().ToUtf8();
  const auto drop = [&](const char* AFeature, size_t ACount) {
    if (ACount > 0) AReport.Add(AFeature, ffDropped, where, ACount);
  };
  drop("comment", ASheet.Comments().Count());
  drop("conditional format", ASheet.ConditionalFormats().Count());
  drop("pivot table", static_cast<size_t>(ASheet.Pivots().Count()));
  drop("slicer", static_cast<size_t>(ASheet.Slicers().Count()));
  drop("outline", ASheet.Sizing().MaxRowOutlineLevel() > 0 || ASheet.Sizing().MaxColOutlineLevel() > 0);
  drop("frozen panes", ASheet.FrozenRows() > 0 || ASheet.FrozenCols() > 0);
  TSheetViewOptions view = ASheet.View();
  view.RightToLeft = false;
  drop("view", !(view == TSheetViewOptions()));
  drop("page settings", !(ASheet.PageSetup() == TPageSetup()));
}

/// "content.xml": what the sheets say comes first, since their styles stand in front of them.
class TContentWriter {
 public:
  TContentWriter(const TWorkbook& AWorkbook, const TOdsWriteOptions& AOptions, detail::TOdsWriteBag& ABag)
      : FWorkbook(AWorkbook), FOptions(AOptions), FBag(ABag), FStyles(AWorkbook, AOptions) {}

  std::string Run() {
    size_t cells = 0;
    for (int32_t i = 0; i < FWorkbook.SheetCount(); ++i) cells += FWorkbook.GetSheet(i)->Store().CellCount();
    FOut.reserve(cells * kBytesPerCell);
    FOut = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document-content";
    FOut.append(detail::OdsNamespaces()).append(" office:version=\"1.2\">");
    const size_t stylesAt = FOut.size();
    AppendBody();
    FOut += "</office:document-content>";
    FOut.insert(stylesAt, FStyles.BuildAutomaticStylesXml());
    return std::move(FOut);
  }

  std::string DefaultStyle() { return FStyles.DefaultStyleXml(); }

 private:
  void AppendBody() {
    FOut += "<office:body><office:spreadsheet";
    if (!FOptions.Literal) FOut += " tessarine:arrays=\"standard\"";
    FOut += '>';
    const detail::TOdsRuleNames names = detail::NameOdsValidations(FWorkbook);
    detail::AppendOdsValidations(FWorkbook, names, FOptions.Literal, FOut);
    const detail::TOdsSheetContext context{FWorkbook, FOptions, FStyles, FOut};
    for (int32_t i = 0; i < FWorkbook.SheetCount(); ++i) {
      const TWorksheet& sheet = *FWorkbook.GetSheet(i);
      if (FOptions.Report) ReportDropped(sheet, *FOptions.Report);
      const std::string shapes = detail::OdsShapes(sheet, FOptions, FStyles, FBag);
      detail::TOdsSheetWriter(context, sheet, i, names[static_cast<size_t>(i)], shapes).Run();
    }
    detail::AppendOdsNames(FWorkbook, FOptions.Literal, FOut);
    detail::AppendOdsDatabaseRanges(FWorkbook, FOptions, FOut);
    FOut += "</office:spreadsheet></office:body>";
  }

  const TWorkbook& FWorkbook;
  const TOdsWriteOptions& FOptions;
  detail::TOdsWriteBag& FBag;
  detail::TOdsStyleWriter FStyles;
  std::string FOut;
};

}  // namespace

void TOdsWriter::SaveToFile(TWorkbook& AWorkbook, const std::string& AFileName, const TOdsWriteOptions& AOptions) {
  detail::SaveBookViaTemp(AWorkbook, AFileName,
                          [&](IWriteStream& AStream) { SaveToStream(AWorkbook, AStream, AOptions); });
}

void TOdsWriter::SaveToStream(TWorkbook& AWorkbook, IWriteStream& AStream, const TOdsWriteOptions& AOptions) {
  AOptions.Control.CheckStop();
  detail::TOdsWriteBag bag;
  TContentWriter writer(AWorkbook, AOptions, bag);
  std::string content = writer.Run();
  if (!AOptions.Literal && AWorkbook.Theme() != TTessarineTheme())
    bag.AddPart(std::string(detail::kOdsThemePart), detail::XlsxThemePart(AWorkbook.Theme()), "text/xml");
  AOptions.Control.CheckStop();
  TZipWriter zip(AStream, {AOptions.Level, AOptions.Time});
  zip.AddStored("mimetype", "application/vnd.oasis.opendocument.spreadsheet");
  zip.Add("META-INF/manifest.xml", detail::OdsManifest(bag));
  zip.Add("meta.xml", detail::OdsMeta());
  zip.Add("styles.xml", detail::OdsStyles(writer.DefaultStyle()));
  zip.Add("content.xml", std::move(content));
  for (detail::TOdsZipPart& part : bag.Parts()) {
    AOptions.Control.CheckStop();
    if (!part.Path.ends_with('/')) zip.Add(part.Path, std::move(part.Bytes));
  }
  AOptions.Control.CheckStop();
  zip.Finish();
  AOptions.Control.Report(ppSaving, 1);
  AWorkbook.ClearModified();
}

}  // namespace tessarine

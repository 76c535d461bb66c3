#include <memory>
#include <string>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/ZipWriter.h>

#include "Workload.h"

namespace tessarine::bench {

namespace {

constexpr int32_t kSheets = 50;
constexpr int32_t kSheetRows = 500;
constexpr int32_t kSheetCols = 10;
constexpr int32_t kCharts = 100;
constexpr int32_t kChartRows = 12;

constexpr const char* kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
#define TESS_OFFICE "http://schemas.openxmlformats.org/"
constexpr const char* kSheetSpace = " xmlns=\"" TESS_OFFICE "spreadsheetml/2006/main\"";
constexpr const char* kRelations = TESS_OFFICE "officeDocument/2006/relationships";
constexpr const char* kPackageSpace = " xmlns=\"" TESS_OFFICE "package/2006/relationships\"";
constexpr const char* kDrawingSpaces =
    " xmlns:xdr=\"" TESS_OFFICE "drawingml/2006/spreadsheetDrawing\" xmlns:a=\"" TESS_OFFICE
    "drawingml/2006/main\" xmlns:c=\"" TESS_OFFICE "drawingml/2006/chart\" xmlns:r=\"" TESS_OFFICE
    "officeDocument/2006/relationships\"";
#undef TESS_OFFICE

std::string SheetsFile(const TRun& ARun) { return ARun.Folder + "/w24-sheets.xlsx"; }
std::string ChartsFile(const TRun& ARun) { return ARun.Folder + "/w24-charts.xlsx"; }

std::string Number(int32_t AValue) { return std::to_string(AValue); }

std::string Relationship(const std::string& AId, const std::string& AType, const std::string& ATarget) {
  return "<Relationship Id=\"" + AId + "\" Type=\"" + kRelations + "/" + AType + "\" Target=\"" + ATarget + "\"/>";
}

std::string Relationships(const std::string& AContent) {
  return std::string(kHead) + "<Relationships" + kPackageSpace + ">" + AContent + "</Relationships>";
}

/// A workbook part for so many sheets, with its relationships.
void AddWorkbook(TZipWriter& AZip, int32_t ASheets) {
  std::string sheets;
  std::string relationships = Relationship("rIdS", "styles", "styles.xml");
  for (int32_t i = 1; i <= ASheets; ++i) {
    sheets += "<sheet name=\"Sheet" + Number(i) + "\" sheetId=\"" + Number(i) + "\" r:id=\"rId" + Number(i) + "\"/>";
    relationships += Relationship("rId" + Number(i), "worksheet", "worksheets/sheet" + Number(i) + ".xml");
  }
  AZip.Add("xl/workbook.xml", std::string(kHead) + "<workbook" + kSheetSpace + " xmlns:r=\"" + kRelations +
                                  "\"><sheets>" + sheets + "</sheets></workbook>");
  AZip.Add("xl/_rels/workbook.xml.rels", Relationships(relationships));
  AZip.Add("xl/styles.xml", std::string(kHead) + "<styleSheet" + kSheetSpace +
                                "><fonts count=\"1\"><font><sz val=\"11\"/><name val=\"Calibri\"/></font></fonts>"
                                "<fills count=\"1\"><fill/></fills><borders count=\"1\"><border/></borders>"
                                "<cellXfs count=\"2\"><xf/><xf numFmtId=\"4\"/></cellXfs></styleSheet>");
}

/// Numbers with a sum at the end of each row, and what sheets have around them.
std::string PlainSheet(int32_t ASheet) {
  std::string text = std::string(kHead) + "<worksheet" + kSheetSpace +
                     "><sheetViews><sheetView workbookViewId=\"0\"><pane ySplit=\"1\" topLeftCell=\"A2\" "
                     "activePane=\"bottomLeft\" state=\"frozen\"/></sheetView></sheetViews><cols>"
                     "<col min=\"1\" max=\"10\" width=\"12\" customWidth=\"1\"/></cols><sheetData>";
  for (int32_t row = 1; row <= kSheetRows; ++row) {
    text += "<row r=\"" + Number(row) + "\">";
    for (int32_t col = 1; col < kSheetCols; ++col) {
      text += "<c r=\"" + std::string(1, static_cast<char>('A' + col - 1)) + Number(row) + "\" s=\"1\"><v>" +
              Number(ASheet * row + col) + "</v></c>";
    }
    text += "<c r=\"J" + Number(row) + "\"><f>SUM(A" + Number(row) + ":I" + Number(row) + ")</f><v>" +
            Number(9 * ASheet * row + 45) + "</v></c></row>";
  }
  return text + "</sheetData><autoFilter ref=\"A1:J" + Number(kSheetRows) +
         "\"/><mergeCells><mergeCell ref=\"L1:M2\"/></mergeCells><dataValidations><dataValidation type=\"whole\" "
         "sqref=\"A2:A99\"><formula1>1</formula1><formula2>9</formula2></dataValidation></dataValidations>"
         "<pageMargins left=\"1\" right=\"1\" top=\"1\" bottom=\"1\" header=\"0.5\" footer=\"0.5\"/>"
         "<pageSetup orientation=\"landscape\"/></worksheet>";
}

std::string Cache(const char* AKind, const std::string& ARef, int32_t AChart) {
  const std::string kind(AKind);
  std::string text =
      "<c:" + kind + "Ref><c:f>" + ARef + "</c:f><c:" + kind + "Cache><c:ptCount val=\"" + Number(kChartRows) + "\"/>";
  for (int32_t i = 0; i < kChartRows; ++i) {
    text += "<c:pt idx=\"" + Number(i) + "\"><c:v>" + (kind == "str" ? "m" + Number(i) : Number(AChart * 10 + i)) +
            "</c:v></c:pt>";
  }
  return text + "</c:" + kind + "Cache></c:" + kind + "Ref>";
}

/// A bar chart of three series.
std::string Chart(int32_t AChart) {
  std::string text = std::string(kHead) + "<c:chartSpace" + kDrawingSpaces +
                     "><c:chart><c:title><c:tx><c:rich><a:bodyPr/><a:p><a:r><a:t>Chart " + Number(AChart) +
                     "</a:t></a:r></a:p></c:rich></c:tx></c:title><c:plotArea><c:layout/><c:barChart>"
                     "<c:barDir val=\"col\"/><c:grouping val=\"clustered\"/>";
  for (int32_t series = 0; series < 3; ++series) {
    const std::string col(1, static_cast<char>('B' + series));
    text += "<c:ser><c:idx val=\"" + Number(series) + "\"/><c:order val=\"" + Number(series) +
            "\"/><c:tx><c:v>s</c:v></c:tx><c:spPr><a:solidFill><a:schemeClr val=\"accent" + Number(series + 1) +
            "\"/></a:solidFill></c:spPr><c:cat>" + Cache("str", "Sheet1!$A$1:$A$12", AChart) + "</c:cat><c:val>" +
            Cache("num", "Sheet1!$" + col + "$1:$" + col + "$12", AChart) + "</c:val></c:ser>";
  }
  return text +
         "<c:axId val=\"1\"/><c:axId val=\"2\"/></c:barChart><c:catAx><c:axId val=\"1\"/><c:crossAx "
         "val=\"2\"/></c:catAx>"
         "<c:valAx><c:axId val=\"2\"/><c:crossAx val=\"1\"/></c:valAx></c:plotArea><c:legend><c:legendPos val=\"r\"/>"
         "</c:legend></c:chart></c:chartSpace>";
}

std::string Anchor(int32_t AChart) {
  const auto corner = [](const char* AName, int32_t ACol, int32_t ARow) {
    return "<xdr:" + std::string(AName) + "><xdr:col>" + Number(ACol) +
           "</xdr:col><xdr:colOff>0</xdr:colOff><xdr:row>" + Number(ARow) +
           "</xdr:row><xdr:rowOff>0</xdr:rowOff></xdr:" + AName + ">";
  };
  const int32_t row = (AChart - 1) * 16;
  return "<xdr:twoCellAnchor>" + corner("from", 6, row) + corner("to", 14, row + 15) +
         "<xdr:graphicFrame><xdr:nvGraphicFramePr><xdr:cNvPr id=\"" + Number(AChart + 1) + "\" name=\"Chart " +
         Number(AChart) +
         "\"/><xdr:cNvGraphicFramePr/></xdr:nvGraphicFramePr><a:graphic><a:graphicData uri=\"chart\">"
         "<c:chart r:id=\"rId" +
         Number(AChart) +
         "\"/></a:graphicData></a:graphic></xdr:graphicFrame><xdr:clientData/>"
         "</xdr:twoCellAnchor>";
}

void WriteSheets(const std::string& AFile) {
  TFileWriteStream stream(AFile);
  TZipWriter zip(stream, {});
  AddWorkbook(zip, kSheets);
  for (int32_t i = 1; i <= kSheets; ++i) zip.Add("xl/worksheets/sheet" + Number(i) + ".xml", PlainSheet(i));
  zip.Finish();
  stream.Close();
}

void WriteCharts(const std::string& AFile) {
  TFileWriteStream stream(AFile);
  TZipWriter zip(stream, {});
  AddWorkbook(zip, 1);
  zip.Add("xl/worksheets/sheet1.xml", std::string(kHead) + "<worksheet" + kSheetSpace + " xmlns:r=\"" + kRelations +
                                          "\"><sheetData/><drawing r:id=\"rId1\"/></worksheet>");
  zip.Add("xl/worksheets/_rels/sheet1.xml.rels",
          Relationships(Relationship("rId1", "drawing", "../drawings/drawing1.xml")));
  std::string anchors;
  std::string relationships;
  for (int32_t i = 1; i <= kCharts; ++i) {
    anchors += Anchor(i);
    relationships += Relationship("rId" + Number(i), "chart", "../charts/chart" + Number(i) + ".xml");
    zip.Add("xl/charts/chart" + Number(i) + ".xml", Chart(i));
  }
  zip.Add("xl/drawings/drawing1.xml",
          std::string(kHead) + "<xdr:wsDr" + kDrawingSpaces + ">" + anchors + "</xdr:wsDr>");
  zip.Add("xl/drawings/_rels/drawing1.xml.rels", Relationships(relationships));
  zip.Finish();
  stream.Close();
}

bool AreSheetsExpected(const TWorkbook& ABook) {
  const TWorksheet* const last = ABook.GetSheet(kSheets - 1);
  return last && ABook.SheetCount() == kSheets &&
         last->Store().CellCount() == static_cast<size_t>(kSheetRows) * kSheetCols &&
         last->GetEffectiveValue({kSheetCols, kSheetRows}).Number == 9.0 * kSheets * kSheetRows + 45;
}

}  // namespace

void PrepareFiles(TRun& ARun) {
  WriteSheets(SheetsFile(ARun));
  WriteCharts(ChartsFile(ARun));
}

void MeasureFiles(TRun& ARun) {
  std::unique_ptr<TWorkbook> book;  // a new one each time: what frees the one before is no part of opening
  const auto renew = [&] { book = std::make_unique<TWorkbook>(); };
  const auto measure = [&](const std::string& AFile) {
    return MedianMilliseconds([&] { TXlsxReader::LoadFromFile(*book, AFile); }, renew);
  };
  const double sheets = measure(SheetsFile(ARun));
  ARun.Results.push_back({"sheets", kSheets, sheets, {}, PeakMegabytes(), AreSheetsExpected(*book)});
  const double charts = measure(ChartsFile(ARun));
  const bool areThere = book->GetSheet(0)->Drawings().Count() == kCharts;
  ARun.Results.push_back({"charts", kCharts, charts, {}, PeakMegabytes(), areThere});
}

}  // namespace tessarine::bench

#include "WorkloadData.h"

#include <cstdio>
#include <fstream>
#include <unordered_map>
#include <vector>

#include <tests/support/ZipBuilder.h>

namespace tessarine::bench {

namespace {

constexpr const char* kWords[24] = {"alpha", "beta",  "gamma",  "delta",   "epsilon", "zeta", "eta",     "theta",
                                    "iota",  "kappa", "lambda", "mu",      "nu",      "xi",   "omicron", "pi",
                                    "rho",   "sigma", "tau",    "upsilon", "phi",     "chi",  "psi",     "omega"};

const char* Word(uint32_t AIndex, uint32_t AStream) { return kWords[Hash(AIndex, AStream) % 24]; }

template <class... TArgs>
std::string Format(const char* APattern, TArgs... AArgs) {
  char buffer[160];
  const int length = std::snprintf(buffer, sizeof buffer, APattern, AArgs...);
  return {buffer, static_cast<size_t>(length)};
}

std::u16string Widen(const std::string& AText) { return {AText.begin(), AText.end()}; }

/// The shared string table as it grows.
class TStrings {
 public:
  size_t IndexOf(const std::string& AText) {
    const auto [place, added] = FIndexes.try_emplace(AText, FIndexes.size());
    if (added) FXml += "<si><t>" + AText + "</t></si>";
    return place->second;
  }
  std::string Part() const {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><sst "
           "xmlns=\"http://schemas.openxmlformats.org/"
           "spreadsheetml/2006/main\">" +
           FXml + "</sst>";
  }

 private:
  std::unordered_map<std::string, size_t> FIndexes;
  std::string FXml;
};

void AppendNumberCell(std::string& AXml, char ACol, int32_t ARow, double ANumber, const char* AStyle) {
  AXml += Format("<c r=\"%c%d\"%s><v>%.17g</v></c>", ACol, ARow, AStyle, ANumber);
}

std::string MixedSheetPart(int32_t ARows, TStrings& AStrings) {
  std::string xml =
      "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><worksheet "
      "xmlns=\"http://schemas.openxmlformats.org/"
      "spreadsheetml/2006/main\"><sheetData>";
  for (int32_t i = 1; i <= ARows; ++i) {
    const TMixedRow row = MixedRow(i);
    xml += Format("<row r=\"%d\" spans=\"1:10\">", i);
    AppendNumberCell(xml, 'A', i, row.A, "");
    AppendNumberCell(xml, 'B', i, row.B, "");
    AppendNumberCell(xml, 'C', i, row.C, "");
    char col = 'D';
    for (const std::string* text : {&row.D, &row.E, &row.F})
      xml += Format("<c r=\"%c%d\" t=\"s\"><v>%zu</v></c>", col++, i, AStrings.IndexOf(*text));
    AppendNumberCell(xml, 'G', i, row.G, " s=\"1\"");
    AppendNumberCell(xml, 'H', i, row.K, " s=\"2\"");
    xml += Format("<c r=\"I%d\"><f>B%d*C%d</f><v>%.17g</v></c>", i, i, i, row.I);
    xml += Format("<c r=\"J%d\"><f>I%d+A%d</f><v>%.17g</v></c></row>", i, i, i, row.J);
  }
  return xml + "</sheetData></worksheet>";
}

constexpr const char* kWorkbookPart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><workbook xmlns=\"http://schemas.openxmlformats.org/"
    "spreadsheetml/2006/main\" xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\"><sheets>"
    "<sheet name=\"Data\" sheetId=\"1\" r:id=\"rId1\"/></sheets></workbook>";
constexpr const char* kRelationsPart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><Relationships "
    "xmlns=\"http://schemas.openxmlformats.org/"
    "package/2006/relationships\"><Relationship Id=\"rId1\" "
    "Type=\"http://schemas.openxmlformats.org/officeDocument/2006/"
    "relationships/worksheet\" Target=\"worksheets/sheet1.xml\"/></Relationships>";
constexpr const char* kStylesPart =
    "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?><styleSheet "
    "xmlns=\"http://schemas.openxmlformats.org/"
    "spreadsheetml/2006/main\"><numFmts count=\"2\"><numFmt numFmtId=\"164\" formatCode=\"yyyy-mm-dd\"/><numFmt "
    "numFmtId=\"165\" formatCode=\"yyyy-mm-dd hh:mm\"/></numFmts><fonts count=\"1\"><font><sz val=\"11\"/><name "
    "val=\"Calibri\"/></font></fonts><fills count=\"2\"><fill><patternFill "
    "patternType=\"none\"/></fill><fill><patternFill "
    "patternType=\"gray125\"/></fill></fills><borders count=\"1\"><border/></borders><cellXfs count=\"3\"><xf "
    "numFmtId=\"0\"/><xf numFmtId=\"164\" applyNumberFormat=\"1\"/><xf numFmtId=\"165\" "
    "applyNumberFormat=\"1\"/></cellXfs>"
    "</styleSheet>";

}  // namespace

std::u16string LookupTextKey(int32_t ARow) { return Widen(Format("K%07d-item", LookupKey(ARow))); }

std::u16string Category(uint32_t ANumber) { return Widen(Format("cat%04u", ANumber)); }

TSumRow SumRow(int32_t ARow) {
  const auto i = static_cast<uint32_t>(ARow);
  return {Hash(i, 41) % 1000, Hash(i, 42) % 1000, (Hash(i, 43) % 10000) / 4.0};
}

TSumRow SumQuestion(int32_t AIndex) {
  const auto i = static_cast<uint32_t>(AIndex);
  return {Hash(i, 44) % 1000, Hash(i, 45) % 1000, 0};
}

TMixedRow MixedRow(int32_t AIndex) {
  const auto i = static_cast<uint32_t>(AIndex);
  TMixedRow row;
  row.A = AIndex;
  row.B = (Hash(i, 51) % 1000000) / 100.0;
  row.C = (Hash(i, 52) % 1000) / 8.0;
  row.D = Format("group %02u", Hash(i, 53) % 50);
  row.E = Format("%s %s %u", Word(i, 54), Word(i, 55), Hash(i, 54) % 5000);
  row.F = Format("%s-%08x-%d", Word(i, 56), Hash(i, 57), AIndex);
  row.G = 36526 + Hash(i, 58) % 9000;
  row.K = row.G + (Hash(i, 59) % 86400) / 86400.0;
  row.I = row.B * row.C;
  row.J = row.I + row.A;
  return row;
}

std::string CsvLine(int32_t AIndex) {
  const auto i = static_cast<uint32_t>(AIndex);
  return Format("%d,%s %s,%.2f,%04u-%02u-%02u,\"%s, %s\"", AIndex, Word(i, 64), Word(i, 65),
                (Hash(i, 66) % 10000000) / 100.0, 2000 + Hash(i, 61) % 25, 1 + Hash(i, 62) % 12, 1 + Hash(i, 63) % 28,
                Word(i, 67), Word(i, 68));
}

void WriteMixedWorkbook(const std::string& AFileName, int32_t ARows) {
  TStrings strings;
  test::TZipBuilder zip;
  zip.Add("xl/workbook.xml", kWorkbookPart);
  zip.Add("xl/_rels/workbook.xml.rels", kRelationsPart);
  zip.Add("xl/styles.xml", kStylesPart);
  zip.Add("xl/worksheets/sheet1.xml", MixedSheetPart(ARows, strings));
  zip.Add("xl/sharedStrings.xml", strings.Part());
  const std::vector<std::byte> bytes = zip.Finish();
  std::ofstream file(AFileName, std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

void WriteCsvFile(const std::string& AFileName, int32_t ARows) {
  std::ofstream file(AFileName, std::ios::binary);
  file << "id,name,amount,day,note\n";
  for (int32_t i = 1; i <= ARows; ++i) file << CsvLine(i) << '\n';
}

}  // namespace tessarine::bench

#include "WorkbookFiles.h"

#include <string_view>
#include <vector>

#include "../support/TemporaryFolder.h"
#include "../support/ZipBuilder.h"

namespace tessarine::test {

namespace {

constexpr std::string_view kTypes = R"(<Types xmlns="http://schemas.openxmlformats.org/package/2006/content-types">
<Default Extension="rels" ContentType="application/vnd.openxmlformats-package.relationships+xml"/>
<Default Extension="xml" ContentType="application/xml"/></Types>)";

constexpr std::string_view kRelations =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="r1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/officeDocument" Target="xl/workbook.xml"/></Relationships>)";

constexpr std::string_view kBook = R"(<workbook xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"
xmlns:r="http://schemas.openxmlformats.org/officeDocument/2006/relationships"><sheets>
<sheet name="Data" sheetId="1" r:id="r1"/><sheet name="Notes" sheetId="2" state="hidden" r:id="r2"/></sheets>
<definedNames><definedName name="TOTAL">SUM(Data!$B$2:$B$3)</definedName></definedNames></workbook>)";

constexpr std::string_view kBookRelations =
    R"(<Relationships xmlns="http://schemas.openxmlformats.org/package/2006/relationships">
<Relationship Id="r1" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="worksheets/sheet1.xml"/>
<Relationship Id="r2" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/worksheet" Target="worksheets/sheet2.xml"/>
<Relationship Id="r3" Type="http://schemas.openxmlformats.org/officeDocument/2006/relationships/styles" Target="styles.xml"/></Relationships>)";

constexpr std::string_view kStyles = R"(<styleSheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main">
<numFmts count="1"><numFmt numFmtId="164" formatCode="0.0;[Red]-0.0"/></numFmts>
<fonts count="2"><font/><font><b/><color rgb="FF0000FF"/></font></fonts>
<fills count="3"><fill><patternFill patternType="none"/></fill><fill><patternFill patternType="gray125"/></fill>
<fill><patternFill patternType="solid"><fgColor rgb="FFFFFF00"/></patternFill></fill></fills>
<borders count="1"><border/></borders>
<cellXfs count="3"><xf numFmtId="0" fontId="0" fillId="0" borderId="0"/>
<xf numFmtId="164" fontId="0" fillId="0" borderId="0" applyNumberFormat="1"/>
<xf numFmtId="0" fontId="1" fillId="2" borderId="0" applyFont="1" applyFill="1"/></cellXfs></styleSheet>)";

constexpr std::string_view kSheet =
    R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><sheetData>
<row r="1"><c r="A1" s="2" t="inlineStr"><is><t>Title over two</t></is></c></row>
<row r="2"><c r="A2" t="inlineStr"><is><t>apples, red</t></is></c><c r="B2"><v>2.5</v></c></row>
<row r="3"><c r="A3" t="b"><v>1</v></c><c r="B3" s="1"><v>-7</v></c></row>
<row r="4"><c r="A4"><f>B2*2</f></c><c r="B4"><f>1/0</f></c></row>
<row r="5"><c r="A5" cm="1"><f t="array" ref="A5:B5">SEQUENCE(1,2,8)</f></c></row>
</sheetData><mergeCells count="1"><mergeCell ref="A1:B1"/></mergeCells></worksheet>)";

constexpr std::string_view kNotes =
    R"(<worksheet xmlns="http://schemas.openxmlformats.org/spreadsheetml/2006/main"><sheetData><row r="2"><c r="C2"><v>1</v></c></row><row r="9"><c r="H9"/></row></sheetData></worksheet>)";

}  // namespace

void WriteSampleWorkbook(const std::string& AFileName) {
  TZipBuilder zip;
  zip.Add("[Content_Types].xml", kTypes);
  zip.Add("_rels/.rels", kRelations);
  zip.Add("xl/workbook.xml", kBook);
  zip.Add("xl/_rels/workbook.xml.rels", kBookRelations);
  zip.Add("xl/styles.xml", kStyles);
  zip.Add("xl/worksheets/sheet1.xml", kSheet);
  zip.Add("xl/worksheets/sheet2.xml", kNotes);
  const std::vector<std::byte> bytes = zip.Finish();
  WriteFile(AFileName, std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

}  // namespace tessarine::test

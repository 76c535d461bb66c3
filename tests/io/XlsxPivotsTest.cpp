#include <string>

#include <gtest/gtest.h>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxPivots.h>
#include <tessarine/platform/Unicode.h>

#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"

namespace tessarine {
namespace {

using test::Row;
using test::TXlsxBuilder;

std::string A1(const TCellRange& ARange) { return Utf16ToUtf8(ARange.ToA1()); }

/// "cache 7: kind sheet!range fields(formats)" and "S1 'name' of 7 at A1 body rows form totals style: fields"; a field
/// is "role index aggregate name format".
std::string DumpPivots(const TWorkbook& ABook) {
  std::string text;
  for (const auto& cache : ABook.PivotCaches()) {
    text += "cache " + std::to_string(cache->Id()) + ": " + std::to_string(static_cast<int>(cache->SourceKind)) + " " +
            cache->SourceSheet.ToUtf8() + "!" + A1(cache->SourceRange) + cache->ConnectionId.ToUtf8();
    for (const TText& range : cache->MultiRanges) text += " " + range.ToUtf8();
    for (size_t i = 0; i < cache->FieldCount(); ++i) {
      text += " " + cache->FieldNames()[i].ToUtf8() + "(" + cache->FieldNumberFormat(static_cast<int32_t>(i)).ToUtf8() +
              ")";
    }
    text += "\n";
  }
  for (int32_t index = 0; index < ABook.SheetCount(); ++index) {
    const TWorksheet& sheet = *ABook.GetSheet(index);
    for (const auto& table : sheet.Pivots()) {
      text += sheet.Name().ToUtf8() + " '" + table->Name.ToUtf8() + "' of " + std::to_string(table->CacheId) + " at " +
              Utf16ToUtf8(table->Dest.ToA1()) + " " + A1(table->LastBody) + " " +
              std::to_string(table->HeaderRowCount) + " " + std::to_string(static_cast<int>(table->LayoutForm)) +
              (table->RowGrandTotals ? "r" : "-") + (table->ColGrandTotals ? "c" : "-") + " " +
              table->StyleName.ToUtf8() + ":";
      for (const TPivotFieldRef& field : table->Fields) {
        text += " " + std::to_string(static_cast<int>(field.Role)) + "." + std::to_string(field.CacheFieldIndex) + "." +
                std::to_string(static_cast<int>(field.Agg)) + field.CustomName.ToUtf8() + "<" +
                field.NumberFormat.ToUtf8() + ">";
      }
      text += "\n";
    }
  }
  return text;
}

/// A workbook with one standard cache and one standard table on its first sheet.
TXlsxBuilder StandardBook(const std::string& ACacheSource, const std::string& ATable) {
  TXlsxBuilder xlsx;
  xlsx.Sheet(Row("<c r='A1'><v>1</v></c>")).Sheet("");
  xlsx.Workbook(
      "<definedNames><definedName name='Data'>S2!$B$2:$C$8</definedName></definedNames>"
      "<pivotCaches><pivotCache cacheId='7' r:id='p'/><pivotCache cacheId='7' r:id='p'/><pivotCache cacheId='8' "
      "r:id='q'/>"
      "</pivotCaches>");
  xlsx.Part(
      "xl/_rels/workbook.xml.rels",
      "<Relationships><Relationship Id='rId1' Target='worksheets/sheet1.xml'/><Relationship Id='rId2' "
      "Target='/xl/worksheets/sheet2.xml'/><Relationship Id='p' Target='\\xl\\pivotCache\\c1.xml'/></Relationships>");
  xlsx.Part("xl/styles.xml",
            "<styleSheet><numFmts><numFmt numFmtId='170' formatCode='0.0\"x\"'/></numFmts></styleSheet>");
  xlsx.Part(
      "xl/pivotCache/c1.xml",
      "<pivotCacheDefinition>" + ACacheSource +
          "<cacheFields><cacheField name='Region'/><cacheField numFmtId='170'/><cacheField name='N' numFmtId='0'/>"
          "</cacheFields></pivotCacheDefinition>");
  xlsx.Part("xl/worksheets/_rels/sheet1.xml.rels",
            "<Relationships><Relationship Id='a' Type='x/PivotTable' Target='../pivotTables/t1.xml'/>"
            "<Relationship Id='b' Type='x/pivotTable' Target='/xl/pivotTables/t1.xml'/></Relationships>");
  xlsx.Part("xl/pivotTables/t1.xml", ATable);
  return xlsx;
}

const std::string kSource = "<cacheSource><worksheetSource ref='A1:C9' sheet='S2'/></cacheSource>";
const std::string kCache = "cache 7: 0 S2!A1:C9 Region() Field2(0.0\"x\") N()\n";

std::string LoadedPivots(const TXlsxBuilder& AXlsx) {
  TWorkbook book;
  AXlsx.Load(book);
  EXPECT_FALSE(book.IsModified());
  return DumpPivots(book);
}

TEST(XlsxPivots, StandardTablesAreRead) {
  EXPECT_EQ(LoadedPivots(StandardBook(kSource, "<t/>")),
            kCache + "S1 'Pivot' of 1 at A1 A1 1 0rc PivotStyleMedium2:\n");
  const char* const table =
      "<t name='P' cacheId='7' outline='1' rowGrandTotals='0'><location ref='D9:B3' firstDataRow='2'/>"
      "<pivotTableStyleInfo name='Dark'/><dataFields><dataField fld='1' subtotal=' CountNums ' name='How many'/>"
      "<dataField fld='2' subtotal='odd' numFmtId='2'/><dataField fld='1' subtotal='varp' numFmtId='0'/></dataFields>"
      "<colFields><field x='-2'/><field x='2'/></colFields><rowFields><field x='0'/><other x='1'/></rowFields>"
      "<pageFields><pageField fld='1'/></pageFields></t>";
  EXPECT_EQ(LoadedPivots(StandardBook(kSource, table)),
            kCache +
                "S1 'P' of 7 at B3 B3:D9 2 1-c Dark: 1.1.0<> 2.0.0<> 3.2.0<> 4.1.2How many<0.0\"x\"> 4.2.0<0.00> "
                "4.1.10<0.0\"x\">\n");
}

TEST(XlsxPivots, SourcesAreRangesNamesOrElsewhere) {
  const std::pair<const char*, const char*> cases[] = {
      {"<cacheSource type='worksheet'><worksheetSource name='data'/></cacheSource>", "0 S2!B2:C8"},
      {"<cacheSource><worksheetSource name='none' sheet='S1'/></cacheSource>", "0 S1!A1"},
      {"<cacheSource><worksheetSource ref='A1:B2' sheet='X' r:id='other'/></cacheSource>", "3 X!A1:B2"},
      {"<cacheSource type='external' connectionId='4'/>", "3 !A14"},
      {"<cacheSource type='consolidation'><consolidation><rangeSets><rangeSet ref='A1:B2' sheet='S2'/>"
       "<rangeSet sheet='S2'/></rangeSets></consolidation></cacheSource>",
       "1 !A1 'S2'!A1:B2"},
      {"", "0 !A1"},
  };
  for (const auto& [source, wanted] : cases) {
    const std::string dump = LoadedPivots(StandardBook(source, ""));
    EXPECT_EQ(dump.substr(0, dump.find(" Region")), std::string("cache 7: ") + wanted) << source;
  }
}

TEST(XlsxPivots, TheirNumberIsBounded) {
  std::string caches;
  for (int id = 1; id <= 20; ++id) caches += "<pivotCache cacheId='" + std::to_string(id) + "' r:id='p'/>";
  TXlsxBuilder xlsx = StandardBook(kSource, "<t cacheId='20'/>");
  xlsx.Part("xl/workbook.xml", "<workbook><pivotCaches>" + caches + "</pivotCaches></workbook>");
  TWorkbook book;
  xlsx.Load(book);
  EXPECT_EQ(book.PivotCaches().Count(), 20u);
  TXlsxReadOptions options;
  options.Limits.MaxEntries = 19;
  EXPECT_EQ(test::Thrown([&] { xlsx.Load(book, options); }),
            "limit: xl/workbook.xml: more pivot caches than the limit of 19");
  std::string objects = "{}";
  for (int i = 1; i < 500'001; ++i) objects += ",{}";
  xlsx.Part("xl/tessarine/pivots.json", R"({"caches":[)" + objects + "]}");
  EXPECT_EQ(test::Thrown([&] { xlsx.Load(book); }),
            "limit: xl/tessarine/pivots.json: more objects than the limit of 500000");
  xlsx.Part("xl/tessarine/pivots.json", R"({"sheets":[{"pivots":[{"fields":[)" + objects + "]}]}]}");
  EXPECT_EQ(test::Thrown([&] { xlsx.Load(book); }),
            "limit: xl/tessarine/pivots.json: a pivot table has more fields than the limit of 16384");
  std::string fields;
  for (int i = 0; i < 16'385; ++i) fields += "<field x='0'/>";
  xlsx = StandardBook(kSource, "<t name='P'><rowFields>" + fields + "</rowFields></t>");
  EXPECT_EQ(test::Thrown([&] { xlsx.Load(book); }), "limit: pivot table \"P\": more fields than the limit of 16384");
}

TEST(XlsxPivots, ABrokenStandardPartIsAnErrorAndABrokenOwnPartIsNone) {
  TWorkbook book;
  EXPECT_EQ(test::Thrown([&] { StandardBook(kSource, "<t>").Load(book); }).substr(0, 29),
            "format: xl/pivotTables/t1.xml");
  EXPECT_EQ(book.SheetCount(), 2);
  const std::string whole = kCache + "S1 'Pivot' of 1 at A1 A1 1 0rc PivotStyleMedium2:\n";
  for (const char* json : {"[]", "3", "{\"caches\":[]", "{\"caches\":[]} x", "not json"}) {
    TXlsxBuilder xlsx = StandardBook(kSource, "<t/>");
    EXPECT_EQ(LoadedPivots(xlsx.Part("xl/tessarine/pivots.json", json)), whole) << json;
  }
}

TEST(XlsxPivots, TheOwnPartTakesTheirPlace) {
  const std::pair<const char*, const char*> cases[] = {
      {"{}", "S1 'Pivot' of 1 at A1 A1 1 0rc PivotStyleMedium2:\n"},
      {R"({"sheets":[{"sheet":"none","pivots":[{}]},{"pivots":[{"name":"W","cacheId":3,"dest":"$c$4","fields":[)"
       R"({"field":2,"role":4,"agg":10,"numberFormat":"0%","more":{}},{"field":2.5,"role":9,"agg":-1},7]},{}],)"
       R"("sheet":"s1"}],"caches":[{"id":3,"sourceKind":2,"sourceSheet":"S2","sourceRange":"B1:C5",)"
       R"("connectionId":"k"},{"id":"x","sourceKind":4,"sourceRange":7},null]})",
       "cache 3: 2 S2!B1:C5k\ncache 0: 0 !A1\n"
       "S1 'W' of 3 at C4 C4 1 0rc PivotStyleMedium2: 4.2.10<0%> 0.0.0<>\n"
       "S1 'Pivot' of 0 at A1 A1 1 0rc PivotStyleMedium2:\n"},
  };
  for (const auto& [json, wanted] : cases) {
    TXlsxBuilder xlsx = StandardBook(kSource, "<t/>");
    EXPECT_EQ(LoadedPivots(xlsx.Part("XL/tessarine/Pivots.json", json)), wanted) << json;
  }
}

TEST(XlsxPivots, ComeBackThroughTheOwnPart) {
  TWorkbook book;
  EXPECT_FALSE(detail::TessarinePivotsPart(book).has_value());
  TPivotCache& cache = book.PivotCaches().AddNew();
  cache.SourceSheet = u"S1";
  cache.SourceRange = {1, 1, 3, 5};
  book.GetSheet(0)->SetName(u"S1");
  book.AddSheet(u"S2");
  TPivotTable& table = book.GetSheet(0)->Pivots().Add(u"P \"q\"", cache.Id(), {2, 9});
  TPivotFieldRef field = TPivotFieldRef::Create(1, pfrValue, paMax);
  field.NumberFormat = u"0.0";
  table.AddField(field);
  const std::string wanted = DumpPivots(book);
  table.LayoutForm = plfTabular;
  table.RowGrandTotals = false;
  table.Fields[0].CustomName = u"not kept";
  const auto part = detail::TessarinePivotsPart(book);
  ASSERT_TRUE(part.has_value());
  EXPECT_EQ(*part, R"({"caches":[{"id":1,"sourceKind":0,"sourceSheet":"S1","sourceRange":"A1:C5","connectionId":""}],)"
                   R"("sheets":[{"sheet":"S1","pivots":[{"name":"P \"q\"","cacheId":1,"dest":"B9","fields":[)"
                   R"({"field":1,"role":4,"agg":5,"numberFormat":"0.0"}]}]}]})");
  TXlsxBuilder xlsx;
  EXPECT_EQ(LoadedPivots(xlsx.Sheet("").Part("xl/tessarine/pivots.json", *part)), wanted);
}

}  // namespace
}  // namespace tessarine

#include <limits>
#include <stop_token>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/CellComments.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/platform/Errors.h>

#include "../support/TemporaryFolder.h"
#include "../support/Thrown.h"
#include "../support/XlsxBuilder.h"
#include "NativeSupport.h"

namespace tessarine {
namespace {

using test::LoadNative;
using test::SavedNative;
using test::Thrown;
using namespace std::string_literals;

/// A document of one sheet with these members.
std::string OneSheet(const std::string& AMembers) { return "{\"sheets\":[{" + AMembers + "}]}"; }

std::string LoadedCells(const std::string& ACells) {
  TWorkbook book;
  LoadNative(book, OneSheet("\"cells\":{" + ACells + "}"));
  return test::DumpCells(*book.GetSheet(0));
}

TEST(NativeReader, WhatIsNoDocumentDoesNothing) {
  for (const char* text : {"", " ", "[]", "\"x\"", "{", "{}x", "{\"a\":01}", "<xml/>", "{\"a\":1,}", "\xFF\xFE{"}) {
    TWorkbook book;
    book.GetSheet(0)->SetValue({2, 2}, TCellValue::FromNumber(7));
    EXPECT_EQ(Thrown([&] { LoadNative(book, text); }), "nothing") << text;
    EXPECT_EQ(test::DumpCells(*book.GetSheet(0)), "B2=7") << text;
    EXPECT_TRUE(book.IsModified());
  }
}

TEST(NativeReader, MissingThingsAreDefaults) {
  for (const char* text : {"{}", "{\"sheets\":5}", "{\"sheets\":[]}", "{\"sheets\":[1,null,[]],\"version\":\"9\"}",
                           "{\"theme\":[],\"styles\":7,\"namedFormulas\":[],\"sheets\":null,\"activeSheet\":null}"}) {
    TWorkbook book;
    book.Theme().ClearColors();
    book.AddSheet(u"Other");
    LoadNative(book, "\xEF\xBB\xBF"s + text);
    ASSERT_EQ(book.SheetCount(), 1) << text;
    EXPECT_EQ(book.GetSheet(0)->Name(), u"Sheet1");
    EXPECT_EQ(book.Theme(), TTessarineTheme());
    EXPECT_EQ(book.StyleSheet().Count(), 1);
    EXPECT_FALSE(book.IsModified());
  }
  TWorkbook book;
  LoadNative(book, R"({"sheets":[{},5,{"tables":[7,{}],"slicers":[{}],"pivotTables":[{}],"drawings":[{}],
      "validations":[{}],"autoFilter":{},"view":{},"pageSetup":{"paperSize":8}}],
      "pivotCaches":[0,{}],"connections":[{}],"styles":{"cellXfs":[{},{"font":{},"fill":{"fg":{}}}]}})");
  ASSERT_EQ(book.SheetCount(), 2);
  EXPECT_EQ(book.GetSheet(0)->Name(), u"Sheet1");
  TWorksheet& sheet = *book.GetSheet(1);
  EXPECT_EQ(sheet.Name(), u"Sheet3");
  EXPECT_EQ(sheet.View(), TSheetViewOptions());
  EXPECT_EQ(sheet.Tables().GetItem(0).DisplayName(), u"Table2");
  EXPECT_EQ(sheet.Tables().GetItem(0).Ref(), (TCellRange{1, 1, 1, 1}));
  EXPECT_EQ(sheet.Slicers().GetItem(0).Name, u"Slicer");
  EXPECT_EQ(sheet.Pivots().GetItem(0).Name, u"Pivot1");
  EXPECT_EQ(sheet.Pivots().GetItem(0).Dest, (TCellAddress{1, 1}));
  EXPECT_EQ(*sheet.Drawings().GetItem(0), TSheetDrawing());
  EXPECT_TRUE(sheet.Validations().GetRule(0).AllowBlank);
  EXPECT_FALSE(sheet.AutoFilter().IsEnabled());
  EXPECT_TRUE(sheet.SavedView().HasView);
  EXPECT_EQ(sheet.PageSetup().PaperWidthInches(), 8.27);
  EXPECT_EQ(book.PivotCaches().GetItem(0).Id(), 2);
  EXPECT_EQ(book.OlapConnections().GetItem(0).Provider, u"mock");
  ASSERT_EQ(book.StyleSheet().Count(), 2);
  EXPECT_EQ(book.StyleSheet().GetCellXf(0), TCellFormat());
  EXPECT_EQ(book.StyleSheet().GetCellXf(1).Fill.ForegroundColor.ARGB, kOpaqueBlack);
}

TEST(NativeReader, Cells) {
  const auto value = [](const std::string& AMembers) { return "{\"value\":{" + AMembers + "}}"; };
  const struct {
    std::string Cells;
    const char* Shown;
  } cases[] = {
      {"\"B7\":" + value("\"kind\":2,\"number\":1.5"), "B7=1.5"},
      {"\"$b$7\":" + value("\"kind\":1,\"text\":\"x\\u0041\""), "B7='xA"},
      {"\"A1\":" + value("\"kind\":1.0,\"number\":5"), "A1='"},
      {"\"A1\":" + value("\"kind\":77,\"number\":5"), ""},
      {"\"A1\":" + value("\"kind\":-1"), ""},
      {"\"A1\":" + value("\"kind\":3,\"bool\":true"), "A1=TRUE"},
      {"\"A1\":" + value("\"kind\":4,\"error\":2"), "A1=#N/A"},
      {"\"A1\":" + value("\"kind\":2,\"number\":null"), "A1=0"},
      {"\"A1\":{\"styleIndex\":3}", "A1=_~3"},
      {"\"A1\":{\"styleIndex\":-3,\"value\":[]}", "A1=_~-3"},
      {"\"A1\":{\"cached\":{},\"value\":{\"kind\":5,\"formula\":\"=B1\"}}", "A1==B1{_}"},
      {"\"A1\":{\"cached\":null,\"value\":{\"kind\":5,\"formula\":\"= b1 \"}}", "A1== b1 "},
      {"\"A1\":{\"cached\":{\"kind\":5,\"formula\":\"=C1\"},\"value\":{\"kind\":5,\"formula\":\"=B1\"}}",
       "A1==B1{'=C1}"},
      {"\"A1\":" + value("\"kind\":2,\"number\":1") + ",\"a1\":" + value("\"kind\":2,\"number\":2"), "A1=2"},
      {"\"A1\":" + value("\"kind\":2,\"number\":1") + ",\"A1\":{}", ""},
      {"\"A1\":" + value("\"kind\":2,\"number\":1,\"number\":2"), "A1=1"},
      {"\"A1\":" + value("\"kind\":2,\"number\":1e400"), "A1=1.79769313486232E+308"},
      {"\"A0\":" + value("\"kind\":2") + ",\"ZZZ1\":" + value("\"kind\":2") + ",\"\":7,\"A2\":7", ""},
  };
  for (const auto& row : cases) EXPECT_EQ(LoadedCells(row.Cells), row.Shown) << row.Cells;

  TWorkbook book;
  LoadNative(book, OneSheet(R"("cells":{"C3":{"format":{"bold":true,"fillColor":{"argb":"4278190335"},"hAlign":9,
      "vAlign":0,"hidden":true},"richText":[{"text":"a"},5,{"font":{"bold":true}}]},"D9":{}})"));
  const TCell cell = book.GetSheet(0)->GetCellAt(3, 3);
  EXPECT_TRUE(cell.HasFormatOverride && cell.FormatOverride.Font.Bold);
  EXPECT_EQ(cell.FormatOverride.Fill.ForegroundColor.ARGB, 4278190335u);
  EXPECT_EQ(cell.FormatOverride.Alignment.Horizontal, haGeneral);
  EXPECT_EQ(cell.FormatOverride.Alignment.Vertical, vaTop);
  EXPECT_FALSE(cell.FormatOverride.Hidden);  // no field of the flat form
  ASSERT_EQ(cell.RichText.size(), 2u);
  EXPECT_TRUE(cell.RichText[1].Font.Bold);
  EXPECT_EQ(book.GetSheet(0)->UsedMaxRow(), 9);
}

TEST(NativeReader, WrongTypesAreTold) {
  const struct {
    const char* Members;
    const char* Message;
  } cases[] = {
      {"\"zoom\":\"100\"", "format: sheets[0].zoom (line 1, column 20): expected a number, found a text"},
      {"\"zoom\":100.5", "expected a whole number from -2147483648 to 2147483647, found 100.5"},
      {"\"zoom\":3e9", "found 3e9"},
      {"\"zoom\":[]", "expected a number, found an array"},
      {"\"r1c1\":0", "expected true or false, found a number"},
      {"\"name\":true", "expected a text, found a truth value"},
      {"\"cells\":{\"A1\":{\"value\":{\"kind\":2,\"text\":5}}}", "sheets[0].cells.A1.value.text"},
      {"\"merges\":[{\"sc\":1,\"sr\":1,\"ec\":2}]",
       "sheets[0].merges[0] (line 1, column 23): a merged area needs \"er\""},
      {"\"merges\":[{\"sc\":null,\"sr\":1,\"ec\":2,\"er\":2}]", "needs \"sc\""},
      {"\"hyperlinks\":{\"A1\":5}", "expected a text"},
      {"\"drawings\":[{\"chartPalette\":[-1]}]", "from 0 to 4294967295, found -1"},
      {"\"pageSetup\":{\"rowBreaks\":[2,\"3\"]}", "sheets[0].pageSetup.rowBreaks[1]"},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    const std::string message = Thrown([&] { LoadNative(book, OneSheet(row.Members)); });
    EXPECT_TRUE(message.starts_with("format: ") && message.find(row.Message) != message.npos) << message;
  }
  TWorkbook book;  // 100.0 is as good as 100, a wrong object or array as good as none
  LoadNative(book, OneSheet("\"zoom\":80.0,\"sizing\":3,\"view\":[],\"cells\":[],\"merges\":{},\"comments\":1,"
                            "\"autoFilter\":\"\",\"tables\":{},\"pageSetup\":true,\"drawingBag\":0"));
  EXPECT_EQ(book.GetSheet(0)->View().Zoom, 80);
}

TEST(NativeReader, AFailureKeepsWhatStandsBeforeIt) {
  TWorkbook book;
  EXPECT_NE(Thrown([&] {
              LoadNative(book, R"({"sheets":[{"cells":{"A1":{"styleIndex":1}}},
                  {"pageSetup":7,"cells":{"A1":{"styleIndex":1}},"zoom":"x","rightToLeft":true,"showZeros":false,"name":"N"}],
                  "theme":{"majorFont":"Major"},"namedFormulas":{"a":"1","b":5,"a":"2"}})");
            }),
            "nothing");
  ASSERT_EQ(book.SheetCount(), 2);
  EXPECT_EQ(test::DumpCells(*book.GetSheet(0)), "A1=_~1");
  EXPECT_EQ(book.GetSheet(1)->Name(), u"N");
  EXPECT_FALSE(book.GetSheet(1)->View().ShowZeros);
  EXPECT_FALSE(book.GetSheet(1)->View().RightToLeft);
  EXPECT_EQ(test::DumpCells(*book.GetSheet(1)), "");
  EXPECT_EQ(book.Theme().MajorFont(), u"Major");
  EXPECT_EQ(*book.FindNamedFormula("A"), u"=2");
  EXPECT_FALSE(book.FindNamedFormula("B"));
  EXPECT_TRUE(book.IsModified());

  EXPECT_NE(Thrown([&] {
              LoadNative(book,
                         OneSheet(R"("sizing":{"outlineSummaryBelow":1,"defaultColWidth":9,"defaultRowHeight":33})"));
            }),
            "nothing");
  EXPECT_EQ(book.GetSheet(0)->Sizing().DefaultColWidth(), 9);
  EXPECT_EQ(book.GetSheet(0)->Sizing().DefaultRowHeight(), 33);

  EXPECT_NE(Thrown([&] { LoadNative(book, R"({"sheets":[{}],"theme":{"minorFont":1}})"); }), "nothing");
  EXPECT_EQ(book.SheetCount(), 0);
  EXPECT_FALSE(book.IsModified());
  EXPECT_NE(SavedNative(book).find("\"sheets\":[]"), std::string::npos);
}

TEST(NativeReader, ListsTakeWhatTheyCanRead) {
  TWorkbook book;
  TFileReport report;
  LoadNative(book, OneSheet(R"("visibility":"VERYhidden","sizing":{"colWidths":{"2":"9.5","x":7,"3":"wide","2":4},
      "hiddenRows":{"4":true,"5":false,"6":"True"},"rowOutlineLevels":{"7":9,"8":"2","9":"no"}},
      "view":{"activeRow":4,"selection":["B2:A1","A0","C3",null]},
      "merges":[4,{"sc":3,"sr":3,"ec":1,"er":1}],
      "hyperlinks":{"A1":"one","A1":"two","1A":"bad","B2:C3":"few","A5:XFD6":"many"},
      "comments":{"C3":{"text":"note"},"??":{"text":"x"},"D4":5},
      "drawings":[{"anchor":{"kind":7,"posXEmu":1e30,"posYEmu":-1.9e0},"imageBase64":"AA\n EC","imageOpacity":300},
                  {"imageBase64":"!","contentType":"image/gif"}],
      "drawingBag":{"drawingPartPath":"p","drawingXmlBase64":"","parts":{"a":"QQ==","b":5}},
      "conditionalFormats":[{"ranges":[null,{}],"operator":3.0}],
      "pageSetup":{"rowBreaks":[9,1,3,9],"hasTitleRows":true,"titleRows":{"sr":4,"er":2},"printArea":{"sc":2}})"),
             {.Limits = {}, .Control = {}, .Report = &report});
  TWorksheet& sheet = *book.GetSheet(0);
  EXPECT_EQ(sheet.Visibility(), svVeryHidden);
  EXPECT_EQ(sheet.Sizing().GetColWidthChars(2), 9.5);
  EXPECT_EQ(sheet.Sizing().GetColWidthChars(0), 7);
  EXPECT_EQ(sheet.Sizing().GetColWidthChars(3), sheet.Sizing().DefaultColWidth());
  EXPECT_EQ(sheet.Sizing().MarkedRows(), (std::vector<int32_t>{4, 6, 7, 8}));
  EXPECT_EQ(sheet.SavedView().SelectionRanges, (std::vector<TCellRange>{{1, 1, 2, 2}, {3, 3, 3, 3}}));
  EXPECT_EQ(sheet.Merges().GetItem(0), TMergedRange::Create(1, 1, 3, 3));
  EXPECT_EQ(sheet.FindHyperlink(1, 1), TText(u"one"));
  EXPECT_FALSE(sheet.FindHyperlink(2, 2));
  EXPECT_EQ(sheet.FindHyperlink(700, 6), TText(u"many"));
  EXPECT_EQ(sheet.Comments().Count(), 1u);
  EXPECT_EQ(report.CountOf(ffDropped), 3u);
  const TSheetDrawing& picture = *sheet.Drawings().GetItem(0);
  EXPECT_EQ(picture.Anchor.Kind, dakTwoCell);
  EXPECT_EQ(picture.Anchor.PosXEmu, std::numeric_limits<int64_t>::max());
  EXPECT_EQ(picture.Anchor.PosYEmu, -1);
  EXPECT_EQ(picture.ImageBytes.size(), 3u);
  EXPECT_EQ(picture.ContentType, u"image/png");
  EXPECT_EQ(picture.ImageOpacity, 255);
  EXPECT_TRUE(sheet.Drawings().GetItem(1)->ContentType.IsEmpty());
  EXPECT_TRUE(sheet.Drawings().Bag().DrawingPartPath().IsEmpty());
  EXPECT_EQ(sheet.Drawings().Bag().Parts().size(), 1u);
  EXPECT_EQ(sheet.ConditionalFormats().GetRule(0).Ranges, (std::vector<TCellRange>{{1, 1, 1, 1}}));
  EXPECT_EQ(sheet.PageSetup().RowBreaks(), (std::vector<int32_t>{3, 9}));
  EXPECT_FALSE(sheet.PageSetup().HasTitleRows());
  EXPECT_FALSE(sheet.PageSetup().HasPrintArea());
}

TEST(NativeReader, LimitsAndStops) {
  TWorkbook book;
  EXPECT_EQ(Thrown([&] {
              LoadNative(book, "{\"sheets\":[{},{},{}]}",
                         {.Limits = {.MaxEntries = 2}, .Control = {}, .Report = nullptr});
            }),
            "limit: sheets[2] (line 1, column 18): more sheets than the limit of 2");
  EXPECT_EQ(Thrown([&] {
              LoadNative(book, "{       }", {.Limits = {.MaxTotalBytes = 5}, .Control = {}, .Report = nullptr});
            }).substr(0, 6),
            "limit:");
  std::string many = "{\"sheets\":[{\"drawings\":[{}";
  for (int i = 0; i < 60'000; ++i) many += ",{}";
  EXPECT_EQ(Thrown([&] { LoadNative(book, many + "]}]}"); }).substr(0, 23), "limit: sheets[0].drawin");
  std::stop_source stop;
  TTsrReadOptions stopping;
  stopping.Control.Stop = stop.get_token();
  stopping.Control.Progress = [&](const TTessarineProgressEvent& AEvent) {
    if (AEvent.Fraction > 0) stop.request_stop();
  };
  std::string cells = "{\"sheets\":[{\"cells\":{\"A1\":{}";
  for (int row = 2; row < 20'000; ++row) cells += ",\"A" + std::to_string(row) + "\":{\"styleIndex\":1}";
  EXPECT_THROW(LoadNative(book, cells + "}}]}", stopping), ECancelled);
  EXPECT_EQ(book.SheetCount(), 1);
  EXPECT_TRUE(book.IsModified());
}

TEST(NativeFiles, SavingAndLoading) {
  const test::TTemporaryFolder folder;
  const std::string name = folder.Path("a.tsr");
  TWorkbook book;
  book.GetSheet(0)->SetValue({1, 1}, TCellValue::FromNumber(std::numeric_limits<double>::quiet_NaN()));
  book.GetSheet(0)->SetValue({2, 1}, TCellValue::FromText(u"a\xD800z"));
  int told = 0;
  book.SetOnModified([&](TWorkbook&) { ++told; });
  const std::string text = SavedNative(book);
  EXPECT_TRUE(book.IsModified());
  TTsrIO::SaveToFile(book, name);
  EXPECT_FALSE(book.IsModified());
  EXPECT_EQ(test::ContentOf(name), text);
  EXPECT_TRUE(text.starts_with("{\"version\":\"1.4\",\"theme\":{"));
  TTsrIO::LoadFromFile(book, name);
  EXPECT_EQ(told, 1);
  EXPECT_FALSE(book.IsModified());
  EXPECT_EQ(test::DumpCells(*book.GetSheet(0)), "A1=#NUM! B1='a\xEF\xBF\xBDz");
  EXPECT_EQ(Thrown([&] { TTsrIO::LoadFromFile(book, folder.Path("none")); }),
            "other: File not found: " + folder.Path("none"));

  std::stop_source stop;
  stop.request_stop();
  TTsrWriteOptions stopped;
  stopped.Control.Stop = stop.get_token();
  book.MarkModified();
  EXPECT_THROW(TTsrIO::SaveToFile(book, name, stopped), ECancelled);
  EXPECT_TRUE(book.IsModified());
  EXPECT_EQ(test::ContentOf(name), text);

  TFileReport report;
  TCell cell;
  cell.Value = TCellValue::FromNumber(1);
  cell.Sparkline.Kind = spkLine;
  book.GetSheet(0)->SetCell({1, 1}, cell);
  book.GetSheet(0)->Pivots().Add(u"P", 1, {1, 1}).CalcFields.resize(2);
  static_cast<void>(SavedNative(book, {.Control = {}, .Report = &report}));
  EXPECT_EQ(report.CountOf(ffDropped), 3u);
}

}  // namespace
}  // namespace tessarine

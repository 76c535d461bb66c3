#include <optional>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include <tessarine/io/ods/detail/OdsAddress.h>
#include <tessarine/io/ods/detail/OdsFormula.h>
#include <tessarine/io/ods/detail/OdsUnits.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {
namespace {

std::string ToExcel(const std::string& AFormula) { return Utf16ToUtf8(OdsFormulaToExcel(Utf8ToUtf16(AFormula))); }
std::string FromExcel(const std::string& AFormula) { return Utf16ToUtf8(OdsFormulaFromExcel(Utf8ToUtf16(AFormula))); }

TEST(OdsFormula, ReadsReferencesOfFiles) {
  const struct {
    const char* File;
    const char* Here;
  } cases[] = {
      {" of:=[.A1:.B2] ", "A1:B2"},
      {"of:[.A1]", "A1"},
      {"oooc:=SUM([.$A$1:.B$2];1)", "SUM($A$1:B$2,1)"},
      {"=[.A1]+1", "=A1+1"},
      {"of:=[Sheet2.A1:Sheet2.B2]+[$Sheet2.A1:.B2]+[Sheet2.A1:B2]+[$Sheet2.$A1]",
       "Sheet2!A1:B2+Sheet2!A1:B2+Sheet2!A1:B2+Sheet2!$A1"},
      {"of:=[$'It''s a [b]'.A1:.B2]*['2024'.C3]", "'It''s a [b]'!A1:B2*'2024'!C3"},
      {"of:=['A.B'.A1]+[a.b.C1]", "'A.B'!A1+'a.b'!C1"},
      {"of:=Sheet1.A1:B2+$Sheet1.$C$3+'x y'.D4:.E5", "Sheet1!A1:B2+Sheet1!$C$3+'x y'!D4:E5"},
      {"of:=SUM([.A:.C];[.$1:.$3];[T.B:.B])", "SUM(A:C,$1:$3,T!B:B)"},
      {"of:=SUM([First.A1:Last.B2];['a b'.A1:Last.B2])", "SUM(First:Last!A1:B2,'a b:Last'!A1:B2)"},
      {"of:=[.#REF!]+[#REF!.A1]+[.A1:.#REF!]", "#REF!+#REF!+#REF!"},
      {"of:=IF([.A1];\"[.B1];a\"\"Sheet1.A1\";{1;2})", "IF(A1,\"[.B1];a\"\"Sheet1.A1\",{1;2})"},
      {"of:=ORG.EXAMPLE.EASTER([.A1])+CHISQ.DIST(1;2)+LOG10(2)+T.LOG10(3)",
       "EASTER(A1)+CHISQ.DIST(1,2)+LOG10(2)+T.LOG10(3)"},
      {"of:=AREAS(([.A1]~[.B2]))+LEGACY.CHIDIST(1;2)+SUM({1;\"|;\"|3;4};{\"a",
       "AREAS((A1,B2))+CHIDIST(1,2)+SUM({1,\"|;\";3,4},{\"a"},
      {"of:=$$rate*'DURATION'(1)", "rate*DURATION(1)"},
      {"of:=['file:///c:/x.ods'#$Sheet1.A1]", "['file:///c:/x.ods'#$Sheet1.A1]"},
      {"of:=1.5E3+2.E10+Table[[#This Row];[A.B1]]", "1.5E3+2.E10+Table[[#This Row],[A.B1]]"},
      {"of:=[[[.A1]+[.B1", "[[[.A1]+[.B1"},
      {"of:=__xludf.DUMMYFUNCTION(\"QUERY(A1:B2,\"\"select A\"\")\")", "=QUERY(A1:B2,\"select A\")"},
      {"", ""},
  };
  for (const auto& row : cases) EXPECT_EQ(ToExcel(row.File), row.Here) << row.File;
}

TEST(OdsFormula, WritesReferencesForFiles) {
  const struct {
    const char* Here;
    const char* File;
  } cases[] = {
      {"=A1:B2", "of:=[.A1:.B2]"},
      {"=SUM($A$1,Sheet2!B2:C3,'It''s'!A1)", "of:=SUM([.$A$1];[$Sheet2.B2:.C3];[$'It''s'.A1])"},
      {"=A:C+1:3+B+7", "of:=[.A:.C]+[.1:.3]+B+7"},
      {"=IF(A1=\"B2,\"\"C3\",{1,2;3,4},LOG10(5))", "of:=IF([.A1]=\"B2,\"\"C3\";{1;2|3;4};LOG10(5))"},
      {"=Sales[A1]+Table[[#This Row],[B2]]", "of:=Sales[A1]+Table[[#This Row],[B2]]"},
      {"=#REF!+Sheet1!#REF!+1E5+A1B2+XFE1+A1048577", "of:=#REF!+Sheet1!#REF!+1E5+A1B2+XFE1+A1048577"},
      {"=A1:INDEX(B:B,2)", "of:=[.A1]:INDEX([.B:.B];2)"},
      {"=\xC3\x84rger!A1", "of:=[$'\xC3\x84rger'.A1]"},
      {"=_xlfn._xlws.SORT(A1)&\"_xlfn.\"&a_xlfn.b", "of:=SORT([.A1])&\"_xlfn.\"&a_xlfn.b"},
      {"={1,2}&{\"a,b\";3}", "of:={1;2}&{\"a,b\"|3}"},
      {"", "of:="},
  };
  for (const auto& row : cases) EXPECT_EQ(FromExcel(row.Here), row.File) << row.Here;
}

/// What is written is read back, whatever it is made of.
TEST(OdsFormula, ReadsBackWhatItWrites) {
  static const char* const kPieces[] = {"A1",     "$B$2",  "C3:D4",      "Sheet2!E5",    "'a b'!$F6:G7", "SUM(",
                                        ")",      ",",     "+",          "\"x,[y];'z\"", "{1,2;3}",      "1.5",
                                        "name_1", "#REF!", "'it''s'!H8", "A:B"};
  std::mt19937 random(7);
  for (int round = 0; round < 500; ++round) {
    std::string formula;
    for (size_t count = random() % 8; count > 0; --count) (formula += kPieces[random() % std::size(kPieces)]) += '*';
    EXPECT_EQ(Utf16ToUtf8(OdsFormulaToExcel(Utf8ToUtf16(FromExcel("=" + formula)), true)), formula);
    const std::u16string literal = OdsFormulaFromExcel(Utf8ToUtf16("=" + formula), true);
    EXPECT_EQ(Utf16ToUtf8(OdsFormulaToExcel(literal)), formula);
  }
}

TEST(OdsFormula, ReadsAddressesOfAttributes) {
  const struct {
    const char* Text;
    const char* Parsed;
    const char* Excel;
  } cases[] = {
      {"Sheet1.A1:Sheet1.C5", "Sheet1|A1:C5", "Sheet1!A1:C5"},
      {"$'My ''S'.$C$5:.$A$1", "My 'S|A1:C5", "'My ''S'!$C$5:$A$1"},
      {".B2", "|B2", "B2"},
      {"A1:B2", "|A1:B2", "A1:B2"},
      {"T.B:.C", "T|B1:C1048576", "T!B:C"},
      {"T.3:.4", "T|A3:XFD4", "T!3:4"},
      {"a.A1:b.B2", "-", "a:b!A1:B2"},
      {"T.XFE1", "-", "T!XFE1"},
      {"T.A0", "-", "T!A0"},
      {"'file:///x'#T.A1", "-", "-"},
      {"T.A1:T.A2 T.B1", "-", "-"},
      {"", "-", "-"},
  };
  for (const auto& row : cases) {
    const auto range = OdsParseSheetRangeAddress(Utf8ToUtf16(row.Text));
    EXPECT_EQ(range ? Utf16ToUtf8(range->Sheet + u"|" + range->Range.ToA1()) : "-", row.Parsed) << row.Text;
    EXPECT_EQ(Utf16ToUtf8(OdsAddressToExcel(Utf8ToUtf16(row.Text)).value_or(u"-")), row.Excel) << row.Text;
  }
  EXPECT_EQ(OdsSheetRangeAddress(u"a b", {3, 5, 1, 1}), u"'a b'.A1:'a b'.C5");
  EXPECT_EQ(OdsSheetRangeAddress(u"T", {1, 1, 1, 1}), u"T.A1");
  EXPECT_EQ(OdsAddressFromExcel(u"='a b'!$A$1:$B$2").value_or(u"-"), u"$'a b'.$A$1:.$B$2");
  for (const char16_t* const formula : {u"=A1", u"=T!A1+1", u"=SUM(T!A1)", u"=T!A1:B", u""})
    EXPECT_EQ(OdsAddressFromExcel(formula), std::nullopt);
}

TEST(OdsUnits, ReadsLengthsAndColors) {
  const struct {
    const char* Text;
    double Cm;
  } lengths[] = {{"2.5cm", 2.5}, {" 25MM ", 2.5}, {"1in", 2.54},  {"10pt", 0.352778}, {"2,5", 2.5}, {"-1cm", -1},
                 {"x", 0},       {"", 0},         {"1e999cm", 0}, {"cm", 0},          {"1 cm", 1}};
  for (const auto& row : lengths) EXPECT_NEAR(OdsParseLengthCm(row.Text), row.Cm, 1e-12) << row.Text;
  const struct {
    const char* Text;
    std::optional<uint32_t> Argb;
  } colors[] = {
      {"#1f6B6b", 0xFF1F6B6B}, {"80112233", 0x80112233}, {"transparent", {}}, {"none", {}}, {"#12345", {}}, {"", {}},
      {"#gg0000", {}}};
  for (const auto& row : colors) EXPECT_EQ(OdsColorFromHex(row.Text), row.Argb) << row.Text;
  EXPECT_EQ(OdsCmToColChars(0), 8.43);
  EXPECT_EQ(OdsCmToColChars(0.01), 0.1);
  EXPECT_NEAR(OdsCmToColChars(2.54), 13, 1e-12);
  EXPECT_EQ(OdsColCharsToCm(13), "2.540cm");
  EXPECT_EQ(OdsLengthText(-0.0005), "-0.001cm");
  EXPECT_EQ(OdsLengthText(1e300), "1000000000.000cm");
}

TEST(OdsUnits, ReadsDatesTimesAndDurations) {
  const struct {
    const char* Text;
    double Serial;  // below -1e6: none
  } cases[] = {{"2024-02-29", 45351},
               {"2024-02-29T12:00:00", 45351.5},
               {"2024-02-29T06:00", 45351.25},
               {"1899-12-29", -1},
               {"2024-02-29T12:00:00.0000Z", 45351.5},
               {"12:00:00", 0.5},
               {"PT12H", 0.5},
               {"PT36H00M00S", 1.5},
               {"-P1DT12H", -1.5},
               {"PT0,5S", 0.5 / 86400},
               {"2023-02-29", -2e6},
               {"PT", -2e6},
               {"P1Y", -2e6},
               {"P0Y0M1D", 1},
               {"12:61", -2e6},
               {"2024-02-29T12:00:00x", -2e6},
               {"99999999999-01-01", -2e6},
               {"", -2e6},
               {"PT1e5S", -2e6},
               {"2024-02-29T12:00:00+02:00", 45351.5}};
  for (const auto& row : cases) EXPECT_NEAR(OdsParseDateValue(row.Text).value_or(-2e6), row.Serial, 1e-9) << row.Text;
}

TEST(OdsUnits, ChoosesFontsThatAreThere) {
  const auto has = [](std::u16string_view AName) { return AName == u"Arial" || AName == u"Georgia"; };
  const auto chosen = [&](const char16_t* AName, const char16_t* AFamily, const char* AGeneric) {
    return OdsResolveFontName(AName, AFamily, AGeneric, has).ToUtf8();
  };
  EXPECT_EQ(chosen(u" Arial ", u"x", "roman"), "Arial");
  EXPECT_EQ(chosen(u"Foo", u"Bar, 'Georgia' ,Arial", "swiss"), "Georgia");
  EXPECT_EQ(chosen(u"Foo", u"Bar", "roman"), "Georgia");
  EXPECT_EQ(chosen(u"Foo", u"", "modern"), "Foo");
  EXPECT_EQ(OdsResolveFontName(u" Foo", u"Arial", "swiss", {}), u"Foo");
}

}  // namespace
}  // namespace tessarine::detail

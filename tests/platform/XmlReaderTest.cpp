#include <gtest/gtest.h>

#include <string>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>

#include "../support/CaseTable.h"
#include "../support/Thrown.h"
#include "../support/XmlJudge.h"

namespace tessarine::test {
namespace {

/// The bytes of AText in UTF-16 with a mark.
std::string Utf16Bytes(std::u16string_view AText, bool AIsLittle) {
  std::string bytes = AIsLittle ? "\xff\xfe" : "\xfe\xff";
  for (const char16_t unit : AText) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit & 0xff);
    bytes += AIsLittle ? low : high;
    bytes += AIsLittle ? high : low;
  }
  return bytes;
}

std::string Nested(size_t ADepth) {
  std::string text;
  for (size_t i = 0; i < ADepth; ++i) text += "<a>";
  for (size_t i = 0; i < ADepth; ++i) text += "</a>";
  return text;
}

std::string WithAttributes(size_t ACount) {
  std::string text = "<a";
  for (size_t i = 0; i < ACount; ++i) text += " n" + std::to_string(i) + "=''";
  return text + "/>";
}

/// The dump of a well-formed document, on which the judge agrees.
std::string Content(const TCase& ACase) {
  const std::string& document = ACase[1];
  const TXmlVerdict ours = OurVerdict(document);
  EXPECT_EQ(ours, JudgeVerdict(document)) << ACase.Place() << ": " << ours.Error;
  if (ours.IsWellFormed) return ours.Dump;
  EXPECT_TRUE(ours.Error.starts_with("format: part.xml")) << ACase.Place() << ": " << ours.Error;
  // Whatever comes first, the same fault far behind the start is found as well.
  if (document.size() > 3 && document.starts_with("<a>")) {
    EXPECT_FALSE(OurVerdict("<r>" + std::string(200'000, ' ') + document + "</r>").IsWellFormed) << ACase.Place();
  }
  return "refused";
}

TEST(XmlReader, ExamplesHold) {
  const auto fault = [](const TCase& ACase) {
    return Thrown([&] {
      TXmlReader reader(ACase[1], "s.xml");
      while (reader.Next() != xeEnd) continue;
    });
  };
  const auto attribute = [](const TCase& ACase) {
    TXmlReader reader("<c R:ID='1' r:id='2' id2='3' x:T='&#52;' S='5' xmlns:r='6' A:b:c='7'/>", "p");
    reader.Next();
    EXPECT_EQ(reader.AttributeCount(), 7u);
    return std::string(reader.FindAttribute(ACase[1]).value_or("-"));
  };
  const auto localName = [](const TCase& ACase) {
    TXmlReader reader(ACase[1], "p");
    reader.Next();
    return reader.LocalNameIs(ACase[2]);
  };
  ExpectCases("platform/xml_documents.tsv",
              {{"document", Content}, {"fault", fault}, {"attribute", attribute}, {"local-name", localName}});
}

TEST(XmlReader, TakesNoDeclarationsOfADocumentType) {
  EXPECT_EQ(Thrown([] { TXmlReader("<!DOCTYPE a SYSTEM 'http://127.0.0.1/x'><a/>", "p").Next(); }), "nothing");
  EXPECT_EQ(
      Thrown([] { TXmlReader("\n<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>", "p").Next(); }),
      "format: p, line 2: a document type with declarations of its own is not accepted, for safety");
}

TEST(XmlReader, ChoosesTheEncodingByTheMark) {
  const std::u16string text = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><a b='\u20ac'>\U0001F600\r\n\u00e4</a>";
  const std::string dump = "<a b=\"\xe2\x82\xac\">\xf0\x9f\x98\x80\n\xc3\xa4</a>";
  for (const bool isLittle : {false, true}) {
    EXPECT_EQ(OurVerdict(Utf16Bytes(text, isLittle)).Dump, dump);
    EXPECT_EQ(JudgeVerdict(Utf16Bytes(text, isLittle)).Dump, dump);
    EXPECT_EQ(OurVerdict(Utf16Bytes(text, isLittle) + "\n").Error,
              "format: part.xml: UTF-16 text with an odd number of bytes");
    const char16_t lone[] = {u'<', u'a', u'>', 0xd83d, u'<', u'/', u'a', u'>', 0};
    EXPECT_EQ(OurVerdict(Utf16Bytes(lone, isLittle)).Dump, "<a>\xef\xbf\xbd</a>");
  }
  EXPECT_EQ(OurVerdict("\xef\xbb\xbf" + Utf16ToUtf8(text)).Dump, dump);
  EXPECT_EQ(OurVerdict(Utf16ToUtf8(text)).Dump, dump);
}

TEST(XmlReader, LongNamesAreCutInMessages) {
  const std::string longName(5000, 'n');
  const std::string document = "<a></" + longName + ">";
  EXPECT_LT(Thrown([&] {
              TXmlReader reader(document, longName);
              while (reader.Next() != xeEnd) continue;
            }).size(),
            400u);
}

TEST(XmlReader, KeepsItsLimits) {
  const TReadLimits limits{.MaxXmlDepth = 10, .MaxXmlAttributes = 100};
  EXPECT_TRUE(OurVerdict(Nested(10), limits).IsWellFormed);
  EXPECT_EQ(OurVerdict(Nested(11), limits).Error,
            "limit: part.xml, line 1: elements are nested deeper than the limit of 10");
  EXPECT_TRUE(OurVerdict(WithAttributes(100), limits).IsWellFormed);
  EXPECT_EQ(OurVerdict(WithAttributes(101), limits).Error,
            "limit: part.xml, line 1: an element has more attributes than the limit of 100");
  EXPECT_TRUE(OurVerdict(Nested(256)).IsWellFormed);
  EXPECT_TRUE(OurVerdict(Nested(200'000)).Error.starts_with("limit: "));
}

TEST(XmlReader, FindsDoubledAttributesAmongMany) {
  for (const size_t count : {2, 15, 16, 17, 18, 500}) {
    std::string text = WithAttributes(count);
    EXPECT_TRUE(OurVerdict(text).IsWellFormed) << count;
    text.insert(text.size() - 2, " n0='x'");
    EXPECT_FALSE(OurVerdict(text).IsWellFormed) << count;
  }
}

TEST(XmlReader, SkipsElementsAndCollectsTheirText) {
  TXmlReader reader("<a><b><b/>x<b>y</b></b><t>1<r>2<![CDATA[<3]]></r><!--n-->&#52;<r/>5</t><e/>end</a>", "p");
  reader.Next();
  reader.Next();
  EXPECT_EQ(reader.Depth(), 2u);
  reader.SkipElement();
  EXPECT_EQ(reader.Event(), xeEndElement);
  EXPECT_EQ(reader.Name(), "b");
  EXPECT_EQ(reader.Depth(), 2u);
  reader.Next();
  EXPECT_EQ(ReadElementText(reader), "12<345");
  EXPECT_EQ(reader.Name(), "t");
  reader.Next();
  reader.SkipElement();
  EXPECT_EQ(reader.Name(), "e");
  EXPECT_EQ(reader.Next(), xeText);
  EXPECT_EQ(reader.Text(), "end");
  EXPECT_EQ(reader.Next(), xeEndElement);
  EXPECT_EQ(reader.Next(), xeEnd);
  EXPECT_EQ(reader.Next(), xeEnd);
  EXPECT_EQ(reader.BytesRead(), reader.BytesTotal());
}

}  // namespace
}  // namespace tessarine::test

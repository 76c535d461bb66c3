#include <gtest/gtest.h>

#include <string>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>
#include <tessarine/platform/XmlText.h>
#include <tessarine/platform/XmlTree.h>

#include "../support/CaseTable.h"
#include "../support/Thrown.h"

namespace tessarine::test {
namespace {

TEST(XmlTree, FindsChildrenDescendantsAndText) {
  TXmlTree built("<x:a> <b><t>1</t></b><!-- --><B n='2'><T>3<r>4</r></T><t/>5</B><c><t>_x0036_</t></c></x:a>", "p");
  const TXmlTree tree = std::move(built);
  const TXmlNode* root = tree.Root();
  EXPECT_EQ(XmlLocalName(root), "a");
  EXPECT_EQ(XmlLocalName(static_cast<const TXmlNode*>(nullptr)), "");
  std::string names;
  for (const TXmlNode* child : TXmlElements(root)) names += child->Name;
  EXPECT_EQ(names, "bBc");

  const TXmlNode* b = XmlFindChild(root, "b");
  EXPECT_EQ(XmlAttr(b, "n", "none"), "none");
  EXPECT_EQ(XmlFindChild(b, "c"), nullptr);
  EXPECT_EQ(XmlFindChild(root, "t"), nullptr);
  EXPECT_EQ(XmlFindChild(nullptr, "t"), nullptr);
  EXPECT_EQ(XmlFindDescendant(b, "b"), nullptr);
  EXPECT_EQ(XmlNodeText(XmlFindDescendant(root, "T")), "1");
  EXPECT_EQ(XmlNodeText(XmlFindDescendant(XmlFindChild(root, "c"), "t")), "6");
  EXPECT_EQ(XmlFindDescendant(b, "c"), nullptr);
  EXPECT_EQ(XmlFindDescendant(nullptr, "c"), nullptr);
  EXPECT_EQ(XmlNodeText(root), " 13456");
  EXPECT_EQ(XmlNodeText(nullptr), "");
  EXPECT_EQ(XmlNodeText16(root->FirstChild), u" ");
  EXPECT_EQ(XmlCollectLocalText(root, "t"), "1346");
  EXPECT_EQ(XmlCollectLocalText(XmlFindDescendant(root, "t"), "t"), "");
}

TEST(XmlTree, ReadsAttributesAsTheirTypes) {
  const TXmlTree tree(
      "<a i='12' n='-7' j='12x' k='' big='3000000000' f='1.5' g='1,5' h='1e400' x:val='OFF'>"
      "<t val='True'/><u/><w val='0'/><y val='false'/><z val='no'/></a>",
      "p");
  const TXmlNode* a = tree.Root();
  const struct {
    const char* Name;
    int32_t Int;
    double Float;
  } cases[] = {{"i", 12, 12},  {"n", -7, -7}, {"j", 99, 99}, {"k", 99, 99}, {"big", 99, 3e9},
               {"f", 99, 1.5}, {"g", 99, 99}, {"h", 99, 99}, {"q", 99, 99}};
  for (const auto& row : cases) {
    EXPECT_EQ(XmlAttrInt(a, row.Name, 99), row.Int) << row.Name;
    EXPECT_EQ(XmlAttrFloat(a, row.Name, 99), row.Float) << row.Name;
  }
  EXPECT_FALSE(XmlBoolVal(a, true));
  EXPECT_FALSE(XmlBoolVal(nullptr, true));
  EXPECT_FALSE(XmlBoolVal(XmlFindChild(a, "u"), false));
  for (const auto& [name, value] :
       {std::pair{"t", true}, {"u", true}, {"w", false}, {"y", false}, {"z", true}, {"q", false}}) {
    EXPECT_EQ(XmlChildBool(a, name), value) << name;
  }
}

TEST(XmlTree, IsDeepAndWideWithinItsLimits) {
  std::string deep;
  for (int i = 0; i < 60'000; ++i) deep += "<a>";
  deep += "x";
  for (int i = 0; i < 60'000; ++i) deep += "</a>";
  const TXmlTree tree(deep, "p", {.MaxXmlDepth = 65'000});
  EXPECT_EQ(XmlNodeText(tree.Root()), "x");
  EXPECT_EQ(XmlFindDescendant(tree.Root(), "b"), nullptr);
  EXPECT_EQ(Thrown([] { TXmlTree("<a><b c=''/>x</a>", "p", {.MaxXmlTreeNodes = 4}); }), "nothing");
  EXPECT_EQ(Thrown([] { TXmlTree("<a><b c=''/>x</a>", "p", {.MaxXmlTreeNodes = 3}); }),
            "limit: p: the part has more elements, texts and attributes than the limit of 3");
}

TEST(XmlEscapes, ExamplesHold) {
  const auto appended = [](void (*AAppend)(std::u16string_view, std::string&)) {
    return [AAppend](const TCase& ACase) {
      std::string xml;
      AAppend(ACase.Text(1), xml);
      return xml;
    };
  };
  const auto unescaped = [](const TCase& ACase) {
    const std::u16string plain = UnescapeXlsxText(std::u16string_view(ACase.Text(1)));
    EXPECT_EQ(UnescapeXlsxText(ACase[1]), Utf16ToUtf8(plain)) << ACase.Place();
    return plain;
  };
  ExpectCases("platform/xml_escapes.tsv", {{"unescape", unescaped},
                                           {"element", appended(AppendXmlText)},
                                           {"attribute", appended(AppendXmlAttribute)},
                                           {"escape", appended(AppendXlsxText)}});
  const std::u16string half = {u'a', 0xD83D, 0xDE00, 0xD83D, u'z'};  // a pair, and half of one
  using TAppend = void (*)(std::u16string_view, std::string&);
  for (const TAppend append : std::initializer_list<TAppend>{AppendXmlText, AppendXmlAttribute, AppendXlsxText}) {
    std::string xml;
    append(half, xml);
    EXPECT_EQ(xml, "a\U0001F600\uFFFDz");
  }
  EXPECT_EQ(UnescapeXlsxText(std::u16string_view(u"_xD83D_")), std::u16string(1, char16_t{0xd83d}));
  EXPECT_EQ(UnescapeXlsxText(std::string_view("_xD83D_")), "\xef\xbf\xbd");
}

}  // namespace
}  // namespace tessarine::test

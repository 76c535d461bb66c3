#include <gtest/gtest.h>

#include <string>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>
#include <tessarine/platform/XmlTree.h>

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

TEST(XlsxEscapes, AreUndoneInOnePass) {
  const struct {
    const char16_t* Text;
    const char16_t* Plain;
  } cases[] = {
      {u"", u""},
      {u"_", u"_"},
      {u"plain_text_xyz", u"plain_text_xyz"},
      {u"_x0041_", u"A"},
      {u"_X00e4_", u"\u00e4"},
      {u"a_x000D_\n_x000d_b", u"a\r\n\rb"},
      {u"_x005F_x0041_", u"_x0041_"},
      {u"_x0041_x0042_", u"Ax0042_"},
      {u"__x0041__", u"_A_"},
      {u"_x041_", u"_x041_"},
      {u"_x00411_", u"_x00411_"},
      {u"_x004G_", u"_x004G_"},
      {u"_x0041", u"_x0041"},
      {u"_xD83D__xDE00_", u"\U0001F600"},
  };
  for (const auto& row : cases) {
    EXPECT_EQ(UnescapeXlsxText(std::u16string_view(row.Text)), row.Plain) << Utf16ToUtf8(row.Text);
    EXPECT_EQ(UnescapeXlsxText(Utf16ToUtf8(row.Text)), Utf16ToUtf8(row.Plain));
  }
  EXPECT_EQ(UnescapeXlsxText(std::u16string_view(u"_xD83D_")), std::u16string(1, char16_t{0xd83d}));
  EXPECT_EQ(UnescapeXlsxText(std::string_view("_xD83D_")), "\xef\xbf\xbd");
}

}  // namespace
}  // namespace tessarine::test

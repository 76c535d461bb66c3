#include <tessarine/formula/library/detail/WebBodies.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <span>
#include <string>
#include <utility>

#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

// Bytes of all texts that one call takes out of a feed; entries inside of entries could repeat their texts often.
constexpr size_t kMaxFeedTexts = size_t{32} << 20;

/// Reads texts of a feed as long as there is room for them.
class TFeedTexts {
 public:
  /// The text of and below a node, trimmed; empty for null.
  TText Of(const TXmlNode* ANode) {
    std::string text;
    for (const TXmlNode* node = ANode; node; node = Following(node, ANode)) Append(node->Text, text);
    return TText(TrimSpaces(Utf8ToUtf16(text)));
  }

  TText OfAttribute(std::string_view AValue) {
    std::string text;
    Append(AValue, text);
    return TText(TrimSpaces(Utf8ToUtf16(text)));
  }

  /// Whether a text had to be left out.
  bool IsExhausted() const { return FIsExhausted; }

  /// The node behind ANode in document order, below ATop; null behind the last.
  static const TXmlNode* Following(const TXmlNode* ANode, const TXmlNode* ATop) {
    if (ANode->FirstChild) return ANode->FirstChild;
    while (ANode != ATop && !ANode->NextSibling) ANode = ANode->Parent;
    return ANode == ATop ? nullptr : ANode->NextSibling;
  }

 private:
  void Append(std::string_view APiece, std::string& AText) {
    FIsExhausted = FIsExhausted || APiece.size() > FRoom;
    if (FIsExhausted) return;
    FRoom -= APiece.size();
    AText += APiece;
  }

  size_t FRoom = kMaxFeedTexts;
  bool FIsExhausted = false;
};

// The fields of an entry, and of the head of a feed.

const TXmlNode* FirstChildOf(const TXmlNode* ANode, std::initializer_list<std::string_view> ANames) {
  for (const std::string_view name : ANames) {
    if (const TXmlNode* child = XmlFindChild(ANode, name)) return child;
  }
  return nullptr;
}

TText TitleOf(const TXmlNode* ANode, TFeedTexts& ATexts) { return ATexts.Of(XmlFindChild(ANode, "title")); }

/// The text of a link, or else the address that the first one has as its attribute.
TText LinkOf(const TXmlNode* ANode, TFeedTexts& ATexts) {
  std::string_view address;
  for (const TXmlNode* child : TXmlElements(ANode)) {
    if (!XmlLocalNameIs(child, "link")) continue;
    TText text = ATexts.Of(child);
    if (!text.IsEmpty()) return text;
    if (address.empty()) address = XmlAttr(child, "href");
  }
  return ATexts.OfAttribute(address);
}

TText DateOf(const TXmlNode* ANode, TFeedTexts& ATexts) {
  return ATexts.Of(FirstChildOf(ANode, {"pubDate", "updated", "published"}));
}

TText SummaryOf(const TXmlNode* ANode, TFeedTexts& ATexts) {
  return ATexts.Of(FirstChildOf(ANode, {"description", "summary", "content"}));
}

TText HeadSummaryOf(const TXmlNode* ANode, TFeedTexts& ATexts) {
  return ATexts.Of(FirstChildOf(ANode, {"description", "subtitle"}));
}

TText AuthorOf(const TXmlNode* ANode, TFeedTexts& ATexts) {
  const TXmlNode* author = XmlFindChild(ANode, "author");
  const TXmlNode* name = XmlFindChild(author, "name");
  return ATexts.Of(name ? name : author);
}

struct TFeedField {
  std::u16string_view Name;
  std::u16string_view Header;
  TText (*Read)(const TXmlNode* ANode, TFeedTexts& ATexts);
};

constexpr TFeedField kHeadFields[] = {
    {u"title", u"Title", TitleOf},
    {u"url", u"URL", LinkOf},
    {u"description", u"Description", HeadSummaryOf},
};
constexpr TFeedField kItemFields[] = {
    {u"title", u"Title", TitleOf},
    {u"link", u"URL", LinkOf},
    {u"date", u"Date", DateOf},
    {u"content", u"Content", SummaryOf},
    {u"summary", u"Summary", SummaryOf},
    {u"author", u"Author", AuthorOf},
    {u"url", u"URL", LinkOf},
    {u"created", u"Date", DateOf},
};
constexpr size_t kItemColumns = 3;  // of "items" without more: title, link, date

/// What a query selects.
struct TFeedQuery {
  bool IsHead = false;
  std::span<const TFeedField> Fields;  // empty: there is no such query
};

/// One of the fields by its name.
std::span<const TFeedField> FieldOf(std::span<const TFeedField> AFields, std::u16string_view AName) {
  const auto found =
      std::find_if(AFields.begin(), AFields.end(), [&](const TFeedField& AField) { return AField.Name == AName; });
  return AFields.subspan(static_cast<size_t>(found - AFields.begin()), found == AFields.end() ? 0 : 1);
}

TFeedQuery ParseFeedQuery(std::u16string_view AQuery) {
  const std::u16string_view scope = AQuery.substr(0, AQuery.find(u' '));
  const std::u16string_view field = TrimSpaces(AQuery.substr(scope.size()));
  if (scope == u"feed") return {true, field.empty() ? std::span(kHeadFields) : FieldOf(kHeadFields, field)};
  if (scope != u"items") return {};
  return {false, field.empty() ? std::span(kItemFields).first(kItemColumns) : FieldOf(kItemFields, field)};
}

/// The element that holds a feed's title: the first channel or feed, else the root.
const TXmlNode* HeadOf(const TXmlNode* ARoot) {
  for (const TXmlNode* node = ARoot; node; node = TFeedTexts::Following(node, ARoot)) {
    if (node->IsElement() && (XmlLocalNameIs(node, "channel") || XmlLocalNameIs(node, "feed"))) return node;
  }
  return ARoot;
}

std::vector<const TXmlNode*> EntriesOf(const TXmlNode* ARoot, int64_t ALimit) {
  std::vector<const TXmlNode*> entries;
  for (const TXmlNode* node = ARoot; node; node = TFeedTexts::Following(node, ARoot)) {
    if (static_cast<int64_t>(entries.size()) >= ALimit) break;
    const std::string_view name = XmlLocalName(node);
    if (name == "item" || name == "entry") entries.push_back(node);
  }
  return entries;
}

std::vector<TCellValue> HeaderRow(std::span<const TFeedField> AFields) {
  std::vector<TCellValue> row;
  for (const TFeedField& field : AFields) row.push_back(TextOf(TText(field.Header)));
  return row;
}

TFormulaArg RunFeedQuery(const TXmlTree& AFeed, const TFeedQuery& AQuery, bool AHeaders, int64_t ALimit) {
  std::vector<const TXmlNode*> nodes{HeadOf(AFeed.Root())};
  if (!AQuery.IsHead) nodes = EntriesOf(AFeed.Root(), ALimit);
  if (nodes.empty()) return TFormulaArg::FromError(ceNA);
  TValueRows rows;
  if (AHeaders) rows.push_back(HeaderRow(AQuery.Fields));
  TFeedTexts texts;
  for (const TXmlNode* node : nodes) {
    auto& row = rows.emplace_back();
    for (const TFeedField& field : AQuery.Fields) row.push_back(TextOf(field.Read(node, texts)));
  }
  if (texts.IsExhausted()) return TFormulaArg::FromError(ceValue);
  return RectangleOf(std::move(rows));
}

}  // namespace

/// IMPORTFEED(url, [query], [headers], [num_items])
TFormulaArg CallImportFeed(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 1)) return *error;
  const std::u16string url = TrimmedArg(AArgs, 0);
  const std::u16string text = ToAsciiLower(TrimmedArg(AArgs, 1));
  const TFeedQuery query = ParseFeedQuery(text.empty() ? u"items" : std::u16string_view(text));
  const auto headers = IsGiven(AArgs, 2) ? TryArgAsBool(AArgs, 2) : false;
  const auto limit = WholeArgOr(AArgs, 3, std::numeric_limits<int64_t>::max());
  if (!IsWebUrl(url) || query.Fields.empty() || !headers || !limit || *limit < 1)
    return TFormulaArg::FromError(ceValue);
  const auto feed = FetchCached(AContext, url);
  if (!feed) return TFormulaArg::FromError(ceValue);
  try {
    return RunFeedQuery(TXmlTree(Utf16ToUtf8(TrimSpaces(*feed)), "feed"), query, *headers, *limit);
  } catch (const ETessarineError&) {
    return TFormulaArg::FromError(ceValue);
  }
}

}  // namespace tessarine::detail

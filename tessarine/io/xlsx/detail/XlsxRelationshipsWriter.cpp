#include <tessarine/io/xlsx/detail/XlsxRelationshipsWriter.h>

#include <algorithm>

#include <tessarine/io/xlsx/detail/XlsxLinksWriter.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kIdStem = "rId";

/// Whether a text can be an id in XML. Only ASCII ones are taken over.
bool IsId(std::u16string_view AText) {
  const auto isInner = [](char16_t AUnit) {
    return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'-' || AUnit == u'.';
  };
  return !AText.empty() && (IsAsciiLetter(AText.front()) || AText.front() == u'_') &&
         std::all_of(AText.begin(), AText.end(), isInner);
}

/// The number of an id of the usual form; 0 for others.
int32_t IdNumber(std::string_view AId) {
  int32_t number = 0;
  const bool isNumbered = AId.starts_with(kIdStem) && TryParseInt32(AId.substr(kIdStem.size()), number);
  return isNumbered && number > 0 ? number : 0;
}

/// A part of the package as a part under xl/worksheets refers to it.
std::u16string TargetFromSheet(std::string_view APart) {
  constexpr std::string_view kFolder = "xl/";
  std::string target;
  if (APart.size() > kFolder.size() && EqualAsciiNoCase(Utf8ToUtf16(APart.substr(0, kFolder.size())), u"xl/")) {
    (target = "../") += APart.substr(kFolder.size());
  } else {
    (target = "/") += APart;
  }
  return Utf8ToUtf16(target);
}

}  // namespace

TXlsxRelationshipPart::TXlsxRelationshipPart()
    : FXml(std::string(kXmlHead) +
           "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">") {}

void TXlsxRelationshipPart::Add(std::string_view AId, std::string_view AType, std::u16string_view ATarget,
                                bool AIsExternal) {
  FIsEmpty = false;
  FXml += "<Relationship";
  AppendXlsxWord("Id", AId, FXml);
  std::string type(AType);
  if (type.find(':') == type.npos) type = std::string(kXlsxDocumentRelationships) + '/' + type;
  AppendXlsxWord("Type", type, FXml);
  AppendXlsxAttr("Target", ATarget, FXml);
  if (AIsExternal) AppendXlsxWord("TargetMode", "External", FXml);
  FXml += "/>";
}

std::string TXlsxRelationshipPart::Part() const { return FXml + "</Relationships>"; }

TXlsxSheetRelationships::TXlsxSheetRelationships(std::u16string_view AKeptId, std::string_view ADrawingPart,
                                                 const std::vector<TXlsxLink>& ALinks,
                                                 const std::vector<int32_t>& ATableNumbers) {
  if (IsId(AKeptId)) {
    FReserved = Utf16ToUtf8(AKeptId);
    FNext = int64_t{IdNumber(FReserved)} + 1;
  }
  if (!ADrawingPart.empty()) {
    FDrawingId = FReserved.empty() ? NextId() : FReserved;
    FPart.Add(FDrawingId, "drawing", TargetFromSheet(ADrawingPart));
  }
  for (const TXlsxLink& link : ALinks) {
    if (!IsExternalXlsxTarget(link.Target)) continue;
    const auto [found, isNew] = FLinkIds.try_emplace(ToAsciiLower(link.Target));
    if (!isNew) continue;
    found->second = NextId();
    FPart.Add(found->second, "hyperlink", link.Target, true);
  }
  for (const int32_t number : ATableNumbers) {
    FTableIds.push_back(NextId());
    FPart.Add(FTableIds.back(), "table", Utf8ToUtf16("../tables/table" + std::to_string(number) + ".xml"));
  }
}

std::string TXlsxSheetRelationships::NextId() {
  std::string id;
  do {
    id = std::string(kIdStem) + std::to_string(FNext++);
  } while (id == FReserved);
  return id;
}

std::string_view TXlsxSheetRelationships::LinkId(std::u16string_view ATarget) const {
  const auto found = FLinkIds.find(ToAsciiLower(ATarget));
  return found == FLinkIds.end() ? std::string_view() : found->second;
}

}  // namespace tessarine::detail

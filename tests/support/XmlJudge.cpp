#include "XmlJudge.h"

#include <memory>
#include <ostream>

#include <expat.h>

#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlTree.h>

#include "Thrown.h"

namespace tessarine::test {
namespace {

void DumpAttribute(std::string_view AName, std::string_view AValue, std::string& AOut) {
  AOut += ' ';
  AOut += AName;
  AOut += "=\"";
  AOut += AValue;
  AOut += '"';
}

void DumpEnd(std::string_view AName, std::string& AOut) {
  AOut += "</";
  AOut += AName;
  AOut += '>';
}

void DumpStart(std::string_view AName, std::span<const TXmlAttribute> AAttributes, std::string& AOut) {
  AOut += '<';
  AOut += AName;
  for (const auto& attribute : AAttributes) DumpAttribute(attribute.Name, attribute.Value, AOut);
  AOut += '>';
}

std::string DumpReader(std::string_view ADocument, const TReadLimits& ALimits) {
  std::string dump;
  TXmlReader reader(ADocument, "part.xml", ALimits);
  for (;;) {
    switch (reader.Next()) {
      case xeStartElement: DumpStart(reader.Name(), reader.Attributes(), dump); break;
      case xeText: dump += reader.Text(); break;
      case xeEndElement: DumpEnd(reader.Name(), dump); break;
      case xeEnd: return dump;
    }
  }
}

std::string DumpTree(std::string_view ADocument, const TReadLimits& ALimits) {
  std::string dump;
  const TXmlTree tree(ADocument, "part.xml", ALimits);
  const TXmlNode* node = tree.Root();
  while (node != nullptr) {
    if (node->IsElement()) DumpStart(node->Name, node->Attributes, dump);
    dump += node->Text;
    if (node->FirstChild != nullptr) {
      node = node->FirstChild;
      continue;
    }
    if (node->IsElement()) DumpEnd(node->Name, dump);
    while (node->NextSibling == nullptr) {
      node = node->Parent;
      if (node == nullptr) return dump;
      DumpEnd(node->Name, dump);
    }
    node = node->NextSibling;
  }
  return dump;
}

std::string& DumpOf(void* AData) { return *static_cast<std::string*>(AData); }

}  // namespace

void PrintTo(const TXmlVerdict& AVerdict, std::ostream* AOut) {
  *AOut << (AVerdict.IsWellFormed ? "well-formed: " + AVerdict.Dump : "refused: " + AVerdict.Error);
}

TXmlVerdict OurVerdict(std::string_view ADocument, const TReadLimits& ALimits) {
  TXmlVerdict verdict;
  verdict.Error = Thrown([&] { verdict.Dump = DumpReader(ADocument, ALimits); });
  verdict.IsWellFormed = verdict.Error == "nothing";
  return verdict;
}

TXmlVerdict TreeVerdict(std::string_view ADocument, const TReadLimits& ALimits) {
  TXmlVerdict verdict;
  verdict.Error = Thrown([&] { verdict.Dump = DumpTree(ADocument, ALimits); });
  verdict.IsWellFormed = verdict.Error == "nothing";
  return verdict;
}

TXmlVerdict JudgeVerdict(std::string_view ADocument) {
  const bool isUtf16 = ADocument.starts_with("\xff\xfe") || ADocument.starts_with("\xfe\xff");
  const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(isUtf16 ? nullptr : "UTF-8"),
                                                                       XML_ParserFree);
  TXmlVerdict verdict;
  XML_SetUserData(parser.get(), &verdict.Dump);
  XML_SetElementHandler(
      parser.get(),
      [](void* AData, const XML_Char* AName, const XML_Char** AAttributes) {
        DumpOf(AData) += std::string("<") + AName;
        for (; *AAttributes != nullptr; AAttributes += 2) DumpAttribute(AAttributes[0], AAttributes[1], DumpOf(AData));
        DumpOf(AData) += '>';
      },
      [](void* AData, const XML_Char* AName) { DumpEnd(AName, DumpOf(AData)); });
  XML_SetCharacterDataHandler(parser.get(), [](void* AData, const XML_Char* AText, int ALength) {
    DumpOf(AData).append(AText, static_cast<size_t>(ALength));
  });
  verdict.IsWellFormed =
      XML_Parse(parser.get(), ADocument.data(), static_cast<int>(ADocument.size()), 1) == XML_STATUS_OK;
  if (!verdict.IsWellFormed) {
    verdict.Dump.clear();
    verdict.Error = XML_ErrorString(XML_GetErrorCode(parser.get()));
  }
  return verdict;
}

}  // namespace tessarine::test

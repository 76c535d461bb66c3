#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/XmlEscapes.h>
#include <tessarine/platform/XmlTree.h>

using namespace tessarine;

namespace {

constexpr TReadLimits kLimits{.MaxXmlDepth = 40, .MaxXmlAttributes = 40, .MaxXmlTreeNodes = 100'000};

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

/// All events of a document as one text; checks that they nest and are valid UTF-8.
void Dump(TXmlReader& AReader, std::string& AOut) {
  std::vector<std::string_view> open;
  for (;;) {
    const TXmlEvent event = AReader.Next();
    switch (event) {
      case xeStartElement:
        open.push_back(AReader.Name());
        Require(AReader.Depth() == open.size() && IsValidUtf8(AReader.Name()));
        (AOut += '<') += AReader.Name();
        for (const auto& attribute : AReader.Attributes()) {
          Require(IsValidUtf8(attribute.Value) && AReader.FindAttribute(attribute.Name) == attribute.Value);
          (((AOut += ' ') += attribute.Name) += '=') += attribute.Value;
        }
        break;
      case xeText:
        Require(!open.empty() && !AReader.Text().empty() && IsValidUtf8(AReader.Text()));
        AOut += AReader.Text();
        break;
      case xeEndElement:
        Require(!open.empty() && AReader.Name() == open.back() && AReader.Depth() == open.size());
        open.pop_back();
        AOut += '>';
        break;
      case xeEnd: Require(open.empty() && AReader.BytesRead() == AReader.BytesTotal()); return;
    }
  }
}

void DumpNodes(const TXmlNode* ARoot, std::string& AOut) {
  const TXmlNode* node = ARoot;
  while (node != nullptr) {
    if (node->IsElement()) (AOut += '<') += node->Name;
    for (const auto& attribute : node->Attributes) (((AOut += ' ') += attribute.Name) += '=') += attribute.Value;
    AOut += node->Text;
    if (node->FirstChild != nullptr) {
      node = node->FirstChild;
      continue;
    }
    if (node->IsElement()) AOut += '>';
    while (node != nullptr && node->NextSibling == nullptr) {
      node = node->Parent;
      if (node != nullptr) AOut += '>';
    }
    if (node != nullptr) node = node->NextSibling;
  }
}

/// A reader that has thrown must stay safe.
void ReadOn(TXmlReader& AReader) {
  for (int i = 0; i < 3; ++i) {
    try {
      static_cast<void>(AReader.Next());
      static_cast<void>(AReader.LocalNameIs("row"));
    } catch (const ETessarineError&) {
      continue;
    }
  }
}

bool ReadByEvents(std::string_view ADocument, std::string& AOut) {
  try {
    TXmlReader reader(ADocument, "part.xml", kLimits);
    try {
      Dump(reader, AOut);
      return true;
    } catch (const ETessarineError&) {
      ReadOn(reader);
    }
  } catch (const ETessarineError&) {
    return false;
  }
  return false;
}

bool ReadAsTree(std::string_view ADocument, std::string& AOut) {
  try {
    const TXmlTree tree(ADocument, "part.xml", kLimits);
    DumpNodes(tree.Root(), AOut);
    static_cast<void>(XmlNodeText(tree.Root()));
    static_cast<void>(XmlCollectLocalText16(tree.Root(), "t"));
    static_cast<void>(XmlFindDescendant(tree.Root(), "v"));
    return true;
  } catch (const EFileFormat&) {
    return false;
  } catch (const ELimit&) {
    return false;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::string_view document(reinterpret_cast<const char*>(AData), ASize);
  std::string events;
  std::string nodes;
  const bool isGood = ReadByEvents(document, events);
  Require(ReadAsTree(document, nodes) == isGood);
  if (isGood) Require(events == nodes && IsValidUtf8(UnescapeXlsxText(events)));
  return 0;
}

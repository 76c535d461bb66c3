#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/platform/ReadLimits.h>

namespace tessarine {

enum class TXmlEvent : uint8_t { xeStartElement, xeEndElement, xeText, xeEnd };
using enum TXmlEvent;

struct TXmlAttribute {
  std::string_view Name;   ///< full name, prefix included
  std::string_view Value;  ///< decoded and normalised, UTF-8

  friend bool operator==(const TXmlAttribute&, const TXmlAttribute&) = default;
};

/// Reads one XML document from memory, event by event, and proves on the way that it is well-formed (XML 1.0, fifth
/// edition, without regard to namespaces). Whoever has seen xeEnd knows that the whole document is.
///
/// The encoding comes from the byte-order mark: UTF-8, UTF-16 little or big endian; without a mark it is UTF-8,
/// whatever the declaration says. All texts are given in UTF-8. There is no DTD: a bare DOCTYPE is skipped, one with
/// declarations is refused, and only the predefined and numeric entities exist. Nothing is ever fetched.
///
/// What is not well-formed throws EFileFormat, what exceeds the limits ELimit, with part and line in the text. After
/// that the reader gives nothing sensible, but stays safe to call.
class TXmlReader {
 public:
  /// ABytes stays with the caller and must live as long as the reader. APartName is for messages.
  TXmlReader(std::string_view ABytes, std::string_view APartName, const TReadLimits& ALimits = {});
  TXmlReader(const TXmlReader&) = delete;
  TXmlReader& operator=(const TXmlReader&) = delete;

  /// Moves to the next event. Comments, processing instructions and blanks outside the root give none; an element
  /// without content gives start and end. Text between two tags may come as several events. xeEnd repeats.
  TXmlEvent Next();

  /// The event that Next() gave last.
  TXmlEvent Event() const { return FEvent; }

  /// Elements that are open; an element counts from its start event to its end event, both included. The root is 1.
  size_t Depth() const { return FDepth; }

  /// Name of the innermost open element (at its start and end event: of that element) with its prefix; empty outside
  /// the root. Names live as long as the reader and its bytes.
  std::string_view Name() const { return FDepth == 0 ? std::string_view() : FOpen[FDepth - 1]; }

  /// The part of Name() behind the last ":".
  std::string_view LocalName() const;

  /// Whether LocalName() is ALocalName, which holds no ":", but for ASCII case.
  bool LocalNameIs(std::string_view ALocalName) const;

  /// Attributes of the element that has just started, in file order; valid until the next Next().
  size_t AttributeCount() const { return FAttributes.size(); }
  const TXmlAttribute& Attribute(size_t AIndex) const { return FAttributes[AIndex]; }
  const std::vector<TXmlAttribute>& Attributes() const { return FAttributes; }

  /// The value of the attribute with exactly this name; else of the first one whose full name is, but for ASCII case,
  /// AName or ends in ":" and AName.
  std::optional<std::string_view> FindAttribute(std::string_view AName) const;

  /// The text of a text event, entities decoded and line ends turned into LF; valid until the next Next().
  std::string_view Text() const { return FText; }

  /// Called at a start event: goes on to the end event of that element.
  void SkipElement();

  // ---- steps for what machines write. Each of them says false, and has done nothing but to forget the attributes,
  // when something else comes next or when it is written in another manner. The way by Next() reads the same and is
  // their definition.

  /// When <AName a="1" b="2"> or <AName a="1"/> comes next, with names of one letter, one blank before each and plain
  /// values in double quotes: goes on to the start event of that element.
  bool TryReadStartTag(std::string_view AName);

  /// When nothing but <AName>text</AName> comes next, with plain text (no reference, carriage return or "]"; it may be
  /// empty): goes on to the end event of that element. The text in AText lies in the document and lives as long.
  bool TryReadLeaf(std::string_view AName, std::string_view& AText);

  /// When the end tag of the innermost open element comes next, without blanks: goes on to its end event.
  bool TryReadEndTag();

  /// Throws EFileFormat with AFinding behind part and line of the place that was read last.
  [[noreturn]] void Fail(std::string_view AFinding) const { FailAt(FPos, AFinding); }

  const std::string& PartName() const { return FPartName; }

  /// How far reading has come, for progress: bytes of BytesTotal(), in UTF-8.
  size_t BytesRead() const { return static_cast<size_t>(FPos - FBegin); }
  size_t BytesTotal() const { return static_cast<size_t>(FEnd - FBegin); }

 private:
  void Decode(std::string_view ABytes);
  TXmlEvent ReadEvent();
  TXmlEvent ReadEndOfDocument();
  void CheckCharsTo(const char* APos);

  void ReadStartTag();
  void ReadAttribute();
  void RefuseDoubledAttribute() const;
  void DecodeAttributes(const char* ATagStart);
  void ReadEndTag();

  bool ReadText();
  void DecodeText(const char* AFrom);
  bool ReadMarkupDeclaration();
  void SkipComment();
  bool ReadCData();
  void SkipDocType();
  std::string_view ReadIdentifier();
  void SkipInstruction();
  void ReadDeclaration();

  bool StartsWith(std::string_view AText) const;
  const char* FindOrFail(std::string_view AText, std::string_view AWhat) const;
  bool SkipBlanks();
  std::string_view ReadName(std::string_view AWhat);
  std::string_view ReadQuoted(std::string_view AWhat);
  const char* AppendReference(const char* AFrom, const char* AEnd, std::string& AOut) const;
  const char* AppendCharReference(const char* AFrom, const char* AEnd, std::string& AOut) const;
  [[noreturn]] void FailAt(const char* APos, std::string_view AFinding) const;
  std::string PlaceOf(const char* APos) const;

  // 1. FBegin <= FPos <= FEnd, and nothing is read outside of [FBegin, FEnd).
  // 2. Characters before FChecked are valid; after Next() FPos is not beyond FChecked.
  // 3. FOpen[0 .. FDepth) are the open elements; entries behind are left over.
  const char* FBegin = nullptr;
  const char* FPos = nullptr;
  const char* FEnd = nullptr;
  const char* FChecked = nullptr;
  std::vector<std::string_view> FOpen;
  size_t FDepth = 0;
  TXmlEvent FEvent = xeText;
  bool FIsSelfClosing = false;  // the end event of the element that has just started is due
  bool FHasRoot = false;
  bool FHasDocType = false;
  std::string_view FText;
  std::vector<TXmlAttribute> FAttributes;
  std::vector<uint32_t> FUndecoded;  // indexes of attributes whose raw value differs from the decoded one
  std::string FDecodedText;
  std::string FDecodedValues;  // never grows beyond what was reserved for the tag, so views into it stay good
  std::string FTranscoded;     // the document when it came in UTF-16
  const std::string FPartName;
  const TReadLimits FLimits;
};

/// Called at a start event: appends all text below the element, nested elements included, in document order to AOut
/// and goes on to its end event.
void AppendElementText(TXmlReader& AReader, std::string& AOut);

/// The text that AppendElementText gives.
std::string ReadElementText(TXmlReader& AReader);

/// The lookup of TXmlReader::FindAttribute in any list of attributes. AName is not empty.
std::optional<std::string_view> FindXmlAttribute(std::span<const TXmlAttribute> AAttributes, std::string_view AName);

/// The part of a name behind its last ":".
std::string_view XmlLocalName(std::string_view AName);

/// Equality but for the case of ASCII letters.
bool EqualXmlNames(std::string_view ALeft, std::string_view ARight);

/// Whether AName is ALocalName, or ends in ":" and ALocalName, but for ASCII case. ALocalName is not empty.
inline bool XmlLocalNameIs(std::string_view AName, std::string_view ALocalName) {
  if (AName.size() < ALocalName.size()) return false;
  const size_t prefix = AName.size() - ALocalName.size();
  if (prefix != 0 && AName[prefix - 1] != ':') return false;
  // Letters differ in case by one bit: most other names are out with this.
  if (((AName.back() ^ ALocalName.back()) & ~0x20) != 0) return false;
  return EqualXmlNames(AName.substr(prefix), ALocalName);
}

inline bool TXmlReader::LocalNameIs(std::string_view ALocalName) const { return XmlLocalNameIs(Name(), ALocalName); }

}  // namespace tessarine

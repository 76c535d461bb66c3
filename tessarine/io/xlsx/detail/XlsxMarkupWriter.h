#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

inline constexpr std::string_view kXmlHead = "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>\n";
inline constexpr std::string_view kXlsxMainNamespace = "http://schemas.openxmlformats.org/spreadsheetml/2006/main";
inline constexpr std::string_view kXlsxDocumentRelationships =
    "http://schemas.openxmlformats.org/officeDocument/2006/relationships";

// Pieces of parts that are being built. An attribute is appended with a blank in front of it.

/// ` name="value"`, escaped.
void AppendXlsxAttr(std::string_view AName, std::u16string_view AValue, std::string& AOut);
/// The same for texts that the reader takes through XlsxText (ECMA-376-1 §22.9.2.19): every unit comes back.
void AppendXlsxTextAttr(std::string_view AName, std::u16string_view AText, std::string& AOut);
/// The same for what needs no escapes: words of the format, ids, addresses.
void AppendXlsxWord(std::string_view AName, std::string_view AValue, std::string& AOut);
void AppendXlsxInt(std::string_view AName, int64_t AValue, std::string& AOut);
/// Nothing at all for what is no finite number.
void AppendXlsxNumber(std::string_view AName, double AValue, std::string& AOut);
/// "1" and "0".
void AppendXlsxBool(std::string_view AName, bool AValue, std::string& AOut);
/// ` name="1"` for true, nothing for false.
void AppendXlsxFlag(std::string_view AName, bool AValue, std::string& AOut);
/// An address, a range ("B2" for one of one cell).
void AppendXlsxRef(std::string_view AName, const TCellRange& ARange, std::string& AOut);

void AppendDecimal(int64_t AValue, std::string& AOut);

/// `<name>text</name>` with the escapes of element texts.
void AppendXlsxElement(std::string_view AName, std::u16string_view AText, std::string& AOut);

/// AValue with at most ADigits digits behind the point and no zeros at the end, rounded from its exact value.
void AppendShortDecimal(double AValue, int ADigits, std::string& AOut);

/// "FF" and the six digits of the colour without its alpha.
void AppendXlsxRgb(uint32_t AColor, std::string& AOut);

/// Appends a text of nothing but ASCII units that stand for themselves in XML and begin no escape. False for any other
/// text, with AOut as it was; what is appended equals what AppendXlsxText appends.
bool TryAppendPlain(std::u16string_view AText, std::string& AOut);

/// AppendXlsxText with that short cut.
void AppendXlsxString(std::u16string_view AText, std::string& AOut);

/// Room in AOut for the rest of AAll items of which ADone are written and took ABytes: growth by doubling would copy
/// most of a large part. While none is written AGuess tells how many bytes one takes.
void ReserveForRest(size_t ADone, size_t AAll, size_t ABytes, size_t AGuess, std::string& AOut);

/// `<name>text</name>` with ` xml:space="preserve"` where a parser may otherwise not keep all blanks and line ends.
void AppendXlsxSpacedElement(std::string_view AName, std::u16string_view AText, std::string& AOut);

/// The part of ARange inside the sheet, corners in order; a range of zeros when there is none.
TCellRange XlsxInsideSheet(const TCellRange& ARange);

}  // namespace tessarine::detail

#pragma once

#include <iosfwd>
#include <string>
#include <string_view>

#include <tessarine/platform/ReadLimits.h>

namespace tessarine::test {

/// What a parser says of a document. The dump has every element with its attributes in file order and all text,
/// unescaped, adjacent texts joined, nothing for comments and instructions.
struct TXmlVerdict {
  bool IsWellFormed = false;
  std::string Dump;   ///< empty unless well-formed
  std::string Error;  ///< not compared

  friend bool operator==(const TXmlVerdict& ALeft, const TXmlVerdict& ARight) {
    return ALeft.IsWellFormed == ARight.IsWellFormed && ALeft.Dump == ARight.Dump;
  }
};

void PrintTo(const TXmlVerdict& AVerdict, std::ostream* AOut);

/// TXmlReader's verdict on the part "part.xml".
TXmlVerdict OurVerdict(std::string_view ADocument, const TReadLimits& ALimits = {});

/// TXmlTree's verdict.
TXmlVerdict TreeVerdict(std::string_view ADocument, const TReadLimits& ALimits = {});

/// The verdict of a library parser, which is told the encoding by the byte-order mark.
TXmlVerdict JudgeVerdict(std::string_view ADocument);

}  // namespace tessarine::test

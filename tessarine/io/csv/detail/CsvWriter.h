#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tessarine {

class IWriteStream;

namespace detail {

/// Appends delimited values to a stream, in UTF-8 and in large pieces.
class TCsvWriter {
 public:
  TCsvWriter(IWriteStream& AStream, char16_t ADelimiter);
  TCsvWriter(const TCsvWriter&) = delete;
  TCsvWriter& operator=(const TCsvWriter&) = delete;

  void PutByteOrderMark();
  void PutLineEnd();

  void PutDelimiters(int64_t ACount) {
    if (ACount == 1 && FDelimiter < 0x80) {
      Reserve(1);
      FBuffer[FUsed++] = static_cast<char>(FDelimiter);
    } else if (ACount > 0) {
      PutManyDelimiters(ACount);
    }
  }

  /// A text as a field, quoted where that is needed. A lone surrogate becomes U+FFFD.
  void PutField(std::u16string_view AText) {
    if (!TryPutPlainField(AText) && !TryPutQuotedField(AText)) PutEscapedField(AText);
  }

  /// A field of ASCII bytes, as the engine writes numbers.
  void PutAscii(std::string_view AText);

  /// PutField as it is defined, without the short ways.
  void PutEscapedField(std::u16string_view AText);

  /// Hands over what waits. Not done by the destructor: an export that fails ends where it failed.
  void Flush();

 private:
  /// Appends AText when it is ASCII and needs no quotes. False, and nothing appended, otherwise.
  bool TryPutPlainField(std::u16string_view AText);
  /// Appends AText in quotes when it is ASCII and a caller found that it is not plain. False, and nothing appended,
  /// otherwise.
  bool TryPutQuotedField(std::u16string_view AText);
  bool IsPlainUnit(char16_t AUnit) const {
    return AUnit < 0x80 && AUnit != FDelimiter && AUnit != u'"' && AUnit != u'\n' && AUnit != u'\r';
  }
  bool PutPlainEight(const char16_t* AUnits, char* ATarget) const;
  void PutManyDelimiters(int64_t ACount);

  /// Makes room for ACount bytes and the slack behind them.
  void Reserve(size_t ACount) {
    if (FUsed + ACount + kSlack > FBuffer.size()) MakeRoom(ACount);
  }
  void MakeRoom(size_t ACount);

  static constexpr size_t kSlack = 8;  // the short ways write whole words

  IWriteStream& FStream;
  char16_t FDelimiter;
  std::string FDelimiterBytes;
  std::string FBuffer;  // FUsed bytes of it wait to be written
  size_t FUsed = 0;
};

/// AValue in quotes when it holds the delimiter, a quote or a line end; its quotes doubled.
std::u16string EscapedCsvField(std::u16string_view AValue, char16_t ADelimiter);

}  // namespace detail
}  // namespace tessarine

#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/io/csv/detail/CsvScan.h>
#include <tessarine/io/csv/detail/CsvSource.h>

namespace tessarine::detail {

/// One field of a text file: UTF-8 as it stood there, quoting resolved. Valid until the next one is asked for.
struct TCsvField {
  std::string_view Text;
  bool IsQuoted = false;
  bool EndsRow = false;
};

enum class TCsvQuoting : uint8_t {
  cqLines,   // a quote switches quoting on and off, is never kept, and counts to the end of its line only
  cqFields,  // a quote at the start of a field quotes it; doubled quotes and line ends belong to it
};
using enum TCsvQuoting;

/// Divides the bytes of a source into fields, in one pass over blocks of 64 bytes.
///
/// Invariants between calls:
/// 1. FMask holds the special bytes of the block at FBlock that stand at FAt or behind it; the blocks behind are
/// unread.
/// 2. FRowOpen: a delimiter was the last thing read, so one more field follows even at the end of the source.
class TCsvFieldReader {
 public:
  TCsvFieldReader(TCsvSource& ASource, char ADelimiter, TCsvQuoting AQuoting, bool ATrimBlanks)
      : FSource(ASource), FDelimiter(ADelimiter), FQuoting(AQuoting), FTrimBlanks(ATrimBlanks) {
    Restart(0);
  }

  /// The next field, false at the end. A line end behind the last row adds no row. Throws what the source throws.
  bool Next(TCsvField& AField) {
    if (FAt == FSource.Size() && !FSource.IsFinal()) ReadOn();
    if (FSkipLineFeed) SkipLineFeed();
    if (FAt == FSource.Size() && FSource.IsFinal()) return NextAtEnd(AField);
    if (FQuoting == cqLines) return NextOfLine(AField);
    if (FTrimBlanks) SkipBlanks();
    if (FAt < FSource.Size() && FSource.Data()[FAt] == '"') return NextQuoted(AField);
    return NextPlain(AField);
  }

  /// The line of the file on which the next field begins, 1-based.
  int64_t Line() const { return FLine; }

 private:
  void Restart(size_t AAt) {
    FAt = AAt;
    FBlock = AAt;
    FMask = AAt < FSource.Size() ? BlockMask(AAt) : 0;
  }
  uint64_t BlockMask(size_t ABlock) const {
    const uint64_t mask = CsvSpecials(FSource.Data() + ABlock, FDelimiter);
    const size_t rest = FSource.Size() - ABlock;
    return rest >= kCsvBlock ? mask : mask & ((uint64_t{1} << rest) - 1);
  }

  /// The place of the next special byte, the window's size when there is none.
  size_t FindSpecial() {
    while (FMask == 0) {
      FBlock += kCsvBlock;
      if (FBlock >= FSource.Size()) {
        FBlock -= kCsvBlock;
        return FSource.Size();
      }
      FMask = BlockMask(FBlock);
    }
    return FBlock + static_cast<size_t>(std::countr_zero(FMask));
  }
  void PassSpecial() { FMask &= FMask - 1; }

  /// The place of the next delimiter or line end.
  size_t FindFieldEnd() {
    size_t place = FindSpecial();
    while (place < FSource.Size() && FSource.Data()[place] == '"') {
      PassSpecial();
      place = FindSpecial();
    }
    return place;
  }

  /// True when the window ends at AEnd though the source goes on: the field has to be read again in a larger window.
  bool IsCutAt(size_t AEnd) const { return AEnd == FSource.Size() && !FSource.IsFinal(); }

  bool NextPlain(TCsvField& AField) {
    size_t end = FindFieldEnd();
    while (IsCutAt(end)) {
      ReadOn();
      end = FindFieldEnd();
    }
    AField.Text = {FSource.Data() + FAt, end - FAt};
    AField.IsQuoted = false;
    if (FTrimBlanks) TrimEnd(AField.Text);
    return EndField(AField, end);
  }

  bool EndField(TCsvField& AField, size_t AEnd) {
    FAt = AEnd;
    FRowOpen = AEnd < FSource.Size() && FSource.Data()[AEnd] == FDelimiter;
    AField.EndsRow = !FRowOpen;
    if (AEnd == FSource.Size()) return true;
    PassSpecial();
    ++FAt;
    if (FRowOpen) return true;
    ++FLine;
    FSkipLineFeed = FSource.Data()[AEnd] == '\r';
    return true;
  }

  void SkipLineFeed() {
    FSkipLineFeed = false;
    if (FAt == FSource.Size() || FSource.Data()[FAt] != '\n') return;
    FindSpecial();
    PassSpecial();
    ++FAt;
    if (FAt == FSource.Size() && !FSource.IsFinal()) ReadOn();
  }

  void ReadOn() {
    FSource.Advance(FAt);
    Restart(0);
  }

  void SkipBlanks();
  void TrimEnd(std::string_view& AText) const;
  bool NextAtEnd(TCsvField& AField);
  bool NextQuoted(TCsvField& AField);
  bool TryNextQuoted(TCsvField& AField);
  bool NextOfLine(TCsvField& AField);

  TCsvSource& FSource;
  char FDelimiter;
  TCsvQuoting FQuoting;
  bool FTrimBlanks;
  bool FRowOpen = false;
  bool FSkipLineFeed = false;  // the line feed of a pair may follow
  size_t FAt = 0;
  size_t FBlock = 0;
  uint64_t FMask = 0;
  int64_t FLine = 1;
  std::string FScratch;  // the text of a field that does not stand in the window as it is
};

}  // namespace tessarine::detail

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Text.h>
#include <tessarine/platform/Locale.h>

namespace tessarine::detail {

enum class TShortDecimal : uint8_t {
  sdNumber,   // the text is a number, and this is it
  sdText,     // the text is no number
  sdUnknown,  // the general reading has to decide
};
using enum TShortDecimal;

/// Reads a sign, digits and at most one decimal separator, 15 digits at most, in one pass over the bytes. The digits as
/// an integer and the power of ten are exact doubles, so the one division is correctly rounded (Clinger 1990). A text
/// is none of a number as soon as a byte stands where no number has it; what may be one in another form (blanks,
/// exponents, more digits) is left to the general reading. ASeparator is ASCII and neither blank, sign, digit nor "E".
TShortDecimal ReadShortDecimal(std::string_view AText, char ASeparator, double& ANumber);

/// Tells numbers from texts as TryStrToFloat does with the given settings.
class TCsvNumberReader {
 public:
  explicit TCsvNumberReader(const TFormatSettings& ASettings);

  /// Whether AText (UTF-8) is a number, which is then in ANumber.
  bool Read(std::string_view AText, double& ANumber) {
    if (FShortSeparator != '\0') {
      switch (ReadShortDecimal(AText, FShortSeparator, ANumber)) {
        case sdNumber: return true;
        case sdText: return false;
        case sdUnknown: break;
      }
    }
    return ReadPlain(AText, ANumber);
  }

  /// The same by TryStrToFloat alone.
  bool ReadPlain(std::string_view AText, double& ANumber);

 private:
  TFormatSettings FSettings;
  char FShortSeparator = '\0';  // the decimal separator, when the short reading can tell it from all else
  std::u16string FUnits;
};

/// Makes texts of fields and lets equal ones share their block, so that a column of categories costs each word once.
/// The memory it takes is bounded; texts that it has no room for are just not shared. A column in which hardly any text
/// comes twice is not looked up any more.
class TCsvTextCache {
 public:
  /// ATextBytes: how much text there will be, about; decides the size.
  explicit TCsvTextCache(size_t ATextBytes);
  TCsvTextCache(const TCsvTextCache&) = delete;
  TCsvTextCache& operator=(const TCsvTextCache&) = delete;
  ~TCsvTextCache();

  static constexpr size_t kLongest = 128;  // bytes of a text that is shared

  /// ACol: 0-based.
  TText TextOf(std::string_view AText, size_t ACol) { return TextOf(AText, ACol, HashOf(AText)); }

  /// The same in steps: for a text that is looked up, its hash, two hints to fetch what will be read, and the text.
  bool IsLookedUp(std::string_view AText, size_t ACol) const {
    return !AText.empty() && AText.size() <= kLongest && (ACol >= FColumns.size() || FColumns[ACol].IsShared);
  }
  static uint64_t HashOf(std::string_view AText);
  void FetchBucket(uint64_t AHash) const;
  void FetchTexts(uint64_t AHash) const;
  TText TextOf(std::string_view AText, size_t ACol, uint64_t AHash);

 private:
  struct TColumn {
    uint32_t Misses = 0;
    uint32_t Hits = 0;
    bool IsShared = true;
  };

  static constexpr size_t kWays = 4;

  /// Texts whose hashes meet, one line of the processor's cache. References are taken in lots and handed out one by
  /// one: counting them is the dear part of a hit.
  struct alignas(64) TBucket {
    uint32_t Tags[kWays] = {};     // of the texts' hashes
    uint32_t Credits[kWays] = {};  // references that are counted for a block and not handed out yet
    const TTextBlock* Blocks[kWays] = {};
  };

  static constexpr size_t kMostBuckets = size_t{1} << 13;
  static constexpr uint32_t kLot = 4096;  // references taken at a time
  static constexpr uint32_t kTrial = 4096;

  static TText HandOut(TBucket& ABucket, size_t AWay);
  TText AddText(std::string_view AText, TBucket& ABucket, uint32_t ATag, TColumn& AColumn);
  static void Drop(TBucket& ABucket, size_t AWay);
  static uint32_t WaysWithTag(const TBucket& ABucket, uint32_t ATag);

  std::vector<TBucket> FBuckets;  // a power of two
  std::vector<TColumn> FColumns;
};

}  // namespace tessarine::detail

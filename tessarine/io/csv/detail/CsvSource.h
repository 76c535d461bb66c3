#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include <tessarine/platform/Progress.h>

namespace tessarine {

class IReadStream;

namespace detail {

/// The bytes of a text file as UTF-8, a window of them at a time. The byte-order mark decides between UTF-8 and UTF-16
/// and is dropped. Ill-formed UTF-8 is passed on as it stands.
class TCsvSource {
 public:
  /// Reads the first window. ASourceName begins the messages of errors. With AGuess, UTF-16 is also taken for such by
  /// its zero bytes.
  TCsvSource(IReadStream& AStream, uint64_t AMaxBytes, bool AGuess, std::string ASourceName,
             const TWorkControl& AControl);
  TCsvSource(const TCsvSource&) = delete;
  TCsvSource& operator=(const TCsvSource&) = delete;

  /// The window; kCsvBlock further bytes behind its end may be read and mean nothing.
  const char* Data() const { return FData.get(); }
  size_t Size() const { return FSize; }
  std::string_view Window() const { return {FData.get(), FSize}; }

  /// True when nothing follows the window.
  bool IsFinal() const { return FIsFinal; }

  /// Drops the first ACount bytes of the window and appends what follows, at least one byte unless the end is reached.
  /// Throws ELimit, ECancelled, EFileAccess.
  void Advance(size_t ACount);

  /// Is called before each report of progress, so that whoever looks then finds in place what was read.
  void SetBeforeReport(std::function<void()> ACall) { FBeforeReport = std::move(ACall); }

  /// "NAME, " for messages, empty without a name.
  const std::string& Prefix() const { return FPrefix; }

 private:
  enum class TEncoding : uint8_t { enUtf8, enUtf16Le, enUtf16Be };

  void Reserve(size_t ASize);
  void Append();
  size_t ReadBytes(char* ATarget, size_t ASize);
  void AppendUtf16();
  void DetectEncoding(bool AGuess);

  IReadStream& FStream;
  uint64_t FMaxBytes;
  uint64_t FBytesRead = 0;
  uint64_t FBytesTold = 0;  // the stream's size, 0 when it is not known
  std::string FPrefix;
  const TWorkControl& FControl;
  std::function<void()> FBeforeReport;
  TEncoding FEncoding = TEncoding::enUtf8;
  std::unique_ptr<char[]> FData;
  size_t FSize = 0;
  size_t FCapacity = 0;
  bool FIsFinal = false;
  std::string FRaw;  // bytes of UTF-16 that are not decoded yet
};

}  // namespace detail
}  // namespace tessarine

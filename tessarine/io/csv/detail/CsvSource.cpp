#include <tessarine/io/csv/detail/CsvSource.h>

#include <algorithm>
#include <cstring>
#include <span>
#include <utility>

#include <tessarine/io/csv/detail/CsvScan.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr size_t kWindow = size_t{256} * 1024;
constexpr size_t kGuessBytes = 256;

/// Whether the first bytes look like UTF-16 without a mark: zeros in every second place only. The answer is the
/// place of the zeros (1: little endian, 0: big endian), or -1.
int ZeroBytePlace(std::string_view ABytes) {
  const std::string_view head = ABytes.substr(0, std::min(ABytes.size(), kGuessBytes) / 2 * 2);
  size_t zeros[2] = {0, 0};
  for (size_t i = 0; i < head.size(); ++i) zeros[i % 2] += head[i] == '\0' ? 1 : 0;
  const size_t half = head.size() / 2;
  if (half == 0) return -1;
  if (zeros[0] == 0 && zeros[1] * 2 > half) return 1;
  if (zeros[1] == 0 && zeros[0] * 2 > half) return 0;
  return -1;
}

}  // namespace

TCsvSource::TCsvSource(IReadStream& AStream, uint64_t AMaxBytes, bool AGuess, std::string ASourceName,
                       const TWorkControl& AControl)
    : FStream(AStream), FMaxBytes(AMaxBytes), FBytesTold(AStream.Size().value_or(0)), FControl(AControl) {
  if (!ASourceName.empty()) FPrefix = std::move(ASourceName) + ", ";
  Reserve(kWindow);
  while (FSize < kGuessBytes && !FIsFinal) Append();
  DetectEncoding(AGuess);
}

void TCsvSource::DetectEncoding(bool AGuess) {
  const std::string_view bytes = Window();
  size_t mark = 0;
  if (bytes.starts_with("\xEF\xBB\xBF")) {
    mark = 3;
  } else if (bytes.starts_with("\xFF\xFE")) {
    mark = 2;
    FEncoding = TEncoding::enUtf16Le;
  } else if (bytes.starts_with("\xFE\xFF")) {
    mark = 2;
    FEncoding = TEncoding::enUtf16Be;
  } else if (const int place = AGuess ? ZeroBytePlace(bytes) : -1; place >= 0) {
    FEncoding = place == 1 ? TEncoding::enUtf16Le : TEncoding::enUtf16Be;
  }
  if (FEncoding == TEncoding::enUtf8) {
    FSize -= mark;
    std::memmove(FData.get(), FData.get() + mark, FSize);
    return;
  }
  FRaw.assign(bytes.substr(mark));
  FSize = 0;
  AppendUtf16();
}

/// Makes room for a window of ASize bytes and the block behind it.
void TCsvSource::Reserve(size_t ASize) {
  if (ASize <= FCapacity) return;
  const size_t capacity = std::max(ASize, FCapacity * 2);
  std::unique_ptr<char[]> data(new char[capacity + kCsvBlock]);
  if (FSize > 0) std::memcpy(data.get(), FData.get(), FSize);
  // What a block reads behind the end of the window decides nothing, but it shall be the same in every run.
  std::memset(data.get() + capacity, 0, kCsvBlock);
  FData = std::move(data);
  FCapacity = capacity;
}

size_t TCsvSource::ReadBytes(char* ATarget, size_t ASize) {
  const size_t count = FStream.Read(std::as_writable_bytes(std::span<char>(ATarget, ASize)));
  FBytesRead += count;
  if (FBytesRead > FMaxBytes)
    throw ELimit(FPrefix + "the text is larger than the limit of " + std::to_string(FMaxBytes) + " bytes");
  if (count == 0) FIsFinal = true;
  return count;
}

void TCsvSource::Append() {
  Reserve(FSize + kWindow / 2);
  if (FEncoding != TEncoding::enUtf8) {
    AppendUtf16();
    return;
  }
  FSize += ReadBytes(FData.get() + FSize, FCapacity - FSize);
  std::memset(FData.get() + FSize, 0, kCsvBlock);
}

/// Decodes what waits in FRaw and one more piece of the stream. What is cut at the piece's end (half a unit, half a
/// pair) waits for the next one.
void TCsvSource::AppendUtf16() {
  const size_t waiting = FRaw.size();
  if (!FIsFinal) {
    FRaw.resize(waiting + kWindow);
    FRaw.resize(waiting + ReadBytes(FRaw.data() + waiting, kWindow));
  }
  std::u16string units(FRaw.size() / 2, u'\0');
  const bool isBigEndian = FEncoding == TEncoding::enUtf16Be;
  for (size_t i = 0; i < units.size(); ++i) {
    const auto first = static_cast<unsigned char>(FRaw[2 * i]);
    const auto second = static_cast<unsigned char>(FRaw[2 * i + 1]);
    units[i] = static_cast<char16_t>(isBigEndian ? first << 8 | second : second << 8 | first);
  }
  size_t used = units.size() * 2;
  if (!FIsFinal && !units.empty() && (units.back() & 0xFC00) == 0xD800) {
    units.pop_back();
    used -= 2;
  }
  FRaw.erase(0, used);
  if (FIsFinal && !FRaw.empty()) {
    units.push_back(u'\uFFFD');
    FRaw.clear();
  }
  const std::string bytes = Utf16ToUtf8(units);
  Reserve(FSize + bytes.size());
  std::memcpy(FData.get() + FSize, bytes.data(), bytes.size());
  FSize += bytes.size();
  std::memset(FData.get() + FSize, 0, kCsvBlock);
}

void TCsvSource::Advance(size_t ACount) {
  FControl.CheckStop();
  if (FBytesTold > 0 && FControl.Progress) {
    if (FBeforeReport) FBeforeReport();
    FControl.Report(ppLoading, static_cast<double>(FBytesRead) / static_cast<double>(FBytesTold));
  }
  FSize -= ACount;
  std::memmove(FData.get(), FData.get() + ACount, FSize);
  // What stays is read again by the caller, so it must at least double: then the work stays linear.
  const size_t enough = std::max(FSize + 1, FSize * 2);
  while (FSize < enough && !FIsFinal) Append();
}

}  // namespace tessarine::detail

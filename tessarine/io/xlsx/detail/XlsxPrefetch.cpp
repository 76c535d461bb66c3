#include <tessarine/io/xlsx/detail/XlsxPrefetch.h>

#include <system_error>
#include <utility>

#include <tessarine/io/xlsx/detail/XlsxPackage.h>

namespace tessarine::detail {

namespace {

// Below, the thread costs more than it gains (1 MiB inflates in 1 to 2 ms); above, two parts would take much memory.
constexpr uint64_t kLeastBytes = uint64_t{1} << 20;
constexpr uint64_t kMostBytes = uint64_t{64} << 20;

}  // namespace

void TXlsxPrefetch::Start(std::string_view APartName) {
  if (!FPartName.empty() || APartName.empty()) return;
  const uint64_t size = FPackage.DeclaredSize(APartName);
  if (size < kLeastBytes || size > kMostBytes || !FPackage.HasRoomFor(size)) return;
  try {
    FThread = std::jthread([this, name = std::string(APartName)] {
      try {
        FContent = FPackage.ReadPart(name);
      } catch (...) {
        FError = std::current_exception();
      }
    });
    FPartName = APartName;
  } catch (const std::system_error&) {
    return;  // no thread to be had: the part is read when it is wanted
  }
}

TByteBuffer TXlsxPrefetch::Take(std::string_view APartName) {
  if (FPartName.empty()) return FPackage.ReadPart(APartName);
  FThread.join();
  const bool isWanted = FPartName == APartName;
  FPartName.clear();
  TByteBuffer content = std::move(FContent);
  const std::exception_ptr error = std::exchange(FError, nullptr);
  if (!isWanted) return FPackage.ReadPart(APartName);
  if (error) std::rethrow_exception(error);
  return content;
}

}  // namespace tessarine::detail

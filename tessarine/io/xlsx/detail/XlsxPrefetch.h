#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <thread>

#include <tessarine/platform/ByteBuffer.h>

namespace tessarine::detail {

class TXlsxPackage;

/// Inflates the part that will be wanted next on a second thread while the present one is parsed. It is a hint: Take()
/// gives the same content, and the same error at the same moment, whether the part was started or not.
class TXlsxPrefetch {
 public:
  /// The package outlives the object.
  explicit TXlsxPrefetch(const TXlsxPackage& APackage) : FPackage(APackage) {}

  /// Begins with a part of a size for which it pays; nothing happens while another one waits to be taken, or where the
  /// limit on all parts together is so near that their order could show.
  void Start(std::string_view APartName);

  /// The content as TXlsxPackage::ReadPart gives it.
  TByteBuffer Take(std::string_view APartName);

 private:
  const TXlsxPackage& FPackage;
  std::string FPartName;  // empty while nothing was started
  TByteBuffer FContent;
  std::exception_ptr FError;
  std::jthread FThread;  // the last member: it ends before the others go
};

}  // namespace tessarine::detail

// TESS_PLAIN_FILES builds the portable layer on a system that has this one, so that it can be tested there.
#if (defined(__unix__) || defined(__APPLE__)) && !defined(TESS_PLAIN_FILES)

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <vector>

#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/detail/SystemFileLayer.h>

namespace tessarine::detail {

namespace {

constexpr mode_t kPermissionBits = 0777;

/// Repeats a system call while signals interrupt it.
template <typename TCall>
auto Uninterrupted(TCall ACall) {
  for (;;) {
    const auto result = ACall();
    if (result != -1 || errno != EINTR) return result;
  }
}

/// A path that the system would cut at a zero byte must not reach it.
bool HasZeroByte(const std::string& APath) { return APath.find('\0') != std::string::npos; }

int ToDescriptor(IFileLayer::THandle AHandle) { return static_cast<int>(AHandle); }

std::string WithSeparator(std::string AFolder) {
  if (!AFolder.empty() && AFolder.back() != '/') AFolder.push_back('/');
  return AFolder;
}

class TPosixFileLayer final : public IFileLayer {
 public:
  int OpenForReading(const std::string& APath, THandle& AHandle) override { return Open(APath, O_RDONLY, 0, AHandle); }

  int OpenForWriting(const std::string& APath, std::optional<uint32_t> APermissions, bool AMustBeNew,
                     THandle& AHandle) override {
    const int flags = O_WRONLY | O_CREAT | (AMustBeNew ? O_EXCL | O_NOFOLLOW : O_TRUNC);
    // Wider permissions than those asked for never exist, not even for a moment.
    const mode_t mode = APermissions ? static_cast<mode_t>(*APermissions) & kPermissionBits : 0666;
    const int error = Open(APath, flags, mode, AHandle);
    // The umask may have narrowed them. File systems without permissions refuse, which leaves nothing to be done.
    if (error == 0 && APermissions) (void)::fchmod(ToDescriptor(AHandle), mode);
    return error;
  }

  int Read(THandle AHandle, std::span<std::byte> ABuffer, size_t& ACount) override {
    const ssize_t count = Uninterrupted([&] { return ::read(ToDescriptor(AHandle), ABuffer.data(), ABuffer.size()); });
    if (count < 0) return errno;
    ACount = static_cast<size_t>(count);
    return 0;
  }

  int Write(THandle AHandle, std::span<const std::byte> ABytes, size_t& ACount) override {
    const ssize_t count = Uninterrupted([&] { return ::write(ToDescriptor(AHandle), ABytes.data(), ABytes.size()); });
    if (count < 0) return errno;
    if (count == 0 && !ABytes.empty()) return EIO;
    ACount = static_cast<size_t>(count);
    return 0;
  }

  int Sync(THandle AHandle) override {
    if (Uninterrupted([&] { return ::fsync(ToDescriptor(AHandle)); }) == 0) return 0;
    return errno == EINVAL ? 0 : errno;  // pipes and the like cannot be flushed
  }

  int Close(THandle AHandle) override {
    // Never repeated: on the usual systems the descriptor is gone even when a signal interrupted the call.
    if (::close(ToDescriptor(AHandle)) == 0 || errno == EINTR) return 0;
    return errno;
  }

  std::optional<uint64_t> Size(THandle AHandle) override {
    struct stat status {};
    if (::fstat(ToDescriptor(AHandle), &status) != 0 || !S_ISREG(status.st_mode)) return {};
    return static_cast<uint64_t>(status.st_size);
  }

  int GetStatus(const std::string& APath, TFileStatus& AStatus) override {
    struct stat status {};
    if (HasZeroByte(APath)) return ENOENT;
    if (::stat(APath.c_str(), &status) != 0) return errno;
    AStatus.IsFolder = S_ISDIR(status.st_mode);
    AStatus.Permissions = static_cast<uint32_t>(status.st_mode & kPermissionBits);
    return 0;
  }

  int Remove(const std::string& APath) override {
    if (HasZeroByte(APath)) return ENOENT;
    return ::unlink(APath.c_str()) == 0 ? 0 : errno;
  }

  int Rename(const std::string& AFrom, const std::string& ATo) override {
    if (HasZeroByte(AFrom) || HasZeroByte(ATo)) return ENOENT;
    return ::rename(AFrom.c_str(), ATo.c_str()) == 0 ? 0 : errno;
  }

  int SyncFolder(const std::string& AFolder) override {
    THandle handle = -1;
    if (const int error = Open(AFolder, O_RDONLY | O_DIRECTORY, 0, handle)) return error;
    const int error = Sync(handle);
    const int closeError = Close(handle);
    return error != 0 ? error : closeError;
  }

  std::string CurrentFolder() override {
    std::vector<char> buffer(256);
    while (::getcwd(buffer.data(), buffer.size()) == nullptr) {
      if (errno != ERANGE) return {};
      buffer.resize(buffer.size() * 2);
    }
    return WithSeparator(buffer.data());
  }

  std::string TemporaryFolder() override {
    const char* folder = std::getenv("TMPDIR");
    return WithSeparator(folder != nullptr && *folder != '\0' ? folder : "/tmp");
  }

 private:
  static int Open(const std::string& APath, int AFlags, mode_t AMode, THandle& AHandle) {
    if (HasZeroByte(APath)) return ENOENT;
    const int descriptor = Uninterrupted([&] { return ::open(APath.c_str(), AFlags | O_CLOEXEC, AMode); });
    if (descriptor < 0) return errno;
    AHandle = descriptor;
    return 0;
  }
};

}  // namespace

IFileLayer& SystemFileLayer() {
  static TPosixFileLayer& layer = *new TPosixFileLayer;
  return layer;
}

}  // namespace tessarine::detail

#endif

#if (!defined(__unix__) && !defined(__APPLE__)) || defined(TESS_PLAIN_FILES)

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/detail/SystemFileLayer.h>

namespace tessarine::detail {

namespace {

std::filesystem::path ToPath(const std::string& APath) {
  return std::filesystem::path(std::u8string(APath.begin(), APath.end()));
}

std::string ToUtf8(const std::filesystem::path& APath) {
  const std::u8string text = APath.u8string();
  return std::string(text.begin(), text.end());
}

std::string WithSeparator(const std::filesystem::path& AFolder) {
  return AFolder.empty() ? std::string() : ToUtf8(AFolder / "");
}

std::FILE* ToFile(IFileLayer::THandle AHandle) { return reinterpret_cast<std::FILE*>(static_cast<intptr_t>(AHandle)); }

int ErrorNumber(const std::error_code& AError) {
  if (!AError) return 0;
  const int number = AError.default_error_condition().value();
  return number != 0 ? number : EIO;
}

int LastError() { return errno != 0 ? errno : EIO; }

/// File access with what standard C and C++ know: data is handed to the system, but cannot be forced to the medium.
class TPlainFileLayer final : public IFileLayer {
 public:
  int OpenForReading(const std::string& APath, THandle& AHandle) override { return Open(APath, false, false, AHandle); }

  int OpenForWriting(const std::string& APath, std::optional<uint32_t> APermissions, bool AMustBeNew,
                     THandle& AHandle) override {
    const int error = Open(APath, true, AMustBeNew, AHandle);
    if (error == 0 && APermissions) {
      std::error_code ignored;  // file systems without permissions refuse, which leaves nothing to be done
      std::filesystem::permissions(ToPath(APath), static_cast<std::filesystem::perms>(*APermissions), ignored);
    }
    return error;
  }

  int Read(THandle AHandle, std::span<std::byte> ABuffer, size_t& ACount) override {
    errno = 0;
    ACount = std::fread(ABuffer.data(), 1, ABuffer.size(), ToFile(AHandle));
    return ACount == 0 && std::ferror(ToFile(AHandle)) != 0 ? LastError() : 0;
  }

  int Write(THandle AHandle, std::span<const std::byte> ABytes, size_t& ACount) override {
    errno = 0;
    ACount = std::fwrite(ABytes.data(), 1, ABytes.size(), ToFile(AHandle));
    return ACount == 0 && !ABytes.empty() ? LastError() : 0;
  }

  int Sync(THandle AHandle) override {
    errno = 0;
    return std::fflush(ToFile(AHandle)) == 0 ? 0 : LastError();
  }

  int Close(THandle AHandle) override {
    errno = 0;
    return std::fclose(ToFile(AHandle)) == 0 ? 0 : LastError();
  }

  std::optional<uint64_t> Size(THandle) override { return {}; }

  int GetStatus(const std::string& APath, TFileStatus& AStatus) override {
    std::error_code error;
    const auto status = std::filesystem::status(ToPath(APath), error);
    if (status.type() == std::filesystem::file_type::not_found) return ENOENT;
    if (error) return ErrorNumber(error);
    AStatus.IsFolder = std::filesystem::is_directory(status);
    AStatus.Permissions = static_cast<uint32_t>(status.permissions() & std::filesystem::perms::all);
    return 0;
  }

  int Remove(const std::string& APath) override {
    std::error_code error;
    if (std::filesystem::is_directory(ToPath(APath), error)) return EISDIR;
    const bool removed = std::filesystem::remove(ToPath(APath), error);
    return error ? ErrorNumber(error) : removed ? 0 : ENOENT;
  }

  int Rename(const std::string& AFrom, const std::string& ATo) override {
    std::error_code error;
    std::filesystem::rename(ToPath(AFrom), ToPath(ATo), error);
    return ErrorNumber(error);
  }

  int SyncFolder(const std::string&) override { return 0; }

  std::string CurrentFolder() override {
    std::error_code error;
    const auto folder = std::filesystem::current_path(error);
    return error ? std::string() : WithSeparator(folder);
  }

  std::string TemporaryFolder() override {
    std::error_code error;
    const auto folder = std::filesystem::temp_directory_path(error);
    return error ? std::string() : WithSeparator(folder);
  }

 private:
  static int Open(const std::string& APath, bool AWrite, bool AMustBeNew, THandle& AHandle) {
    // The system would take a name with a zero byte for a shorter one.
    if (APath.find('\0') != std::string::npos) return ENOENT;
    const std::filesystem::path path = ToPath(APath);
    std::error_code error;
    // fopen opens folders on some systems and fails at the first reading only.
    if (std::filesystem::is_directory(path, error)) return AWrite ? EISDIR : EACCES;
    errno = 0;
#if defined(_WIN32)
    std::FILE* file = ::_wfopen(path.c_str(), AWrite ? (AMustBeNew ? L"wbx" : L"wb") : L"rb");
#else
    std::FILE* file = std::fopen(path.c_str(), AWrite ? (AMustBeNew ? "wbx" : "wb") : "rb");
#endif
    if (file == nullptr) return LastError();
    AHandle = static_cast<THandle>(reinterpret_cast<intptr_t>(file));
    return 0;
  }
};

}  // namespace

IFileLayer& SystemFileLayer() {
  static TPlainFileLayer& layer = *new TPlainFileLayer;
  return layer;
}

}  // namespace tessarine::detail

#endif

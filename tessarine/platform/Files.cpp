#include <tessarine/platform/Files.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <system_error>
#include <utility>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/FileLayer.h>

namespace tessarine {

namespace {

constexpr int64_t kNoHandle = -1;
constexpr size_t kWriteBuffer = size_t{64} * 1024;
constexpr size_t kReadStep = size_t{256} * 1024;

[[noreturn]] void FailAccess(const char* AAction, const std::string& AFileName, int AError) {
  throw EFileAccess(std::string("Cannot ") + AAction + " \"" + AFileName +
                    "\": " + std::generic_category().message(AError));
}

class TFileReadStream final : public IReadStream {
 public:
  explicit TFileReadStream(const std::string& AFileName) : FFileName(AFileName), FLayer(CurrentFileLayer()) {
    if (const int error = FLayer.OpenForReading(AFileName, FHandle)) FailAccess("open", AFileName, error);
  }
  TFileReadStream(const TFileReadStream&) = delete;
  TFileReadStream& operator=(const TFileReadStream&) = delete;
  ~TFileReadStream() override { FLayer.Close(FHandle); }

  size_t Read(std::span<std::byte> ABuffer) override {
    size_t count = 0;
    if (ABuffer.empty()) return 0;
    if (const int error = FLayer.Read(FHandle, ABuffer, count)) FailAccess("read", FFileName, error);
    return count;
  }

  std::optional<uint64_t> Size() const override { return FLayer.Size(FHandle); }

 private:
  std::string FFileName;
  IFileLayer& FLayer;
  IFileLayer::THandle FHandle = kNoHandle;
};

/// Where the last part of a path begins.
size_t FileNameStart(const std::string& APath) {
#if defined(_WIN32)
  const size_t separator = APath.find_last_of("/\\:");
#else
  const size_t separator = APath.rfind('/');
#endif
  return separator == std::string::npos ? 0 : separator + 1;
}

/// The folder of a path with its separator; the current one for a mere name.
std::string FolderOf(const std::string& APath) {
  const size_t start = FileNameStart(APath);
  return start > 0 ? APath.substr(0, start) : CurrentFileLayer().CurrentFolder();
}

void RemoveIfThere(const std::string& APath) {
  const int error = CurrentFileLayer().Remove(APath);
  if (error != 0 && error != ENOENT) FailAccess("delete", APath, error);
}

/// The name of a copy in the temporary folder: the time as hours, minutes, seconds, milliseconds, then the file's name.
std::string TemporaryCopyName(const std::string& AFileName) {
  const TTimeParts time = DecodeTime(NowSerial());
  std::array<char, 64> stamp{};
  std::snprintf(stamp.data(), stamp.size(), "tessarine_%02d%02d%02d%03d_", time.Hour, time.Minute, time.Second,
                time.Millisecond);
  return CurrentFileLayer().TemporaryFolder() + stamp.data() + AFileName.substr(FileNameStart(AFileName));
}

/// Copies ASource to a new file for the owner only: the temporary folder is shared, and a link that someone laid there
/// must not be followed.
void CopyToNewFile(const std::string& ASource, const std::string& ATarget) {
  constexpr uint32_t kOwnerOnly = 0600;
  const auto source = OpenFileForReading(ASource);
  TFileWriteStream target(ATarget, kOwnerOnly, true);
  std::vector<std::byte> buffer(kReadStep);
  while (const size_t count = source->Read(buffer)) target.Write({buffer.data(), count});
  target.Close();
}

}  // namespace

IReadStream::~IReadStream() = default;
IWriteStream::~IWriteStream() = default;

size_t TMemoryReadStream::Read(std::span<std::byte> ABuffer) {
  const size_t count = std::min(ABuffer.size(), FRest.size());
  std::copy_n(FRest.begin(), count, ABuffer.begin());
  FRest = FRest.subspan(count);
  return count;
}

TMemoryWriteStream::TMemoryWriteStream(TMemoryWriteStream&& AOther) noexcept
    : FBuffer(std::move(AOther.FBuffer)), FUsed(std::exchange(AOther.FUsed, 0)) {}

TMemoryWriteStream& TMemoryWriteStream::operator=(TMemoryWriteStream&& AOther) noexcept {
  std::swap(FBuffer, AOther.FBuffer);
  std::swap(FUsed, AOther.FUsed);
  return *this;
}

void TMemoryWriteStream::Write(std::span<const std::byte> ABytes) {
  if (ABytes.empty()) return;
  if (ABytes.size() > FBuffer.Size() - FUsed) {
    constexpr size_t kLeastBytes = 4096;
    TByteBuffer larger(std::max({FUsed + ABytes.size(), 2 * FBuffer.Size(), kLeastBytes}));
    if (FUsed != 0) std::memcpy(larger.Data(), FBuffer.Data(), FUsed);
    FBuffer = std::move(larger);
  }
  std::memcpy(FBuffer.Data() + FUsed, ABytes.data(), ABytes.size());
  FUsed += ABytes.size();
}

std::unique_ptr<IReadStream> OpenFileForReading(const std::string& AFileName) {
  return std::make_unique<TFileReadStream>(AFileName);
}

TFileWriteStream::TFileWriteStream(const std::string& AFileName, std::optional<uint32_t> APermissions, bool AMustBeNew)
    : FFileName(AFileName), FLayer(CurrentFileLayer()), FHandle(kNoHandle) {
  const int error = FLayer.OpenForWriting(AFileName, APermissions, AMustBeNew, FHandle);
  if (error != 0) FailAccess("create", AFileName, error);
}

TFileWriteStream::~TFileWriteStream() {
  try {
    Close();
  } catch (const ETessarineError&) {
    // Told in the class comment: who wants to know calls Close.
  }
}

void TFileWriteStream::Write(std::span<const std::byte> ABytes) {
  if (FHandle == kNoHandle) throw EState("The file \"" + FFileName + "\" is closed");
  if (FBuffer.size() + ABytes.size() < kWriteBuffer) {
    if (FBuffer.capacity() == 0) FBuffer.reserve(kWriteBuffer);
    FBuffer.insert(FBuffer.end(), ABytes.begin(), ABytes.end());
    return;
  }
  Flush(false);
  WriteThrough(ABytes);
}

void TFileWriteStream::WriteThrough(std::span<const std::byte> ABytes) {
  while (!ABytes.empty()) {
    size_t count = 0;
    if (const int error = FLayer.Write(FHandle, ABytes, count)) {
      FBuffer.clear();  // after a failure the same bytes must not be written once more
      FailAccess("write", FFileName, error);
    }
    ABytes = ABytes.subspan(count);
  }
}

void TFileWriteStream::Flush(bool ASync) {
  if (FHandle == kNoHandle) return;
  WriteThrough(FBuffer);
  FBuffer.clear();
  if (!ASync) return;
  if (const int error = FLayer.Sync(FHandle)) FailAccess("flush", FFileName, error);
}

void TFileWriteStream::Close() {
  if (FHandle == kNoHandle) return;
  try {
    Flush(false);
  } catch (...) {
    FLayer.Close(std::exchange(FHandle, kNoHandle));
    throw;
  }
  if (const int error = FLayer.Close(std::exchange(FHandle, kNoHandle))) FailAccess("write", FFileName, error);
}

std::vector<std::byte> ReadAllBytes(IReadStream& AStream, uint64_t ALimit) {
  const auto failTooLarge = [&] {
    throw ELimit("The data is larger than the limit of " + std::to_string(ALimit) + " bytes");
  };
  const std::optional<uint64_t> told = AStream.Size();
  if (told && *told > ALimit) failTooLarge();
  // One byte more than is told, so that the end shows without another growth.
  constexpr size_t kLeastStep = 4096;  // some files tell a size of 0 and hold something all the same
  std::vector<std::byte> bytes(told ? std::max(static_cast<size_t>(*told) + 1, kLeastStep) : kReadStep);
  size_t size = 0;
  while (const size_t count = AStream.Read({bytes.data() + size, bytes.size() - size})) {
    size += count;
    if (size > ALimit) failTooLarge();
    if (size == bytes.size()) bytes.resize(bytes.size() * 2);
  }
  bytes.resize(size);
  return bytes;
}

TSharedReadStream OpenSharedReadStream(const std::string& AFileName) {
  TFileStatus status;
  if (CurrentFileLayer().GetStatus(AFileName, status) != 0 || status.IsFolder)
    throw EFileAccess("File not found: " + AFileName);
  try {
    return {OpenFileForReading(AFileName), false};
  } catch (const EFileAccess&) {
    const std::string copyName = TemporaryCopyName(AFileName);
    RemoveIfThere(copyName);
    CopyToNewFile(AFileName, copyName);
    return {OpenFileForReading(copyName), true};
  }
}

void SaveToFileViaTemp(const std::string& AFileName, const std::function<void(IWriteStream&)>& AWriteProc) {
  IFileLayer& layer = CurrentFileLayer();
  const std::string folder = FolderOf(AFileName);
  const std::string temporary = folder + AFileName.substr(FileNameStart(AFileName)) + ".tessarine.tmp";
  RemoveIfThere(temporary);

  TFileStatus target;
  if (layer.GetStatus(AFileName, target) != 0 || target.IsFolder) target.Permissions.reset();
  TFileWriteStream stream(temporary, target.Permissions, true);
  AWriteProc(stream);
  stream.Flush(true);
  stream.Close();

  if (layer.Rename(temporary, AFileName) != 0) {
    throw EFileAccess("Cannot save to \"" + AFileName +
                      "\" because it is open in another program.\r\nYour changes were saved to:\r\n" + temporary);
  }
  // The new file stands from here on. When its name cannot be brought to the medium, that is no failure of saving.
  layer.SyncFolder(folder);
}

}  // namespace tessarine

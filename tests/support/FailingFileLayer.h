#pragma once

#include <cerrno>
#include <string>
#include <vector>

#include <tessarine/platform/FileLayer.h>

namespace tessarine::test {

/// Stands in front of the file layer while it lives: notes every call that may fail and lets one of them fail with
/// ENOSPC. Writes are cut to AMostBytes a call, so that short writes happen.
class TFailingFileLayer final : public IFileLayer {
 public:
  static constexpr size_t kNever = static_cast<size_t>(-1);

  explicit TFailingFileLayer(size_t AFailingCall = kNever, size_t AMostBytes = kNever)
      : FInner(CurrentFileLayer()), FFailingCall(AFailingCall), FMostBytes(AMostBytes), FPrevious(SetFileLayer(this)) {}
  TFailingFileLayer(const TFailingFileLayer&) = delete;
  TFailingFileLayer& operator=(const TFailingFileLayer&) = delete;
  ~TFailingFileLayer() override { SetFileLayer(FPrevious); }

  /// Names of the calls so far, in order.
  const std::vector<std::string>& Calls() const { return FCalls; }
  int OpenHandles() const { return FOpenHandles; }

  int OpenForReading(const std::string& APath, THandle& AHandle) override {
    return Opened(Fails("open for reading") ? ENOSPC : FInner.OpenForReading(APath, AHandle));
  }
  int OpenForWriting(const std::string& APath, std::optional<uint32_t> APermissions, bool AMustBeNew,
                     THandle& AHandle) override {
    return Opened(Fails("open for writing") ? ENOSPC : FInner.OpenForWriting(APath, APermissions, AMustBeNew, AHandle));
  }
  int Read(THandle AHandle, std::span<std::byte> ABuffer, size_t& ACount) override {
    return Fails("read") ? ENOSPC : FInner.Read(AHandle, ABuffer, ACount);
  }
  int Write(THandle AHandle, std::span<const std::byte> ABytes, size_t& ACount) override {
    if (Fails("write")) return ENOSPC;
    return FInner.Write(AHandle, ABytes.first(std::min(FMostBytes, ABytes.size())), ACount);
  }
  int Sync(THandle AHandle) override { return Fails("sync") ? ENOSPC : FInner.Sync(AHandle); }
  int Close(THandle AHandle) override {
    --FOpenHandles;
    const int error = FInner.Close(AHandle);
    return Fails("close") ? ENOSPC : error;
  }
  std::optional<uint64_t> Size(THandle AHandle) override { return FInner.Size(AHandle); }
  int GetStatus(const std::string& APath, TFileStatus& AStatus) override { return FInner.GetStatus(APath, AStatus); }
  int Remove(const std::string& APath) override { return Fails("remove") ? ENOSPC : FInner.Remove(APath); }
  int Rename(const std::string& AFrom, const std::string& ATo) override {
    return Fails("rename") ? ENOSPC : FInner.Rename(AFrom, ATo);
  }
  int SyncFolder(const std::string& AFolder) override {
    return Fails("sync folder") ? ENOSPC : FInner.SyncFolder(AFolder);
  }
  std::string CurrentFolder() override { return FInner.CurrentFolder(); }
  std::string TemporaryFolder() override { return FInner.TemporaryFolder(); }

 private:
  bool Fails(const char* ACall) {
    FCalls.emplace_back(ACall);
    return FCalls.size() - 1 == FFailingCall;
  }
  int Opened(int AError) {
    if (AError == 0) ++FOpenHandles;
    return AError;
  }

  IFileLayer& FInner;
  size_t FFailingCall;
  size_t FMostBytes;
  std::vector<std::string> FCalls;
  int FOpenHandles = 0;
  IFileLayer* FPrevious;
};

}  // namespace tessarine::test

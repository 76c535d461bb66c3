#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include <tessarine/Export.h>

namespace tessarine {

/// What the system tells about a path.
struct TFileStatus {
  bool IsFolder = false;
  std::optional<uint32_t> Permissions;  ///< the nine permission bits of POSIX, where there are such
};

/// The calls to the operating system behind all file access of the library, so that a test can let any one of them
/// fail. Every call returns 0 or the system's error number (errno). Paths are UTF-8. Implementations are safe to use
/// from several threads.
class TESSARINE_API IFileLayer {
 public:
  using THandle = int64_t;
  virtual ~IFileLayer();

  virtual int OpenForReading(const std::string& APath, THandle& AHandle) = 0;

  /// Creates or empties the file. APermissions are given to it exactly; without them the process's default applies.
  /// With AMustBeNew fails with EEXIST when anything stands there already, be it a link to nowhere.
  virtual int OpenForWriting(const std::string& APath, std::optional<uint32_t> APermissions, bool AMustBeNew,
                             THandle& AHandle) = 0;

  /// ACount is 0 at the end of the file.
  virtual int Read(THandle AHandle, std::span<std::byte> ABuffer, size_t& ACount) = 0;
  /// May write fewer bytes than given, but at least one.
  virtual int Write(THandle AHandle, std::span<const std::byte> ABytes, size_t& ACount) = 0;
  /// Brings the written data to the medium.
  virtual int Sync(THandle AHandle) = 0;
  /// The handle is gone afterwards, whatever the result.
  virtual int Close(THandle AHandle) = 0;
  /// The size of a regular file; nothing for all else.
  virtual std::optional<uint64_t> Size(THandle AHandle) = 0;

  virtual int GetStatus(const std::string& APath, TFileStatus& AStatus) = 0;
  virtual int Remove(const std::string& APath) = 0;
  /// Replaces ATo in one step if it exists.
  virtual int Rename(const std::string& AFrom, const std::string& ATo) = 0;
  /// Brings the names in a folder to the medium.
  virtual int SyncFolder(const std::string& AFolder) = 0;

  /// Both with a trailing separator; empty if unknown.
  virtual std::string CurrentFolder() = 0;
  virtual std::string TemporaryFolder() = 0;
};

/// The layer in use: that of the operating system unless SetFileLayer gave another.
TESSARINE_API IFileLayer& CurrentFileLayer();

/// Makes ALayer the layer in use (null: that of the operating system) and returns the one before, null for the
/// system's. For tests: streams that are open must not outlive the layer they were opened with.
TESSARINE_API IFileLayer* SetFileLayer(IFileLayer* ALayer);

}  // namespace tessarine

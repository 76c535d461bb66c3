#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/platform/ByteBuffer.h>

namespace tessarine {

class IFileLayer;

/// A source of bytes that is read once, from front to end.
class TESSARINE_API IReadStream {
 public:
  virtual ~IReadStream();

  /// Reads up to ABuffer.size() bytes and returns how many; 0 means the end (or an empty buffer). May return fewer than
  /// asked for before the end. Throws EFileAccess when reading fails.
  virtual size_t Read(std::span<std::byte> ABuffer) = 0;

  /// The number of bytes that the whole stream holds, where that is known. A hint: what Read gives decides.
  virtual std::optional<uint64_t> Size() const { return std::nullopt; }
};

/// A place for bytes.
class TESSARINE_API IWriteStream {
 public:
  virtual ~IWriteStream();

  /// Writes all of ABytes or throws EFileAccess.
  virtual void Write(std::span<const std::byte> ABytes) = 0;
};

/// Reads from bytes that the caller keeps alive.
class TESSARINE_API TMemoryReadStream final : public IReadStream {
 public:
  explicit TMemoryReadStream(std::span<const std::byte> ABytes) : FRest(ABytes), FSize(ABytes.size()) {}
  size_t Read(std::span<std::byte> ABuffer) override;
  std::optional<uint64_t> Size() const override { return FSize; }

 private:
  std::span<const std::byte> FRest;
  uint64_t FSize;
};

/// Collects bytes in memory, one piece of it.
class TESSARINE_API TMemoryWriteStream final : public IWriteStream {
 public:
  TMemoryWriteStream() = default;
  TMemoryWriteStream(TMemoryWriteStream&& AOther) noexcept;
  TMemoryWriteStream& operator=(TMemoryWriteStream&& AOther) noexcept;

  void Write(std::span<const std::byte> ABytes) override;
  /// Valid until the next Write.
  std::span<const std::byte> Bytes() const { return FBuffer.Bytes().first(FUsed); }
  /// A copy of them.
  std::vector<std::byte> ToVector() const { return {Bytes().begin(), Bytes().end()}; }

 private:
  TByteBuffer FBuffer;
  size_t FUsed = 0;
};

/// Opens a file for reading, with sharing open to everyone. File names are UTF-8. Throws EFileAccess.
TESSARINE_API std::unique_ptr<IReadStream> OpenFileForReading(const std::string& AFileName);

/// A file that is written from its start: created, or emptied if it exists. Bytes may wait in a buffer; Close brings
/// them to the file, and the destructor tries to but tells no error.
class TESSARINE_API TFileWriteStream final : public IWriteStream {
 public:
  /// APermissions are those of a file that is created here (the bits of POSIX); without them the system's default
  /// applies. With AMustBeNew nothing may stand there yet. Throws EFileAccess.
  explicit TFileWriteStream(const std::string& AFileName, std::optional<uint32_t> APermissions = std::nullopt,
                            bool AMustBeNew = false);
  TFileWriteStream(const TFileWriteStream&) = delete;
  TFileWriteStream& operator=(const TFileWriteStream&) = delete;
  ~TFileWriteStream() override;

  void Write(std::span<const std::byte> ABytes) override;
  /// Writes what waits; with ASync also asks the system to bring the data to the medium. Throws EFileAccess.
  void Flush(bool ASync);
  /// Flush(false) and close. Does nothing when closed already.
  void Close();

 private:
  void WriteThrough(std::span<const std::byte> ABytes);

  std::string FFileName;
  IFileLayer& FLayer;
  std::vector<std::byte> FBuffer;
  int64_t FHandle = -1;  // of the file layer; -1 when closed
};

/// All that AStream still gives. Throws ELimit when that is more than ALimit bytes.
TESSARINE_API std::vector<std::byte> ReadAllBytes(IReadStream& AStream, uint64_t ALimit);

struct TSharedReadStream {
  std::unique_ptr<IReadStream> Stream;
  bool IsCopy = false;  ///< the stream reads a copy in the system's temporary folder, which stays there
};

/// Opens a file for reading while other programs may use it. Throws EFileAccess "File not found: NAME" when there is no
/// such file (a folder is none). When the file exists and does not open, it is copied to the temporary folder and the
/// copy is opened; what fails then is thrown.
TESSARINE_API TSharedReadStream OpenSharedReadStream(const std::string& AFileName);

/// Writes a file so that its old content stays until the new one is complete: AWriteProc writes to a file beside it,
/// named like it with ".tessarine.tmp" added; the data is brought to the medium, and one rename replaces AFileName.
/// An old temporary file is deleted first. The new file gets the permissions of the old one.
/// An exception of AWriteProc, and an EFileAccess of creating, writing or flushing, goes to the caller as it is. When
/// the rename fails, EFileAccess names both files. In every case of failure AFileName is as it was and the temporary
/// file stays: it is the user's rescue copy.
TESSARINE_API void SaveToFileViaTemp(const std::string& AFileName,
                                     const std::function<void(IWriteStream&)>& AWriteProc);

}  // namespace tessarine

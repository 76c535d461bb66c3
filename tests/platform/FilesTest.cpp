#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Progress.h>
#include <tests/support/FailingFileLayer.h>
#include <tests/support/TemporaryFolder.h>

namespace tessarine::test {
namespace {

std::span<const std::byte> BytesOf(std::string_view AText) {
  return std::as_bytes(std::span<const char>(AText.data(), AText.size()));
}

std::string TextOf(const std::vector<std::byte>& ABytes) {
  return std::string(reinterpret_cast<const char*>(ABytes.data()), ABytes.size());
}

void SaveText(const std::string& AFileName, std::string_view AText) {
  SaveToFileViaTemp(AFileName, [&](IWriteStream& AStream) { AStream.Write(BytesOf(AText)); });
}

/// The message of the EFileAccess that AWork throws.
template <typename TWork>
std::string AccessError(TWork AWork) {
  try {
    AWork();
  } catch (const EFileAccess& error) {
    return error.what();
  }
  return "(no error)";
}

std::string TempOf(const std::string& AFileName) { return AFileName + ".tessarine.tmp"; }

std::string CannotSave(const std::string& AFileName, const std::string& ATemporary) {
  return "Cannot save to \"" + AFileName +
         "\" because it is open in another program.\r\nYour changes were saved to:\r\n" + ATemporary;
}

unsigned PermissionsOf(const std::string& APath) {
  struct stat status {};
  EXPECT_EQ(::stat(APath.c_str(), &status), 0) << APath;
  return status.st_mode & 0777;
}

TEST(Files, SavingReplacesTheTargetAndLeavesNoTemporaryFile) {
  const TTemporaryFolder folder;
  const std::string target = folder.Path(
      "b\xC3\xBC"
      "cher.tsr");
  WriteFile(TempOf(target), "left over from a crash, and longer than what comes");
  SaveText(target, "one");
  EXPECT_EQ(ContentOf(target), "one");
  SaveText(target, "two");
  EXPECT_EQ(ContentOf(target), "two");
  EXPECT_EQ(ContentOf(TempOf(target)), "(missing)");
}

TEST(Files, SavingKeepsThePermissionsOfTheTarget) {
  const TTemporaryFolder folder;
  const std::string target = folder.Path("a.tsr");
  for (const mode_t mode : {0600, 0640, 0666, 0444, 0755}) {
    WriteFile(target, "old");
    ASSERT_EQ(::chmod(target.c_str(), mode), 0);
    SaveText(target, "new");
    EXPECT_EQ(PermissionsOf(target), mode);
    EXPECT_EQ(ContentOf(target), "new");
    ASSERT_EQ(::chmod(target.c_str(), 0600), 0);
  }
}

TEST(Files, SavingDoesNotFollowALinkAtTheTemporaryName) {
  const TTemporaryFolder folder;
  const std::string target = folder.Path("a.tsr");
  std::filesystem::create_symlink(folder.Path("elsewhere"), TempOf(target));
  SaveText(target, "new");
  EXPECT_EQ(ContentOf(target), "new");
  EXPECT_EQ(ContentOf(folder.Path("elsewhere")), "(missing)");
}

TEST(Files, AFailingReplacementNamesBothFilesAndKeepsTheRescueCopy) {
  const TTemporaryFolder folder;
  const std::string target = folder.Path("sheets");
  std::filesystem::create_directory(target);
  EXPECT_EQ(AccessError([&] { SaveText(target, "rescued"); }), CannotSave(target, TempOf(target)));
  EXPECT_EQ(ContentOf(TempOf(target)), "rescued");
  EXPECT_TRUE(std::filesystem::is_directory(target));
}

TEST(Files, ANameWithoutFolderIsSavedInTheCurrentOne) {
  const TTemporaryFolder folder;
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path(""));
  std::filesystem::create_directory("sheets");
  SaveText("a.tsr", "here");
  const std::string temporary = std::filesystem::current_path().string() + "/sheets.tessarine.tmp";
  EXPECT_EQ(AccessError([&] { SaveText("sheets", "rescued"); }), CannotSave("sheets", temporary));
  std::filesystem::current_path(before);
  EXPECT_EQ(ContentOf(folder.Path("a.tsr")), "here");
  EXPECT_EQ(ContentOf(folder.Path("sheets.tessarine.tmp")), "rescued");
}

TEST(Files, AnExceptionOfTheWriterPassesAndLeavesBothFiles) {
  const TTemporaryFolder folder;
  const std::string target = folder.Path("a.tsr");
  WriteFile(target, "old");
  const auto save = [&] {
    SaveToFileViaTemp(target, [](IWriteStream& AStream) {
      AStream.Write(BytesOf("half"));
      throw ECancelled("stopped");
    });
  };
  EXPECT_THROW(save(), ECancelled);
  EXPECT_EQ(ContentOf(target), "old");
  EXPECT_EQ(ContentOf(TempOf(target)), "half");
}

TEST(Files, TheTargetIsWholeWhicheverCallOfSavingFails) {
  const TTemporaryFolder folder;
  const std::string target = folder.Path("a.tsr");
  const std::string content(200'000, 'n');
  const auto save = [&] {
    SaveToFileViaTemp(target, [&](IWriteStream& AStream) {
      for (size_t at = 0; at < content.size(); at += 25'000) AStream.Write(BytesOf(content).subspan(at, 25'000));
    });
  };
  constexpr size_t kMostBytes = 30'000;
  std::vector<std::string> calls;
  {
    TFailingFileLayer layer(TFailingFileLayer::kNever, kMostBytes);
    save();
    calls = layer.Calls();
    EXPECT_EQ(layer.OpenHandles(), 0);
  }
  EXPECT_EQ(calls.front(), "remove");
  EXPECT_GT(std::count(calls.begin(), calls.end(), "write"), 6);
  EXPECT_EQ((std::vector<std::string>(calls.end() - 4, calls.end())),
            (std::vector<std::string>{"sync", "close", "rename", "sync folder"}));

  for (size_t failing = 0; failing < calls.size(); ++failing) {
    SCOPED_TRACE("call " + std::to_string(failing) + ", " + calls[failing]);
    WriteFile(target, "old");
    WriteFile(TempOf(target), "from before");
    TFailingFileLayer layer(failing, kMostBytes);
    const std::string error = AccessError(save);
    EXPECT_EQ(layer.OpenHandles(), 0);
    if (calls[failing] == "sync folder") {
      EXPECT_EQ(error, "(no error)");
      EXPECT_EQ(ContentOf(target), content);
      continue;
    }
    EXPECT_EQ(ContentOf(target), "old");
    const std::string rescue = ContentOf(TempOf(target));
    if (calls[failing] == "rename") {
      EXPECT_EQ(error, CannotSave(target, TempOf(target)));
      EXPECT_EQ(rescue, content);
    } else {
      EXPECT_NE(error.find("No space left on device"), std::string::npos) << error;
      EXPECT_NE(error.find(TempOf(target)), std::string::npos) << error;
      EXPECT_EQ(rescue, calls[failing] == "remove"             ? "from before"
                        : calls[failing] == "open for writing" ? "(missing)"
                                                               : content.substr(0, rescue.size()));
    }
  }
}

TEST(Files, OpeningTellsWhatIsMissing) {
  const TTemporaryFolder folder;
  for (const std::string& name :
       {folder.Path("none.xlsx"), folder.Path(""), folder.Path("no/such/folder.xlsx"), std::string()})
    EXPECT_EQ(AccessError([&] { OpenSharedReadStream(name); }), "File not found: " + name);
  // The system would take a name with a zero byte for the shorter one.
  WriteFile(folder.Path("a"), "content");
  EXPECT_THROW(OpenSharedReadStream(folder.Path("a") + std::string("\0b", 2)), EFileAccess);
}

TEST(Files, AFileThatDoesNotOpenIsReadFromACopy) {
  const TTemporaryFolder folder;
  const std::string source = folder.Path("locked.xlsx");
  const std::string content(300'000, 'x');
  WriteFile(source, content);
  const char* previous = std::getenv("TMPDIR");
  const std::string saved = previous != nullptr ? previous : "";
  const std::string copies = folder.Path("copies");
  std::filesystem::create_directory(copies);
  ::setenv("TMPDIR", copies.c_str(), 1);
  {
    TFailingFileLayer layer(0);  // the first opening
    const TSharedReadStream opened = OpenSharedReadStream(source);
    EXPECT_TRUE(opened.IsCopy);
    EXPECT_EQ(TextOf(ReadAllBytes(*opened.Stream, 1 << 20)), content);
  }
  const std::filesystem::path copy = *std::filesystem::directory_iterator(copies);
  EXPECT_TRUE(copy.filename().string().starts_with("tessarine_"));
  EXPECT_TRUE(copy.filename().string().ends_with("_locked.xlsx"));
  EXPECT_EQ(copy.filename().string().size(), std::strlen("tessarine_hhnnsszzz_locked.xlsx"));
  EXPECT_EQ(PermissionsOf(copy.string()), 0600u);
  EXPECT_FALSE(OpenSharedReadStream(source).IsCopy);
  if (previous != nullptr)
    ::setenv("TMPDIR", saved.c_str(), 1);
  else
    ::unsetenv("TMPDIR");
}

TEST(Files, ReadingStopsAtTheLimit) {
  const TTemporaryFolder folder;
  const std::string content(700'000, 'c');
  WriteFile(folder.Path("a"), content);
  EXPECT_EQ(TextOf(ReadAllBytes(*OpenFileForReading(folder.Path("a")), content.size())), content);
  EXPECT_THROW(ReadAllBytes(*OpenFileForReading(folder.Path("a")), content.size() - 1), ELimit);
  WriteFile(folder.Path("empty"), "");
  EXPECT_TRUE(ReadAllBytes(*OpenFileForReading(folder.Path("empty")), 0).empty());
  EXPECT_THROW(ReadAllBytes(*OpenFileForReading(folder.Path("")), 100), EFileAccess);
}

/// Gives one byte a call and tells a wrong size.
class TSlowStream final : public IReadStream {
 public:
  TSlowStream(std::string AText, std::optional<uint64_t> ASize) : FText(std::move(AText)), FSize(ASize) {}
  size_t Read(std::span<std::byte> ABuffer) override {
    if (FAt == FText.size() || ABuffer.empty()) return 0;
    ABuffer[0] = static_cast<std::byte>(FText[FAt++]);
    return 1;
  }
  std::optional<uint64_t> Size() const override { return FSize; }

 private:
  std::string FText;
  std::optional<uint64_t> FSize;
  size_t FAt = 0;
};

TEST(Files, WhatAStreamGivesCountsNotTheSizeItTells) {
  const std::string content(10'000, 's');
  for (const auto told : {std::optional<uint64_t>(), std::optional<uint64_t>(0), std::optional<uint64_t>(20'000)}) {
    TSlowStream stream(content, told);
    EXPECT_EQ(TextOf(ReadAllBytes(stream, 20'000)), content);
    TSlowStream again(content, told);
    EXPECT_THROW(ReadAllBytes(again, 9'999), ELimit);
  }
}

TEST(Files, MemoryStreamsGiveBackWhatWasWritten) {
  TMemoryWriteStream out;
  out.Write(BytesOf("abc"));
  out.Write({});
  out.Write(BytesOf("de"));
  const std::vector<std::byte> bytes = out.ToVector();
  TMemoryReadStream in(bytes);
  std::byte buffer[2];
  EXPECT_EQ(in.Read(buffer), 2u);
  EXPECT_EQ(TextOf(ReadAllBytes(in, 5)), "cde");
  EXPECT_EQ(in.Read(buffer), 0u);
}

TEST(WorkControl, StopsAndReportsOnlyWhenAsked) {
  std::stop_source source;
  std::vector<double> fractions;
  const TWorkControl idle;
  idle.CheckStop();
  idle.Report(ppSaving, 0.5);
  const TWorkControl control{source.get_token(),
                             [&](const TTessarineProgressEvent& AEvent) { fractions.push_back(AEvent.Fraction); }};
  control.CheckStop();
  for (const double fraction : {-1.0, 0.25, 7.0, std::numeric_limits<double>::quiet_NaN()})
    control.Report(ppLoading, fraction, "xl/workbook.xml");
  EXPECT_EQ(fractions, (std::vector<double>{0, 0.25, 1, 0}));
  source.request_stop();
  EXPECT_TRUE(control.StopRequested());
  EXPECT_THROW(control.CheckStop(), ECancelled);
}

}  // namespace
}  // namespace tessarine::test

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Zip.h>

#include "../support/Thrown.h"
#include "../support/ZipBuilder.h"

namespace tessarine::test {
namespace {

std::string TextOf(const TZipReader& AZip, std::string_view AName) {
  const auto part = AZip.Read(AName);
  return part ? std::string(part->Text()) : "(missing)";
}

/// Text that deflates well but not absurdly.
std::string SheetLike(size_t ASize) {
  std::string text;
  for (unsigned row = 1; text.size() < ASize; ++row) {
    text += "<c r=\"A" + std::to_string(row) + "\"><v>" + std::to_string(row * 2654435761u) + "</v></c>";
  }
  text.resize(ASize);
  return text;
}

TEST(ZipReader, ReadsPartsHoweverTheArchiveIsLaidOut) {
  const std::string big = SheetLike(9'000'000);
  const struct {
    const char* Layout;
    std::function<void(TZipBuilder&)> Change;
  } cases[] = {
      {"plain", [](TZipBuilder&) {}},
      {"comment", [](TZipBuilder& AZip) { AZip.Comment = "PK\5\6 is no end record here, just a remark"; }},
      {"longest comment", [](TZipBuilder& AZip) { AZip.Comment = std::string(65535, 'c'); }},
      {"data in front", [](TZipBuilder& AZip) { AZip.Prefix = std::string(1000, 'x') + "PK\3\4"; }},
      {"data behind", [](TZipBuilder& AZip) { AZip.Suffix = std::string(500, '\0'); }},
      {"64-bit end record", [](TZipBuilder& AZip) { AZip.HasZip64End = true; }},
      {"64-bit end record with data in front",
       [](TZipBuilder& AZip) {
         AZip.HasZip64End = true;
         AZip.Prefix = std::string(70000, 'x');
       }},
  };
  for (const auto& row : cases) {
    TZipBuilder builder;
    builder.Add("stored.txt", "as it is", zmStore);
    builder.Add("deflated.xml", big);
    builder.Add("late.xml", "<late/>").HasDataDescriptor = true;
    builder.Add("wide.xml", "<wide/>").IsZip64 = true;
    builder.Add("empty stored", "", zmStore);
    builder.Add("empty deflated", "");
    row.Change(builder);
    const TZipReader zip(builder.Finish());
    ASSERT_EQ(zip.EntryCount(), 6u) << row.Layout;
    EXPECT_EQ(TextOf(zip, "stored.txt"), "as it is") << row.Layout;
    EXPECT_TRUE(TextOf(zip, "deflated.xml") == big) << row.Layout;
    EXPECT_EQ(TextOf(zip, "late.xml"), "<late/>") << row.Layout;
    EXPECT_EQ(TextOf(zip, "wide.xml"), "<wide/>") << row.Layout;
    EXPECT_EQ(TextOf(zip, "empty stored"), "") << row.Layout;
    EXPECT_EQ(TextOf(zip, "empty deflated"), "") << row.Layout;
    EXPECT_EQ(TextOf(zip, "none"), "(missing)") << row.Layout;
  }
}

TEST(ZipReader, OpensAnArchiveWithoutEntries) {
  const TZipReader zip(TZipBuilder().Finish());
  EXPECT_EQ(zip.EntryCount(), 0u);
  EXPECT_EQ(zip.Find(""), std::nullopt);
}

TEST(ZipReader, FindsTheFirstEntryOfANameInAnyCase) {
  TZipBuilder builder;
  builder.Add("XL/Workbook.xml", "first");
  builder.Add("xl/workbook.xml", "second");
  builder.Add("xl\\worksheets\\sheet1.xml", "backslash");
  builder.Add("../../etc/passwd", "just a name");
  builder.Add("/root", "just a name");
  builder.Add("\xc3\xa4.xml", "utf-8");
  builder.Add("\x84.xml", "code page 437");
  const TZipReader zip(builder.Finish());
  const struct {
    const char* Name;
    std::optional<size_t> Index;
  } cases[] = {
      {"xl/workbook.xml", 0},
      {"XL/WORKBOOK.XML", 0},
      {"xl/worksheets/sheet1.xml", 2},
      {"../../etc/passwd", 3},
      {"/root", 4},
      {"root", std::nullopt},
      {"xl/workbook.xm", std::nullopt},
      {"xl/workbook.xmlx", std::nullopt},
      {"", std::nullopt},
      {"\xc3\xa4.xml", 5},
      {"\xc3\x84.xml", std::nullopt},
  };
  for (const auto& row : cases) EXPECT_EQ(zip.Find(row.Name), row.Index) << row.Name;
  EXPECT_EQ(zip.Name(2), "xl/worksheets/sheet1.xml");
  EXPECT_EQ(zip.Name(6), "\xc3\xa4.xml");
}

TEST(ZipReader, RefusesADamagedPartByNameAndOnlyWhenItIsRead) {
  const struct {
    const char* Finding;
    std::function<void(TZipBuilderEntry&)> Damage;
  } cases[] = {
      {"is encrypted", [](auto& AEntry) { AEntry.Flags = 1; }},
      {"is encrypted", [](auto& AEntry) { AEntry.Flags = 1 << 6; }},
      {"method 14", [](auto& AEntry) { AEntry.DirectoryMethod = 14; }},
      {"checksum", [](auto& AEntry) { AEntry.DirectoryCrc = 1; }},
      {"does not inflate to", [](auto& AEntry) { AEntry.DirectorySize = AEntry.Content.size() - 1; }},
      {"does not inflate to", [](auto& AEntry) { AEntry.DirectorySize = AEntry.Content.size() + 1; }},
      {"does not inflate to", [](auto& AEntry) { AEntry.DirectorySize = 0; }},
      {"cannot give", [](auto& AEntry) { AEntry.DirectorySize = 60'000'000; }},
      {"cannot be inflated", [](auto& AEntry) { AEntry.Packed = std::string(20, '\xff'); }},
      {"cannot be inflated",
       [](auto& AEntry) { AEntry.Packed = Deflate(AEntry.Content).substr(0, Deflate(AEntry.Content).size() / 2); }},
      {"cannot give", [](auto& AEntry) { AEntry.DirectoryPackedSize = 0; }},
      {"two sizes differ", [](auto& AEntry) { AEntry.DirectoryMethod = 0; }},
      {"wrong place", [](auto& AEntry) { AEntry.DirectoryOffset = 1; }},
      {"wrong place", [](auto& AEntry) { AEntry.DirectoryOffset = 0x7fffffff; }},
      {"wrong place",
       [](auto& AEntry) {
         AEntry.IsZip64 = true;
         AEntry.DirectoryOffset = ~uint64_t{0} - 3;
       }},
      {"beyond the end",
       [](auto& AEntry) {
         AEntry.IsZip64 = true;
         AEntry.DirectoryPackedSize = ~uint64_t{0};
       }},
      {"overlaps", [](auto& AEntry) { AEntry.DirectoryOffset = 0; }},
      {"overlaps", [](auto& AEntry) { AEntry.DirectoryPackedSize = Deflate(AEntry.Content).size() + 10; }},
  };
  for (const auto& row : cases) {
    TZipBuilder builder;
    builder.Add("first.xml", "<first/>");
    row.Damage(builder.Add("xl/bad.xml", SheetLike(4000)));
    builder.Add("last.xml", "<last/>");
    const TZipReader zip(builder.Finish());
    EXPECT_EQ(TextOf(zip, "last.xml"), "<last/>") << row.Finding;
    const std::string thrown = Thrown([&] { static_cast<void>(zip.Read("xl/bad.xml")); });
    EXPECT_TRUE(thrown.starts_with("format: xl/bad.xml: ") && thrown.find(row.Finding) != std::string::npos)
        << "instead of " << row.Finding << ": " << thrown;
  }
}

TEST(ZipReader, RefusesBytesThatAreNoArchive) {
  TZipBuilder builder;
  builder.Add("a.xml", SheetLike(3000));
  builder.Add("b.xml", "<b/>");
  builder.Add("a name with room for one more entry of the directory", "<c/>");
  const auto good = builder.Finish();
  const auto cut = [&](size_t AFrom, size_t ACount) {
    return std::vector<std::byte>(good.begin() + static_cast<std::ptrdiff_t>(AFrom),
                                  good.begin() + static_cast<std::ptrdiff_t>(AFrom + ACount));
  };
  TZipBuilder manyEntries = builder, noEntry = builder, misplaced = builder;
  manyEntries.EndCount = 4;
  noEntry.EndCount = 9000;
  misplaced.EndDirectoryOffset = 0x7fffffff;
  const struct {
    const char* Finding;
    std::vector<std::byte> Bytes;
  } cases[] = {
      {"format: not a ZIP archive: the file is empty", {}},
      {"format: not a ZIP archive, or one that was cut off", ToBytes("<html></html>")},
      {"format: not a ZIP archive, or one that was cut off", cut(0, good.size() / 2)},
      {"format: not a ZIP archive, or one that was cut off", cut(0, good.size() - 1)},
      {"format: ZIP archive: the directory is not where", cut(good.size() - 22, 22)},
      {"format: ZIP archive: the directory is not where", cut(good.size() - 60, 60)},
      {"format: ZIP archive: entry 4 of the directory is damaged", manyEntries.Finish()},
      {"format: ZIP archive: the directory is too small", noEntry.Finish()},
      {"format: ZIP archive: the directory is not where", misplaced.Finish()},
  };
  for (const auto& row : cases) {
    EXPECT_TRUE(Thrown([&] { TZipReader zip(row.Bytes); }).starts_with(row.Finding))
        << row.Finding << " / " << Thrown([&] { TZipReader zip(row.Bytes); });
  }
}

TEST(ZipReader, KeepsItsLimits) {
  const std::string dull(80 << 20, ' ');
  TZipBuilder builder;
  builder.Add("dull.xml", dull);
  builder.Add("less.xml", std::string_view(dull).substr(0, 60 << 20));
  builder.Add("small.xml", SheetLike(1000));
  const auto bytes = builder.Finish();
  const auto tryRead = [&](const TReadLimits& ALimits, std::string_view AName, int ATimes = 1) {
    return Thrown([&] {
      const TZipReader zip(bytes, ALimits);
      for (int i = 0; i < ATimes; ++i) static_cast<void>(zip.Read(AName));
    });
  };
  EXPECT_TRUE(tryRead({}, "dull.xml").starts_with("limit: dull.xml: the part inflates "));
  EXPECT_EQ(tryRead({}, "less.xml"), "nothing");  // the ratio counts only far out
  EXPECT_EQ(tryRead({.MaxRatio = 2000}, "dull.xml"), "nothing");
  EXPECT_EQ(tryRead({.MaxPartBytes = 1000}, "small.xml"), "nothing");
  EXPECT_EQ(tryRead({.MaxPartBytes = 999}, "small.xml"),
            "limit: small.xml: the part inflates to 1000 bytes, the limit is 999");
  EXPECT_EQ(tryRead({.MaxTotalBytes = 3000}, "small.xml", 3), "nothing");
  EXPECT_EQ(tryRead({.MaxTotalBytes = 2999}, "small.xml", 3),
            "limit: small.xml: with this part the archive inflates to 3000 bytes, the limit is 2999");
  EXPECT_EQ(tryRead({.MaxEntries = 3}, "small.xml"), "nothing");
  EXPECT_EQ(tryRead({.MaxEntries = 2}, "small.xml"), "limit: ZIP archive: it has 3 entries, the limit is 2");
}

TEST(ZipReader, CountsOnlyReadingsThatSucceed) {
  TZipBuilder builder;
  builder.Add("bad.xml", SheetLike(1000)).DirectoryCrc = 0;
  builder.Add("good.xml", SheetLike(1000));
  const TZipReader zip(builder.Finish(), {.MaxTotalBytes = 1500});
  for (int i = 0; i < 5; ++i) EXPECT_THROW(static_cast<void>(zip.Read("bad.xml")), EFileFormat);
  EXPECT_EQ(TextOf(zip, "good.xml").size(), 1000u);
}

TEST(ZipReader, LimitsHaveACeilingAndAFloor) {
  EXPECT_EQ(TReadLimits{}.Clamped(), TReadLimits{});
  TReadLimits most;
  most.MaxEntries = most.MaxRatio = most.MaxXmlDepth = most.MaxXmlAttributes = most.MaxXmlTreeNodes = ~uint32_t{0};
  most.MaxPartBytes = most.MaxTotalBytes = most.RatioFreeBytes = ~uint64_t{0};
  EXPECT_LT(most.Clamped().MaxXmlDepth, 100'000u);
  EXPECT_LT(most.Clamped().MaxTotalBytes, uint64_t{1} << 40);
  EXPECT_EQ(TReadLimits{.MaxXmlDepth = 0}.Clamped().MaxXmlDepth, 1u);
}

TEST(ZipReader, ReadsPartsOnSeveralThreadsAtATime) {
  TZipBuilder builder;
  std::vector<std::string> contents;
  for (size_t i = 0; i < 40; ++i) {
    contents.push_back(SheetLike(1000 + 100 * i));
    builder.Add("part" + std::to_string(i), contents.back());
  }
  const TZipReader zip(builder.Finish());
  std::atomic<int> wrong{0};
  {
    std::vector<std::jthread> threads;
    for (size_t first = 0; first < 4; ++first) {
      threads.emplace_back([&, first] {
        for (size_t i = first; i < contents.size(); ++i) wrong += zip.Read(i).Text() != contents[i];
      });
    }
  }
  EXPECT_EQ(wrong, 0);
}

/// Whatever bytes are flipped or cut, opening and reading end in parts with a right checksum or in a clear error.
TEST(ZipReader, SurvivesGarbledArchives) {
  TZipBuilder builder;
  builder.Comment = "remark";
  builder.Add("a.xml", SheetLike(300)).IsZip64 = true;
  builder.Add("b.xml", SheetLike(200)).HasDataDescriptor = true;
  builder.Add("c.xml", SheetLike(100), zmStore);
  builder.HasZip64End = true;
  const auto good = builder.Finish();
  std::mt19937 random(7);
  size_t opened = 0;
  for (int round = 0; round < 20'000; ++round) {
    auto bytes = good;
    for (auto flips = random() % 4 + 1; flips > 0; --flips) {
      bytes[random() % bytes.size()] = static_cast<std::byte>(random() % 3 == 0 ? 0xff : random());
    }
    if (random() % 8 == 0) bytes.resize(random() % bytes.size());
    try {
      const TZipReader zip(std::move(bytes));
      ++opened;
      for (size_t i = 0; i < zip.EntryCount(); ++i) {
        EXPECT_LE(zip.Find(zip.Name(i)).value_or(i + 1), i);
        try {
          EXPECT_EQ(zip.Read(i).Size(), zip.DeclaredSize(i));
        } catch (const ETessarineError& error) {
          EXPECT_NE(std::string(error.what()).find(": "), std::string::npos);
        }
      }
    } catch (const ETessarineError& error) {
      EXPECT_NE(std::string(error.what()).find("ZIP archive"), std::string::npos);
    }
  }
  EXPECT_GT(opened, 1000u);
}

TEST(ZipReader, ReadsTheBrokenFilesOfTheCorpusOrSaysWhatIsWrong) {
  const std::filesystem::path folder = TESS_SOURCE_DIR "/../shared/corpus/broken";
  if (!std::filesystem::exists(folder)) GTEST_SKIP() << "no corpus beside the source tree";
  const struct {
    const char* File;
    const char* Part;
    const char* Finding;
  } cases[] = {
      {"derived_empty.xlsx", "", "format: not a ZIP archive: the file is empty"},
      {"derived_trunc50.xlsx", "", "format: not a ZIP archive, or one that was cut off"},
      {"derived_trunc60.ods", "", "format: not a ZIP archive, or one that was cut off"},
      {"derived_dup_entries.xlsx", "xl/worksheets/sheet1.xml", "nothing"},
      {"derived_traversal.xlsx", "xl/workbook.xml", "nothing"},
      {"derived_zipbomb_200M.xlsx", "xl/worksheets/sheet3.xml", "limit: xl/worksheets/sheet3.xml: the part inflates "},
  };
  for (const auto& row : cases) {
    std::ifstream in(folder / row.File, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    const std::string thrown = Thrown([&] {
      const TZipReader zip(ToBytes(bytes));
      ASSERT_TRUE(zip.Read(row.Part)) << row.File;
    });
    EXPECT_TRUE(thrown.starts_with(row.Finding)) << row.File << ": " << thrown;
  }
}

}  // namespace
}  // namespace tessarine::test

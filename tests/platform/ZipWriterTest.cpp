#include <random>
#include <span>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>
#include <tessarine/platform/XmlText.h>
#include <tessarine/platform/XmlTree.h>
#include <tessarine/platform/Zip.h>
#include <tessarine/platform/ZipWriter.h>

namespace tessarine {
namespace {

std::string TextOf(const TByteBuffer& ABuffer) { return std::string(ABuffer.Text()); }

TEST(ZipWriter, ReadsBackWhatWasAdded) {
  std::mt19937 random(7);
  std::string noise(300'000, ' ');
  for (char& unit : noise) unit = static_cast<char>(random());
  const std::string dull(5'000'000, 'a');

  TMemoryWriteStream stream;
  TZipWriter zip(stream, {});
  zip.AddStored("mimetype", "application/x");
  zip.Add("empty", std::string());
  zip.Add("xl/noise.bin", std::as_bytes(std::span(noise)));
  zip.Add("xl/dull.xml", dull);
  zip.Add("xl/\xC3\xA4.xml", std::string("<a/>"));
  EXPECT_TRUE(zip.Contains("XL/Dull.xml"));
  EXPECT_FALSE(zip.Contains("xl/dull"));
  EXPECT_THROW(zip.Add("Xl/DULL.xml", std::string("x")), EArgument);
  EXPECT_THROW(zip.Add("", std::string("x")), EArgument);
  zip.Finish();
  EXPECT_LT(stream.Bytes().size(), 400'000u);

  const TZipReader reader(stream.ToVector());
  ASSERT_EQ(reader.EntryCount(), 5u);
  EXPECT_EQ(reader.Name(0), "mimetype");
  EXPECT_EQ(TextOf(reader.Read(0)), "application/x");
  EXPECT_EQ(TextOf(reader.Read(1)), "");
  EXPECT_EQ(TextOf(reader.Read(2)), noise);
  EXPECT_EQ(TextOf(reader.Read(3)), dull);
  EXPECT_EQ(reader.Name(4), "xl/\xC3\xA4.xml");
}

std::vector<std::byte> Archive(const TZipWriteOptions& AOptions) {
  TMemoryWriteStream stream;
  TZipWriter zip(stream, AOptions);
  zip.Add("a.xml", std::string(100'000, 'x'));
  zip.Finish();
  return stream.ToVector();
}

TEST(ZipWriter, TheSameContentGivesTheSameBytesUnlessTimed) {
  const std::vector<std::byte> fixed = Archive({});
  EXPECT_EQ(Archive({}), fixed);
  EXPECT_EQ(Archive({.Time = 1.0}), fixed) << "a time that the format cannot tell";
  const std::vector<std::byte> timed = Archive({.Time = 45000.75});
  EXPECT_NE(timed, fixed);
  // 2023-03-15 18:00:00: date and time stand at 10 of the local header.
  const unsigned time = (43u << 9 | 3u << 5 | 15u) << 16 | 18u << 11;
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(std::to_integer<unsigned>(timed[10 + i]), time >> (8 * i) & 0xff) << i;
}

TEST(ZipWriter, ManyEntriesNeedTheLargeDirectory) {
  TMemoryWriteStream stream;
  TZipWriter zip(stream, {});
  constexpr int kCount = 65'600;
  for (int i = 0; i < kCount; ++i) zip.Add("e" + std::to_string(i), std::to_string(i));
  zip.Finish();
  const TZipReader reader(stream.ToVector(), {.MaxEntries = 100'000});
  ASSERT_EQ(reader.EntryCount(), size_t{kCount});
  EXPECT_EQ(TextOf(*reader.Read("e65599")), "65599");
}

TEST(ZipWriter, WhatTheStreamThrowsReachesTheCaller) {
  struct TFullStream final : IWriteStream {
    void Write(std::span<const std::byte>) override { throw EFileAccess("the disk is full"); }
  } stream;
  TZipWriter zip(stream, {});
  zip.Add("a", std::string(200'000, 'x'));
  EXPECT_THROW(zip.Finish(), EFileAccess);
}

TEST(XmlText, EscapedTextComesBackWhole) {
  std::mt19937 random(3);
  const std::u16string units = u"_x0D5Fab&<>\"\t\n\r\u0002\uFFFF\u00E4";
  for (int round = 0; round < 2000; ++round) {
    std::u16string text;
    for (size_t i = random() % 20; i > 0; --i) text += units[random() % units.size()];
    std::string xml = "<t>";
    AppendXlsxText(text, xml);
    xml += "</t>";
    const TXmlTree tree(xml, "test");
    const TXmlNode* child = tree.Root()->FirstChild;
    ASSERT_EQ(UnescapeXlsxText(Utf8ToUtf16(child ? child->Text : std::string_view())), text) << xml;
  }
}

}  // namespace
}  // namespace tessarine

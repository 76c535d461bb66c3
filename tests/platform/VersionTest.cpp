#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <string>

#include <tessarine/Version.h>

namespace {

TEST(Version, IsTheNewestOneInTheChangeLog) {
  std::ifstream changes(TESS_SOURCE_DIR "/CHANGELOG.md");
  std::string line;
  while (std::getline(changes, line) && !line.starts_with("## [")) {}
  ASSERT_TRUE(line.starts_with("## [")) << "CHANGELOG.md has no section of a version";
  const std::string newest = line.substr(4, line.find(']') - 4);
  EXPECT_EQ(tessarine::Version(), newest);
}

}  // namespace

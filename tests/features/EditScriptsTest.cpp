#include <random>

#include <gtest/gtest.h>

#include <tests/features/RandomEditScripts.h>

namespace tessarine {
namespace {

TEST(EditScripts, KeepTheWorkbookSoundAndAreTakenBackWhole) {
  for (uint32_t seed = 1; seed <= 400; ++seed) {
    std::mt19937 random(seed);
    std::vector<uint8_t> bytes(40 + random() % 360);
    for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random());
    EXPECT_EQ(testing::TRandomEditScript(bytes).Run(), "") << "seed " << seed;
  }
}

}  // namespace
}  // namespace tessarine

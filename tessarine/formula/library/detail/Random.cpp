#include <tessarine/formula/library/detail/Random.h>

#include <bit>
#include <chrono>
#include <random>

namespace tessarine::detail {

namespace {

/// Spreads a seed over all bits of a state word (splitmix64, Steele, Lea and Flood 2014).
uint64_t NextSeedWord(uint64_t& AState) {
  uint64_t word = (AState += 0x9E3779B97F4A7C15u);
  word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9u;
  word = (word ^ (word >> 27)) * 0x94D049BB133111EBu;
  return word ^ (word >> 31);
}

struct TRandomState {
  uint64_t Words[4];

  explicit TRandomState(uint64_t ASeed) {
    for (uint64_t& word : Words) word = NextSeedWord(ASeed);
  }

  uint64_t Next() {
    const uint64_t result = std::rotl(Words[1] * 5, 7) * 9;
    const uint64_t shifted = Words[1] << 17;
    Words[2] ^= Words[0];
    Words[3] ^= Words[1];
    Words[1] ^= Words[2];
    Words[0] ^= Words[3];
    Words[2] ^= shifted;
    Words[3] = std::rotl(Words[3], 45);
    return result;
  }
};

uint64_t SystemSeed() {
  std::random_device device;
  const auto clock = static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
  return (uint64_t{device()} << 32 | device()) ^ clock;
}

TRandomState& ThreadRandom() {
  thread_local TRandomState state(SystemSeed());
  return state;
}

}  // namespace

uint64_t NextRandomBits() { return ThreadRandom().Next(); }

double RandomUnit() { return static_cast<double>(NextRandomBits() >> 11) * 0x1p-53; }

uint64_t RandomUpTo(uint64_t ALast) {
  TRandomState& state = ThreadRandom();
  const uint64_t mask = ALast == 0 ? 0 : ~uint64_t{0} >> std::countl_zero(ALast);
  for (;;) {  // at least every second draw hits
    const uint64_t drawn = state.Next() & mask;
    if (drawn <= ALast) return drawn;
  }
}

void SeedRandom(uint64_t ASeed) { ThreadRandom() = TRandomState(ASeed); }

}  // namespace tessarine::detail

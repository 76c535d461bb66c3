#pragma once

#include <cstdint>

namespace tessarine::detail {

/// The process's random numbers. Every thread has a generator of its own, seeded from the system at first use
/// (xoshiro256**, Blackman and Vigna 2018).
uint64_t NextRandomBits();

/// Uniform in [0, 1), a multiple of 2^-53.
double RandomUnit();

/// Uniform from 0 to ALast, both included.
uint64_t RandomUpTo(uint64_t ALast);

/// Starts the calling thread's generator anew from ASeed, for tests that need the same numbers again.
void SeedRandom(uint64_t ASeed);

}  // namespace tessarine::detail

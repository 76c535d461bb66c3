// Edits of all kinds, structural ones at and beyond the limits among them, with undo and redo in between: see
// RandomEditScripts.h for what must hold after each.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include <tests/features/RandomEditScripts.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::string failure = tessarine::testing::TRandomEditScript({AData, ASize}).Run();
  if (failure.empty()) return 0;
  std::fprintf(stderr, "%s\n", failure.c_str());
  std::abort();
}

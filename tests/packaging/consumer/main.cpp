#include <cstdio>

#include <tessarine/Version.h>

int main() {
  const auto version = tessarine::Version();
  std::printf("tessarine %.*s\n", static_cast<int>(version.size()), version.data());
  return version.empty() ? 1 : 0;
}

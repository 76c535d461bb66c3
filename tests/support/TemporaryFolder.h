#pragma once

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>

namespace tessarine::test {

/// A folder of its own for one test, removed with all that is in it.
class TTemporaryFolder {
 public:
  TTemporaryFolder() {
    std::random_device random;
    const auto base = std::filesystem::temp_directory_path();
    do {
      FPath = base / ("tessarine-test-" + std::to_string(random()));
    } while (!std::filesystem::create_directory(FPath));
  }
  TTemporaryFolder(const TTemporaryFolder&) = delete;
  TTemporaryFolder& operator=(const TTemporaryFolder&) = delete;
  ~TTemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(FPath, ignored);
  }

  std::string Path(const std::string& AName) const { return (FPath / AName).string(); }

 private:
  std::filesystem::path FPath;
};

inline void WriteFile(const std::string& APath, const std::string& AContent) {
  std::ofstream(APath, std::ios::binary) << AContent;
}

/// The content of a file, "(missing)" if there is none.
inline std::string ContentOf(const std::string& APath) {
  std::ifstream file(APath, std::ios::binary);
  if (!file) return "(missing)";
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

}  // namespace tessarine::test

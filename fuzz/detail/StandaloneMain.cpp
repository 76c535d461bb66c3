// Runs a fuzz target over files, for builds without libFuzzer: arguments are files, or folders that are walked in the
// order of their names. The empty input always runs. A finding ends the process as it would under the fuzzer.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <system_error>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& APath) {
  if (!fs::is_directory(APath)) return {APath};
  std::vector<fs::path> files;
  for (const auto& entry : fs::recursive_directory_iterator(APath))
    if (entry.is_regular_file()) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

bool RunFile(const fs::path& AFile) {
  std::ifstream in(AFile, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "%s: cannot be read\n", AFile.string().c_str());
    return false;
  }
  const std::string bytes{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
  // A copy of exactly this size, so that a read past the end is a read past a heap block.
  const std::vector<uint8_t> data(bytes.begin(), bytes.end());
  LLVMFuzzerTestOneInput(data.data(), data.size());
  return true;
}

}  // namespace

int main(int ACount, char** AArgs) {
  const uint8_t nothing = 0;
  LLVMFuzzerTestOneInput(&nothing, 0);
  size_t count = 1;
  bool readAll = true;
  for (int i = 1; i < ACount; ++i) {
    std::error_code missing;
    if (!fs::exists(AArgs[i], missing)) {
      std::fprintf(stderr, "%s: does not exist, skipped\n", AArgs[i]);
      continue;
    }
    for (const auto& file : FilesOf(AArgs[i])) {
      readAll = RunFile(file) && readAll;
      ++count;
    }
  }
  std::printf("%zu inputs\n", count);
  return readAll ? 0 : 1;
}

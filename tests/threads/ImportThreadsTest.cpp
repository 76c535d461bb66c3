#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/platform/Files.h>

namespace tessarine {
namespace {

/// Imports lines into a workbook of its own and looks at what is there at each report; answers the reports that found
/// a row which was not whole.
int ImportLines(int ASeed) {
  std::string lines;
  for (int row = 1; row <= 30'000; ++row)
    lines +=
        std::to_string(row) + ",word " + std::to_string((row + ASeed) % 50) + ",last " + std::to_string(row) + "\n";
  TWorkbook book;
  const TWorksheet& sheet = *book.GetSheet(0);
  int reports = 0;
  int torn = 0;
  int32_t last = 0;
  TCsvImportOptions options;
  options.Control.Progress = [&](const TTessarineProgressEvent&) {
    ++reports;
    while (sheet.GetEffectiveValue({3, last + 1}).Kind == cvkText) ++last;
    if (sheet.GetEffectiveValue({1, last}).Number != last) ++torn;
  };
  TMemoryReadStream stream(std::as_bytes(std::span<const char>(lines)));
  TCsvIO::ImportWithOptions(book, stream, 0, options);
  return reports > 2 && last == 30'000 ? torn : -1;
}

TEST(Threads, ReportsOfAnImportFindWhatWasRead) {
  std::vector<int> torn(3, -2);
  std::vector<std::thread> threads;
  for (size_t i = 0; i < torn.size(); ++i)
    threads.emplace_back([&torn, i] { torn[i] = ImportLines(static_cast<int>(i)); });
  for (std::thread& thread : threads) thread.join();
  for (const int count : torn) EXPECT_EQ(count, 0);
}

}  // namespace
}  // namespace tessarine

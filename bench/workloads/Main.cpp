// tessarine-bench: runs whole workloads, each in a process of its own so that its peak memory is its own.
//   tessarine-bench [--json] [--scale X] [--folder DIR] W1 W5 ...      (no name: all of them)

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "Workload.h"

namespace tessarine::bench {

namespace {

constexpr int kTimedRuns = 5;

void PrintJson(const TWorkload& AWorkload, const TResult& AResult) {
  std::string name = AWorkload.Name;
  std::transform(name.begin(), name.end(), name.begin(), [](char AUnit) { return AUnit == 'W' ? 'w' : AUnit; });
  std::printf("{\"peer\":\"tessarine\",\"wl\":\"%s\",\"op\":\"%s\",\"size\":%lld", name.c_str(),
              AResult.Operation.c_str(), static_cast<long long>(AResult.Size));
  if (AResult.Milliseconds) std::printf(",\"ms\":%.4g", *AResult.Milliseconds);
  if (AResult.BytesPerCell) std::printf(",\"bytes_per_cell\":%.2f", *AResult.BytesPerCell);
  std::printf(",\"rss_mb\":%.1f,\"check\":%s}\n", AResult.PeakMegabytes, AResult.Check ? "true" : "false");
}

void PrintLine(const TWorkload& AWorkload, const TResult& AResult) {
  std::printf("%-4s %-10s %9lld ", AWorkload.Name, AResult.Operation.c_str(), static_cast<long long>(AResult.Size));
  if (AResult.Milliseconds) std::printf("%11.3f ms ", *AResult.Milliseconds);
  if (AResult.BytesPerCell) std::printf("%8.2f bytes a cell ", *AResult.BytesPerCell);
  std::printf("%8.1f MB peak %s\n", AResult.PeakMegabytes, AResult.Check ? "" : " WRONG RESULT");
}

/// Runs AWork in a child process; true when it ended well.
template <class TWork>
bool InChild(TWork&& AWork) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    AWork();
    std::fflush(nullptr);
    _exit(0);
  }
  int status = 0;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool RunWorkload(const TWorkload& AWorkload, TRun ARun, bool AJson) {
  if (AWorkload.Prepare && !InChild([&] { AWorkload.Prepare(ARun); })) return false;
  return InChild([&] {
    AWorkload.Measure(ARun);
    for (const TResult& result : ARun.Results) AJson ? PrintJson(AWorkload, result) : PrintLine(AWorkload, result);
    for (const TResult& result : ARun.Results) {
      if (!result.Check) std::exit(1);
    }
  });
}

}  // namespace

int32_t TRun::Rows(int32_t AFull) const { return std::max(16, static_cast<int32_t>(AFull * Scale)); }

const std::vector<TWorkload>& Workloads() {
  static const std::vector<TWorkload> workloads = {
      {"W1", "chain of formulas", MeasureChain, nullptr},
      {"W2", "running sums", MeasureRunningSums, nullptr},
      {"W3", "exact lookups", MeasureLookups, nullptr},
      {"W4", "conditional sums", MeasureConditionalSums, nullptr},
      {"W5", "XLSX of mixed cells", MeasureXlsxLoad, PrepareXlsx},
      {"W6", "CSV", MeasureCsv, PrepareCsv},
      {"W8", "memory of the cell store", MeasureStore, nullptr},
      {"W9", "pivot of a million records", MeasurePivot, nullptr},
      {"W10", "ODS of mixed cells", MeasureOds, PrepareOds},
      {"W11", "a row inserted", MeasureRowInsert, nullptr},
      {"W12", "filled-down formulas", MeasureFilledDown, nullptr},
      {"W13", "MAP and REDUCE", MeasureLambdas, nullptr},
      {"W14", "query", MeasureQuery, nullptr},
      {"W15", "SORT, UNIQUE and FILTER", MeasureArrays, nullptr},
      {"W16", "text functions", MeasureTextFunctions, nullptr},
      {"W17", "distributions and finance", MeasureDistributions, nullptr},
      {"W18", "inserts undone and redone", MeasureRowInsertUndo, nullptr},
      {"W19", "formats under conditional rules", MeasureConditionalFormats, nullptr},
      {"W20", "filter by three criteria", MeasureAutoFilter, nullptr},
      {"W21", "sort by two keys", MeasureSort, nullptr},
      {"W22", "fill a series", MeasureFill, nullptr},
      {"W23", "native document", MeasureDocument, PrepareDocument},
      {"W24", "50 sheets; 100 charts", MeasureFiles, PrepareFiles},
      {"W25", "an edit with ten dependents", MeasureSmallEdit, nullptr},
      {"W26", "display texts", MeasureDisplayTexts, nullptr},
  };
  return workloads;
}

double MedianMilliseconds(const std::function<void()>& AOperation, const std::function<void()>& ABefore) {
  std::vector<double> times;
  for (int run = 0; run <= kTimedRuns; ++run) {
    if (ABefore) ABefore();
    const auto start = std::chrono::steady_clock::now();
    AOperation();
    const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
    if (run > 0) times.push_back(elapsed.count());
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

double PeakMegabytes() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

}  // namespace tessarine::bench

int main(int ACount, char** AArguments) {
  using namespace tessarine::bench;
  TRun run;
  bool json = false;
  std::vector<std::string> names;
  for (int i = 1; i < ACount; ++i) {
    const std::string argument = AArguments[i];
    if (argument == "--json") {
      json = true;
    } else if (argument == "--scale" && i + 1 < ACount) {
      run.Scale = std::atof(AArguments[++i]);
    } else if (argument == "--folder" && i + 1 < ACount) {
      run.Folder = AArguments[++i];
    } else if (argument == "--help" || argument == "-h") {
      std::puts("tessarine-bench [--json] [--scale X] [--folder DIR] [W1 W2 ...]\n");
      for (const TWorkload& workload : Workloads()) std::printf("  %-4s %s\n", workload.Name, workload.Title);
      return 0;
    } else {
      names.push_back(argument);
    }
  }
  const bool ownFolder = run.Folder.empty();
  if (ownFolder) {
    char pattern[] = "/tmp/tessarine-bench-XXXXXX";
    if (!mkdtemp(pattern)) return 2;
    run.Folder = pattern;
  }
  bool good = true;
  for (const TWorkload& workload : Workloads()) {
    if (!names.empty() && std::find(names.begin(), names.end(), workload.Name) == names.end()) continue;
    if (!RunWorkload(workload, run, json)) {
      std::fprintf(stderr, "%s failed\n", workload.Name);
      good = false;
    }
  }
  if (ownFolder) std::filesystem::remove_all(run.Folder);
  return good ? 0 : 1;
}

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tessarine::bench {

/// One measured operation as the peers' scripts print it.
struct TResult {
  std::string Operation;
  int64_t Size = 0;                    // rows or cells of the workload
  std::optional<double> Milliseconds;  // median of the runs that count
  std::optional<double> BytesPerCell;
  double PeakMegabytes = 0;  // of the process, after the operation
  bool Check = false;        // the result is the expected one
};

/// What a workload gets: its scale (1 is the full size), a folder for its files, and a place for its results.
struct TRun {
  double Scale = 1;
  std::string Folder;
  std::vector<TResult> Results;

  int32_t Rows(int32_t AFull) const;
};

struct TWorkload {
  const char* Name;
  const char* Title;
  void (*Measure)(TRun& ARun);
  void (*Prepare)(TRun& ARun);  // files that the workload reads, made in a process of its own; may be null
};

const std::vector<TWorkload>& Workloads();

/// The median of five timed calls after one that does not count. ABefore runs untimed ahead of each call.
double MedianMilliseconds(const std::function<void()>& AOperation, const std::function<void()>& ABefore = {});

/// Peak resident memory of this process in MB.
double PeakMegabytes();

void MeasureChain(TRun& ARun);
void MeasureRunningSums(TRun& ARun);
void MeasureLookups(TRun& ARun);
void MeasureConditionalSums(TRun& ARun);
void MeasureXlsxLoad(TRun& ARun);
void PrepareXlsx(TRun& ARun);
void MeasureOds(TRun& ARun);
void PrepareOds(TRun& ARun);
void MeasureCsv(TRun& ARun);
void PrepareCsv(TRun& ARun);
void MeasureStore(TRun& ARun);
void MeasureRowInsert(TRun& ARun);
void MeasureRowInsertUndo(TRun& ARun);
void MeasurePivot(TRun& ARun);
void MeasureConditionalFormats(TRun& ARun);
void MeasureAutoFilter(TRun& ARun);
void MeasureSort(TRun& ARun);
void MeasureFill(TRun& ARun);
void MeasureDocument(TRun& ARun);
void PrepareDocument(TRun& ARun);
void MeasureFilledDown(TRun& ARun);
void MeasureArrays(TRun& ARun);
void MeasureLambdas(TRun& ARun);
void MeasureDistributions(TRun& ARun);
void MeasureQuery(TRun& ARun);
void MeasureTextFunctions(TRun& ARun);
void MeasureFiles(TRun& ARun);
void PrepareFiles(TRun& ARun);
void MeasureSmallEdit(TRun& ARun);
void MeasureDisplayTexts(TRun& ARun);

}  // namespace tessarine::bench

#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/io/FileReport.h>
#include <tessarine/io/ods/OdsReader.h>
#include <tessarine/io/ods/detail/OdsFormatTable.h>
#include <tessarine/io/ods/detail/OdsStyleReader.h>

namespace tessarine::detail {

/// What one load may build out of few bytes, beyond what honest files need.
struct TOdsReadBudget {
  size_t RepeatedCells = 16'000'000;  // cells that stand in the file once and on a sheet more often
  size_t RichRuns = 4'000'000;
  size_t Blanks = size_t{64} << 20;  // of elements that stand for so many
  size_t SpilledValues = 4'000'000;
  size_t TableColumns = 1'000'000;
  size_t Drawings = 100'000;
  size_t DrawingBytes = size_t{512} << 20;  // pictures and charts, counted at each use
  size_t ChartPoints = 8'000'000;           // values and categories of series; what is beyond is left out
};

/// What all readers of one document share.
struct TOdsReadContext {
  const TOdsReadOptions& Options;
  TOdsStyleReader& Styles;
  TOdsFormatTable& Formats;
  TOdsReadBudget& Budget;
  bool StandardArrays = false;  // ";" separates columns in all braces of formulas

  void ReportDropped(std::string_view AFeature, std::string_view AWhere, uint64_t ACount = 1,
                     std::string_view ANote = {}) const {
    if (Options.Report && ACount > 0) Options.Report->Add(AFeature, ffDropped, AWhere, ACount, ANote);
  }
};

}  // namespace tessarine::detail

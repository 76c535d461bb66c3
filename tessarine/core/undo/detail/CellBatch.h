#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

/// Cells with their addresses in the order in which they were added; an address may come twice, and an empty cell is
/// one like any other. A cell of a value and a style, as nearly all are, takes 24 bytes; equal format overrides are
/// shared.
class TCellBatch {
 public:
  void Reserve(size_t ACount) { FRecords.reserve(ACount); }
  size_t Count() const { return FRecords.size(); }

  void Add(TCellAddress AAddress, const TCell& ACell);
  void AddNumber(TCellAddress AAddress, double ANumber, int32_t AStyleIndex);
  void AddFormula(TCellAddress AAddress, TText ASource, int32_t AStyleIndex);
  /// The cell of ASheet at ASource, to stand at AAddress: Add(AAddress, ASheet.GetCell(ASource)).
  void AddCopy(TCellAddress AAddress, const TWorksheet& ASheet, TCellAddress ASource);

  TCellAddress Address(size_t AIndex) const { return FRecords[AIndex].Address; }
  TCell Cell(size_t AIndex) const;

  /// SetCell for all cells in order. Where nobody listens the store is written without cells being built.
  void WriteTo(TWorksheet& ASheet) const;
  /// The same by SetCell alone, which judges the way above.
  void WriteToPlain(TWorksheet& ASheet) const;

 private:
  enum class TForm : uint8_t { fmValue, fmResult, fmWhole };

  struct TRecord {
    TCellAddress Address;
    union {
      double Number;   // cvkNumber
      uint32_t Index;  // fmValue: texts and formulas in FTexts; fmResult: in FResults; fmWhole: in FWhole
    };
    int32_t StyleIndex = 0;
    TCellValueKind Kind = cvkEmpty;
    TCellErrorCode ErrorCode = ceNone;
    bool BooleanValue = false;
    TForm Form = TForm::fmValue;

    TRecord(TCellAddress AAddress, int32_t AStyleIndex) : Address(AAddress), Number(0), StyleIndex(AStyleIndex) {}
  };
  static_assert(sizeof(TRecord) == 24);

  struct TFormulaResult {
    TText Source;
    TCellValue Cached;
  };
  struct TWholeCell {
    TCellValue Value;
    TCellValue Cached;
    bool HasCached = false;
    std::shared_ptr<const TCellFormat> Override;
    TRichTextRuns Runs;
    TSparklineData Sparkline;
  };

  TRecord& Append(TCellAddress AAddress, int32_t AStyleIndex);
  void AddConstant(TCellAddress AAddress, const TValueView& AValue, int32_t AStyleIndex);
  void AddResult(TCellAddress AAddress, TText ASource, TCellValue ACached, int32_t AStyleIndex);
  TCellValue ValueOf(const TRecord& ARecord) const;
  TCell CellOf(const TRecord& ARecord) const;
  std::shared_ptr<const TCellFormat> Shared(const TCellFormat& AFormat);

  std::vector<TRecord> FRecords;
  std::vector<TText> FTexts;
  std::vector<TFormulaResult> FResults;
  std::vector<TWholeCell> FWhole;
  boost::unordered_flat_map<size_t, std::shared_ptr<const TCellFormat>> FOverrides;  // by hash
};

}  // namespace tessarine::detail

#pragma once

#include <cstdint>
#include <string>

namespace tessarine::bench {

/// The data of all workloads come from one hash of an index and a stream, the same in every language.
inline uint32_t Hash(uint32_t AIndex, uint32_t AStream) {
  uint32_t x = AIndex + AStream * 0x9E3779B9u;
  x ^= x >> 16;
  x *= 0x85EBCA6Bu;
  x ^= x >> 13;
  x *= 0xC2B2AE35u;
  return x ^ (x >> 16);
}

/// W1, W2, W12, W25: the number in A(AIndex), from 1.
inline double ColumnA(int32_t AIndex) { return (Hash(static_cast<uint32_t>(AIndex), 1) % 1000) / 4.0; }

/// W3: distinct unsorted keys, and the table row that lookup AIndex hits.
inline int32_t LookupKey(int32_t ARow) { return static_cast<int32_t>(int64_t{ARow} * 7919 % 1000003); }
std::u16string LookupTextKey(int32_t ARow);
inline int32_t LookupHit(int32_t AIndex, int32_t ARows) {
  return static_cast<int32_t>(Hash(static_cast<uint32_t>(AIndex), 3) % static_cast<uint32_t>(ARows)) + 1;
}

/// W4: a table row (category, threshold column, amount) and a question (category, threshold).
std::u16string Category(uint32_t ANumber);
struct TSumRow {
  uint32_t Category;
  uint32_t Level;
  double Amount;
};
TSumRow SumRow(int32_t ARow);
TSumRow SumQuestion(int32_t AIndex);

/// W5: a row of mixed cells.
struct TMixedRow {
  double A, B, C, G, K, I, J;
  std::string D, E, F;
};
TMixedRow MixedRow(int32_t AIndex);

/// W6: one line of text without its line end.
std::string CsvLine(int32_t AIndex);

/// Writes W5's workbook (ARows x 10 with cached results) as an XLSX package.
void WriteMixedWorkbook(const std::string& AFileName, int32_t ARows);

/// Writes W6's text file.
void WriteCsvFile(const std::string& AFileName, int32_t ARows);

}  // namespace tessarine::bench

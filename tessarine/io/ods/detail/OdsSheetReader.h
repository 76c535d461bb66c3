#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <tessarine/io/ods/detail/OdsCellReader.h>
#include <tessarine/io/ods/detail/OdsReadContext.h>
#include <tessarine/platform/Xml.h>

namespace tessarine::detail {

/// Reads one table of a document into a sheet that was just added: sizes and visibility of its lines, cells, merges and
/// what floats over it. Positions advance by whole repeats and stay at the end of the sheet once they are beyond it.
class TOdsSheetReader {
 public:
  /// AReader stands at the table's start event. All arguments outlive the reader.
  TOdsSheetReader(TXmlReader& AReader, TWorksheet& ASheet, const TOdsReadContext& AContext,
                  TOdsValidationReader& AValidations, TOdsDrawingReader& ADrawings);

  /// Called now and then, with the part's fraction that is done; may throw.
  std::function<void(double AFraction)> OnProgress;

  /// Called at the start event of the names that belong to the sheet alone: goes on to its end event.
  std::function<void()> OnNames;

  /// Goes on to the table's end event.
  void Read();

  bool HasCells() const { return FCells.CellCount() > 0; }

 private:
  /// Columns up to a last one whose cells have one style unless they say otherwise.
  struct TColumnRun {
    int32_t Last = 0;
    TOdsCellStyle* Style = nullptr;
  };

  void ReadTableStyle();
  void ReadElement();
  void ReadColumn();
  void ReadShapes();
  void ReadRow();
  void ReadRowGeometry(int32_t ARepeat);
  TOdsCellStyle* ColumnStyle(int32_t ACol);
  void Poll();

  TXmlReader& FReader;
  TWorksheet& FSheet;
  const TOdsReadContext& FContext;
  TOdsDrawingReader& FDrawings;
  TOdsCellReader FCells;
  std::vector<TColumnRun> FColumns;  // ascending
  size_t FColumnRun = 0;             // where the present row has come to in FColumns
  int32_t FNextCol = 1;              // of the column elements
  int32_t FNextRow = 1;
  size_t FSteps = 0;
};

}  // namespace tessarine::detail

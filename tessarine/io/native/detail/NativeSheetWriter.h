#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/io/native/Native.h>
#include <tessarine/io/native/detail/NativeFieldWriter.h>
#include <tessarine/platform/JsonWriter.h>

namespace tessarine {
class IWriteStream;
class TPageSetup;
class TRowColSizing;
class TSheetDrawingList;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

/// The text of a document on its way into a stream: it goes out in blocks, so that it is never whole in memory.
class TNativeOutput {
 public:
  explicit TNativeOutput(IWriteStream& AStream) : FStream(AStream), FJson(FText) {}

  TJsonWriter& Json() { return FJson; }
  std::string& Text() { return FText; }

  /// To be called where the text may be cut: hands a full block on.
  void Pass() {
    if (FText.size() >= kBlock) Flush();
  }
  void Flush();
  /// Writes what comes behind Text().
  void WriteBehind(std::string_view AText);

 private:
  static constexpr size_t kBlock = size_t{256} << 10;

  IWriteStream& FStream;
  std::string FText;
  TJsonWriter FJson;
};

/// Writes the sheets of a document.
class TNativeSheetWriter {
 public:
  /// All arguments outlive the writer.
  TNativeSheetWriter(TNativeOutput& AOutput, const TTsrWriteOptions& AOptions);

  /// Writes one sheet as an object. Of all work ADone and AShare are the parts before it and its own, 0 to 1.
  void Write(const TWorksheet& ASheet, double ADone, double AShare);

 private:
  void WriteHead(const TWorksheet& ASheet);
  void WriteSizing(const TRowColSizing& ASizing);
  void WriteView(const TWorksheet& ASheet);
  void WriteMerges(const TWorksheet& ASheet);
  void WriteDrawings(const TSheetDrawingList& ADrawings);
  void WriteDrawingBag(const TSheetDrawingList& ADrawings);
  void WriteHyperlinks(const TWorksheet& ASheet);
  void WriteComments(const TWorksheet& ASheet);
  void WriteAutoFilter(const TWorksheet& ASheet);
  void WriteTables(const TWorksheet& ASheet);
  void WritePivotTables(const TWorksheet& ASheet);
  void WriteSlicers(const TWorksheet& ASheet);
  void WriteRules(const TWorksheet& ASheet);
  void WritePageSetup(const TPageSetup& ASetup);

  /// An array of records under a name; nothing when there are none.
  template <class TList, class TMakeRecord>
  void WriteList(std::string_view AName, const TList& AList, TMakeRecord&& AMakeRecord);

  TNativeOutput& FOutput;
  TJsonWriter& FJson;
  TNativeFieldWriter FFields;
  const TTsrWriteOptions& FOptions;
};

}  // namespace tessarine::detail

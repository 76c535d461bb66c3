#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include <tessarine/io/native/Native.h>
#include <tessarine/io/native/detail/NativeFieldReader.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::detail {

/// Reads one sheet of a document, in the order that decides which error shows first.
class TNativeSheetReader {
 public:
  /// All arguments outlive the reader.
  TNativeSheetReader(TNativeDocument& ADocument, const TTsrReadOptions& AOptions, TWorkbook& AWorkbook);

  /// Adds the sheet of an object; APosition is its 1-based place among the sheets.
  void Read(TJsonPlace ASheet, size_t APosition);

 private:
  void ReadHead(TNativeFieldReader& AReader);
  void ReadSizing(TJsonPlace ASizing);
  void ReadView(TJsonPlace AView);
  void ReadMerges(TJsonPlace AMerges);
  void ReadDrawings(TNativeObject& ASheet);
  void ReadDrawingBag(TJsonPlace ABag);
  void ReadHyperlinks(TJsonPlace ALinks);
  void ReadComments(TJsonPlace AComments);
  void ReadAutoFilter(TJsonPlace AFilter);
  void ReadTable(TJsonPlace ATable, size_t APosition);
  void ReadPivotTable(TJsonPlace APivot, size_t APosition);
  void ReadSlicer(TJsonPlace ASlicer);
  void ReadPageSetup(TJsonPlace ASetup);
  void ReadBreaks(TNativeObject& ASetup);

  /// AReadOne(place, 1-based position) for each object of an array, which may be null.
  template <class TReadOne>
  void ForEachObject(TJsonPlace AArray, size_t ABytes, TReadOne&& AReadOne);
  /// A record read from an object.
  template <class TRecord>
  TRecord ReadRecord(TJsonPlace AObject);
  void Drop(std::string_view AFeature, std::string_view AKey);

  TNativeDocument& FDocument;
  const TTsrReadOptions& FOptions;
  TWorkbook& FWorkbook;
  TWorksheet* FSheet = nullptr;
};

/// AVisit(raw name, place) for each member of an object, which may be null: of several with one name the first.
void ForEachFirstMember(const TNativeDocument& ADocument, TJsonPlace AObject,
                        const std::function<void(std::string_view, TJsonPlace)>& AVisit);

}  // namespace tessarine::detail

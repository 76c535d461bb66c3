#pragma once

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxDrawings.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>

#include "../support/ZipBuilder.h"

namespace tessarine::test {

/// Parts of a package by name.
using TParts = std::map<std::string, std::string>;

inline constexpr char kSheetPart[] = "xl/worksheets/sheet1.xml";
inline constexpr char kSheetRels[] = "xl/worksheets/_rels/sheet1.xml.rels";
inline constexpr char kDrawingPart[] = "xl/drawings/drawing1.xml";
inline constexpr char kDrawingRels[] = "xl/drawings/_rels/drawing1.xml.rels";

inline std::string Relations(std::string_view AItems) {
  return "<Relationships>" + std::string(AItems) + "</Relationships>";
}
inline std::string Relation(std::string_view AId, std::string_view ATarget, std::string_view AType = "http://x/part") {
  std::string text = "<Relationship Id='";
  ((((text += AId) += "' Type='") += AType) += "' Target='") += ATarget;
  return text += "'/>";
}

/// A sheet with a drawing part of these anchors, and the drawing part's relationships.
inline TParts DrawingOf(std::string_view AAnchors, std::string_view ARelations = {}) {
  TParts parts;
  parts[kSheetRels] = Relations(Relation("rId7", "../drawings/drawing1.xml", "http://x/relationships/Drawing"));
  parts[kDrawingPart] = "<xdr:wsDr>" + std::string(AAnchors) + "</xdr:wsDr>";
  if (!ARelations.empty()) parts[kDrawingRels] = Relations(ARelations);
  return parts;
}

/// AObject in an anchor over B3:D6.
inline std::string Anchored(std::string_view AObject, std::string_view AAttributes = {}) {
  std::string text = "<xdr:twoCellAnchor " + std::string(AAttributes) + ">";
  text +=
      "<xdr:from><xdr:col>1</xdr:col><xdr:colOff>10</xdr:colOff><xdr:row>2</xdr:row><xdr:rowOff>20</xdr:rowOff>"
      "</xdr:from><xdr:to><xdr:col>3</xdr:col><xdr:colOff>30</xdr:colOff><xdr:row>5</xdr:row><xdr:rowOff>40"
      "</xdr:rowOff></xdr:to>";
  return (text += AObject) += "<xdr:clientData/></xdr:twoCellAnchor>";
}

/// A workbook whose one sheet has the drawings of the package.
inline std::unique_ptr<TWorkbook> LoadDrawings(const TParts& AParts, TFileReport* AReport = nullptr,
                                               const TReadLimits& ALimits = {}) {
  TZipBuilder zip;
  for (const auto& [name, content] : AParts) zip.Add(name, content);
  const detail::TXlsxPackage package(zip.Finish(), ALimits);
  auto book = std::make_unique<TWorkbook>();
  detail::LoadSheetDrawings(package, kSheetPart, package.ReadRelationships(kSheetPart), *book->GetSheet(0),
                            book->Theme(), AReport);
  return book;
}

inline const TSheetDrawing& DrawingAt(const TWorkbook& ABook, int32_t AIndex) {
  return *ABook.GetSheet(0)->Drawings().GetItem(AIndex);
}

inline std::string TextOf(const TDrawingBytes& ABytes) {
  return {reinterpret_cast<const char*>(ABytes.data()), ABytes.size()};
}

inline TDrawingBytes BytesOf(std::string_view AText) {
  const auto* const start = reinterpret_cast<const std::byte*>(AText.data());
  return {start, start + AText.size()};
}

/// The parts that a bag would write.
inline TParts PartsOf(const TSheetDrawingBag& ABag) {
  TParts parts;
  if (!ABag.HasDrawing()) return parts;
  parts[ABag.DrawingPartPath().ToUtf8()] = TextOf(ABag.DrawingXml());
  if (!ABag.DrawingRelsPath().IsEmpty()) parts[ABag.DrawingRelsPath().ToUtf8()] = TextOf(ABag.DrawingRelsXml());
  for (const auto& [path, bytes] : ABag.Parts()) parts[path.ToUtf8()] = TextOf(bytes);
  return parts;
}

/// The workbook's first sheet after its drawings were written and read again.
inline std::unique_ptr<TWorkbook> Rewritten(TWorkbook& ABook, TFileReport* AReport = nullptr) {
  detail::EnsureWorkbookDrawingBagsFromOverlays(ABook, AReport);
  const TSheetDrawingBag& bag = ABook.GetSheet(0)->Drawings().Bag();
  TParts parts = PartsOf(bag);
  parts[kSheetRels] =
      Relations(Relation(bag.SheetRelId().ToUtf8(), "/" + bag.DrawingPartPath().ToUtf8(), "http://x/drawing"));
  return LoadDrawings(parts);
}

}  // namespace tessarine::test

#include <algorithm>
#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>
#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxChartWriter.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingMl.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingWords.h>
#include <tessarine/io/xlsx/detail/XlsxDrawingXml.h>
#include <tessarine/io/xlsx/detail/XlsxDrawings.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxRelationshipsWriter.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/Xml.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kPackageFolder = "xl/";
constexpr char kChartStyleType[] = "http://schemas.microsoft.com/office/2011/relationships/chartStyle";
constexpr char kChartColorsType[] = "http://schemas.microsoft.com/office/2011/relationships/chartColorStyle";
constexpr char kExtendedChartType[] = "http://schemas.microsoft.com/office/2014/relationships/chartEx";

/// What is not here is a PNG file.
constexpr TXlsxWord<std::string_view> kExtensions[] = {
    {"image/jpeg", ".jpg"},  {"image/jpg", ".jpg"}, {"image/gif", ".gif"},   {"image/bmp", ".bmp"},
    {"image/x-emf", ".emf"}, {"image/emf", ".emf"}, {"image/x-wmf", ".wmf"}, {"image/wmf", ".wmf"},
};

std::span<const std::byte> BytesOf(std::string_view AText) {
  return {reinterpret_cast<const std::byte*>(AText.data()), AText.size()};
}

std::string_view TextOf(const TDrawingBytes& ABytes) {
  return {reinterpret_cast<const char*>(ABytes.data()), ABytes.size()};
}

/// Whether a chart part is of the types that came later, by the namespace of its root.
bool IsExtendedChart(std::string_view AChart) {
  constexpr std::string_view kMark = "/chartex";
  try {
    TXmlReader reader(AChart, "chart");
    while (reader.Event() != xeStartElement && reader.Next() == xeText) continue;
    const std::string_view name = reader.Name();
    const size_t colon = name.find(':');
    const std::string declaration =
        colon == std::string_view::npos ? "xmlns" : "xmlns:" + std::string(name.substr(0, colon));
    return reader.FindAttribute(declaration).value_or("").ends_with(kMark);
  } catch (const ETessarineError&) {
    return false;
  }
}

/// The relationships in a part of a bag; none when it is missing or damaged.
TXlsxRelationships RelationshipsIn(const std::map<TText, TDrawingBytes>& AParts, const std::string& AName) {
  const auto found = AParts.find(TText::FromUtf8(AName));
  if (found == AParts.end()) return {};
  try {
    return XlsxParseRelationships(TextOf(found->second), AName, {});
  } catch (const ETessarineError&) {
    return {};
  }
}

/// With its "."; that of a PNG file for a name that has none.
std::string_view ImageExtensionOf(std::string_view APath) {
  const size_t dot = APath.rfind('.');
  const std::string_view extension = dot == APath.npos ? std::string_view() : APath.substr(dot);
  const bool isPlain = extension.size() > 1 && extension.size() < 6 &&
                       std::all_of(extension.begin() + 1, extension.end(),
                                   [](char AChar) { return IsAsciiLetter(static_cast<unsigned char>(AChar)); });
  return isPlain ? extension : ".png";
}

bool IsPlainId(std::string_view AId) {
  return !AId.empty() && std::all_of(AId.begin(), AId.end(), [](char AChar) {
    const auto unit = static_cast<unsigned char>(AChar);
    return IsAsciiLetter(unit) || IsAsciiDigit(unit) || AChar == '_';
  });
}

/// The relationship ids of the usual form that a part mentions.
std::set<std::string> IdsIn(std::string_view APart) {
  constexpr std::string_view kStem = "\"rId";
  std::set<std::string> ids;
  for (size_t at = APart.find(kStem); at != APart.npos; at = APart.find(kStem, at + 1)) {
    const size_t end = APart.find('"', at + 1);
    if (end != APart.npos && end - at < 20) ids.emplace(APart.substr(at + 1, end - at - 1));
  }
  return ids;
}

/// The part names that are taken, and the numbers of those to come.
class TPartNames {
 public:
  /// The parts of a bag that is written as it stands.
  void Keep(const TSheetDrawingBag& ABag) {
    Take(ABag.DrawingPartPath());
    Take(ABag.DrawingRelsPath());
    for (const auto& [path, bytes] : ABag.Parts()) Take(path);
  }

  /// The next free name of that stem and extension; pictures have a count of their own.
  std::string NextPart(std::string_view AStem, std::string_view AExtension) {
    int32_t& number = AStem == kXlsxChartLinks[0].Stem ? FImage : FOther;
    std::string name;
    do {
      name = std::string(kPackageFolder) + std::string(AStem) + std::to_string(++number) + std::string(AExtension);
    } while (IsTaken(name));
    return name;
  }

  /// A number under which a chart, its relationships, style and colours are free.
  std::string NextChartNumber() {
    std::string number;
    do {
      number = std::to_string(++FChart);
    } while (IsTaken("xl/charts/chart" + number + ".xml") || IsTaken("xl/charts/chartEx" + number + ".xml") ||
             IsTaken("xl/charts/_rels/chart" + number + ".xml.rels") ||
             IsTaken("xl/charts/_rels/chartEx" + number + ".xml.rels") ||
             IsTaken("xl/charts/style" + number + ".xml") || IsTaken("xl/charts/colors" + number + ".xml"));
    return number;
  }

  /// The sheet's own number if it is free, else one behind those of all sheets.
  std::string TakeDrawing(int32_t ASheet, int32_t ASheetCount) {
    FDrawing = std::max(FDrawing, ASheetCount);
    int32_t number = ASheet;
    while (IsTaken("xl/drawings/drawing" + std::to_string(number) + ".xml")) number = ++FDrawing;
    std::string file = "drawing" + std::to_string(number) + ".xml";
    Take(TText::FromUtf8("xl/drawings/" + file));
    return file;
  }

 private:
  void Take(const TText& APath) { FTaken.insert(ToAsciiLower(APath)); }
  bool IsTaken(const std::string& APath) const { return FTaken.contains(ToAsciiLower(Utf8ToUtf16(APath))); }

  boost::unordered_flat_set<std::u16string> FTaken;  // in small letters
  int32_t FImage = 0;
  int32_t FOther = 0;
  int32_t FChart = 0;
  int32_t FDrawing = 0;
};

/// Builds the bag of one sheet.
class TBagWriter {
 public:
  TBagWriter(TWorksheet& ASheet, TPartNames& ANames, TFileReport* AReport)
      : FSheet(ASheet), FBag(ASheet.Drawings().Bag()), FNames(ANames), FReport(AReport) {}

  void Write(int32_t ASheetNumber, int32_t ASheetCount) {
    FOldBag = std::exchange(FBag, {});
    for (int32_t i = 0; i < FSheet.Drawings().Count(); ++i) AddDrawing(*FSheet.Drawings().GetItem(i));
    if (FXml.IsEmpty()) return FBag.Clear();
    const std::string file = FNames.TakeDrawing(ASheetNumber, ASheetCount);
    FBag.SetDrawingPart(TText::FromUtf8("xl/drawings/" + file), BytesOf(FXml.Part()));
    if (!FRelationships.IsEmpty())
      FBag.SetDrawingRels(TText::FromUtf8("xl/drawings/_rels/" + file + ".rels"), BytesOf(FRelationships.Part()));
    FBag.SetSheetRelId(TText(u"rId1"));
    if (FOldBag.HasDrawing()) Report("drawing part", ffRewritten, "from the drawings that are known here");
  }

 private:
  void Report(std::string_view AFeature, TFileFate AFate, std::string_view ANote) {
    if (FReport) FReport->Add(AFeature, AFate, FSheet.Name().ToUtf8(), 1, ANote);
  }

  void AddDrawing(const TSheetDrawing& ADrawing) {
    if (ADrawing.Hidden) return Report("hidden drawing", ffDropped, ADrawing.Name.ToUtf8());
    switch (ADrawing.Kind) {
      case sdkPicture: return AddPicture(ADrawing);
      case sdkChart: return AddChart(ADrawing);
      case sdkShape: FXml.AddShape(ADrawing); return;
      case sdkUnknown: return Report("drawing of an unknown kind", ffDropped, ADrawing.Name.ToUtf8());
    }
  }

  /// The id of a new relationship to a part whose name below the package's folder is given.
  std::string Relate(std::string_view AType, std::string_view APart) {
    std::string id = "rId" + std::to_string(++FLastId);
    FRelationships.Add(id, AType, Utf8ToUtf16("../" + std::string(APart)));
    return id;
  }

  /// Of ink the picture that stands for it is written.
  void AddPicture(const TSheetDrawing& ADrawing) {
    if (!ADrawing.InkMlBytes.empty()) Report("ink", ffDropped, ADrawing.Name.ToUtf8());
    if (ADrawing.ImageBytes.empty()) {
      if (ADrawing.InkMlBytes.empty()) Report("picture without bytes", ffDropped, ADrawing.Name.ToUtf8());
      return;
    }
    const std::string type = ADrawing.ContentType.ToUtf8();
    const std::string path =
        FNames.NextPart(kXlsxChartLinks[0].Stem, XlsxValueOfWord(kExtensions, type, std::string_view(".png")));
    FBag.AddPart(TText::FromUtf8(path), ADrawing.ImageBytes);
    FXml.AddPicture(ADrawing, Relate("image", path.substr(kPackageFolder.size())));
  }

  void AddChart(const TSheetDrawing& ADrawing) {
    const std::string_view kept = TextOf(ADrawing.ChartSpaceXml);
    const bool isExtended = !kept.empty() && IsExtendedChart(kept);
    const std::string number = FNames.NextChartNumber();
    const std::string file = (isExtended ? "chartEx" : "chart") + number + ".xml";
    const TText path = TText::FromUtf8("xl/charts/" + file);
    if (kept.empty())
      FBag.AddPart(path, BytesOf(BuildChartSpaceXml(ADrawing, FSheet.Name())));
    else
      FBag.AddPart(path, ADrawing.ChartSpaceXml);
    AddChartParts(ADrawing, number, file);
    FXml.AddChart(ADrawing, Relate(isExtended ? kExtendedChartType : "chart", "charts/" + file), isExtended);
  }

  /// What a kept chart part refers to (pictures in its areas, shapes over the plot, data of its own) keeps its ids; the
  /// ids of style and colours stay clear of them.
  void AddChartParts(const TSheetDrawing& ADrawing, const std::string& ANumber, const std::string& AChartFile) {
    TXlsxRelationshipPart relationships;
    std::set<std::string> used = IdsIn(TextOf(ADrawing.ChartSpaceXml));
    const size_t wanted = used.size();
    if (!ADrawing.ChartSpaceXml.empty() && AddChartLinks(ADrawing, used, relationships) < wanted)
      Report("part of a chart", ffDropped, "a chart refers to parts that are not kept");
    const auto add = [&](std::string_view AName, const char* AType, const TDrawingBytes& ABytes) {
      if (ABytes.empty()) return;
      int number = 1;
      while (!used.insert("rId" + std::to_string(number)).second) ++number;
      const std::string file = std::string(AName) + ANumber + ".xml";
      FBag.AddPart(TText::FromUtf8("xl/charts/" + file), ABytes);
      relationships.Add("rId" + std::to_string(number), AType, Utf8ToUtf16(file));
    };
    add("style", kChartStyleType, ADrawing.ChartStyleXml);
    add("colors", kChartColorsType, ADrawing.ChartColorsXml);
    if (!relationships.IsEmpty())
      FBag.AddPart(TText::FromUtf8("xl/charts/_rels/" + AChartFile + ".rels"), BytesOf(relationships.Part()));
  }

  /// The name that a chart part had in the file; empty when the file did not have it.
  std::string OldPartOf(std::string_view AChart) {
    if (FOldNames.empty())
      for (const auto& [path, bytes] : FOldBag.Parts()) FOldNames.emplace(TextOf(bytes), &path);
    const auto found = FOldNames.find(AChart);
    return found == FOldNames.end() ? std::string() : found->second->ToUtf8();
  }

  /// Takes over from the bag of the file what a chart refers to. Gives the number of ids in AUsed that it found.
  size_t AddChartLinks(const TSheetDrawing& ADrawing, std::set<std::string>& AUsed,
                       TXlsxRelationshipPart& ARelationships) {
    const std::string chart = OldPartOf(TextOf(ADrawing.ChartSpaceXml));
    size_t count = 0;
    std::set<std::string> written;
    for (const TXlsxRelationship& row : RelationshipsIn(FOldBag.Parts(), XlsxRelationshipsPart(chart))) {
      const TXlsxChartLink* const link = XlsxChartLinkOf(row.Type);
      if (!link || !IsPlainId(row.Id) || written.contains(row.Id)) continue;
      const std::string& name = CopyOfOldPart(XlsxResolveTarget(chart, row.Target), *link);
      if (name.empty()) continue;
      written.insert(row.Id);
      ARelationships.Add(row.Id, link->Type, Utf8ToUtf16("../" + name.substr(kPackageFolder.size())));
      if (!AUsed.insert(row.Id).second) ++count;
    }
    return count;
  }

  /// The new name of a part of the old bag, which is written once; empty when there is no such part.
  const std::string& CopyOfOldPart(const std::string& AOldName, const TXlsxChartLink& ALink) {
    const auto [place, isNew] = FCopies.try_emplace(AOldName);
    const auto part = isNew ? FOldBag.Parts().find(TText::FromUtf8(AOldName)) : FOldBag.Parts().end();
    if (part == FOldBag.Parts().end()) return place->second;
    place->second = FNames.NextPart(ALink.Stem, ALink.Extension.empty() ? ImageExtensionOf(AOldName) : ALink.Extension);
    FBag.AddPart(TText::FromUtf8(place->second), part->second);
    return place->second;
  }

  TWorksheet& FSheet;
  TSheetDrawingBag& FBag;
  TSheetDrawingBag FOldBag;                                             // as the file had it
  boost::unordered_flat_map<std::string_view, const TText*> FOldNames;  // of its parts by content, once needed
  std::map<std::string, std::string> FCopies;                           // new names of parts of the old bag
  TPartNames& FNames;
  TFileReport* const FReport;  // may be null
  TXlsxDrawingXml FXml;
  TXlsxRelationshipPart FRelationships;
  int64_t FLastId = 0;
};

}  // namespace

void EnsureWorkbookDrawingBagsFromOverlays(TWorkbook& AWorkbook, TFileReport* AReport) {
  const int32_t count = AWorkbook.SheetCount();
  TPartNames names;
  for (int32_t i = 0; i < count; ++i) {
    const TSheetDrawingList& drawings = AWorkbook.GetSheet(i)->Drawings();
    if (drawings.Count() == 0) names.Keep(drawings.Bag());
  }
  for (int32_t i = 0; i < count; ++i) {
    TWorksheet& sheet = *AWorkbook.GetSheet(i);
    if (sheet.Drawings().Count() > 0) TBagWriter(sheet, names, AReport).Write(i + 1, count);
  }
}

}  // namespace tessarine::detail

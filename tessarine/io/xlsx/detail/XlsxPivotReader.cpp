#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/PageSetupNames.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxPivots.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlTree.h>

namespace tessarine::detail {

namespace {

constexpr std::string_view kPivotWorkbookPart = "xl/workbook.xml";

struct TPivotAggWord {
  std::string_view Word;
  TPivotAgg Agg;
};

constexpr TPivotAggWord kPivotAggWords[] = {
    {"count", paCount},
    {"countNums", paCountNums},
    {"count numbers", paCountNums},
    {"average", paAverage},
    {"avg", paAverage},
    {"max", paMax},
    {"min", paMin},
    {"product", paProduct},
    {"stdDev", paStdDev},
    {"stdDevp", paStdDevp},
    {"var", paVar},
    {"varp", paVarp},
};

TPivotAgg AggFromWord(std::string_view AWord) {
  const auto* const found =
      std::find_if(std::begin(kPivotAggWords), std::end(kPivotAggWords),
                   [&](const TPivotAggWord& AEntry) { return EqualXmlNames(XlsxTrim(AWord), AEntry.Word); });
  return found == std::end(kPivotAggWords) ? paSum : found->Agg;
}

bool IsPivotTableType(std::string_view AType) {
  constexpr std::string_view kMark = "pivottable";
  for (size_t at = 0; at + kMark.size() <= AType.size(); ++at) {
    if (EqualXmlNames(AType.substr(at, kMark.size()), kMark)) return true;
  }
  return false;
}

/// Reads the standard parts; one object for one package.
class TXlsxPivotReader {
 public:
  TXlsxPivotReader(const TXlsxPackage& APackage, TWorkbook& AWorkbook, TFileReport* AReport)
      : FPackage(APackage), FWorkbook(AWorkbook), FReport{AReport, {}} {}

  void Read() {
    const TByteBuffer bytes = FPackage.ReadPart(kPivotWorkbookPart);
    if (bytes.IsEmpty()) return;
    const TXmlTree tree(bytes.Text(), kPivotWorkbookPart, FPackage.Limits());
    const TXlsxRelationships relationships = FPackage.ReadRelationships(kPivotWorkbookPart);
    for (const auto& cache : FWorkbook.PivotCaches()) FCacheById.emplace(cache->Id(), cache.get());
    for (const TXmlNode* cache : TXmlElements(XmlFindChild(tree.Root(), "pivotCaches"))) {
      if (XmlLocalNameIs(cache, "pivotCache")) ReadCache(cache, relationships);
    }
    int32_t index = 0;
    for (const TXmlNode* sheet : TXmlElements(XmlFindChild(tree.Root(), "sheets"))) {
      if (!XmlLocalNameIs(sheet, "sheet")) continue;
      TWorksheet* const target = FWorkbook.GetSheet(index++);
      const std::string part = TargetPart(sheet, relationships);
      if (target && !part.empty()) ReadSheet(part, *target);
    }
  }

 private:
  /// The part that an element of the workbook part refers to; empty when there is none.
  static std::string TargetPart(const TXmlNode* ANode, const TXlsxRelationships& ARelationships) {
    const TXlsxRelationship* const relationship = ARelationships.Find(XmlAttr(ANode, "id"));
    if (!relationship || relationship->Target.empty()) return {};
    std::string target = relationship->Target;
    std::replace(target.begin(), target.end(), '\\', '/');
    const bool isInPlace = EqualXmlNames(std::string_view(target).substr(0, 3), "xl/");
    if (target.starts_with('/') || isInPlace) return XlsxResolveTarget({}, target);
    return XlsxResolveTarget(kPivotWorkbookPart, target);
  }

  // ---- caches

  void ReadCache(const TXmlNode* ACache, const TXlsxRelationships& ARelationships) {
    const int32_t id = XmlAttrInt(ACache, "cacheId", 0);
    const std::string part = TargetPart(ACache, ARelationships);
    if (part.empty() || FCacheById.contains(id)) return;
    const TByteBuffer bytes = FPackage.ReadPart(part);
    if (bytes.IsEmpty()) return;
    // A definition can serve many caches, so entries of the archive do not bound their number.
    if (FCacheById.size() >= FPackage.Limits().MaxEntries) {
      throw ELimit(std::string(kPivotWorkbookPart) + ": more pivot caches than the limit of " +
                   std::to_string(FPackage.Limits().MaxEntries));
    }
    const TXmlTree tree(bytes.Text(), part, FPackage.Limits());
    auto cache = std::make_unique<TPivotCache>(id);
    ReadSource(XmlFindChild(tree.Root(), "cacheSource"), *cache);
    ReadFields(XmlFindChild(tree.Root(), "cacheFields"), *cache);
    FCacheById.emplace(id, &FWorkbook.PivotCaches().Add(std::move(cache)));
  }

  void ReadSource(const TXmlNode* ASource, TPivotCache& ACache) {
    const std::string_view type = XmlAttr(ASource, "type", "worksheet");
    if (EqualXmlNames(type, "consolidation")) {
      ACache.SourceKind = pcsMultiConsolidation;
      ReadConsolidation(ASource, ACache);
    } else if (!EqualXmlNames(type, "worksheet")) {
      ACache.SourceKind = pcsExternal;
      ACache.ConnectionId = TText::FromUtf8(XmlAttr(ASource, "connectionId"));
    } else if (const TXmlNode* const range = XmlFindChild(ASource, "worksheetSource")) {
      ReadWorksheetSource(range, ACache);
    }
  }

  struct TNamedSource {
    TText Sheet;
    TCellRange Range;
  };

  /// A range, or the name of a table or of a range; through a relationship it lies in another workbook.
  void ReadWorksheetSource(const TXmlNode* ARange, TPivotCache& ACache) {
    if (XmlHasAttr(ARange, "id")) ACache.SourceKind = pcsExternal;
    ACache.SourceSheet = XlsxText(XmlAttr(ARange, "sheet"));
    const TCellRange range = XlsxRange(XmlAttr(ARange, "ref"));
    if (XlsxIsRange(range)) {
      ACache.SourceRange = range;
    } else if (const std::string_view name = XmlAttr(ARange, "name"); !name.empty()) {
      const auto [place, isNew] = FNamedSources.try_emplace(std::string(name));
      if (isNew) place->second = SourceOfName(XlsxText(name));
      if (!place->second) return;
      ACache.SourceSheet = place->second->Sheet;
      ACache.SourceRange = place->second->Range;
    }
  }

  /// Tables come first, without their totals.
  std::optional<TNamedSource> SourceOfName(std::u16string_view AName) const {
    for (int32_t index = 0; index < FWorkbook.SheetCount(); ++index) {
      TWorksheet& sheet = *FWorkbook.GetSheet(index);
      const TSheetTable* const table = sheet.Tables().FindByName(AName);
      if (!table) continue;
      TCellRange range = table->Ref();
      if (table->HasTotalsRow() && range.EndRow > range.StartRow) --range.EndRow;
      return TNamedSource{sheet.Name(), range};
    }
    const std::optional<TText> formula = FWorkbook.FindNamedFormula(AName);
    if (!formula || !formula->View().starts_with(u'=')) return std::nullopt;
    const auto parsed = TryParseSheetRange(formula->View().substr(1));
    if (!parsed || !FWorkbook.FindSheet(parsed->Sheet)) return std::nullopt;
    return TNamedSource{TText(parsed->Sheet), parsed->Range};
  }

  static void ReadConsolidation(const TXmlNode* ASource, TPivotCache& ACache) {
    for (const TXmlNode* set : TXmlElements(XmlFindChild(XmlFindChild(ASource, "consolidation"), "rangeSets"))) {
      if (!XmlLocalNameIs(set, "rangeSet")) continue;
      const TCellRange range = XlsxRange(XmlAttr(set, "ref"));
      if (!XlsxIsRange(range)) continue;
      const std::u16string sheet = XlsxText(XmlAttr(set, "sheet")).ToString();
      const bool hasQuote = sheet.find(u'\'') != std::u16string::npos;
      ACache.MultiRanges.emplace_back((hasQuote ? QuoteSheetName(sheet) : u"'" + sheet + u"'") + u"!" + range.ToA1());
    }
  }

  void ReadFields(const TXmlNode* AFields, TPivotCache& ACache) const {
    std::vector<TText> names;
    std::vector<TText> formats;
    for (const TXmlNode* field : TXmlElements(AFields)) {
      if (!XmlLocalNameIs(field, "cacheField")) continue;
      const std::string standIn = "Field" + std::to_string(names.size() + 1);
      names.push_back(XlsxText(XmlAttr(field, "name", standIn)));
      const int32_t format = XmlAttrInt(field, "numFmtId", 0);
      formats.push_back(format > 0 ? FormatCode(format) : TText());
    }
    ACache.SetFieldNames(std::move(names));
    ACache.FieldNumberFormats = std::move(formats);
  }

  /// Empty for the general format.
  TText FormatCode(int32_t AId) const {
    const TText& code = FWorkbook.StyleSheet().GetNumFmt(AId);
    return EqualAsciiNoCase(code.View(), u"General") ? TText() : code;
  }

  // ---- tables

  /// A part that several relationships name is read once: its table would find its own name taken.
  void ReadSheet(const std::string& APart, TWorksheet& ASheet) {
    std::set<std::string> parts;
    FTableNames.clear();
    for (const auto& table : ASheet.Pivots()) FTableNames.insert(ToAsciiLower(table->Name));
    for (const TXlsxRelationship& relationship : FPackage.ReadRelationships(APart)) {
      if (!IsPivotTableType(relationship.Type)) continue;
      const std::string part = XlsxResolveTarget(APart, relationship.Target);
      if (!parts.insert(part).second) continue;
      const TByteBuffer bytes = FPackage.ReadPart(part);
      if (bytes.IsEmpty()) continue;
      const TXmlTree tree(bytes.Text(), part, FPackage.Limits());
      ReadTable(tree.Root(), ASheet);
    }
  }

  void ReadTable(const TXmlNode* ARoot, TWorksheet& ASheet) {
    const TText name = XlsxText(XmlAttr(ARoot, "name", "Pivot"));
    if (!FTableNames.insert(ToAsciiLower(name)).second) return;
    const TXmlNode* const location = XmlFindChild(ARoot, "location");
    TCellRange body = XlsxRange(XmlAttr(location, "ref", "A1"));
    body = XlsxIsRange(body) ? body.Normalize() : TCellRange{1, 1, 1, 1};
    auto table = std::make_unique<TPivotTable>(name, XmlAttrInt(ARoot, "cacheId", 1),
                                               TCellAddress{body.StartCol, body.StartRow});
    table->LastBody = body;
    if (const int32_t rows = XmlAttrInt(location, "firstDataRow", 0); rows >= 1) table->HeaderRowCount = rows;
    if (IsFlagOn(ARoot, "outline", false)) table->LayoutForm = plfOutline;
    table->RowGrandTotals = IsFlagOn(ARoot, "rowGrandTotals", true);
    table->ColGrandTotals = IsFlagOn(ARoot, "colGrandTotals", true);
    if (const TXmlNode* const style = XmlFindChild(ARoot, "pivotTableStyleInfo"); style && XmlHasAttr(style, "name"))
      table->StyleName = XlsxText(XmlAttr(style, "name"));
    AddFields(ARoot, "pageFields", "pageField", "fld", pfrFilter, *table);
    AddFields(ARoot, "rowFields", "field", "x", pfrRow, *table);
    AddFields(ARoot, "colFields", "field", "x", pfrColumn, *table);
    AddDataFields(ARoot, *table);
    ReportTable(ARoot, ASheet);
    ASheet.Pivots().Add(std::move(table));
  }

  static bool IsFlagOn(const TXmlNode* ANode, std::string_view AName, bool ADefault) {
    const std::string_view value = XmlAttr(ANode, AName);
    return value.empty() ? ADefault : value != "0" && !EqualXmlNames(value, "false");
  }

  /// The field of the values has a negative number and no place of its own here.
  static void AddFields(const TXmlNode* ARoot, std::string_view ASection, std::string_view AElement,
                        std::string_view AIndex, TPivotFieldRole ARole, TPivotTable& ATable) {
    for (const TXmlNode* field : TXmlElements(XmlFindChild(ARoot, ASection))) {
      const int32_t index = XmlLocalNameIs(field, AElement) ? XmlAttrInt(field, AIndex, -1) : -1;
      if (index >= 0) AddField(TPivotFieldRef::Create(index, ARole, paSum), ATable);
    }
  }

  static void AddField(TPivotFieldRef AField, TPivotTable& ATable) {
    if (ATable.Fields.size() >= kMaxXlsxPivotFields) {
      throw ELimit("pivot table \"" + ATable.Name.ToUtf8() + "\": more fields than the limit of " +
                   std::to_string(kMaxXlsxPivotFields));
    }
    ATable.AddField(std::move(AField));
  }

  void AddDataFields(const TXmlNode* ARoot, TPivotTable& ATable) const {
    const auto found = FCacheById.find(ATable.CacheId);
    const TPivotCache* const cache = found == FCacheById.end() ? nullptr : found->second;
    for (const TXmlNode* field : TXmlElements(XmlFindChild(ARoot, "dataFields"))) {
      const int32_t index = XmlLocalNameIs(field, "dataField") ? XmlAttrInt(field, "fld", -1) : -1;
      if (index < 0) continue;
      TPivotFieldRef ref = TPivotFieldRef::Create(index, pfrValue, AggFromWord(XmlAttr(field, "subtotal", "sum")));
      ref.CustomName = XlsxText(XmlAttr(field, "name"));
      if (const int32_t format = XmlAttrInt(field, "numFmtId", -1); format >= 0) ref.NumberFormat = FormatCode(format);
      if (ref.NumberFormat.IsEmpty() && cache) ref.NumberFormat = cache->FieldNumberFormat(index);
      AddField(std::move(ref), ATable);
    }
  }

  void ReportTable(const TXmlNode* ARoot, const TWorksheet& ASheet) const {
    if (!FReport.IsWanted()) return;
    const TXlsxReport report{FReport.Report, ASheet.Name().ToUtf8()};
    constexpr std::pair<std::string_view, std::string_view> kLost[] = {
        {"filters", "filter"}, {"conditionalFormats", "conditionalFormat"}, {"calculatedItems", "calculatedItem"}};
    for (const auto& [section, element] : kLost) {
      for (const TXmlNode* node : TXmlElements(XmlFindChild(ARoot, section))) {
        if (XmlLocalNameIs(node, element)) report.Drop("setting of a pivot table", 1, element);
      }
    }
  }

  const TXlsxPackage& FPackage;
  TWorkbook& FWorkbook;
  const TXlsxReport FReport;
  std::map<int32_t, const TPivotCache*> FCacheById;
  std::map<std::string, std::optional<TNamedSource>> FNamedSources;  // by name
  std::set<std::u16string> FTableNames;                              // of the present sheet, in small letters
};

}  // namespace

void ReadExcelPivotParts(const TXlsxPackage& APackage, TWorkbook& AWorkbook, TFileReport* AReport) {
  TXlsxPivotReader(APackage, AWorkbook, AReport).Read();
  TPivotEngine::ApplyLoadedPivotStyles(AWorkbook);
}

}  // namespace tessarine::detail

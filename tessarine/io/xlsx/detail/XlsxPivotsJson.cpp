#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>
#include <tessarine/io/xlsx/detail/XlsxPivots.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/JsonReader.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

// ---- reading

/// Objects of the part, which make far more in memory than the shortest text that stands for one.
constexpr size_t kMaxPivotObjects = 500'000;

struct TSheetPivots {
  std::string Sheet;
  std::vector<std::unique_ptr<TPivotTable>> Tables;
};

/// What the part says, whole before any of it counts.
struct TPivotDocument {
  std::vector<std::unique_ptr<TPivotCache>> Caches;
  std::vector<TSheetPivots> Sheets;
};

/// Goes through the document. Members that are unknown or of another type than expected count as missing.
class TPivotJsonReader {
 public:
  TPivotJsonReader(std::string_view AText, std::string ASource) : FJson(AText, std::move(ASource)) {}

  /// Nothing for a document that is no object.
  std::optional<TPivotDocument> Read() {
    TPivotDocument document;
    if (FJson.Next() != jeBeginObject) return std::nullopt;
    ForEachMember([&](std::string_view AName) {
      if (AName == "caches") return ForEachObject([&] { document.Caches.push_back(ReadCache()); });
      if (AName == "sheets") return ForEachObject([&] { document.Sheets.push_back(ReadSheet()); });
      FJson.Skip();
    });
    while (FJson.Next() != jeEnd) {}
    return document;
  }

 private:
  /// Inside an object: calls AMember(name) at the event of each value, whose last event AMember leaves behind.
  template <class TMember>
  void ForEachMember(TMember&& AMember) {
    while (FJson.Next() == jeName) {
      const std::string name(FJson.Text());
      FJson.Next();
      AMember(std::string_view(name));
    }
  }

  /// At a value: calls AObject() at the start of each object of an array; passes over everything else.
  template <class TObject>
  void ForEachObject(TObject&& AObject) {
    if (FJson.Event() != jeBeginArray) return FJson.Skip();
    while (FJson.Next() != jeEndArray) {
      if (FJson.Event() == jeBeginObject) {
        if (++FObjects > kMaxPivotObjects)
          throw ELimit(std::string(kXlsxPivotsPart) + ": more objects than the limit of " +
                       std::to_string(kMaxPivotObjects));
        AObject();
      } else {
        FJson.Skip();
      }
    }
  }

  std::string TakeText(std::string_view ADefault = {}) {
    if (FJson.Event() == jeText) return std::string(FJson.Text());
    FJson.Skip();
    return std::string(ADefault);
  }

  int32_t TakeInteger() {
    if (FJson.Event() != jeNumber) return FJson.Skip(), 0;
    const double value = FJson.Number();
    constexpr double kMost = std::numeric_limits<int32_t>::max();
    return std::abs(value) <= kMost && std::trunc(value) == value ? static_cast<int32_t>(value) : 0;
  }

  /// One of the values 0 to ALast of an enumeration, else the first.
  template <class TEnum>
  TEnum TakeEnum(TEnum ALast) {
    const int32_t value = TakeInteger();
    return value >= 0 && value <= static_cast<int32_t>(ALast) ? static_cast<TEnum>(value) : TEnum{};
  }

  TCellRange TakeRange() {
    const TCellRange range = XlsxRange(TakeText());
    return XlsxIsRange(range) ? range : TCellRange{1, 1, 1, 1};
  }

  std::unique_ptr<TPivotCache> ReadCache() {
    int32_t id = 0;
    TPivotCache content(0);
    ForEachMember([&](std::string_view AName) {
      if (AName == "id") {
        id = TakeInteger();
      } else if (AName == "sourceKind") {
        content.SourceKind = TakeEnum(pcsExternal);
      } else if (AName == "sourceSheet") {
        content.SourceSheet = TText::FromUtf8(TakeText());
      } else if (AName == "sourceRange") {
        content.SourceRange = TakeRange();
      } else if (AName == "connectionId") {
        content.ConnectionId = TText::FromUtf8(TakeText());
      } else {
        FJson.Skip();
      }
    });
    auto cache = std::make_unique<TPivotCache>(id);
    cache->SourceKind = content.SourceKind;
    cache->SourceSheet = content.SourceSheet;
    cache->SourceRange = content.SourceRange;
    cache->ConnectionId = content.ConnectionId;
    return cache;
  }

  TSheetPivots ReadSheet() {
    TSheetPivots sheet;
    ForEachMember([&](std::string_view AName) {
      if (AName == "sheet") {
        sheet.Sheet = TakeText();
      } else if (AName == "pivots") {
        ForEachObject([&] { sheet.Tables.push_back(ReadTable()); });
      } else {
        FJson.Skip();
      }
    });
    return sheet;
  }

  std::unique_ptr<TPivotTable> ReadTable() {
    std::string name = "Pivot";
    int32_t cacheId = 0;
    TCellAddress dest{1, 1};
    std::vector<TPivotFieldRef> fields;
    ForEachMember([&](std::string_view AName) {
      if (AName == "name") {
        name = TakeText(name);
      } else if (AName == "cacheId") {
        cacheId = TakeInteger();
      } else if (AName == "dest") {
        const TCellRange range = TakeRange();
        dest = {range.StartCol, range.StartRow};
      } else if (AName == "fields") {
        ForEachObject([&] {
          if (fields.size() >= kMaxXlsxPivotFields)
            throw ELimit(std::string(kXlsxPivotsPart) + ": a pivot table has more fields than the limit of " +
                         std::to_string(kMaxXlsxPivotFields));
          fields.push_back(ReadField());
        });
      } else {
        FJson.Skip();
      }
    });
    auto table = std::make_unique<TPivotTable>(TText::FromUtf8(name), cacheId, dest);
    for (TPivotFieldRef& field : fields) table->AddField(std::move(field));
    return table;
  }

  TPivotFieldRef ReadField() {
    TPivotFieldRef field;
    ForEachMember([&](std::string_view AName) {
      if (AName == "field") {
        field.CacheFieldIndex = TakeInteger();
      } else if (AName == "role") {
        field.Role = TakeEnum(pfrValue);
      } else if (AName == "agg") {
        field.Agg = TakeEnum(paVarp);
      } else if (AName == "numberFormat") {
        field.NumberFormat = TText::FromUtf8(TakeText());
      } else {
        FJson.Skip();
      }
    });
    return field;
  }

  TJsonReader FJson;
  size_t FObjects = 0;
};

/// Nothing for a part that is no JSON object.
std::optional<TPivotDocument> TryReadPivotDocument(std::string_view AText) {
  try {
    return TPivotJsonReader(AText, std::string(kXlsxPivotsPart)).Read();
  } catch (const EFileFormat&) {
    return std::nullopt;
  }
}

// ---- writing

void WritePivotText(TJsonWriter& AJson, std::string_view AName, std::u16string_view AText) {
  AJson.Name(AName);
  AJson.Text(AText);
}

void WritePivotInteger(TJsonWriter& AJson, std::string_view AName, int64_t AValue) {
  AJson.Name(AName);
  AJson.Integer(AValue);
}

void WritePivotCache(TJsonWriter& AJson, const TPivotCache& ACache) {
  AJson.BeginObject();
  WritePivotInteger(AJson, "id", ACache.Id());
  WritePivotInteger(AJson, "sourceKind", static_cast<int64_t>(ACache.SourceKind));
  WritePivotText(AJson, "sourceSheet", ACache.SourceSheet.View());
  WritePivotText(AJson, "sourceRange", ACache.SourceRange.ToA1());
  WritePivotText(AJson, "connectionId", ACache.ConnectionId.View());
  AJson.EndObject();
}

void WritePivotTable(TJsonWriter& AJson, const TPivotTable& ATable) {
  AJson.BeginObject();
  WritePivotText(AJson, "name", ATable.Name.View());
  WritePivotInteger(AJson, "cacheId", ATable.CacheId);
  WritePivotText(AJson, "dest", ATable.Dest.ToA1());
  AJson.Name("fields");
  AJson.BeginArray();
  for (const TPivotFieldRef& field : ATable.Fields) {
    AJson.BeginObject();
    WritePivotInteger(AJson, "field", field.CacheFieldIndex);
    WritePivotInteger(AJson, "role", static_cast<int64_t>(field.Role));
    WritePivotInteger(AJson, "agg", static_cast<int64_t>(field.Agg));
    WritePivotText(AJson, "numberFormat", field.NumberFormat.View());
    AJson.EndObject();
  }
  AJson.EndArray();
  AJson.EndObject();
}

bool HasAnyPivots(const TWorkbook& AWorkbook) {
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    if (!AWorkbook.GetSheet(index)->Pivots().IsEmpty()) return true;
  }
  return !AWorkbook.PivotCaches().IsEmpty();
}

}  // namespace

void ReadTessarinePivotsPart(const TXlsxPackage& APackage, TWorkbook& AWorkbook) {
  const TByteBuffer bytes = APackage.ReadPart(kXlsxPivotsPart);
  if (bytes.IsEmpty()) return;
  std::optional<TPivotDocument> document = TryReadPivotDocument(bytes.Text());
  if (!document) return;
  AWorkbook.PivotCaches().Clear();
  for (auto& cache : document->Caches) AWorkbook.PivotCaches().Add(std::move(cache));
  for (TSheetPivots& entry : document->Sheets) {
    TWorksheet* const sheet = AWorkbook.FindSheet(entry.Sheet);
    if (!sheet) continue;
    sheet->Pivots().Clear();
    for (auto& table : entry.Tables) sheet->Pivots().Add(std::move(table));
  }
}

std::optional<std::string> TessarinePivotsPart(const TWorkbook& AWorkbook) {
  if (!HasAnyPivots(AWorkbook)) return std::nullopt;
  std::string text;
  TJsonWriter json(text);
  json.BeginObject();
  json.Name("caches");
  json.BeginArray();
  for (const auto& cache : AWorkbook.PivotCaches()) WritePivotCache(json, *cache);
  json.EndArray();
  json.Name("sheets");
  json.BeginArray();
  for (int32_t index = 0; index < AWorkbook.SheetCount(); ++index) {
    const TWorksheet& sheet = *AWorkbook.GetSheet(index);
    if (sheet.Pivots().IsEmpty()) continue;
    json.BeginObject();
    WritePivotText(json, "sheet", sheet.Name().View());
    json.Name("pivots");
    json.BeginArray();
    for (const auto& table : sheet.Pivots()) WritePivotTable(json, *table);
    json.EndArray();
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
  return text;
}

}  // namespace tessarine::detail

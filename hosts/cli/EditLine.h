#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <hosts/cli/JsonValue.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/values/Address.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::cli {

/// Throws ECli for an edit that makes no sense; the line is told by the script's runner.
[[noreturn]] void FailEdit(const std::string& AMessage);

/// Some rows or columns.
struct TLines {
  bool IsRows = true;
  int32_t Start = 0;
  int32_t Count = 0;
};

/// One edit of a script: its keys, and the sheet that it is about. Reading a key that is missing or of another kind
/// throws ECli.
class TEditLine {
 public:
  TEditLine(const TJsonValue& AObject, TWorkbook& AWorkbook, int32_t ASheetIndex)
      : FObject(AObject), FWorkbook(AWorkbook), FSheetIndex(ASheetIndex) {}

  TWorkbook& Workbook() const { return FWorkbook; }
  TWorksheet& Sheet() const;
  int32_t SheetIndex() const { return FSheetIndex; }

  /// Null when there is no such key.
  const TJsonValue* Find(std::string_view AKey) const { return FObject.Find(AKey); }
  const TJsonValue& Get(std::string_view AKey) const;

  std::string Text(std::string_view AKey) const;
  std::optional<std::string> FindText(std::string_view AKey) const;
  bool Flag(std::string_view AKey, bool ADefault) const;
  TCellRange Range(std::string_view AKey) const;
  TCellAddress Cell(std::string_view AKey) const;
  /// Of "rows" or "columns": 5, "5:7", "B", "B:D".
  TLines Lines() const;
  /// The line of one axis: 5 or "B"; one behind the sheet's last is possible.
  int32_t Line(std::string_view AKey, bool AIsRow) const;

 private:
  const TJsonValue& FObject;
  TWorkbook& FWorkbook;
  int32_t FSheetIndex;
};

std::string JsonTextOf(const TJsonValue& AValue, std::string_view AKey);
double JsonNumberOf(const TJsonValue& AValue, std::string_view AKey);
bool JsonFlagOf(const TJsonValue& AValue, std::string_view AKey);
/// A whole number of those bounds.
int32_t JsonIntegerOf(const TJsonValue& AValue, std::string_view AKey, int32_t ALeast, int32_t AMost);

/// The value of a word in any case; throws ECli, which names all words.
template <class TValue>
TValue WordOf(std::initializer_list<std::pair<std::string_view, TValue>> AWords, const std::string& AText,
              std::string_view AKey);

/// Writes a cell; the block that its old formula may have laid over others goes.
void StoreCell(TWorksheet& ASheet, TCellAddress AAddress, const TCell& ACell);

// ---- the edits
void EditSet(const TEditLine& ALine);
void EditClear(const TEditLine& ALine);
void EditInsert(const TEditLine& ALine);
void EditDelete(const TEditLine& ALine);
void EditMove(const TEditLine& ALine);
void EditFill(const TEditLine& ALine);
void EditMerge(const TEditLine& ALine);
void EditFormat(const TEditLine& ALine);
void EditName(const TEditLine& ALine);
void EditValidation(const TEditLine& ALine);
void EditNote(const TEditLine& ALine);

/// The keys that EditFormat knows, with blanks between.
std::string FormatKeys();

// ---- implementation

bool EqualWords(std::string_view ALeft, std::string_view ARight);

template <class TValue>
TValue WordOf(std::initializer_list<std::pair<std::string_view, TValue>> AWords, const std::string& AText,
              std::string_view AKey) {
  std::string words;
  for (const auto& [word, value] : AWords) {
    if (EqualWords(word, AText)) return value;
    words += (words.empty() ? "" : ", ") + std::string(word);
  }
  FailEdit("\"" + std::string(AKey) + "\" is one of " + words + ", not \"" + AText + "\"");
}

}  // namespace tessarine::cli

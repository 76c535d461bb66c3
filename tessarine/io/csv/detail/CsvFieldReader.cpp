#include <tessarine/io/csv/detail/CsvFieldReader.h>

namespace tessarine::detail {

namespace {

bool IsFieldBlank(char AByte, char ADelimiter) { return (AByte == ' ' || AByte == '\t') && AByte != ADelimiter; }

}  // namespace

void TCsvFieldReader::SkipBlanks() {
  for (;;) {
    while (FAt < FSource.Size() && IsFieldBlank(FSource.Data()[FAt], FDelimiter)) ++FAt;
    if (!IsCutAt(FAt)) return;
    ReadOn();
  }
}

void TCsvFieldReader::TrimEnd(std::string_view& AText) const {
  while (!AText.empty() && IsFieldBlank(AText.back(), FDelimiter)) AText.remove_suffix(1);
}

bool TCsvFieldReader::NextAtEnd(TCsvField& AField) {
  if (!FRowOpen) return false;
  FRowOpen = false;
  AField = {.Text = {}, .IsQuoted = false, .EndsRow = true};
  return true;
}

bool TCsvFieldReader::NextQuoted(TCsvField& AField) {
  while (!TryNextQuoted(AField)) ReadOn();
  return true;
}

/// Reads the quoted field at FAt; false when the window ends before it can be told where the field does.
/// A quote that is never closed quotes all the rest. What stands behind the closing quote belongs to the field.
bool TCsvFieldReader::TryNextQuoted(TCsvField& AField) {
  const char* const data = FSource.Data();
  const size_t size = FSource.Size();
  size_t from = FAt + 1;
  size_t close = 0;
  int64_t lines = 0;
  FScratch.clear();
  FindSpecial();
  PassSpecial();  // the opening quote
  for (;;) {
    close = FindSpecial();
    if (IsCutAt(close)) return false;
    if (close == size) break;
    PassSpecial();
    if (data[close] == '\n' || (data[close] == '\r' && (close + 1 == size || data[close + 1] != '\n'))) ++lines;
    if (data[close] != '"') continue;
    if (IsCutAt(close + 1)) return false;
    if (close + 1 == size || data[close + 1] != '"') break;
    FScratch.append(data + from, close + 1 - from);
    FindSpecial();
    PassSpecial();  // the second quote of the pair
    from = close + 2;
  }
  const size_t behind = close == size ? size : close + 1;
  const size_t end = FindFieldEnd();
  if (IsCutAt(end)) return false;
  std::string_view tail(data + behind, end - behind);
  if (FTrimBlanks) TrimEnd(tail);
  AField.IsQuoted = true;
  AField.Text = {data + from, close - from};
  if (!FScratch.empty() || !tail.empty()) AField.Text = FScratch.append(AField.Text).append(tail);
  FLine += lines;
  return EndField(AField, end);
}

bool TCsvFieldReader::NextOfLine(TCsvField& AField) {
  const auto findEnd = [this](bool& AHasQuotes) {
    bool inQuotes = false;
    AHasQuotes = false;
    for (;;) {
      const size_t place = FindSpecial();
      if (place == FSource.Size()) return place;
      const char byte = FSource.Data()[place];
      if (byte == '\r' || byte == '\n' || (byte != '"' && !inQuotes)) return place;
      if (byte == '"') {
        inQuotes = !inQuotes;
        AHasQuotes = true;
      }
      PassSpecial();
    }
  };
  bool hasQuotes = false;
  size_t end = findEnd(hasQuotes);
  while (IsCutAt(end)) {
    ReadOn();
    end = findEnd(hasQuotes);
  }
  AField.Text = {FSource.Data() + FAt, end - FAt};
  AField.IsQuoted = hasQuotes;
  if (hasQuotes) {
    FScratch.assign(AField.Text);
    std::erase(FScratch, '"');
    AField.Text = FScratch;
  }
  return EndField(AField, end);
}

}  // namespace tessarine::detail

#include <tessarine/core/format/detail/DateTimeProgram.h>

#include <algorithm>
#include <utility>

#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Gathers short pieces and hands them on in one go.
class TPieceWriter {
 public:
  explicit TPieceWriter(std::u16string& AOut) : FOut(AOut) {}
  ~TPieceWriter() { FOut.append(FUnits, FCount); }
  TPieceWriter(const TPieceWriter&) = delete;
  TPieceWriter& operator=(const TPieceWriter&) = delete;

  void Add(char16_t AUnit) {
    MakeRoom();
    FUnits[FCount++] = AUnit;
  }

  void Add(std::u16string_view AText) {
    Flush();
    FOut += AText;
  }

  /// A number of 0 to 9999 with at least AWidth digits.
  void AddPadded(int AValue, int AWidth) {
    MakeRoom();
    const int digits = std::max(AWidth, AValue < 10 ? 1 : AValue < 100 ? 2 : AValue < 1000 ? 3 : 4);
    FCount += static_cast<size_t>(digits);
    int rest = AValue;
    for (int i = 1; i <= digits; ++i, rest /= 10)
      FUnits[FCount - static_cast<size_t>(i)] = static_cast<char16_t>(u'0' + rest % 10);
  }

 private:
  static constexpr size_t kUnits = 64;
  static constexpr size_t kMostDigits = 4;

  void MakeRoom() {
    if (FCount + kMostDigits > kUnits) Flush();
  }

  void Flush() {
    FOut.append(FUnits, FCount);
    FCount = 0;
  }

  std::u16string& FOut;
  char16_t FUnits[kUnits];
  size_t FCount = 0;
};

}  // namespace

/// Reads a pattern into parts; gives up at the first thing it does not know for certain.
struct TDateTimeProgram::TReader {
  std::u16string_view Pattern;
  TDateTimeProgram& Program;
  size_t At = 0;
  bool FollowsHours = false;

  bool Read() {
    while (At < Pattern.size()) {
      const char16_t unit = Pattern[At];
      if (unit == u'"' || unit >= 0x80) return false;
      if (unit == u'\'') {
        ReadQuoted();
      } else if (IsAsciiLetter(unit)) {
        if (!ReadLetters()) return false;
      } else {
        Add(unit == u'/'   ? TPartKind::pkDateSeparator
            : unit == u':' ? TPartKind::pkTimeSeparator
                           : TPartKind::pkLiteral,
            unit);
        ++At;
      }
    }
    return true;
  }

  void Add(TPartKind AKind, char16_t AUnit = 0, size_t AWidth = 0) {
    Program.FParts.push_back({AKind, AUnit, static_cast<uint8_t>(AWidth)});
  }

  void ReadQuoted() {
    for (++At; At < Pattern.size(); ++At) {
      if (Pattern[At] == u'\'') {
        if (At + 1 >= Pattern.size() || Pattern[At + 1] != u'\'') break;
        ++At;
      }
      Add(TPartKind::pkLiteral, Pattern[At]);
    }
    ++At;
  }

  bool ReadLetters() {
    const char16_t letter = AsciiLower(Pattern[At]);
    const size_t start = At;
    while (At < Pattern.size() && AsciiLower(Pattern[At]) == letter) ++At;
    const size_t count = At - start;
    const bool isMinute = letter == u'n' || (letter == u'm' && FollowsHours && count <= 2);
    FollowsHours = letter == u'h';
    if (isMinute || letter == u'h' || letter == u's') return AddTime(isMinute ? u'n' : letter, count);
    return AddDate(letter, count);
  }

  bool AddTime(char16_t ALetter, size_t ACount) {
    if (ACount > 2) return false;
    Program.FHasTime = true;
    Add(ALetter == u'h' ? TPartKind::pkHour : ALetter == u's' ? TPartKind::pkSecond : TPartKind::pkMinute, 0, ACount);
    return true;
  }

  bool AddDate(char16_t ALetter, size_t ACount) {
    if (ALetter == u'y' && (ACount == 2 || ACount == 4)) {
      Program.FHasDate = true;
      Add(ACount == 2 ? TPartKind::pkYear2 : TPartKind::pkYear4);
      return true;
    }
    if ((ALetter != u'm' && ALetter != u'd') || ACount > 4) return false;
    const bool isMonth = ALetter == u'm';
    if (ACount <= 2) {
      Add(isMonth ? TPartKind::pkMonth : TPartKind::pkDay, 0, ACount);
    } else if (isMonth) {
      Add(ACount == 3 ? TPartKind::pkMonthShort : TPartKind::pkMonthLong);
    } else {
      Add(ACount == 3 ? TPartKind::pkDayShort : TPartKind::pkDayLong);
    }
    (isMonth || ACount <= 2 ? Program.FHasDate : Program.FHasDayName) = true;
    return true;
  }
};

TDateTimeProgram::TDateTimeProgram(std::u16string APattern) : FPattern(std::move(APattern)) {
  FIsCompiled = TReader{FPattern, *this}.Read();
}

bool TDateTimeProgram::TryAppend(double ASerial, const TFormatSettings& ASettings, std::u16string& AOut) const {
  if (!FIsCompiled) {
    std::u16string text;
    if (!TryFormatDateTime(FPattern, ASerial, ASettings, text)) return false;
    AOut += text;
    return true;
  }
  const TDateParts date = FHasDate ? DecodeDate(ASerial) : TDateParts{};
  const int weekday = FHasDayName || !FHasDate ? DayOfWeek(ASerial) : 1;
  if (weekday == 0 || (FHasDate && date.Year == 0)) return false;
  const TTimeParts time = FHasTime ? DecodeTime(ASerial) : TTimeParts{};
  TPieceWriter out(AOut);
  for (const TPart part : FParts) {
    switch (part.Kind) {
      case TPartKind::pkLiteral: out.Add(part.Unit); break;
      case TPartKind::pkDateSeparator: out.Add(ASettings.DateSeparator); break;
      case TPartKind::pkTimeSeparator: out.Add(ASettings.TimeSeparator); break;
      case TPartKind::pkYear2: out.AddPadded(date.Year % 100, 2); break;
      case TPartKind::pkYear4: out.AddPadded(date.Year, 4); break;
      case TPartKind::pkMonth: out.AddPadded(date.Month, part.Width); break;
      case TPartKind::pkMonthShort: out.Add(ASettings.ShortMonthNames[static_cast<size_t>(date.Month - 1)]); break;
      case TPartKind::pkMonthLong: out.Add(ASettings.LongMonthNames[static_cast<size_t>(date.Month - 1)]); break;
      case TPartKind::pkDay: out.AddPadded(date.Day, part.Width); break;
      case TPartKind::pkDayShort: out.Add(ASettings.ShortDayNames[static_cast<size_t>(weekday - 1)]); break;
      case TPartKind::pkDayLong: out.Add(ASettings.LongDayNames[static_cast<size_t>(weekday - 1)]); break;
      case TPartKind::pkHour: out.AddPadded(time.Hour, part.Width); break;
      case TPartKind::pkMinute: out.AddPadded(time.Minute, part.Width); break;
      case TPartKind::pkSecond: out.AddPadded(time.Second, part.Width); break;
    }
  }
  return true;
}

}  // namespace tessarine::detail

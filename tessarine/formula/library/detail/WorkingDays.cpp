#include <tessarine/formula/library/detail/WorkingDays.h>

#include <algorithm>

namespace tessarine::detail {

namespace {

constexpr int32_t kFirstDay = -693'593;  // 0001-01-01, a Monday
constexpr int32_t kLastDay = 2'958'465;  // 9999-12-31

}  // namespace

bool TWeekend::IsWhole() const {
  return std::all_of(IsFree, IsFree + 7, [](bool AIsFree) { return AIsFree; });
}

std::optional<TWeekend> WeekendOfCode(int64_t ACode) {
  const bool isPair = ACode >= 1 && ACode <= 7;
  if (!isPair && !(ACode >= 11 && ACode <= 17)) return {};
  const int64_t last = (ACode - (isPair ? 1 : 11) + 6) % 7;
  TWeekend weekend{};
  for (int64_t day = 0; day < 7; ++day) weekend.IsFree[day] = day == last || (isPair && day == (last + 6) % 7);
  return weekend;
}

std::optional<TWeekend> WeekendOfPattern(std::u16string_view APattern) {
  if (APattern.size() != 7) return {};
  TWeekend weekend;
  for (size_t day = 0; day < 7; ++day) {
    if (APattern[day] != u'0' && APattern[day] != u'1') return {};
    weekend.IsFree[day] = APattern[day] == u'1';
  }
  return weekend;
}

TWorkCalendar::TWorkCalendar(const TWeekend& AWeekend, std::vector<int32_t> AHolidays)
    : FWeekend(AWeekend), FHolidays(std::move(AHolidays)) {
  for (int day = 0; day < 7; ++day) FWorkingBefore[day + 1] = FWorkingBefore[day] + (FWeekend.IsFree[day] ? 0 : 1);
  std::erase_if(FHolidays, [&](int32_t ADay) { return IsFree(ADay); });
  std::sort(FHolidays.begin(), FHolidays.end());
  FHolidays.erase(std::unique(FHolidays.begin(), FHolidays.end()), FHolidays.end());
}

bool TWorkCalendar::IsFree(int32_t ADay) const { return FWeekend.IsFree[(ADay - kFirstDay) % 7]; }

int64_t TWorkCalendar::CountUntil(int32_t ADay) const {
  const int32_t days = ADay - kFirstDay + 1;
  const auto holidays = std::upper_bound(FHolidays.begin(), FHolidays.end(), ADay) - FHolidays.begin();
  return int64_t{days / 7} * FWorkingBefore[7] + FWorkingBefore[days % 7] - holidays;
}

int64_t TWorkCalendar::CountBetween(int32_t AFirst, int32_t ALast) const {
  if (ALast < AFirst) return -CountBetween(ALast, AFirst);
  return CountUntil(ALast) - CountUntil(AFirst - 1);
}

std::optional<int32_t> TWorkCalendar::DayAfter(int32_t ADay, int64_t ACount) const {
  if (ACount == 0) return ADay;
  if (ACount < kFirstDay - kLastDay || ACount > kLastDay - kFirstDay) return {};
  // The wanted day is the first one until which this many working days have passed, counted from the beginning.
  const int64_t wanted = ACount > 0 ? CountUntil(ADay) + ACount : CountUntil(ADay - 1) + ACount + 1;
  if (wanted < 1 || wanted > CountUntil(kLastDay)) return {};
  int32_t low = kFirstDay;
  int32_t high = kLastDay;
  while (low < high) {
    const int32_t middle = low + (high - low) / 2;
    if (CountUntil(middle) < wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

}  // namespace tessarine::detail

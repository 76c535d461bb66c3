#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace tessarine::detail {

/// Days of the week that are free, Monday to Sunday.
struct TWeekend {
  bool IsFree[7] = {false, false, false, false, false, true, true};

  bool IsWhole() const;  // no working day is left
};

/// The weekend of a code: 1 to 7 for two days, the second of them Sunday for 1, Monday for 2 and so on; 11 to 17 for
/// Sunday alone, Monday alone and so on. Nothing for other numbers.
std::optional<TWeekend> WeekendOfCode(int64_t ACode);

/// The weekend of seven digits, Monday first, 1 for a free day. Nothing for other texts.
std::optional<TWeekend> WeekendOfPattern(std::u16string_view APattern);

/// Counts working days of the calendar (years 1 to 9999) without walking over them. Days are serial numbers inside the
/// calendar.
class TWorkCalendar {
 public:
  /// Holidays in any order, repeated and free ones among them.
  TWorkCalendar(const TWeekend& AWeekend, std::vector<int32_t> AHolidays);

  /// Working days from AFirst to ALast, both included; negative when ALast is earlier.
  int64_t CountBetween(int32_t AFirst, int32_t ALast) const;

  /// The ACount-th working day after ADay, before it when ACount is negative, ADay itself for 0. Nothing when it lies
  /// outside the calendar.
  std::optional<int32_t> DayAfter(int32_t ADay, int64_t ACount) const;

 private:
  int64_t CountUntil(int32_t ADay) const;  // from the beginning of the calendar, ADay included
  bool IsFree(int32_t ADay) const;

  TWeekend FWeekend;
  int32_t FWorkingBefore[8] = {};  // working days among the first days of a week; the last for a whole week
  std::vector<int32_t> FHolidays;  // sorted, each once, none of them free by the week
};

}  // namespace tessarine::detail

#include "platform/local_time.h"

#include <ctime>

namespace platform {
namespace {

// Seconds from 1601-01-01 to 1970-01-01.
constexpr std::int64_t kEpochDifferenceSeconds = 11644473600LL;

// Days since 1970-01-01 of a civil date, and back (proleptic Gregorian).
std::int64_t DaysFromCivil(std::int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
  const auto yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

void CivilFromDays(std::int64_t z, int& year, int& month, int& day) {
  z += 719468;
  const std::int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const auto doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  day = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  month = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  year = static_cast<int>(static_cast<std::int64_t>(yoe) + era * 400 + (month <= 2));
}

bool IsLeap(int year) { return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0; }

int DaysInMonth(int year, int month) {
  static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return month == 2 && IsLeap(year) ? 29 : kDays[month - 1];
}

std::int64_t UtcOffsetSeconds(std::time_t when) {
  std::tm local{};
  localtime_r(&when, &local);
  return local.tm_gmtoff;
}

}  // namespace

std::uint64_t ToLocalFileTime(std::chrono::system_clock::time_point moment) {
  using namespace std::chrono;
  const auto since1970 = duration_cast<nanoseconds>(moment.time_since_epoch()).count();
  const std::int64_t seconds = since1970 / 1'000'000'000;
  const std::int64_t localSeconds = seconds + UtcOffsetSeconds(static_cast<std::time_t>(seconds));
  const std::int64_t ticks = (localSeconds + kEpochDifferenceSeconds) * 10'000'000LL +
                             (since1970 % 1'000'000'000) / 100;
  return ticks < 0 ? 0 : static_cast<std::uint64_t>(ticks);
}

std::chrono::system_clock::time_point FromLocalFileTime(std::uint64_t fileTime) {
  using namespace std::chrono;
  const std::int64_t localSeconds =
      static_cast<std::int64_t>(fileTime / kFileTimeTicksPerSecond) - kEpochDifferenceSeconds;
  // The offset depends on the moment we are looking for; take the offset at
  // the local reading taken as UTC, then correct once with the offset found.
  std::int64_t utc = localSeconds - UtcOffsetSeconds(static_cast<std::time_t>(localSeconds));
  utc = localSeconds - UtcOffsetSeconds(static_cast<std::time_t>(utc));
  const auto remainder = static_cast<std::int64_t>(fileTime % kFileTimeTicksPerSecond) * 100;
  return system_clock::time_point(duration_cast<system_clock::duration>(seconds(utc) + nanoseconds(remainder)));
}

std::uint64_t LocalFileTimeNow() { return ToLocalFileTime(std::chrono::system_clock::now()); }

SystemTime FileTimeToSystemTime(std::uint64_t fileTime) {
  SystemTime time;
  const std::int64_t totalSeconds = static_cast<std::int64_t>(fileTime / kFileTimeTicksPerSecond);
  time.milliseconds = static_cast<int>((fileTime % kFileTimeTicksPerSecond) / 10'000);
  const std::int64_t days = totalSeconds / 86400;
  const std::int64_t secondOfDay = totalSeconds % 86400;
  time.hour = static_cast<int>(secondOfDay / 3600);
  time.minute = static_cast<int>(secondOfDay / 60 % 60);
  time.second = static_cast<int>(secondOfDay % 60);
  // 1601-01-01 was a Monday.
  time.dayOfWeek = static_cast<int>((days + 1) % 7);
  CivilFromDays(days + DaysFromCivil(1601, 1, 1), time.year, time.month, time.day);
  return time;
}

bool SystemTimeToFileTime(const SystemTime& time, std::uint64_t& fileTime) {
  if (time.year < 1601 || time.year > 30827 || time.month < 1 || time.month > 12 || time.day < 1 ||
      time.day > DaysInMonth(time.year, time.month) || time.hour < 0 || time.hour > 23 ||
      time.minute < 0 || time.minute > 59 || time.second < 0 || time.second > 59 ||
      time.milliseconds < 0 || time.milliseconds > 999) {
    return false;
  }
  const std::int64_t days = DaysFromCivil(time.year, static_cast<unsigned>(time.month),
                                          static_cast<unsigned>(time.day)) -
                            DaysFromCivil(1601, 1, 1);
  const std::int64_t seconds = days * 86400 + time.hour * 3600 + time.minute * 60 + time.second;
  fileTime = static_cast<std::uint64_t>(seconds) * kFileTimeTicksPerSecond +
             static_cast<std::uint64_t>(time.milliseconds) * 10'000;
  return true;
}

std::uint32_t TickCount() {
  using namespace std::chrono;
  return static_cast<std::uint32_t>(
      duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count());
}

}  // namespace platform

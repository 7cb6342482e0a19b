// Time in the forms the system stores it.
//
// A FILETIME here is a count of 100 ns intervals since 1601-01-01 00:00 of
// *local* time (the system keeps the alarm that way, low word first). A
// SystemTime is the broken-down calendar form, as the platform's SYSTEMTIME.
#pragma once

#include <chrono>
#include <cstdint>

namespace platform {

inline constexpr std::uint64_t kFileTimeTicksPerSecond = 10'000'000;

struct SystemTime {
  int year = 1601;
  int month = 1;      // 1 to 12
  int dayOfWeek = 1;  // 0 Sunday to 6 Saturday; ignored when converting to a FILETIME
  int day = 1;        // 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;
  int milliseconds = 0;
  bool operator==(const SystemTime&) const = default;
};

// The current local time as a FILETIME.
std::uint64_t LocalFileTimeNow();

// A moment as a local FILETIME, using the time zone's offset at that moment.
std::uint64_t ToLocalFileTime(std::chrono::system_clock::time_point moment);
// A local FILETIME as a moment; the offset of the local time zone at about
// that time is applied (an hour that a clock change repeats takes the first).
std::chrono::system_clock::time_point FromLocalFileTime(std::uint64_t fileTime);

// Calendar conversion of a FILETIME, without any time zone.
SystemTime FileTimeToSystemTime(std::uint64_t fileTime);
// False when a field is out of range (month 13, day 32, a year before 1601).
bool SystemTimeToFileTime(const SystemTime& time, std::uint64_t& fileTime);

// Milliseconds since an arbitrary start, wrapping at 2^32, as GetTickCount.
std::uint32_t TickCount();

}  // namespace platform

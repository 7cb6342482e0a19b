#include "platform/local_time.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>

namespace {

using namespace platform;

TEST(LocalTimeTest, CalendarConversionsMatchKnownFileTimes) {
  // 2000-01-01 00:00:00 is 125911584000000000 in 100 ns since 1601, a Saturday.
  SystemTime time{2000, 1, 6, 1, 0, 0, 0, 0};
  std::uint64_t fileTime = 0;
  ASSERT_TRUE(SystemTimeToFileTime(time, fileTime));
  EXPECT_EQ(fileTime, 125911584000000000ULL);
  EXPECT_EQ(FileTimeToSystemTime(fileTime), time);

  const SystemTime leap{2024, 2, 4, 29, 23, 59, 59, 999};
  ASSERT_TRUE(SystemTimeToFileTime(leap, fileTime));
  EXPECT_EQ(FileTimeToSystemTime(fileTime), leap);
  EXPECT_EQ(FileTimeToSystemTime(0), (SystemTime{1601, 1, 1, 1, 0, 0, 0, 0}));

  EXPECT_FALSE(SystemTimeToFileTime({2023, 2, 0, 29, 0, 0, 0, 0}, fileTime));
  EXPECT_FALSE(SystemTimeToFileTime({2023, 13, 0, 1, 0, 0, 0, 0}, fileTime));
  EXPECT_FALSE(SystemTimeToFileTime({1600, 12, 0, 31, 0, 0, 0, 0}, fileTime));
}

TEST(LocalTimeTest, LocalFileTimeRoundTripsAndFollowsTheZone) {
  const char* saved = std::getenv("TZ");
  const std::string savedZone = saved ? saved : "";
  ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  ::tzset();

  // 2026-07-01 10:00 UTC is 12:00 in summer time.
  std::tm utc{};
  utc.tm_year = 126, utc.tm_mon = 6, utc.tm_mday = 1, utc.tm_hour = 10;
  const auto moment = std::chrono::system_clock::from_time_t(::timegm(&utc));
  const std::uint64_t local = ToLocalFileTime(moment);
  const SystemTime shown = FileTimeToSystemTime(local);
  EXPECT_EQ(shown.hour, 12);
  EXPECT_EQ(shown.day, 1);
  EXPECT_EQ(FromLocalFileTime(local), moment);

  const std::uint64_t now = LocalFileTimeNow();
  const std::uint64_t again = ToLocalFileTime(FromLocalFileTime(now));
  EXPECT_LT(again > now ? again - now : now - again, 10u);

  if (saved) ::setenv("TZ", savedZone.c_str(), 1);
  else ::unsetenv("TZ");
  ::tzset();
}

}  // namespace

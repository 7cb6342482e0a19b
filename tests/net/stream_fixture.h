// What the NetStream tests share: a stream that posts into a MessageLog,
// the process-wide buffer settings put back after each test, and helpers
// that read and time.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>

#include "message_log.h"
#include "net/net_stream.h"

namespace net_testing {

class NetStreamTest : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Sets the buffer settings for the next Connect.
  static void UseBuffer(std::uint32_t size, std::uint32_t prebufferPercent = 25,
                        std::uint32_t rebufferPercent = 50);
  // Reads until `count` audio bytes have come or a Read fails, in reads of `piece`.
  std::string ReadUpTo(std::size_t count, std::uint32_t piece = 4096);

  MessageLog log;  // outlives the stream, which posts to it
  net::NetStream stream;
};

// How long `action` took, in milliseconds.
template <typename Action>
double MillisecondsOf(Action&& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

// A bound that only a hang exceeds, even in a sanitizer build on a busy machine.
inline constexpr double kPromptMs = 2000;

}  // namespace net_testing

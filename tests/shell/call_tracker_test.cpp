// Which of 10053 and 10054 the modem's calls give, step by step.
#include "shell/call_tracker.h"

#include <gtest/gtest.h>

#include "shell/window_messages.h"

namespace {

using shell::CallTracker;
constexpr std::uint32_t kBegan = shell::kMessageCallBegan;
constexpr std::uint32_t kEnded = shell::kMessageCallEnded;

struct Step {
  std::map<std::string, int> calls;  // what the service lists
  std::vector<std::uint32_t> posted;
};
struct Scenario {
  const char* name;
  std::vector<Step> steps;
};

TEST(CallTrackerTest, CallsGiveTheMessagesOfThePhonesShell) {
  const Scenario scenarios[] = {
      {"ring, answer, hang up",
       {{{}, {}},
        {{{"a", 3}}, {kBegan}},
        {{{"a", 4}}, {kBegan}},
        {{{"a", 4}}, {}},
        {{{"a", 7}}, {kEnded}},
        {{}, {}}}},
      {"a connected call deleted without a terminated state", {{{{"a", 4}}, {kBegan}}, {{}, {kEnded}}}},
      {"rejected: no end", {{{{"a", 3}}, {kBegan}}, {{{"a", 7}}, {}}, {{}, {}}}},
      {"dialling out is quiet until answered",
       {{{{"a", 1}}, {}}, {{{"a", 2}}, {}}, {{{"a", 4}}, {kBegan}}, {{{"a", 7}}, {kEnded}}}},
      {"a second call rejected while the first is on",
       {{{{"a", 4}}, {kBegan}},
        {{{"a", 4}, {"b", 6}}, {kBegan}},
        {{{"a", 4}, {"b", 7}}, {}},
        {{{"a", 4}}, {}},
        {{{"a", 7}}, {kEnded}}}},
      {"the first ends while the second rings: the end waits for the second",
       {{{{"a", 4}}, {kBegan}},
        {{{"a", 4}, {"b", 6}}, {kBegan}},
        {{{"a", 7}, {"b", 6}}, {}},
        {{{"b", 4}}, {kBegan}},
        {{{"b", 7}}, {kEnded}}}},
      {"held and taken back",
       {{{{"a", 4}}, {kBegan}}, {{{"a", 5}}, {}}, {{{"a", 4}}, {kBegan}}, {{}, {kEnded}}}},
      {"already active when first seen", {{{{"a", 4}, {"b", 0}}, {kBegan}}, {{{"b", 0}}, {kEnded}}}},
  };
  for (const Scenario& scenario : scenarios) {
    SCOPED_TRACE(scenario.name);
    CallTracker tracker;
    int index = 0;
    for (const Step& step : scenario.steps)
      EXPECT_EQ(tracker.Update(step.calls), step.posted) << "step " << index++;
  }
}

// The service going away forgets its calls and posts nothing; when it comes
// back with the call still on, that call begins again.
TEST(CallTrackerTest, AVanishedServiceForgetsItsCallsQuietly) {
  CallTracker tracker;
  EXPECT_EQ(tracker.Update({{"a", 4}}), std::vector<std::uint32_t>{kBegan});
  tracker.Forget();
  EXPECT_EQ(tracker.TrackedCalls(), 0u);
  EXPECT_EQ(tracker.Update({}), std::vector<std::uint32_t>{});
  EXPECT_EQ(tracker.Update({{"a", 4}}), std::vector<std::uint32_t>{kBegan});
  EXPECT_EQ(tracker.Update({}), std::vector<std::uint32_t>{kEnded});
}

}  // namespace

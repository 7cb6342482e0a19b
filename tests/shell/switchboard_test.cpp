#include "shell/switchboard.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "shell/player_operations.h"
#include "shell/window_messages.h"

namespace {

using Calls = std::vector<std::string>;

std::string Text(const std::string* text) {
  return text != nullptr ? "\"" + *text + "\"" : "null";
}

// Records each operation with its arguments; results are recognisable numbers.
class RecordingOperations : public shell::PlayerOperations {
 public:
  Calls calls;

#define RECORD0(Name)       \
  void Name() override {    \
    calls.push_back(#Name); \
  }
#define RECORD1(Name, Type)                                            \
  void Name(Type value) override {                                     \
    calls.push_back(std::string(#Name) + " " + std::to_string(value)); \
  }
  RECORD0(Persist)
  RECORD0(QuitMessageLoop)
  RECORD0(PostClose)
  RECORD1(Activated, bool)
  RECORD1(KeyDown, std::uint32_t)
  RECORD1(KeyUp, std::uint32_t)
  RECORD1(DropQueued, std::uint32_t)
  RECORD1(Play, bool)
  RECORD0(Stop)
  RECORD0(TogglePause)
  RECORD1(Next, bool)
  RECORD0(Previous)
  RECORD0(TrackEnded)
  RECORD0(PlayPause)
  RECORD0(PlayStop)
  RECORD1(SeekTo, std::int32_t)
  RECORD0(SkipForward)
  RECORD0(SkipBack)
  RECORD1(VolumeStep, bool)
  RECORD1(SetVolumeFromSlider, std::int32_t)
  RECORD0(ToggleMute)
  RECORD0(ToggleExtraBass)
  RECORD0(ToggleEqualizer)
  RECORD0(ApplyEqualizer)
  RECORD0(ApplyEqualizerOption)
  RECORD1(SetShuffle, bool)
  RECORD1(SetRepeat, bool)
  RECORD1(SetRepeatMode, std::uint32_t)
  RECORD0(ToggleShuffle)
  RECORD0(ToggleRepeat)
  RECORD0(RefreshFormat)
  RECORD0(RefreshTitle)
  RECORD0(ActivateWindowBelow)
  RECORD0(ShowOrHide)
  RECORD0(LoadFiles)
  RECORD0(AddFiles)
  RECORD1(ScrollPlaylist, bool)
  RECORD1(PostActionOfRow, std::intptr_t)
  RECORD0(FlipSpareFlagsAB)
  RECORD0(FlipSpareFlagC)
  RECORD0(ToggleButtonLock)
  RECORD1(SelectLanguage, std::uint32_t)
  RECORD1(SelectSkipTime, std::uint32_t)
  RECORD1(ReplaceBookmark, std::int32_t)
  RECORD0(AddBookmark)
  RECORD0(RebuildBookmarkMenu)
  RECORD0(OnAlarm)
  RECORD1(OnCallEvent, bool)
  RECORD0(StatusTimerFired)
  RECORD0(FadeInStep)
  RECORD0(SleepTimerTick)
  RECORD0(KeepAwakeTick)
  RECORD0(DecoderNudgeTimerFired)
  RECORD0(ShowAbout)
  RECORD0(ShowEqualizer)
  RECORD0(ShowPlaylist)
  RECORD0(ShowBookmarks)
  RECORD0(ShowSleepTimer)
  RECORD0(ShowKeyMapping)
  RECORD0(ShowGeneralOptions)
  RECORD0(ShowPlaylistOptions)
  RECORD0(ShowFileTypes)
  RECORD0(ShowSetAlarm)
  RECORD0(ShowEffects)
  RECORD0(SaveSettings)
#undef RECORD0
#undef RECORD1

  void DecoderText(const std::string* text, std::intptr_t mode) override {
    calls.push_back("DecoderText " + Text(text) + " " + std::to_string(mode));
  }
  void OpenHandedOverPath(const std::string* path) override {
    calls.push_back("OpenHandedOverPath " + Text(path));
  }
  void PlayBookmark(std::int32_t index, bool enqueue) override {
    calls.push_back("PlayBookmark " + std::to_string(index) + " " + std::to_string(enqueue));
  }
  std::int32_t PositionMs() override {
    return Result("PositionMs", 61000);
  }
  std::int32_t LengthMs() override {
    return Result("LengthMs", 240000);
  }
  std::int32_t DecoderState() override {
    return Result("DecoderState", 3);
  }
  std::intptr_t RefreshInformationBlock(std::uintptr_t wParam, std::intptr_t lParam) override {
    return Result("RefreshInformationBlock " + std::to_string(wParam) + " " + std::to_string(lParam), 0x1234);
  }

 private:
  std::int32_t Result(const std::string& call, std::int32_t value) {
    calls.push_back(call);
    return value;
  }
};

struct Sent {
  std::uint32_t id;
  std::uintptr_t wParam;
  std::intptr_t lParam;
};

struct Routing {
  Sent message;
  Calls calls;
};

Sent Msg(std::uint32_t id, std::uintptr_t wParam = 0, std::intptr_t lParam = 0) {
  return Sent{id, wParam, lParam};
}
Sent Command(std::uint32_t id) {
  return Msg(shell::kMessageCommand, id);
}
Sent Timer(std::uint32_t id) {
  return Msg(shell::kMessageTimer, id);
}

std::intptr_t Route(shell::PlayerOperations& operations, const Sent& sent) {
  return shell::RouteMessage(operations, platform::Message{sent.id, sent.wParam, sent.lParam, nullptr});
}

void ExpectRoutes(const std::vector<Routing>& table) {
  for (const Routing& row : table) {
    RecordingOperations operations;
    EXPECT_EQ(Route(operations, row.message), 0)
        << "message " << row.message.id << " wParam " << row.message.wParam;
    EXPECT_EQ(operations.calls, row.calls)
        << "message " << row.message.id << " wParam " << row.message.wParam;
  }
}

TEST(SwitchboardTest, PlatformMessagesReachTheWindowsLife) {
  ExpectRoutes({
      {Msg(shell::kMessageCreate), {}},
      {Msg(shell::kMessageClose), {"Persist", "QuitMessageLoop"}},
      {Msg(shell::kMessageDestroy), {"Persist"}},
      {Msg(shell::kMessageActivate, 1), {"Activated 1"}},
      {Msg(shell::kMessageActivate, 2), {"Activated 1"}},
      {Msg(shell::kMessageActivate, 0x10000), {"Activated 0"}},
      {Msg(shell::kMessageKeyDown, 13), {"KeyDown 13"}},
      {Msg(shell::kMessageKeyUp, 115), {"KeyUp 115"}},
  });
}

TEST(SwitchboardTest, PrivateMessagesReachTheirOperationsWithTheirArguments) {
  ExpectRoutes({
      {Msg(2320, 640), {"SetVolumeFromSlider 640"}},
      {Msg(2322), {"ActivateWindowBelow"}},
      {Msg(2323, 1), {"SetShuffle 1"}},
      {Msg(2325, 0), {"SetRepeat 0"}},
      {Msg(2326), {"FlipSpareFlagsAB"}},
      {Msg(2327, 13, 5), {"PostActionOfRow 5"}},
      {Msg(2328, 1, 7), {"PlayBookmark 7 1"}},
      {Msg(2329), {"AddBookmark"}},
      {Msg(2331, 0, 2), {"DecoderText null 2"}},
      {Msg(2332), {"RefreshFormat"}},
      {Msg(2333), {"RefreshTitle"}},
      {Msg(2560, 1), {"Play 1"}},
      {Msg(2561), {"Stop"}},
      {Msg(2562), {"TogglePause"}},
      {Msg(2563, 1), {"Next 1"}},
      {Msg(2564), {"Previous"}},
      {Msg(2567, 90000, 4), {"SeekTo 90000"}},
      {Msg(2568), {"TrackEnded"}},
      {Msg(2592), {"ApplyEqualizer"}},
      {Msg(2594), {"LoadFiles"}},
      {Msg(2642), {"VolumeStep 1"}},
      {Msg(2643), {"VolumeStep 0"}},
      {Msg(2644), {"ToggleMute"}},
      {Msg(2645), {"ShowOrHide"}},
      {Msg(2646), {"OpenHandedOverPath null"}},
      {Msg(2647), {"PlayPause"}},
      {Msg(2648), {"AddFiles"}},
      {Msg(2649), {"ScrollPlaylist 1"}},
      {Msg(2650), {"ScrollPlaylist 0"}},
      {Msg(2651), {"ToggleButtonLock"}},
      {Msg(2652), {"DropQueued 2652", "SkipForward"}},
      {Msg(2653), {"DropQueued 2653", "SkipBack"}},
      {Msg(2655), {"ToggleEqualizer"}},
      {Msg(2656), {"ToggleExtraBass"}},
      {Msg(2657), {"ToggleShuffle"}},
      {Msg(2658), {"ToggleRepeat"}},
      {Msg(2690), {"OnAlarm"}},
      {Msg(10053), {"OnCallEvent 1"}},
      {Msg(10054), {"OnCallEvent 0"}},
  });
}

TEST(SwitchboardTest, MessagesThatDoNothingAndUnknownOnesReturnZeroAndCallNothing) {
  ExpectRoutes({{Msg(2593), {}},
                {Msg(2641), {}},
                {Msg(2321), {}},
                {Msg(2688), {}},
                {Msg(0x0312), {}},
                {Msg(99999), {}}});
}

TEST(SwitchboardTest, TextsTravelWithTheirMessages) {
  RecordingOperations operations;
  platform::Message status{2331, 0, 1, std::make_unique<std::string>("Connecting radio")};
  platform::Message handOver{2646, 0, 0, std::make_unique<std::string>("/music/a b.mp3")};
  shell::RouteMessage(operations, status);
  shell::RouteMessage(operations, handOver);
  EXPECT_EQ(operations.calls,
            (Calls{"DecoderText \"Connecting radio\" 1", "OpenHandedOverPath \"/music/a b.mp3\""}));
}

TEST(SwitchboardTest, MessagesSentForAResultReturnIt) {
  RecordingOperations operations;
  EXPECT_EQ(Route(operations, Msg(2565)), 61000);
  EXPECT_EQ(Route(operations, Msg(2566)), 240000);
  EXPECT_EQ(Route(operations, Msg(2569)), 3);
  EXPECT_EQ(Route(operations, Msg(2654, 8, 9)), 0x1234);
  EXPECT_EQ(operations.calls,
            (Calls{"PositionMs", "LengthMs", "DecoderState", "RefreshInformationBlock 8 9"}));
}

TEST(SwitchboardTest, CommandsReachTheirOperationsAndWhatFollowsThem) {
  ExpectRoutes({
      {Command(1), {"PostClose"}},
      {Command(1105), {"PostClose"}},
      {Command(40009), {"PostClose"}},
      {Command(1100), {"ShowAbout"}},
      {Command(1102), {"ShowEqualizer", "SaveSettings"}},
      {Command(1103), {"ShowPlaylist"}},
      {Command(1104), {"ActivateWindowBelow"}},
      {Command(1108), {"FlipSpareFlagC"}},
      {Command(1109), {"ToggleButtonLock"}},
      {Command(1513), {"ShowBookmarks", "RebuildBookmarkMenu"}},
      {Command(1514), {"AddBookmark"}},
      {Command(1518), {"ShowSleepTimer"}},
      {Command(40001), {"ShowKeyMapping", "SaveSettings"}},
      {Command(40006), {"ShowGeneralOptions", "SaveSettings", "ApplyEqualizerOption"}},
      {Command(40007), {"ShowPlaylistOptions", "SaveSettings"}},
      {Command(40041), {"PlayStop"}},
      {Command(40043), {"ToggleRepeat"}},
      {Command(40044), {"ToggleShuffle"}},
      {Command(40045), {"ShowFileTypes"}},
      {Command(40046), {"ShowSetAlarm", "SaveSettings"}},
      {Command(40090), {"ShowEffects"}},
  });
}

TEST(SwitchboardTest, CommandRangesGiveTheIndexWithinTheirRange) {
  ExpectRoutes({
      {Command(2200), {"SelectSkipTime 0"}},
      {Command(2206), {"SelectSkipTime 6"}},
      {Command(2250), {"SelectSkipTime 50"}},
      {Command(2251), {}},
      {Command(2500), {"PlayBookmark 0 0"}},
      {Command(2699), {"PlayBookmark 199 0"}},
      {Command(2700), {"ReplaceBookmark 0"}},
      {Command(2899), {"ReplaceBookmark 199"}},
      {Command(2900), {}},
      {Command(40025), {}},
      {Command(40026), {"SetRepeatMode 40026"}},
      {Command(40028), {"SetRepeatMode 40028"}},
      {Command(40029), {}},
      {Command(40060), {"SelectLanguage 0"}},
      {Command(40080), {"SelectLanguage 20"}},
      {Command(40081), {}},
      // Only the low 16 bits of wParam are the id; the high half is the notification.
      {Command(0x00010000 | 1103), {"ShowPlaylist"}},
      {Command(0), {}},
      {Command(12345), {}},
  });
}

TEST(SwitchboardTest, TimersReachTheirHandlersAndUnknownIdsNothing) {
  ExpectRoutes({
      {Timer(20), {}},
      {Timer(21), {"KeepAwakeTick"}},
      {Timer(31), {}},
      {Timer(33), {"StatusTimerFired"}},
      {Timer(137), {"DecoderNudgeTimerFired"}},
      {Timer(138), {"FadeInStep"}},
      {Timer(139), {"SleepTimerTick"}},
      {Timer(999), {}},
  });
}

}  // namespace

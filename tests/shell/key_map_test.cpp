// The key path of the main window, the key names, the mapping's editing
// rules and the key filter's state.
#include "shell/key_map.h"

#include <gtest/gtest.h>

#include <chrono>
#include <utility>

#include "platform/registry.h"
#include "playback/playback_settings.h"
#include "player_app_fixture.h"
#include "shell/window_messages.h"
#include "skin/skin_action_table.h"

namespace {

using shell_testing::kMachine;
using shell_testing::PlayerAppTest;

class KeyMapTest : public PlayerAppTest {
 protected:
  void SetUp() override {
    PlayerAppTest::SetUp();
    skin::Actions() = skin::DefaultActions();
  }
  void TearDown() override {
    skin::Actions() = skin::DefaultActions();
    playback::PlaybackSettings::Write(playback::Playback().gapless, true);
    PlayerAppTest::TearDown();
  }
  // What a key press posted to the main window, taken off its queue.
  std::vector<platform::Message> Posted() {
    std::vector<platform::Message> posted;
    platform::Message message;
    while (Window().queue.TakeNext(message)) posted.push_back(std::move(message));
    return posted;
  }
  std::uint16_t KeyOf(int row) { return skin::Actions()[static_cast<std::size_t>(row)].key; }
};

// Every action that has a default key is reached by it, with one message
// and no arguments.
TEST_F(KeyMapTest, EachDefaultKeyPostsItsActionOnceWithoutArguments) {
  Start();
  Posted();
  struct Case {
    std::uint32_t key;
    std::uint32_t message;
  };
  const Case cases[] = {
      {13, shell::kMessagePlayPause},
      {39, 2563},
      {37, 2564},
      {38, 2642},
      {40, 2643},
      {49, 2658},
      {50, 2657},
      {52, 2656},
      {53, 2655},
      {51, 2648},
      {120, 2652},
      {119, 2653},
      {54, 2329},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.key);
    Send(shell::kMessageKeyDown, c.key);
    const std::vector<platform::Message> posted = Posted();
    ASSERT_EQ(posted.size(), 1u);
    EXPECT_EQ(posted[0].id, c.message);
    EXPECT_EQ(posted[0].wParam, 0u);
    EXPECT_EQ(posted[0].lParam, 0);
    Send(shell::kMessageKeyUp, c.key);
    EXPECT_TRUE(Posted().empty()) << "a release posts nothing";
  }
  for (std::uint32_t unbound : {0u, 27u, 55u, 65u, 32u}) {
    Send(shell::kMessageKeyDown, unbound);
    EXPECT_TRUE(Posted().empty()) << unbound;
  }
}

// End (and the other keys a phone delivers only on release) acts on its
// release, with the made-up press shown for 100 ms.
TEST_F(KeyMapTest, EndActsOnItsReleaseOnly) {
  Start();
  Posted();
  Send(shell::kMessageKeyDown, 115);  // never sent by the window; harmless if it were
  Posted();
  Window().skin.feedback.clear();
  const auto before = std::chrono::steady_clock::now();
  Send(shell::kMessageKeyUp, 115);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(100));
  const std::vector<platform::Message> posted = Posted();
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_EQ(posted[0].id, shell::kMessageStop);
  using Feedback = std::vector<std::pair<std::uint16_t, bool>>;
  EXPECT_EQ(Window().skin.feedback, (Feedback{{115, true}, {115, false}})) << "the made-up press is shown";
  Window().skin.feedback.clear();
  Send(shell::kMessageKeyDown, 39);
  Send(shell::kMessageKeyUp, 39);
  Send(shell::kMessageKeyDown, 81);
  EXPECT_EQ(Window().skin.feedback, (Feedback{{39, true}, {39, false}, {81, true}}))
      << "the face hears of every key, bound or not";
  Posted();

  skin::Actions()[skin::kRowMute].key = 117;
  Send(shell::kMessageKeyUp, 117);
  ASSERT_EQ(Posted().size(), 1u);
  skin::Actions()[skin::kRowMute].key = 0;
  Send(shell::kMessageKeyUp, 117);
  EXPECT_TRUE(Posted().empty()) << "an unbound volume key does nothing";
}

// A remapped key reaches its new action, and its old one no longer; the
// first row holding a key wins.
TEST_F(KeyMapTest, ARemappedKeyReachesItsNewActionAndTheFirstBoundRowWins) {
  Start();
  Posted();
  shell::KeyMappingModel model(false);
  const int muteLine = 12;  // lines follow the rows while no row before is hidden
  ASSERT_EQ(model.RowOfLine(muteLine), skin::kRowMute);
  model.Assign(muteLine, 50);
  Send(shell::kMessageKeyDown, 50);
  std::vector<platform::Message> posted = Posted();
  ASSERT_EQ(posted.size(), 1u);
  EXPECT_EQ(posted[0].id, shell::kMessageMute);

  skin::Actions()[skin::kRowPlay].key = 65;
  skin::Actions()[skin::kRowStop].key = 65;
  EXPECT_EQ(shell::RowOfKey(65), skin::kRowPlay);
  skin::Actions()[skin::kRowSamplingRate].key = 66;  // a row without a message
  EXPECT_EQ(shell::RowOfKey(66), -1);
}

TEST_F(KeyMapTest, KeyNamesFollowTheTable) {
  ASSERT_TRUE(registry->CreateKey(kMachine, "\\SOFTWARE\\Microsoft\\Shell\\Keys\\40C1") !=
              platform::KeyDisposition::Failed);
  ASSERT_TRUE(registry->SetString(kMachine, "\\SOFTWARE\\Microsoft\\Shell\\Keys\\40C1", "Name", "Camera"));
  ASSERT_TRUE(registry->CreateKey(kMachine, "\\SOFTWARE\\Microsoft\\Shell\\Keys\\40C2") !=
              platform::KeyDisposition::Failed);
  ASSERT_TRUE(registry->SetString(kMachine, "\\SOFTWARE\\Microsoft\\Shell\\Keys\\40C2", "Name",
                                  std::string(64, 'x')));  // 130 bytes with its end: too long
  const std::pair<std::uint32_t, const char*> cases[] = {
      {0, "None"},     {13, "Action"},   {32, "Space"},    {33, "Tracker Up"}, {34, "Tracker Down"},
      {37, "Left"},    {38, "Up"},       {39, "Right"},    {40, "Down"},       {48, "0"},
      {57, "9"},       {65, "A"},        {90, "Z"},        {112, "F1"},        {114, "Talk"},
      {115, "End"},    {116, "F5"},      {117, "Vol. Up"}, {118, "Vol. Down"}, {119, "*"},
      {120, "#"},      {121, "Record"},  {122, "F11"},     {128, "Flip"},      {129, "F18"},
      {193, "Camera"}, {194, "Unknown"}, {130, "Unknown"}, {27, "Unknown"},
  };
  for (const auto& [key, name] : cases) EXPECT_EQ(shell::KeyName(key, registry.get()), name) << key;
  EXPECT_EQ(shell::KeyName(193, nullptr), "Unknown");
}

// The dialog's lines: the rows that post a message; the bookmark line only
// with a bookmark store.
TEST_F(KeyMapTest, TheLinesAreTheActionsAndTheBookmarkLineNeedsAStore) {
  const shell::KeyMappingModel without(false);
  const shell::KeyMappingModel with(true);
  ASSERT_EQ(without.LineCount(), 17);
  ASSERT_EQ(with.LineCount(), 18);
  EXPECT_EQ(with.RowOfLine(17), skin::kRowSetBookmark);
  EXPECT_EQ(with.ActionText(17), "Set bookmark");
  EXPECT_EQ(with.KeyText(17), "6");
  EXPECT_EQ(without.ActionText(0), "Play/Pause");
  EXPECT_EQ(without.KeyText(0), "Action");
  EXPECT_EQ(without.ActionText(15), "Forward 10 seconds");
  EXPECT_EQ(without.RowOfLine(17), -1);
}

TEST_F(KeyMapTest, AssigningAKeyTakesItFromItsHolderAndUnmapClears) {
  shell::KeyMappingModel model(true);
  // Right (39) belongs to NEXT (line 1); give it to STOP (line 10).
  EXPECT_EQ(model.Assign(10, 39), (std::vector<int>{1, 10}));
  EXPECT_EQ(KeyOf(skin::kRowNext), 0);
  EXPECT_EQ(KeyOf(skin::kRowStop), 39);
  EXPECT_EQ(model.KeyText(1), "None");
  EXPECT_EQ(model.KeyText(10), "Right");
  EXPECT_TRUE(model.Assign(10, 39).empty()) << "the same key again changes nothing";

  EXPECT_EQ(model.Assign(0, 0x1234'0041u), (std::vector<int>{0})) << "only the low 16 bits stay";
  EXPECT_EQ(KeyOf(skin::kRowPlayPause), 0x41);

  EXPECT_TRUE(model.Unmap(10));
  EXPECT_EQ(KeyOf(skin::kRowStop), 0);
  EXPECT_FALSE(model.Unmap(10)) << "nothing left to clear";
  EXPECT_TRUE(model.Assign(-1, 50).empty());
  EXPECT_TRUE(model.Assign(18, 50).empty());
  EXPECT_EQ(KeyOf(skin::kRowShuffle), 50) << "no line selected: nothing happens";

  // A hidden bookmark row still gives its key up.
  shell::KeyMappingModel hidden(false);
  EXPECT_EQ(hidden.Assign(2, 54), (std::vector<int>{2}));
  EXPECT_EQ(KeyOf(skin::kRowSetBookmark), 0);
}

// With gapless play off the new binding is never stored, although the old
// holder of the key has lost it.
TEST_F(KeyMapTest, WithGaplessOffANewBindingIsLostAndTheOldHolderLosesTheKeyToo) {
  playback::PlaybackSettings::Write(playback::Playback().gapless, false);
  shell::KeyMappingModel model(false);
  EXPECT_EQ(model.Assign(10, 39), (std::vector<int>{1}));
  EXPECT_EQ(KeyOf(skin::kRowNext), 0);
  EXPECT_EQ(KeyOf(skin::kRowStop), 115);
  EXPECT_EQ(model.Assign(0, 65), std::vector<int>{});
  EXPECT_EQ(KeyOf(skin::kRowPlayPause), 13);
}

TEST_F(KeyMapTest, ActivationAndTheLockFeedTheFilterStateOnly) {
  Start();
  EXPECT_EQ(shell::KeyFilter().target, &Window().Messages());
  EXPECT_FALSE(shell::KeyFilter().dialogMode);
  Send(shell::kMessageActivate, 0);
  EXPECT_TRUE(shell::KeyFilter().inactive);
  Send(shell::kMessageActivate, 1);
  EXPECT_FALSE(shell::KeyFilter().inactive);
  app->Settings().keepKeysWhenInactive = true;
  Send(shell::kMessageActivate, 0);
  EXPECT_FALSE(shell::KeyFilter().inactive) << "keys kept while inactive";

  app->Settings().lockKeepsDisplayKey = true;
  Command(shell::kCommandToggleLock);
  EXPECT_TRUE(shell::KeyFilter().locked);
  EXPECT_TRUE(shell::KeyFilter().lockKeepsDisplayKey);
  Posted();
  Send(shell::kMessageKeyDown, 39);
  EXPECT_EQ(Posted().size(), 1u) << "a locked player still takes its keys";
  Send(shell::kMessageToggleLock);
  EXPECT_FALSE(shell::KeyFilter().locked);

  shell::SetKeyTarget(nullptr, true);
  Command(shell::kCommandKeyMapping);
  EXPECT_EQ(Window().dialogs.opened.back(), "KeyMapping");
  EXPECT_EQ(shell::KeyFilter().target, &Window().Messages()) << "the target comes back after the dialog";
  EXPECT_FALSE(shell::KeyFilter().dialogMode);
}

// The mapping survives a restart through the value Keys.
TEST_F(KeyMapTest, TheMappingIsStoredAndComesBackAtTheNextStart) {
  Start();
  shell::KeyMappingModel(false).Assign(12, 77);
  Command(shell::kCommandKeyMapping);  // saves the settings when it closes
  app.reset();
  skin::Actions() = skin::DefaultActions();
  Start();
  EXPECT_EQ(KeyOf(skin::kRowMute), 77);
  EXPECT_EQ(shell::RowOfKey(77), skin::kRowMute);
}

}  // namespace

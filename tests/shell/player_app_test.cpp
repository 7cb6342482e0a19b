#include "shell/player_app.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>

#include "effects/equalizer.h"
#include "platform/device_volume.h"
#include "platform/local_time.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/texts.h"
#include "playback/format_registry.h"
#include "playback/playback_settings.h"
#include "shell/process_start.h"
#include "shell/registry_key.h"
#include "shell/volume_scales.h"
#include "player_app_fixture.h"
#include "shell/window_messages.h"
#include "shell_fakes.h"
#include "support/test_environment.h"

namespace {

using shell::kSettingsKeyPath;
using shell_testing::kMachine;
using shell_testing::PlayerAppTest;
using shell_testing::SpyApp;
using testing_support::FakeBookmarkStore;
constexpr std::uint64_t kNow = 133'500'000'000'000'000ull;  // a local FILETIME in 2024
constexpr std::uint64_t kSecond = 10'000'000;

// --- The process start ------------------------------------------------------------------

class ProcessStartTest : public PlayerAppTest {
 protected:
  int RunProcess(const std::string& commandLine) {
    const shell::ProcessServices services{*registry,
                                          windows,
                                          link,
                                          packs,
                                          names,
                                          &formats,
                                          [] { return kNow; },
                                          [this](const shell::ShellServices& shellServices) {
                                            auto made = std::make_unique<SpyApp>(shellServices);
                                            spy = made.get();
                                            return made;
                                          },
                                          deviceVolume.get(),
                                          nullptr};
    return shell::RunProcess(commandLine, services);
  }
  void StoreAlarm(std::uint64_t fileTime) {
    unsigned char bytes[8];
    for (int k = 0; k < 8; ++k) bytes[k] = static_cast<unsigned char>(fileTime >> (8 * k));
    ASSERT_TRUE(settingsKey->WriteBinary("Alarm", bytes, sizeof bytes));
  }
  SpyApp* spy = nullptr;  // valid while RunProcess runs
};

TEST_F(ProcessStartTest, AFirstStartShowsTheWindowGreetsWithThePickerAndAClosePersists) {
  windows.postedAtStart = {shell::kMessageClose};
  EXPECT_EQ(RunProcess(""), 0);

  EXPECT_EQ(windows.createdAt.width, 480);
  EXPECT_EQ(windows.createdAt.height, 640);
  EXPECT_EQ(windows.loops, 1);
  EXPECT_TRUE(windows.quit);
  EXPECT_TRUE(Stored("WndSettings")) << "the close saved the settings";
  EXPECT_TRUE(std::filesystem::exists(InstallDirectory() + "/default.tsl")) << "and the list";
  EXPECT_EQ(StoredDword("FFSkipTime"), 10u);
  EXPECT_NE(platform::ReadInstallDirectory(*registry), "") << "the start installed the player";
  EXPECT_EQ(link.searches, 1);
  EXPECT_EQ(link.served, nullptr) << "the ended instance stopped serving";
}

TEST_F(ProcessStartTest, TheWindowIsShownAndThePickerOpenedBeforeTheLoopStarts) {
  windows.postedAtStart = {shell::kMessageClose};
  windows.onLoop = [this] { windows.openedAtLoop = spy->opened; };
  RunProcess("");
  EXPECT_EQ(windows.eventsAtLoop, (std::vector<std::string>{"Show", "BringToForeground", "Redraw"}));
  EXPECT_EQ(windows.listDialogsAtLoop, (std::vector<std::string>{"picker files"}));
  EXPECT_EQ(windows.openedAtLoop, (std::vector<std::string>{" at start"}));
}

TEST_F(ProcessStartTest, ALaterStartHandsAnExistingPathOverAndEnds) {
  link.anotherRuns = true;
  const std::string file = Root().File("home/song one.mp3");
  testing_support::WriteFile(file, "x");
  EXPECT_EQ(RunProcess(file), 0);
  EXPECT_EQ(link.handedOver, (std::vector<std::string>{"Post 2646 " + file, "BringToForeground"}));
  EXPECT_EQ(windows.window, nullptr) << "no window was made";
  EXPECT_EQ(platform::ReadInstallDirectory(*registry), "") << "Init didn't run";
}

TEST_F(ProcessStartTest, ALaterStartWithAMissingPathOrNothingOnlyRaisesTheRunningOne) {
  link.anotherRuns = true;
  RunProcess(Root().File("home/missing.mp3"));
  RunProcess("");
  RunProcess("http://radio.example/stream");
  EXPECT_EQ(link.handedOver,
            (std::vector<std::string>{"BringToForeground", "BringToForeground", "BringToForeground"}));
}

TEST_F(ProcessStartTest, AnAlarmWithinAMinuteWakesTheRunningInstanceAndOneFurtherAwayEndsSilently) {
  link.anotherRuns = true;
  const std::vector<std::string> woken = {"Post 2690"};
  for (const auto& [alarm, wakes] : std::vector<std::pair<std::uint64_t, bool>>{
           {kNow - 59 * kSecond, true}, {kNow + 59 * kSecond, true}, {kNow - 60 * kSecond, false},
           {kNow + 60 * kSecond, false}, {7, false}}) {
    const int searches = link.searches;
    link.handedOver.clear();
    // 7: a notification handle left in Alarm as a DWORD reads as a time in 1601.
    if (alarm == 7) {
      ASSERT_TRUE(settingsKey->WriteDword("Alarm", 7));
    } else {
      StoreAlarm(alarm);
    }
    EXPECT_EQ(RunProcess(wakes ? "tsALARM" : "TSAlarm"), 0);
    EXPECT_EQ(link.handedOver, wakes ? woken : std::vector<std::string>{}) << "alarm " << alarm;
    if (!wakes) {
      EXPECT_EQ(link.searches, searches) << "the running instance isn't even looked for";
    }
  }
}

TEST_F(ProcessStartTest, AnAlarmStartWithoutAStoredAlarmGoesOnAndRaisesTheAlarmItself) {
  windows.postedAtStart = {shell::kMessageClose};
  RunProcess("TSAlarm");
  EXPECT_EQ(link.searches, 1);
  EXPECT_EQ(windows.loops, 1);
}

TEST_F(ProcessStartTest, AFailedWindowEndsTheStartSilently) {
  windows.failCreation = true;
  EXPECT_EQ(RunProcess(""), 0);
  EXPECT_EQ(windows.loops, 0);
  EXPECT_FALSE(Stored("WndSettings"));
}

TEST(CommandLineTest, ArgumentsAreJoinedUnparsedAndARelativePathBecomesAbsolute) {
  EXPECT_EQ(shell::CommandLineFromArguments({}), "");
  EXPECT_EQ(shell::CommandLineFromArguments({"/music/My", "Song.mp3"}), "/music/My Song.mp3");
  EXPECT_EQ(shell::CommandLineFromArguments({"TSAlarm"}), "TSAlarm");
  EXPECT_EQ(shell::CommandLineFromArguments({"\"quoted\""}), "\"quoted\"");
  testing_support::TemporaryDirectory folder;
  testing_support::WriteFile(folder.File("a b.mp3"), "x");
  const auto previous = std::filesystem::current_path();
  std::filesystem::current_path(folder.Path());
  const std::string line = shell::CommandLineFromArguments({"a", "b.mp3"});
  std::filesystem::current_path(previous);
  EXPECT_EQ(std::filesystem::canonical(line), std::filesystem::canonical(folder.File("a b.mp3")));
}

// --- Construction and the main window ----------------------------------------------------------

TEST_F(PlayerAppTest, TheConstructorSetsTheRunTimeDefaultsAndTheVendorKey) {
  app = std::make_unique<SpyApp>(Services());
  EXPECT_EQ(app->Settings().repeatMode, 1u);
  EXPECT_EQ(app->Settings().decodePriority, 1);
  EXPECT_EQ(app->ListSettings().displayMode, 1u);
  EXPECT_EQ(app->Settings().skipSeconds, 60);
  EXPECT_EQ(app->Settings().extraBassStrength, 3);
  EXPECT_EQ(app->Settings().loadPath, Root().File("home"));
  EXPECT_TRUE(registry->KeyExists(kMachine, shell::kVendorKeyPath));
  EXPECT_EQ(app->Information().Title(), shell::kProductText);
}

TEST_F(PlayerAppTest, InitSetsUpThePlaylistFormatsAndLeavesTheNativeListDisabled) {
  Start();
  EXPECT_EQ(formats.FormatOf("/a/b.M3U"), playback::kFormatM3u);
  EXPECT_EQ(formats.FormatOf("/a/b.pls"), playback::kFormatPls);
  EXPECT_EQ(formats.FormatOf("/a/b.asx"), playback::kFormatAsx);
  EXPECT_TRUE(formats.IsEnabled(playback::kFormatM3u));
  EXPECT_FALSE(formats.IsEnabled(playback::kFormatNativeList));
}

TEST_F(PlayerAppTest, InitBindsEachFormatToADecoderOfItsOwnUntilTheAppIsGone) {
  struct Binding {
    int format;
    std::vector<std::string> paths;   // files and addresses that reach the same decoder
    std::string file, display;        // the playlist's info reader asks the registry
  };
  const std::vector<Binding> bindings = {
      {playback::kFormatWav, {"/music/a.WAV"}, TS_WAV_DATA_DIR "/pcm16_mono.wav", "pcm16_mono"},
      {playback::kFormatMp3,
       {"/music/a.MP3", "/music/a.mp2", "/music/a.mpa", "http://radio.example:8000/stream"},
       TS_TEST_DATA_DIR "/decoders/cbr128_44k_stereo.mp3",
       "Some Artist - Latin Title"},
      {playback::kFormatOgg,
       {"/music/a.OGG", "http://radio.example/live.ogg"},
       TS_TEST_DATA_DIR "/ogg/chained.ogg",
       "Chain - Link One"},
  };
  Start();
  std::vector<playback::MediaDecoder*> seen;
  for (const Binding& binding : bindings) {
    SCOPED_TRACE(binding.display);
    playback::MediaDecoder* decoder = formats.DecoderFor(binding.format);
    ASSERT_NE(decoder, nullptr);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), decoder), 0);
    seen.push_back(decoder);
    EXPECT_TRUE(formats.IsEnabled(binding.format));
    for (const std::string& path : binding.paths) EXPECT_EQ(formats.DecoderForPath(path), decoder) << path;
    std::string display;
    EXPECT_TRUE(formats.GetFileDetails(binding.file, &display, nullptr, nullptr, nullptr, nullptr, nullptr,
                                       nullptr));
    EXPECT_EQ(display, binding.display);
  }
  app.reset();
  for (const Binding& binding : bindings) {
    for (const std::string& path : binding.paths) {
      EXPECT_EQ(formats.DecoderForPath(path), nullptr) << "a decoder that is gone is unbound: " << path;
    }
  }
}

TEST_F(PlayerAppTest, WithoutThePlugInAacIsAbsent) {
  Start();
  EXPECT_EQ(formats.FormatOf("/music/a.aac"), playback::kFormatNone);
  EXPECT_EQ(formats.DecoderForPath("/music/a.aac"), nullptr);
  std::uint32_t duration = 0;
  EXPECT_TRUE(formats.GetFileDetails(TS_WAV_DATA_DIR "/pcm16_mono.wav", nullptr, nullptr, nullptr, &duration,
                                     nullptr, nullptr, nullptr));
  EXPECT_EQ(duration, 1500u) << "the WAV reader's length";
}

TEST_F(PlayerAppTest, ThePlugInInTheInstallDirectoryBringsAac) {
  std::filesystem::create_directories(InstallDirectory());
  std::filesystem::copy_file(TS_AAC_PLUGIN, InstallDirectory() + "/libTSAACPlugin.so");
  Start();
  EXPECT_TRUE(formats.IsEnabled(playback::kFormatAac));
  EXPECT_NE(formats.DecoderForPath("/music/a.aac"), nullptr);
  std::uint32_t duration = 0;
  EXPECT_TRUE(formats.GetFileDetails(TS_WAV_DATA_DIR "/aac_mono.aac", nullptr, nullptr, nullptr, &duration,
                                     nullptr, nullptr, nullptr));
  EXPECT_GT(duration, 1500u);
}

TEST_F(PlayerAppTest, TheMenuHasItsSubmenusWhereTheCodeFindsThem) {
  Start();
  shell::MenuBar& bar = app->Menu();
  EXPECT_EQ(Window().bar, &bar);
  EXPECT_EQ(bar.LeftKey().id, shell::kCommandPlaylist);
  EXPECT_EQ(bar.LeftKey().text, "Playlist");
  EXPECT_EQ(bar.RightKey().id, shell::kPopupMainMenu);
  EXPECT_EQ(bar.RightKey().text, "Menu");

  const shell::MenuItem& menu = MainMenu();
  using Kind = shell::MenuItem::Kind;
  const std::vector<std::pair<Kind, std::string>> expected = {
      {Kind::Command, "Play/Stop"}, {Kind::Popup, "Order"},       {Kind::Separator, ""},
      {Kind::Popup, "Timers"},      {Kind::Command, "Equalizer"}, {Kind::Popup, "Bookmark"},
      {Kind::Popup, "Options"},     {Kind::Separator, ""},        {Kind::Command, "About"},
      {Kind::Separator, ""},        {Kind::Command, "Exit"}};
  ASSERT_EQ(menu.items.size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(menu.items[i].kind, expected[i].first) << i;
    EXPECT_EQ(menu.items[i].text, expected[i].second) << i;
  }
  EXPECT_EQ(menu.items[10].id, shell::kCommandExitMenu);

  shell::MenuItem* order = shell::SubmenuAt(MainMenu(), {1});
  ASSERT_NE(order, nullptr);
  std::vector<std::uint32_t> orderIds;
  for (const auto& item : order->items) orderIds.push_back(item.id);
  EXPECT_EQ(orderIds, (std::vector<std::uint32_t>{40044, 40043, 0, 40026, 40027, 40028}));

  shell::MenuItem* options = shell::SubmenuAt(MainMenu(), {6});
  ASSERT_NE(options, nullptr);
  std::vector<std::string> optionTexts;
  for (const auto& item : options->items) optionTexts.push_back(item.text);
  EXPECT_EQ(optionTexts, (std::vector<std::string>{"FF/Rewind Step", "General", "Playlist", "Effects",
                                                   "Key Mapping", "File Associations", "Language"}));
  shell::MenuItem* language = shell::SubmenuAt(MainMenu(), {6, 6});
  ASSERT_NE(language, nullptr);
  EXPECT_EQ(language->items.front().id, shell::kCommandLanguageFirst);
  EXPECT_TRUE(language->items.front().checked) << "built-in English";
  EXPECT_EQ(Window().skinWidth, shell::kSkinWidth);
  EXPECT_EQ(Window().skinHeight, shell::kSkinHeight);
}

TEST_F(PlayerAppTest, TheSkipStepMenuTicksTheStoredValueOr60BeforeTheSettingsGive10) {
  Start();
  shell::MenuItem* steps = shell::SubmenuAt(MainMenu(), {6, 0});
  ASSERT_NE(steps, nullptr);
  ASSERT_EQ(steps->items.size(), 7u) << "the placeholder is gone";
  std::vector<std::string> texts;
  for (const auto& item : steps->items) texts.push_back(item.text);
  EXPECT_EQ(texts, (std::vector<std::string>{"5 seconds", "10 seconds", "15 seconds", "30 seconds",
                                             "60 seconds", "120 seconds", "180 seconds"}));
  EXPECT_EQ(steps->items[0].id, 2200u);
  EXPECT_EQ(steps->items[6].id, 2206u);
  EXPECT_TRUE(app->Menu().IsChecked(2204)) << "60 is ticked on a first run";
  EXPECT_EQ(app->Settings().skipSeconds, 10) << "while the step is 10";

  Command(2201);
  EXPECT_EQ(app->Settings().skipSeconds, 10);
  EXPECT_TRUE(app->Menu().IsChecked(2201));
  EXPECT_FALSE(app->Menu().IsChecked(2204));
  Command(2206);
  EXPECT_EQ(app->Settings().skipSeconds, 180);
  Command(2230);  // past the table: nothing
  EXPECT_EQ(app->Settings().skipSeconds, 180);
  EXPECT_TRUE(app->Menu().IsChecked(2206));
}

TEST_F(PlayerAppTest, AStoredSkipStepIsTickedAndUsed) {
  ASSERT_TRUE(settingsKey->WriteDword("FFSkipTime", 30));
  Start();
  EXPECT_TRUE(app->Menu().IsChecked(2203));
  EXPECT_FALSE(app->Menu().IsChecked(2204));
  EXPECT_EQ(app->Settings().skipSeconds, 30);
}

TEST_F(PlayerAppTest, TheLoadedStateReachesMenuAndFace) {
  ASSERT_TRUE(settingsKey->WriteDword("Repeat", 0x8002));
  ASSERT_TRUE(settingsKey->WriteDword("Shuffle", 1));
  Start();
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandEnableRepeat));
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandRepeatOne));
  EXPECT_FALSE(app->Menu().IsChecked(shell::kCommandRepeatAll));
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandEnableShuffle));
  EXPECT_TRUE(Window().skin.repeat);
  EXPECT_TRUE(Window().skin.shuffle);
}

TEST_F(PlayerAppTest, AWindowWithoutMenuBarOrFaceFailsTheCreation) {
  for (const auto& [menuBar, face] : {std::pair{false, true}, std::pair{true, false}}) {
    windows.failMenuBar = !menuBar;
    windows.failSkin = !face;
    app = std::make_unique<SpyApp>(Services());
    ASSERT_TRUE(app->Init());
    EXPECT_FALSE(app->CreateMainWindow(0, 0, 480, 640)) << "menu bar " << menuBar << ", face " << face;
  }
}

// --- Language packs -------------------------------------------------------------------------------

class LanguageTest : public PlayerAppTest {
 protected:
  void SetUp() override {
    PlayerAppTest::SetUp();
    for (const char* name : {"mui.0407.qm", "mui.040C.qm", "mui.zz.qm", "readme.txt"}) MakeInstallFile(name);
    packs.packs["mui.0407.qm"] = testing_support::FakePackReader::Texts{
        {"6313", "Springe zu %s"}, {"40005", "Menü"}, {"menu.101.p1.6", "Optionen"}, {"6344", "%d Sekunden"}};
    packs.packs["mui.040C.qm"] = std::nullopt;  // damaged
  }
};

TEST(LanguageFileNameTest, TheLocaleIdIsReadAsHexadecimalAfterTheFirstDot) {
  EXPECT_EQ(shell::LocaleIdFromFileName("mui.0407.qm"), 0x407u);
  EXPECT_EQ(shell::LocaleIdFromFileName("mui.040c.qm"), 0x40Cu);
  EXPECT_EQ(shell::LocaleIdFromFileName("mui.zz.qm"), 0u);
  EXPECT_EQ(shell::LocaleIdFromFileName("mui..qm"), 0u);
  EXPECT_EQ(shell::LocaleIdFromFileName("mui."), 0u);
  EXPECT_EQ(shell::LocaleIdFromFileName("mui.4G.qm"), 4u);
  EXPECT_EQ(shell::LocaleIdFromFileName("mui.123456789.qm"), 0x23456789u) << "wraps as 32 bits";
  EXPECT_EQ(shell::LocaleIdFromFileName("nodot"), std::nullopt);
  EXPECT_EQ(shell::PackFileName(1031), "mui.0407.qm");
  EXPECT_EQ(shell::PackFileName(0x1A), "mui.001A.qm");
}

TEST_F(LanguageTest, TheLanguageMenuListsThePacksWithTheirNativeNames) {
  Start();
  const shell::MenuItem& language = *shell::SubmenuAt(MainMenu(), {6, 6});
  std::vector<std::string> entries;
  for (const auto& item : language.items)
    entries.push_back(std::to_string(item.id) + " " + item.text + (item.checked ? " *" : ""));
  // The unknown id keeps the name before it; its id 0 equals the language, so it is ticked too.
  EXPECT_EQ(entries, (std::vector<std::string>{"40060 English *", "40061 Deutsch", "40062 Locale 0X40C",
                                               "40063 Locale 0X40C *"}));
  EXPECT_EQ(app->LanguageTable(), (std::vector<std::uint32_t>{0, 0x407, 0x40C, 0}));
  EXPECT_TRUE(packs.reads.empty()) << "English doesn't even try a pack";
}

TEST_F(LanguageTest, SelectingALanguageStoresItAtOnceAndAppliesToTextsOpenedNext) {
  Start();
  Command(40061);
  EXPECT_EQ(StoredDword("Language"), 1031u);
  EXPECT_EQ(app->Settings().language, 1031u);
  EXPECT_EQ(platform::LoadText(6313), "Springe zu %s");
  EXPECT_EQ(platform::LoadText(6336), "Volume: %d%%") << "what the pack lacks stays English";
  EXPECT_EQ(shell::KeyedText("menu.101.p1.6"), "Optionen");
  EXPECT_EQ(shell::KeyedText("menu.101.p1.1"), "Order");
  EXPECT_EQ(app->Menu().RightKey().text, "Menu") << "the menu keeps the language it was made in";
  EXPECT_TRUE(app->Menu().IsChecked(40061));
  EXPECT_FALSE(app->Menu().IsChecked(40060));
  EXPECT_FALSE(app->Menu().IsChecked(40063));

  Command(40062);  // a damaged pack: English, though the choice is kept
  EXPECT_EQ(StoredDword("Language"), 0x40Cu);
  EXPECT_EQ(platform::LoadText(6313), "Seek to %s");
  EXPECT_TRUE(app->Menu().IsChecked(40062));

  Command(40063);  // id 0: English
  EXPECT_EQ(StoredDword("Language"), 0u);
  Command(40079);  // no such entry: English as well
  EXPECT_EQ(StoredDword("Language"), 0u);
  EXPECT_TRUE(app->Menu().IsChecked(40079) == false);
}

TEST_F(LanguageTest, AStoredLanguageTranslatesTheMenuFromTheStartAndFallsBackPerText) {
  ASSERT_TRUE(settingsKey->WriteDword("Language", 1031));
  Start();
  EXPECT_EQ(app->Menu().RightKey().text, "Menü");
  EXPECT_EQ(app->Menu().LeftKey().text, "Playlist");
  EXPECT_EQ(shell::SubmenuAt(MainMenu(), {6})->text, "Optionen");
  EXPECT_EQ(shell::SubmenuAt(MainMenu(), {1})->text, "Order");
  EXPECT_EQ(shell::SubmenuAt(MainMenu(), {6, 0})->items[0].text, "5 Sekunden");
  EXPECT_TRUE(app->Menu().IsChecked(40061));
  EXPECT_FALSE(app->Menu().IsChecked(40060));
  app.reset();
  EXPECT_EQ(platform::LoadText(6313), "Seek to %s") << "the pack goes with the application";
}

TEST_F(LanguageTest, AMissingOrDamagedPackMeansEnglishAndTheLanguageIsKept) {
  ASSERT_TRUE(settingsKey->WriteDword("Language", 0x40C));
  Start();
  EXPECT_EQ(app->Settings().language, 0x40Cu);
  EXPECT_EQ(app->Language().Pack(), nullptr);
  EXPECT_EQ(app->Menu().RightKey().text, "Menu");
  EXPECT_FALSE(app->Language().LoadLanguage(0x0419)) << "no such file";
  EXPECT_TRUE(app->Language().LoadLanguage(1033));
  EXPECT_EQ(packs.reads.size(), 2u);
}

// --- Messages of the main window ------------------------------------------------------------------

TEST_F(PlayerAppTest, TheExitCommandsPostACloseADestroySavesAndACloseQuits) {
  Start();
  for (std::uint32_t id : {1u, 1105u, 40009u}) Command(id);
  EXPECT_EQ(Window().queue.PendingIds(), (std::vector<std::uint32_t>{0x10, 0x10, 0x10}));
  EXPECT_FALSE(Stored("WndSettings"));
  Send(shell::kMessageDestroy);
  EXPECT_TRUE(Stored("WndSettings")) << "a destroy persists";
  EXPECT_FALSE(windows.quit) << "without quitting";
  Send(shell::kMessageClose);
  EXPECT_TRUE(windows.quit);
}

TEST_F(PlayerAppTest, AnEmptyListAtCloseWhileNotStoppedSavesNothingWhenBookmarksExist) {
  Start();
  auto store = std::make_unique<FakeBookmarkStore>();
  FakeBookmarkStore& bookmarks = *store;
  app->SetBookmarkStore(std::move(store));
  app->CurrentDecoder()->SetState(playback::kStatePlaying);
  Send(shell::kMessageClose);
  EXPECT_FALSE(Stored("WndSettings")) << "the early way out skips list and settings";
  EXPECT_TRUE(bookmarks.lastPlayed.empty());
  EXPECT_TRUE(windows.quit);

  app->CurrentDecoder()->SetState(playback::kStateStopped);
  Send(shell::kMessageClose);
  EXPECT_TRUE(Stored("WndSettings"));
}

TEST_F(PlayerAppTest, ResultsComeFromTheDecoderAndTheInformationBlockIsFilled) {
  Start();
  EXPECT_EQ(Send(shell::kMessageGetState), playback::kStateStopped);
  EXPECT_EQ(Send(shell::kMessageGetLength), 0);
  EXPECT_EQ(Send(shell::kMessageGetPosition), 0);
  Command(shell::kCommandEnableShuffle);
  app->CurrentDecoder()->SetState(playback::kStatePaused);
  const auto* block = reinterpret_cast<const shell::InformationBlock*>(Send(shell::kMessageInfoBlock, 1, 2));
  ASSERT_EQ(block, &app->Information());
  EXPECT_EQ(block->state, playback::kStatePaused);
  EXPECT_EQ(block->shuffle, 1);
  EXPECT_EQ(block->repeat, 0);
  EXPECT_EQ(block->Title(), shell::kProductText) << "the list has no title";
}

TEST_F(PlayerAppTest, TheStatusLineClearsItselfWhenItsTimerFires) {
  Start();
  app->ShowStatus("Seek to 01:00", 1500);
  EXPECT_EQ(Window().skin.message, "Seek to 01:00");
  EXPECT_EQ(Window().timers.Period(shell::kTimerStatus), 1500u);
  Window().timers.Fire(shell::kTimerStatus);
  EXPECT_EQ(Window().skin.message, "");
  EXPECT_FALSE(Window().timers.IsRunning(shell::kTimerStatus));

  platform::Message lasting{shell::kMessageDecoderText, 0, 1,
                            std::make_unique<std::string>("Prebuffering:40%")};
  app->ShowStatus("old", 1500);
  app->HandleMessage(lasting);
  EXPECT_EQ(Window().skin.message, "Prebuffering:40%");
  EXPECT_FALSE(Window().timers.IsRunning(shell::kTimerStatus)) << "mode 1 stays";
  platform::Message brief{shell::kMessageDecoderText, 0, 2, std::make_unique<std::string>("Disconnected")};
  app->HandleMessage(brief);
  EXPECT_EQ(Window().timers.Period(shell::kTimerStatus), 1000u) << "mode 2 lasts a second";
  platform::Message title{shell::kMessageDecoderText, 0, 0, std::make_unique<std::string>("Radio - Song")};
  app->HandleMessage(title);
  EXPECT_EQ(Window().skin.title, "Radio - Song");
}

TEST_F(PlayerAppTest, ShowOrHideStepsBackInFrontAndComesForwardBehind) {
  Start();
  Send(shell::kMessageActivate, 1);
  EXPECT_TRUE(app->IsActive());
  Send(shell::kMessageShowOrHide);
  Send(shell::kMessageActivate, 0);
  Send(shell::kMessageShowOrHide);
  EXPECT_EQ(Window().events, (std::vector<std::string>{"ActivateWindowBelow", "BringToForeground"}));
}

TEST_F(PlayerAppTest, AHandedOverPathOpensWithoutTheStartFlagAndIsBoundedAsItsBuffer) {
  Start();
  platform::Message handOver{shell::kMessageHandOver, 0, 0, std::make_unique<std::string>("/music/a.mp3")};
  app->HandleMessage(handOver);
  platform::Message longPath{shell::kMessageHandOver, 0, 0,
                             std::make_unique<std::string>(std::string(300, 'p'))};
  app->HandleMessage(longPath);
  Send(shell::kMessageHandOver);
  EXPECT_EQ(app->opened, (std::vector<std::string>{"/music/a.mp3", std::string(260, 'p'), ""}));
}

TEST_F(PlayerAppTest, LinkRequestsReachTheWindowOnceItExists) {
  Start();
  ASSERT_EQ(link.served, &Window().Messages());
  link.bringToForeground();
  EXPECT_EQ(Window().events, (std::vector<std::string>{"BringToForeground"}));
}

TEST_F(PlayerAppTest, AnActionRowPostsItsMessageIfItHasOne) {
  Start();
  Send(shell::kMessageActionRow, 13, 0);
  Send(shell::kMessageActionRow, 0, 17);
  Send(shell::kMessageActionRow, 0, 27);
  Send(shell::kMessageActionRow, 0, 28);
  Send(shell::kMessageActionRow, 0, -1);
  EXPECT_EQ(Window().queue.PendingIds(), (std::vector<std::uint32_t>{2647, 2329}));
}

TEST_F(PlayerAppTest, SpareFlagsFlipAsTheirMessagesSay) {
  Start();
  shell::AppSettings& settings = app->Settings();
  settings.spareFlagA = false;
  settings.spareFlagB = false;
  Send(shell::kMessageFlipSpareFlags);
  EXPECT_TRUE(settings.spareFlagA && settings.spareFlagB);
  settings.spareFlagB = false;
  Send(shell::kMessageFlipSpareFlags);
  EXPECT_FALSE(settings.spareFlagA || settings.spareFlagB) << "both become the inverse of the first";
  const bool c = settings.spareFlagC;
  Command(shell::kCommandFlipSpareFlagC);
  EXPECT_NE(settings.spareFlagC, c);
  Command(shell::kCommandToggleLock);
  EXPECT_TRUE(app->ButtonLock());
  Send(shell::kMessageToggleLock);
  EXPECT_FALSE(app->ButtonLock());
}

TEST_F(PlayerAppTest, ShuffleAndRepeatKeepMenuFaceAndFieldsTogether) {
  Start();
  Send(shell::kMessageToggleShuffle);
  EXPECT_TRUE(app->Settings().shuffleEnabled);
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandEnableShuffle));
  EXPECT_TRUE(Window().skin.shuffle);
  Command(shell::kCommandRepeatSelected);
  EXPECT_EQ(app->Settings().repeatMode, 3u);
  EXPECT_FALSE(app->Settings().repeatEnabled);
  Send(shell::kMessageSetRepeat, 1);
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandEnableRepeat));
  EXPECT_TRUE(app->Menu().IsChecked(shell::kCommandRepeatSelected));
  EXPECT_FALSE(app->Menu().IsChecked(shell::kCommandRepeatAll));
  EXPECT_TRUE(Window().skin.repeat);
  Command(shell::kCommandEnableRepeat);
  EXPECT_FALSE(app->Settings().repeatEnabled);
}

TEST_F(PlayerAppTest, DialogCommandsOpenTheirDialogAndSaveWhereTheyShould) {
  Start();
  Command(shell::kCommandAbout);
  EXPECT_FALSE(Stored("WndSettings"));
  Command(shell::kCommandEqualizer);
  EXPECT_TRUE(Stored("WndSettings"));
  Command(shell::kCommandPlaylist);
  Command(shell::kCommandEffects);
  EXPECT_EQ(Window().dialogs.opened, (std::vector<std::string>{"About", "Equalizer", "Playlist", "Effects"}));
}

// --- The list -------------------------------------------------------------------------------------

std::vector<std::string> Paths(playlist::PlaylistView& list) {
  std::vector<std::string> paths;
  for (int i = 0; i < list.ItemCount(); ++i) paths.push_back(list.PathAt(i));
  return paths;
}

TEST_F(PlayerAppTest, OpenMediaWithoutAPathGreetsAnEmptyListWithThePickerAndRaisesAnAlarm) {
  Start();
  app->OpenMedia("", true);
  EXPECT_EQ(Window().listDialogs.asked, (std::vector<std::string>{"picker files"}));
  app->OpenMedia("TSALARM", true);
  EXPECT_EQ(Window().queue.PendingIds(), (std::vector<std::uint32_t>{shell::kMessageAlarm}));
  EXPECT_EQ(Window().listDialogs.asked.size(), 2u) << "the list is still empty";

  app->Settings().loadFolderContents = true;
  app->Settings().loadPath = "/media/card";
  Window().skin.message = "before";
  Window().listDialogs.picked = {"/media/card/a.mp3"};
  app->OpenMedia("", true);
  EXPECT_EQ(Window().listDialogs.asked.back(), "scan /media/card");
  EXPECT_EQ(Window().skin.message, "") << "the loading text is cleared afterwards";
  EXPECT_EQ(Paths(app->Playlist()), (std::vector<std::string>{"/media/card/a.mp3"}));

  app->Settings().loadLocalContent = true;
  app->OpenMedia("", true);
  EXPECT_EQ(Window().listDialogs.asked.back(), "scan " + Root().File("home")) << "local content wins";
}

TEST_F(PlayerAppTest, APathReplacesTheListUnlessItIsToBeEnqueued) {
  Start();
  app->OpenMedia("/music/one.mp3", true);
  app->OpenMedia("/music/two.mp3", false);
  EXPECT_EQ(Paths(app->Playlist()), (std::vector<std::string>{"/music/two.mp3"}));
  app->Settings().enqueueOnOpen = true;
  app->OpenMedia("/music/three.mp3", false);
  EXPECT_EQ(Paths(app->Playlist()), (std::vector<std::string>{"/music/two.mp3", "/music/three.mp3"}));
  EXPECT_TRUE(Window().listDialogs.asked.empty());
}

TEST_F(PlayerAppTest, TheListSurvivesACloseAndAStartAndAnEnqueuedStartJoinsIt) {
  Start();
  app->OpenMedia("/music/one.mp3", true);
  app->Settings().enqueueOnOpen = true;
  app->OpenMedia("/music/two.mp3", false);
  Send(shell::kMessageClose);
  app.reset();

  Start();
  app->OpenMedia("", true);
  EXPECT_EQ(Paths(app->Playlist()), (std::vector<std::string>{"/music/one.mp3", "/music/two.mp3"}));
  EXPECT_TRUE(Window().listDialogs.asked.empty()) << "no picker for a list that has entries";
  EXPECT_TRUE(app->Settings().enqueueOnOpen) << "the settings came back too";
  app->Playlist().ClearAll();
  app->OpenMedia("/music/three.mp3", true);
  EXPECT_EQ(Paths(app->Playlist()),
            (std::vector<std::string>{"/music/one.mp3", "/music/two.mp3", "/music/three.mp3"}))
      << "an enqueued start loads the default list first";
}

// A decoder that takes any path and plays without a sound.
class SilentDecoder : public playback::MediaDecoder {
 public:
  bool Open(const std::string&) override { return true; }
  bool Play() override {
    state = playback::kStatePlaying;
    return true;
  }
  void Stop() override { state = playback::kStateStopped; }
};

TEST_F(PlayerAppTest, AtCloseTheLastPlayedBookmarkTakesTheCurrentEntry) {
  SilentDecoder decoder;
  Start();
  formats.AddExtension(playback::kFormatMp3, "silent");
  formats.Enable(playback::kFormatMp3, true);
  formats.SetDecoder(playback::kFormatMp3, &decoder);
  auto store = std::make_unique<FakeBookmarkStore>();
  FakeBookmarkStore& bookmarks = *store;
  app->SetBookmarkStore(std::move(store));
  app->OpenMedia("/music/a song.silent", true);
  ASSERT_EQ(app->CurrentDecoder(), &decoder);
  decoder.SetState(playback::kStatePaused);
  Send(shell::kMessageClose);
  EXPECT_EQ(bookmarks.lastPlayed, (std::vector<std::string>{"/music/a song.silent 0 a song"}));
  EXPECT_TRUE(Stored("WndSettings"));
  app.reset();  // before the decoder it plays with
}

TEST_F(PlayerAppTest, TheListsFillsAndOrderFollowTheirMessages) {
  Start();
  Send(shell::kMessageLoadFiles);
  Send(shell::kMessageAddFiles);
  EXPECT_EQ(Window().listDialogs.asked, (std::vector<std::string>{"picker files replace", "picker files"}));
  Send(shell::kMessageToggleShuffle);
  EXPECT_TRUE(app->Playlist().Shuffle());
  Command(shell::kCommandRepeatOne);
  EXPECT_EQ(app->Playlist().RepeatMode(), 0) << "repeat is off";
  Command(shell::kCommandEnableRepeat);
  EXPECT_EQ(app->Playlist().RepeatMode(), 2);
  Command(shell::kCommandRepeatSelected);
  EXPECT_EQ(app->Playlist().RepeatMode(), 3);
  Command(shell::kCommandEnableRepeat);
  EXPECT_EQ(app->Playlist().RepeatMode(), 0);
}

TEST_F(PlayerAppTest, TheInformationBlockCarriesTheListsCurrentTitle) {
  Start();
  app->Playlist().ClearAll();  // as an open does, without the play that follows
  app->Playlist().AddAndRefresh("/music/Artist - Song.ogg");
  const auto* block = reinterpret_cast<const shell::InformationBlock*>(Send(shell::kMessageInfoBlock));
  EXPECT_EQ(block->Title(), shell::kProductText) << "nothing is current before a track plays";
  ASSERT_TRUE(app->Playlist().CurrentPath());  // makes the first entry current
  Send(shell::kMessageInfoBlock);
  EXPECT_EQ(block->Title(), "Artist - Song");
}

TEST_F(PlayerAppTest, ContinuingFromTheLastPositionGoesToTheBookmarkedPlace) {
  Start();
  auto store = std::make_unique<FakeBookmarkStore>();
  FakeBookmarkStore& bookmarks = *store;
  app->SetBookmarkStore(std::move(store));
  playback::PlaybackSettings::Write(playback::Playback().continueFromLastPosition, true);
  app->StartOfPlaybackDecision();
  EXPECT_EQ(bookmarks.takes, 0) << "an empty store ends it";
  bookmarks.count = 1;
  bookmarks.hasLastPlayed = true;
  app->StartOfPlaybackDecision();
  EXPECT_EQ(bookmarks.takes, 1);
  EXPECT_EQ(Paths(app->Playlist()), (std::vector<std::string>{"/music/last.mp3"}));
  EXPECT_EQ(Window().queue.PendingIds(), (std::vector<std::uint32_t>{2560, 2567}));
}

// --- The equalizer ---------------------------------------------------------------------------------

// Whether the filters work on a block: a disabled equalizer returns 0.
bool Filters(effects::Equalizer& equalizer) {
  std::vector<std::int16_t> samples(256, 1000);
  std::int16_t* block = samples.data();
  return equalizer.Process(&block, samples.size() * sizeof(std::int16_t)) != 0;
}

TEST_F(PlayerAppTest, StoredExtraBassReachesTheFiltersAndItsMessageTogglesIt) {
  ASSERT_TRUE(registry->SetValue(kMachine, kSettingsKeyPath, "WndSettings", 3, "\0\0\0\x02\0\0\0\0", 8));
  ASSERT_TRUE(settingsKey->WriteDword("XBS", 4));
  Start();
  effects::Equalizer* equalizer = app->EqualizerFilter();
  ASSERT_NE(equalizer, nullptr);
  EXPECT_EQ(equalizer->BassMode(), 4u);
  EXPECT_TRUE(Window().skin.extraBass);
  Send(shell::kMessageToggleExtraBass);
  EXPECT_EQ(equalizer->BassMode(), 0u);
  EXPECT_FALSE(Window().skin.extraBass);
  Send(shell::kMessageToggleExtraBass);
  EXPECT_EQ(equalizer->BassMode(), 4u);
}

TEST_F(PlayerAppTest, TheEqualizerFollowsTheUsersSwitchUnlessTheWmaOggOptionKeepsItOff) {
  Start();
  effects::Equalizer& equalizer = *app->EqualizerFilter();
  app->EqualizerSettings().SetValues(0, {0, 14, 14, 14, 14, 14, 14, 14, 14, 14, 14});
  Send(shell::kMessageToggleEqualizer);
  EXPECT_EQ(app->EqualizerSettings().GetEnabled(), 1u);
  EXPECT_TRUE(Filters(equalizer));
  EXPECT_FALSE(equalizer.Flat()) << "the bands reached the filters";
  EXPECT_TRUE(Window().skin.equalizer);
  Send(shell::kMessageToggleEqualizer);
  EXPECT_FALSE(Filters(equalizer));

  app->Settings().disableEqForWmaOgg = true;
  Send(shell::kMessageToggleEqualizer);
  EXPECT_FALSE(Filters(equalizer)) << "the option keeps the filters off";
  EXPECT_TRUE(Window().skin.equalizer) << "the face shows what the user wants";
  Command(shell::kCommandGeneralOptions);
  EXPECT_FALSE(Filters(equalizer));
  app->Settings().disableEqForWmaOgg = false;
  Command(shell::kCommandGeneralOptions);
  EXPECT_TRUE(Filters(equalizer));
}

// --- The volume ---------------------------------------------------------------------------------

TEST_F(PlayerAppTest, EachStartTakesTheDeviceVolumeThroughTheSliderAndLosesALittle) {
  EXPECT_EQ(deviceVolume->Get(), platform::kFullVolume);
  Start();
  EXPECT_EQ(Window().skin.volume, 1000);
  EXPECT_EQ(app->CurrentVolume(), 63999u);
  EXPECT_EQ(deviceVolume->Get(), 63999u | 63999u << 16);
  EXPECT_EQ(shell::DeviceToSlider(65535), 1000);
  EXPECT_EQ(shell::SliderToDevice(1000), 63999u);
  EXPECT_EQ(shell::DeviceToPercent(65535), 100);
}

TEST_F(PlayerAppTest, VolumeStepsClampAtFullAndShowThePercentage) {
  Start();
  Send(shell::kMessageVolumeUp);
  EXPECT_EQ(app->CurrentVolume(), 65535u);
  Send(shell::kMessageVolumeUp);
  EXPECT_EQ(app->CurrentVolume(), 65535u);
  EXPECT_EQ(Window().skin.message, "Volume: 100%");
  EXPECT_EQ(Window().timers.Period(shell::kTimerStatus), 1500u);
  EXPECT_EQ(Window().skin.volume, 1000);
  Send(shell::kMessageVolumeDown);
  EXPECT_EQ(app->CurrentVolume(), 61439u);
  EXPECT_EQ(Window().skin.message, "Volume: 93%");
  EXPECT_EQ(deviceVolume->Get(), 61439u | 61439u << 16);
}

TEST_F(PlayerAppTest, AFadeInFromZeroIsFullAfterExactlySixteenStepsAndTheSliderEndsIt) {
  Start();
  Send(shell::kMessageSetVolume, 0);
  EXPECT_EQ(app->CurrentVolume(), 0u);
  Window().timers.Set(shell::kTimerFadeIn, 200);
  for (int step = 1; step <= 15; ++step) Window().timers.Fire(shell::kTimerFadeIn);
  EXPECT_EQ(app->CurrentVolume(), 15u * 4096u);
  EXPECT_TRUE(Window().timers.IsRunning(shell::kTimerFadeIn));
  Window().timers.Fire(shell::kTimerFadeIn);
  EXPECT_EQ(app->CurrentVolume(), 65535u) << "the 16th step is clamped";
  EXPECT_FALSE(Window().timers.IsRunning(shell::kTimerFadeIn));

  Window().timers.Set(shell::kTimerFadeIn, 200);
  Send(shell::kMessageSetVolume, 300);
  EXPECT_FALSE(Window().timers.IsRunning(shell::kTimerFadeIn)) << "a touch on the slider ends a fade-in";
  EXPECT_EQ(Window().skin.volume, 300);
}

TEST_F(PlayerAppTest, MuteKeepsOneChannelAndStepsWhileMutedChangeOnlyWhatComesBack) {
  Start();
  Send(shell::kMessageSetVolume, 500);
  ASSERT_EQ(app->CurrentVolume(), 31999u);
  Send(shell::kMessageMute);
  EXPECT_EQ(app->MutedVolume(), 31999u);
  EXPECT_EQ(Window().skin.volume, 0);
  Send(shell::kMessageMute);
  EXPECT_EQ(app->MutedVolume(), 0u);
  EXPECT_EQ(Window().skin.volume, shell::DeviceToSlider(31999 / 2))
      << "left back, right at 0: the slider at half";

  Send(shell::kMessageMute);
  Send(shell::kMessageVolumeUp);
  EXPECT_EQ(app->MutedVolume(), 36095u | 36095u << 16);
  EXPECT_EQ(Window().skin.volume, 0) << "nothing sounds louder";
  EXPECT_EQ(deviceVolume->Get(), 31999u | 31999u << 16);
  Send(shell::kMessageVolumeUp);  // both halves taken as one number: full
  EXPECT_EQ(app->MutedVolume(), 65535u | 65535u << 16);
  Send(shell::kMessageMute);
  EXPECT_EQ(Window().skin.volume, 1000) << "both channels come back at the stepped value";
}

}  // namespace

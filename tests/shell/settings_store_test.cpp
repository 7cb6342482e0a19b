#include "shell/settings_store.h"

#include <gtest/gtest.h>

#include "shell/registry_key.h"
#include "support/test_environment.h"

namespace {

using platform::RegistryRoot;
using shell::kSettingsKeyPath;

constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;

// The objects that settings fill, as PlayerApp's constructor leaves them.
struct Objects {
  shell::AppSettings app;
  playlist::PlaylistSettings playlist;
  effects::EqualizerSettings equalizer;
  playback::PlaybackSettings playback;
  skin::SkinActionTable actions = skin::DefaultActions();
  shell::SettingsTargets Targets() { return {app, playlist, equalizer, playback, actions}; }
};

class RecordingHooks : public shell::SettingsHooks {
 public:
  void RegisterMediaClasses() override { ++registrations; }
  void AssociateExtension(std::string_view extension) override { associated.emplace_back(extension); }
  int registrations = 0;
  std::vector<std::string> associated;
};

class SettingsStoreTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  void SetUp() override {
    IsolatedEnvironmentTest::SetUp();
    registry = std::make_unique<platform::Registry>(Root().File("config/registry.reg"));
    registry->CreateKey(kMachine, kSettingsKeyPath);
  }
  void SetBinary(const char* name, std::string bytes) {
    ASSERT_TRUE(registry->SetValue(kMachine, kSettingsKeyPath, name, 3, bytes.data(), bytes.size()));
  }
  void SetDword(const char* name, std::uint32_t value) {
    ASSERT_TRUE(registry->SetDword(kMachine, kSettingsKeyPath, name, value));
  }
  std::unique_ptr<platform::Registry> registry;
};

TEST_F(SettingsStoreTest, AMissingWndSettingsAloneMakesAFirstRun) {
  SetDword("FFSkipTime", 30);
  SetDword("XBS", 2);
  Objects objects;
  objects.playback.crossfade = 0;
  objects.app.keepDisplayOn = false;
  RecordingHooks hooks;
  ASSERT_TRUE(shell::LoadSettings(*registry, objects.Targets(), &hooks));

  EXPECT_EQ(hooks.registrations, 1);
  EXPECT_EQ(hooks.associated, (std::vector<std::string>{".mp3", ".mp2", ".mp1", ".mpa", ".m3u", ".pls",
                                                        ".ogg", ".ogg"}));
  EXPECT_TRUE(objects.app.keepDisplayOn);
  EXPECT_TRUE(objects.app.spareFlagC);
  EXPECT_EQ(objects.playlist.pickerOption, 1u);
  EXPECT_EQ(objects.playlist.sortOnLoad, 1u);
  EXPECT_EQ(objects.playback.crossfade.load(), 1u);
  EXPECT_EQ(objects.playback.trimSilence.load(), 1u);
  // The other values are read as stored, or get their table defaults.
  EXPECT_EQ(objects.app.skipSeconds, 30);
  EXPECT_EQ(objects.app.extraBassStrength, 2);
  EXPECT_EQ(objects.app.decodePriority, 3) << "the constructor's 1 gives way to the default 3";
  EXPECT_EQ(objects.app.loadPath, Root().File("home"));
  EXPECT_EQ(objects.playlist.fontSize, 2u);
  EXPECT_EQ(objects.app.repeatMode, 1u);
  EXPECT_EQ(objects.equalizer.Values().bands[0], 14) << "no Equalizer value: the object keeps its own";
}

TEST_F(SettingsStoreTest, InvertedBitsTurnTheSoundOptionsOffAndEmptyFlagsTurnThemOn) {
  Objects objects;
  SetBinary("WndSettings", std::string(8, '\0'));
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_EQ(objects.playback.crossfade.load(), 1u);
  EXPECT_EQ(objects.playback.gapless.load(), 1u);
  EXPECT_EQ(objects.playback.trimSilence.load(), 1u);
  EXPECT_EQ(objects.playlist.sortOnLoad, 1u);
  EXPECT_EQ(objects.playlist.displayMode, 1u) << "no display bit means mode 1";

  // Bits 30, 31 of flags and 0 of flags2 set; display bits 14 and 15 both set.
  SetBinary("WndSettings", std::string("\x00\xC0\x00\xC0\x01\x00\x00\x00", 8));
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_EQ(objects.playback.crossfade.load(), 0u);
  EXPECT_EQ(objects.playback.gapless.load(), 0u);
  EXPECT_EQ(objects.playback.trimSilence.load(), 0u);
  EXPECT_EQ(objects.playlist.displayMode, 2u) << "the highest display bit wins";

  // A short WndSettings still reads flags2, as zero.
  objects.playback.startOnLaunch = 1;
  SetBinary("WndSettings", std::string("\x00\x00\x00\x40", 4));
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_EQ(objects.playback.crossfade.load(), 0u);
  EXPECT_EQ(objects.playback.startOnLaunch.load(), 0u);
  EXPECT_EQ(objects.playback.trimSilence.load(), 1u);
}

TEST_F(SettingsStoreTest, RepeatCarriesItsEnabledBitInItsValue) {
  Objects objects;
  SetDword("Repeat", 0x8002);
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_EQ(objects.app.repeatMode, 2u);
  EXPECT_TRUE(objects.app.repeatEnabled);

  Objects fresh;
  SetDword("Repeat", 2);
  shell::LoadSettings(*registry, fresh.Targets());
  EXPECT_EQ(fresh.app.repeatMode, 2u);
  EXPECT_FALSE(fresh.app.repeatEnabled);
  objects.app.repeatEnabled = true;
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_TRUE(objects.app.repeatEnabled) << "without the bit the flag stays as it was";
}

TEST_F(SettingsStoreTest, ShortKeysAndAFourByteAlarmUpdateOnlyTheirFront) {
  Objects objects;
  objects.app.alarmTime = 0x1122334455667788ULL;
  SetBinary("Keys", std::string("\x70\x00\x71\x00", 4));
  ASSERT_TRUE(registry->SetDword(kMachine, kSettingsKeyPath, "Alarm", 0xAABBCCDD));
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_EQ(objects.actions[0].key, 0x70);
  EXPECT_EQ(objects.actions[1].key, 0x71);
  EXPECT_EQ(objects.actions[2].key, skin::DefaultActions()[2].key);
  EXPECT_EQ(objects.app.alarmTime, 0x11223344AABBCCDDULL);

  // Values larger than the reader's buffer can't be read: defaults apply.
  SetBinary("Keys", std::string(58, '\x01'));
  SetBinary("Alarm", std::string(9, '\x01'));
  Objects other;
  other.app.alarmTime = 5;
  shell::LoadSettings(*registry, other.Targets());
  EXPECT_EQ(other.actions[0].key, skin::DefaultActions()[0].key);
  EXPECT_EQ(other.app.alarmTime, 0u);
}

TEST_F(SettingsStoreTest, TheEqualizerValueBringsTheEnabledFlagWithIt) {
  Objects objects;
  SetBinary("WndSettings", std::string("\x00\x01\x00\x00\x00\x00\x00\x00", 8));
  SetBinary("Equalizer", std::string("\x00\x01\x02\x03\x04\x05\x06\x07\x08\x1b\x0d\x00", 12));
  shell::LoadSettings(*registry, objects.Targets());
  EXPECT_EQ(objects.equalizer.GetEnabled(), 1u);
  EXPECT_EQ(objects.equalizer.Values().bands[9], 27);
  EXPECT_EQ(objects.equalizer.Values().preamp, 13);

  ASSERT_TRUE(registry->DeleteValue(kMachine, kSettingsKeyPath, "Equalizer"));
  Objects other;
  shell::LoadSettings(*registry, other.Targets());
  EXPECT_EQ(other.equalizer.GetEnabled(), 0u) << "the flag stays at the object's default";
}

TEST_F(SettingsStoreTest, SaveThenLoadReproducesEveryField) {
  Objects saved;
  saved.app = {};
  saved.app.skipSeconds = 120;
  saved.app.loadPath = "/media/music/Ümlaut";
  saved.app.extraBassStrength = 4;
  saved.app.shuffleEnabled = true;
  saved.app.decodePriority = 2;
  saved.app.alarmTime = 0x01DB0123456789ABULL;
  saved.app.repeatMode = 3;
  saved.app.repeatEnabled = true;
  saved.app.language = 1031;
  saved.app.spareFlagA = saved.app.spareFlagD = true;
  saved.app.spareFlagC = saved.app.spareFlagE = false;
  saved.app.keepKeysWhenInactive = saved.app.enqueueOnOpen = saved.app.lockKeepsDisplayKey = true;
  saved.app.extraBassEnabled = saved.app.loadFolderContents = saved.app.alarmEnabled = true;
  saved.app.disableEqForWmaOgg = true;
  saved.playlist = {0, 41, 1, 3, 1, 0, 3};
  saved.equalizer.SetValues(1, {0, 3, 6, 9, 12, 15, 18, 21, 24, 27, 20});
  saved.playback.crossfade = 0;
  saved.playback.trimSilence = 0;
  saved.playback.startOnLaunch = 1;
  saved.playback.continueFromLastPosition = 1;
  saved.actions[5].key = 0x99;
  ASSERT_TRUE(shell::SaveSettings(*registry, saved.Targets()));

  Objects loaded;
  ASSERT_TRUE(shell::LoadSettings(*registry, loaded.Targets()));
  saved.app.spareFlagB = loaded.app.spareFlagB;  // not stored
  saved.app.keepDisplayOn = loaded.app.keepDisplayOn;
  EXPECT_EQ(loaded.app.skipSeconds, 120);
  EXPECT_EQ(loaded.app.loadPath, saved.app.loadPath);
  EXPECT_EQ(loaded.app.extraBassStrength, 4);
  EXPECT_TRUE(loaded.app.shuffleEnabled);
  EXPECT_EQ(loaded.app.decodePriority, 2);
  EXPECT_EQ(loaded.app.alarmTime, saved.app.alarmTime);
  EXPECT_EQ(loaded.app.repeatMode, 3u);
  EXPECT_TRUE(loaded.app.repeatEnabled);
  EXPECT_EQ(shell::PackWindowFlags(loaded.Targets()).flags, shell::PackWindowFlags(saved.Targets()).flags);
  EXPECT_EQ(shell::PackWindowFlags(loaded.Targets()).flags2, shell::PackWindowFlags(saved.Targets()).flags2);
  EXPECT_TRUE(loaded.app.spareFlagA && loaded.app.spareFlagD && !loaded.app.spareFlagC);
  EXPECT_TRUE(loaded.app.disableEqForWmaOgg && loaded.app.alarmEnabled);
  EXPECT_EQ(loaded.playlist.currentIndex, 41);
  EXPECT_EQ(loaded.playlist.displayMode, 3u);
  EXPECT_EQ(loaded.playlist.fontSize, 3u);
  EXPECT_EQ(loaded.playlist.sortOnLoad, 0u);
  EXPECT_EQ(loaded.equalizer.Values().bands, saved.equalizer.Values().bands);
  EXPECT_EQ(loaded.equalizer.Values().preamp, 20);
  EXPECT_EQ(loaded.equalizer.GetEnabled(), 1u);
  EXPECT_EQ(loaded.playback.crossfade.load(), 0u);
  EXPECT_EQ(loaded.playback.gapless.load(), 1u);
  EXPECT_EQ(loaded.playback.trimSilence.load(), 0u);
  EXPECT_EQ(loaded.playback.startOnLaunch.load(), 1u);
  EXPECT_EQ(loaded.actions[5].key, 0x99);

  shell::RegistryKey key(*registry);
  ASSERT_TRUE(key.Bind(kMachine, kSettingsKeyPath));
  std::uint32_t language = 0;
  EXPECT_TRUE(key.ReadDword("Language", language));
  EXPECT_EQ(language, 1031u);
}

TEST_F(SettingsStoreTest, RegistryKeyReadsAreBoundAsThePlatformsAre) {
  shell::RegistryKey key(*registry);
  ASSERT_TRUE(key.Bind(kMachine, kSettingsKeyPath));
  std::string text;
  ASSERT_TRUE(key.WriteString("Load", std::string(259, 'x')));
  EXPECT_TRUE(key.ReadString("Load", text));
  ASSERT_TRUE(key.WriteString("Load", std::string(260, 'x')));
  EXPECT_FALSE(key.ReadString("Load", text)) << "260 characters and the terminator exceed 520 bytes";

  std::uint32_t number = 7;
  const unsigned char eight[8] = {};
  ASSERT_TRUE(key.WriteBinary("Wide", eight, sizeof eight));
  EXPECT_FALSE(key.ReadDword("Wide", number));
  EXPECT_EQ(number, 7u);
  EXPECT_TRUE(key.WriteDword("Sleep", 45));
  EXPECT_TRUE(key.ReadDword("Sleep", number));
  EXPECT_EQ(number, 45u);
  EXPECT_TRUE(key.DeleteValue("Sleep"));
  EXPECT_FALSE(key.ReadDword("Sleep", number));
}

}  // namespace

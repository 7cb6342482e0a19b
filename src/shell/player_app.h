// The application object: the program's spine.
//
// PlayerApp makes everything, in a fixed order, loads and shows it, runs the
// message loop and tears it all down. Its window procedure is the
// switchboard (switchboard.h): every message of the main window reaches one
// of its operations, which are those of PlayerOperations.
//
// The process start (process_start.h) runs it thus:
//   construct; HandOffToRunningInstance (a later process ends here); Init
//   (language pack before any window, formats); CreateMainWindow (menu bar,
//   settings, face); show; OpenMedia with the command line; the
//   start-of-playback decision; Run (the loop); destruction.
//
// A close (WM_CLOSE, also posted by the Exit commands and by SIGTERM, SIGINT
// and SIGHUP) runs the persist sequence, which saves the last-played
// bookmark, the default list and the settings, then ends the loop.
//
// Collaborators that the program doesn't have yet are reached through narrow
// seams, named as such in player_app_seams.cpp.
//
// Threads: everything here runs on the window thread. Workers reach it only
// by posting to the main window.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "effects/equalizer_settings.h"
#include "platform/message_target.h"
#include "playback/audio_output.h"
#include "playback/locked_file.h"
#include "playback/media_decoder.h"
#include "playlist/playlist_view.h"
#include "shell/app_settings.h"
#include "shell/information_block.h"
#include "shell/language_menu.h"
#include "shell/language_pack.h"
#include "shell/menu.h"
#include "shell/player_operations.h"
#include "shell/remote_status.h"
#include "shell/settings_store.h"

namespace platform {
class DeviceVolume;
class Registry;
}  // namespace platform

namespace playback {
class FormatRegistry;
class ReaderDecoder;
struct FormatPlugin;
}  // namespace playback

namespace decoders {
class Mp3BackEnd;
class Mp3Decoder;
class OggDecoder;
class WavReader;
}  // namespace decoders

namespace effects {
class Equalizer;
}

namespace net {
class NetStream;
}

namespace shell {

class BookmarkStore;
class Dialogs;
class InstanceLink;
class MainWindow;
class RegistryKey;
class SkinDisplay;
class WindowSystem;

// The size of the face in skin pixels.
inline constexpr int kSkinWidth = 176;
inline constexpr int kSkinHeight = 180;

// The FF/Rewind steps offered in the menu, in seconds.
inline constexpr std::array<std::int32_t, 7> kSkipSteps = {5, 10, 15, 30, 60, 120, 180};

// What the application needs from outside; all of it outlives PlayerApp.
struct ShellServices {
  platform::Registry& registry;
  RegistryKey& settingsKey;  // bound to the settings key
  WindowSystem& windows;
  InstanceLink& instances;
  LanguagePackReader& packReader;
  NativeLanguageNames nativeLanguageNames;
  // The format registry to fill; null for the process's own.
  playback::FormatRegistry* formats = nullptr;
  // The wave device's volume; null for the process's own.
  platform::DeviceVolume* deviceVolume = nullptr;
};

class PlayerApp : public platform::MessageHandler, public PlayerOperations {
 public:
  // Builds the members and sets the run-time defaults that the settings then
  // override: repeat mode 1, thread priority 1, display mode 1, skip time 60,
  // extra-bass strength 3, the Load folder the root (home). Makes sure the
  // vendor key exists.
  explicit PlayerApp(const ShellServices& services);
  PlayerApp(const PlayerApp&) = delete;
  PlayerApp& operator=(const PlayerApp&) = delete;

  // The virtual operations, in their order.
  ~PlayerApp() override;
  // True when the current decoder plays (state 2).
  virtual bool IsPlaying();
  // Opens the command line's path (a media file, a playlist, or nothing;
  // "TSAlarm" counts as nothing). See player_app.cpp.
  virtual void OpenMedia(const std::string& path, bool atStartup);
  // True when another instance runs and took the command line over: this
  // process then ends. False when this process is the running instance.
  virtual bool HandOffToRunningInstance(const std::string& commandLine);
  // The message loop; afterwards stops playback and gives the workers 100 ms.
  virtual int Run();
  // The main window with menu bar, settings and face; false on failure.
  virtual bool CreateMainWindow(int x, int y, int width, int height);
  // Language pack and formats; false on failure.
  virtual bool Init();

  // Runs once after OpenMedia: continue from the last-played bookmark, or
  // start playing when the options say so.
  void StartOfPlaybackDecision();

  // The window procedure.
  std::intptr_t HandleMessage(const platform::Message& message) override;

  // --- State for dialogs, the face and tests ------------------------------------------
  AppSettings& Settings() { return settings; }
  playlist::PlaylistSettings& ListSettings() { return playlist.Settings(); }
  playlist::PlaylistView& Playlist() { return playlist; }
  // The playing position in whole seconds, as the list was last told it by
  // the position request (2565).
  std::int32_t PlaylistSeconds() const { return playlistSeconds; }
  effects::EqualizerSettings& EqualizerSettings() { return equalizerSettings; }
  // The program's folder, where the skin, the presets and the default list live.
  std::string ProgramFolder() { return InstallDirectory(); }
  MenuBar& Menu() { return menuBar; }
  MainWindow* Window() { return window.get(); }
  SkinDisplay* Skin() { return skin; }
  const InformationBlock& Information() const { return information; }
  const std::vector<std::uint32_t>& LanguageTable() const { return languageTable; }
  LanguageLayer& Language() { return language; }
  bool IsActive() const { return isActive; }
  bool ButtonLock() const { return buttonLock; }
  playback::MediaDecoder* CurrentDecoder() { return currentDecoder; }
  // The filters of the output, made in Init.
  effects::Equalizer* EqualizerFilter() { return equalizer.get(); }
  playback::AudioOutput& Output() { return output; }
  std::uint32_t CurrentVolume() const { return currentVolume; }
  std::uint32_t MutedVolume() const { return mutedVolume; }
  // What another program is shown of the player (see remote_status.h); the
  // tags of a file are read by ReadRemoteTags, once per track.
  RemoteStatus RemoteSnapshot();
  void ReadRemoteTags(RemoteStatus& status);
  // The bookmark store, null until one exists.
  void SetBookmarkStore(std::unique_ptr<BookmarkStore> store);
  bool HasBookmarkStore() const { return bookmarks != nullptr; }
  // The device volume, 0 to 65535, or 0 when the volume isn't the device's.
  std::uint32_t ReadVolume();
  void ApplyVolume(std::uint32_t deviceVolume);
  // Shows `text` in the status line for `milliseconds` (timer 33).
  void ShowStatus(const std::string& text, std::uint32_t milliseconds);
  // Binds the decoder of `path`'s format, opens and starts it; a path no
  // decoder takes, or that doesn't open, is skipped by posting 2563 with 1,
  // as is one that doesn't start when `skipOnFailure` says so. See
  // player_app_tracks.cpp.
  void PlayTrack(const std::string& path, bool skipOnFailure);

  // --- PlayerOperations ------------------------------------------------------------------
  void Persist() override;
  void QuitMessageLoop() override;
  void PostClose() override;
  void Activated(bool active) override;
  void KeyDown(std::uint32_t key) override;
  void KeyUp(std::uint32_t key) override;
  void DropQueued(std::uint32_t message) override;
  void Play(bool keepCurrent) override;
  void Stop() override;
  void TogglePause() override;
  void Next(bool automatic) override;
  void Previous() override;
  void TrackEnded() override;
  void PlayPause() override;
  void PlayStop() override;
  void SeekTo(std::int32_t milliseconds) override;
  void SkipForward() override;
  void SkipBack() override;
  void VolumeStep(bool up) override;
  void SetVolumeFromSlider(std::int32_t slider) override;
  void ToggleMute() override;
  void ToggleExtraBass() override;
  void ToggleEqualizer() override;
  void ApplyEqualizer() override;
  void ApplyEqualizerOption() override;
  void SetShuffle(bool on) override;
  void SetRepeat(bool on) override;
  void SetRepeatMode(std::uint32_t command) override;
  void ToggleShuffle() override;
  void ToggleRepeat() override;
  void DecoderText(const std::string* text, std::intptr_t mode) override;
  void RefreshFormat() override;
  void RefreshTitle() override;
  std::int32_t PositionMs() override;
  std::int32_t LengthMs() override;
  std::int32_t DecoderState() override;
  std::intptr_t RefreshInformationBlock(std::uintptr_t wParam, std::intptr_t lParam) override;
  void ActivateWindowBelow() override;
  void ShowOrHide() override;
  void OpenHandedOverPath(const std::string* path) override;
  void LoadFiles() override;
  void AddFiles() override;
  void ScrollPlaylist(bool up) override;
  void PostActionOfRow(std::intptr_t row) override;
  void FlipSpareFlagsAB() override;
  void FlipSpareFlagC() override;
  void ToggleButtonLock() override;
  void SelectLanguage(std::uint32_t entry) override;
  void SelectSkipTime(std::uint32_t index) override;
  void PlayBookmark(std::int32_t index, bool enqueue) override;
  void AddBookmark() override;
  void ReplaceBookmark(std::int32_t index) override;
  void RebuildBookmarkMenu() override;
  void OnAlarm() override;
  void OnCallEvent(bool began) override;
  void StatusTimerFired() override;
  void FadeInStep() override;
  void SleepTimerTick() override;
  void KeepAwakeTick() override;
  void DecoderNudgeTimerFired() override;
  void ShowAbout() override;
  void ShowEqualizer() override;
  void ShowPlaylist() override;
  void ShowBookmarks() override;
  void ShowSleepTimer() override;
  void ShowKeyMapping() override;
  void ShowGeneralOptions() override;
  void ShowPlaylistOptions() override;
  void ShowFileTypes() override;
  void ShowSetAlarm() override;
  void ShowEffects() override;
  void SaveSettings() override;

 private:
  SettingsTargets Targets();
  void LoadSettings();
  void SetUpFormats();
  void SetUpMp3Format();
  void SetUpOggFormat();
  void SetUpReaderFormat(playback::ReaderDecoder& decoder, int formatId, const char* extension);
  void BuildSkipTimeMenu();
  void CheckSkipTimeEntries();
  void BuildLanguageEntries();
  void PushStateToMenuAndSkin();
  std::string InstallDirectory();
  std::string DefaultListPath();
  void Post(std::uint32_t message, std::uintptr_t wParam = 0, std::intptr_t lParam = 0);
  Dialogs* DialogLauncher();
  playback::FormatRegistry& Formats();
  platform::DeviceVolume& Volume();

  void LoadDefaultList();
  bool CurrentTitle(std::string& title);
  // Track changes (player_app_tracks.cpp).
  void StopAndCloseCurrent();
  void CloseCurrent();
  void EndLastStream();
  void ShowListTitle();
  // Seams filled in by the MP3 decoder and the alarm (player_app_seams.cpp).
  void RebindMp3BackEnd();
  void RearmAlarm();
  void CloseOutput();
  void ShowVolumeOnFace(std::int32_t slider);

  ShellServices services;

  // Persistent fields and the objects whose fields the settings fill.
  AppSettings settings;
  playlist::PlaylistView playlist;
  std::int32_t playlistSeconds = 0;  // see PlaylistSeconds
  effects::EqualizerSettings equalizerSettings;

  playback::MediaDecoder idleDecoder;
  // Goes after the output, whose engines run it as their effect until they end.
  std::unique_ptr<effects::Equalizer> equalizer;
  playback::AudioOutput output;                           // the root: it opens no device itself
  playback::LockedFile sharedFile;                        // what decoders read local files through
  playback::MediaDecoder* currentDecoder = &idleDecoder;  // not owning
  std::unique_ptr<BookmarkStore> bookmarks;
  // The internet radio client of the MP3 and Ogg decoders; it goes after them.
  std::unique_ptr<net::NetStream> netStream;
  // MP3: the decoder goes before its back-end. To play, rebind the decoder
  // with mp3Decoder->SetBackEnd(mp3BackEnd.get()) while it exists.
  std::unique_ptr<decoders::Mp3BackEnd> mp3BackEnd;
  std::unique_ptr<decoders::Mp3Decoder> mp3Decoder;
  // Ogg Vorbis files (format 2).
  std::unique_ptr<decoders::OggDecoder> oggDecoder;
  // The reader-driven formats. Each decoder goes before the reader it drives,
  // and the plug-in's reader before its library.
  std::unique_ptr<decoders::WavReader> wavReader;
  std::unique_ptr<playback::ReaderDecoder> wavDecoder;
  std::unique_ptr<playback::FormatPlugin> aacPlugin;
  std::unique_ptr<playback::ReaderDecoder> aacDecoder;

  LanguageLayer language;
  std::vector<std::uint32_t> languageTable{0};

  std::unique_ptr<MainWindow> window;
  MenuBar menuBar;
  SkinDisplay* skin = nullptr;  // owned by the window

  std::uint32_t currentVolume = 0;  // the volume last applied, device scale
  // 0 when not muted; else the volume to come back to, left channel in the
  // low half and right in the high half.
  std::uint32_t mutedVolume = 0;
  std::int32_t faceVolume = 0;  // the VOLUME control, slider scale
  InformationBlock information;
  bool isActive = false;
  bool buttonLock = false;
};

}  // namespace shell

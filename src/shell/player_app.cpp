#include "shell/player_app.h"

#include <sys/stat.h>

#include "decoders/libmad_back_end.h"
#include "decoders/mp3_decoder.h"
#include "decoders/ogg_decoder.h"
#include "decoders/wav_reader.h"
#include "effects/equalizer.h"
#include "net/net_stream.h"
#include "platform/device_volume.h"
#include "platform/event.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "platform/text.h"
#include "platform/text_format.h"
#include "platform/texts.h"
#include "playback/format_plugin.h"
#include "playback/format_registry.h"
#include "playback/playback_settings.h"
#include "playback/reader_decoder.h"
#include "playlist/playlist_editing.h"
#include "shell/bookmark_store.h"
#include "shell/dialogs.h"
#include "shell/instance_link.h"
#include "shell/key_map.h"
#include "shell/main_window.h"
#include "shell/menu_templates.h"
#include "shell/registry_key.h"
#include "shell/skin_display.h"
#include "shell/switchboard.h"
#include "shell/volume_scales.h"
#include "shell/window_messages.h"
#include "skin/skin_action_table.h"

namespace shell {
namespace {

constexpr std::string_view kAlarmKeyword = "TSAlarm";
constexpr std::uint32_t kTextLoadingLocalContent = 6334;
constexpr std::uint32_t kTextLoadingFolder = 6335;

bool IsAlarmKeyword(std::string_view commandLine) {
  return platform::EqualsIgnoreCase(commandLine, kAlarmKeyword);
}

// What GetFileAttributes accepts: anything the path names, file or folder.
bool PathExists(const std::string& path) {
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0;
}

}  // namespace

PlayerApp::PlayerApp(const ShellServices& shellServices)
    : services(shellServices),
      playlist(shellServices.formats != nullptr ? *shellServices.formats : playback::Formats()),
      language(shellServices.packReader, shellServices.registry) {
  services.registry.CreateKey(platform::RegistryRoot::LocalMachine, kVendorKeyPath);
  // The run-time defaults; the settings load overrides them.
  settings.repeatMode = 1;
  settings.decodePriority = 1;
  playlist.Settings().displayMode = 1;
  settings.skipSeconds = 60;
  settings.extraBassStrength = 3;
  settings.loadPath = platform::HomeDirectory();
  information.SetTitle(kProductText);
}

// Unloads the language pack first, then lets the collaborators go in the
// reverse order of their making; the window goes last, since workers that
// are gone by then were its only other users.
PlayerApp::~PlayerApp() {
  services.instances.StopServing();
  language.LoadLanguage(0);
  // The equalizer itself outlives the output (see the members): an engine's
  // mixer may be inside the effect right now, and only the output's end
  // joins the engines.
  output.SetEffect(nullptr);
  bookmarks.reset();
  currentDecoder = &idleDecoder;
  playlist.StopInfoThread();
  // The registry may outlive this object: nothing must find these decoders
  // there once they are gone. The MP3 decoder goes before its back-end. The
  // AAC decoder goes before its reader, the reader before its library; the
  // WAV pair comes last.
  Formats().SetDecoder(playback::kFormatMp3, nullptr);
  Formats().SetDecoder(playback::kFormatMp3Stream, nullptr);
  mp3Decoder.reset();
  mp3BackEnd.reset();
  Formats().SetDecoder(playback::kFormatOgg, nullptr);
  Formats().SetDecoder(playback::kFormatOggStream, nullptr);
  oggDecoder.reset();
  netStream.reset();  // after both decoders that use it
  Formats().SetDecoder(playback::kFormatAac, nullptr);
  Formats().SetDecoder(playback::kFormatWav, nullptr);
  aacDecoder.reset();
  aacPlugin.reset();
  wavDecoder.reset();
  wavReader.reset();
  playlist.SetMainWindow(nullptr);
  playlist.SetDialogs(nullptr);
  skin = nullptr;
  window.reset();
}

bool PlayerApp::IsPlaying() {
  return DecoderState() == playback::kStatePlaying;
}

// With a path (not the keyword TSAlarm):
//  1. without enqueueOnOpen the list is cleared; with it, a start first loads
//     the default list;
//  2. the path joins the list (a playlist file is read in its place) and the
//     info reader starts;
//  3. with enqueueOnOpen and a track playing that is all; otherwise play.
// Without a path, the first of: load the whole home folder ("Load local
// content on start"), load the Load folder ("Load folder contents on
// start:"), or load the default list and, if the list is still empty, greet
// the user with the file picker. A TSAlarm start then raises the alarm.
void PlayerApp::OpenMedia(const std::string& path, bool atStartup) {
  const bool alarm = IsAlarmKeyword(path);
  if (!path.empty() && !alarm) {
    if (!settings.enqueueOnOpen)
      playlist.ClearAll();
    else if (atStartup)
      LoadDefaultList();
    playlist.AddAndRefresh(path);  // a playlist file is read in its place
    if (!(settings.enqueueOnOpen && IsPlaying())) Play(false);
    return;
  }
  if (settings.loadLocalContent) {
    if (skin != nullptr) skin->SetMessage(platform::LoadText(kTextLoadingLocalContent));
    playlist.LoadFolderContents(platform::HomeDirectory());
    if (skin != nullptr) skin->SetMessage("");
  } else if (settings.loadFolderContents) {
    if (skin != nullptr)
      skin->SetMessage(platform::FormatText(platform::LoadText(kTextLoadingFolder), {settings.loadPath}));
    playlist.LoadFolderContents(settings.loadPath);
    if (skin != nullptr) skin->SetMessage("");
  } else {
    LoadDefaultList();
    playlist.AddFilesIfEmpty();  // a first start is greeted by the file picker
  }
  if (alarm) Post(kMessageAlarm);
}

// The later process's side: TSAlarm wakes the running instance (it comes
// forward by itself); an existing path is handed over; every other command
// line only brings the running instance forward.
bool PlayerApp::HandOffToRunningInstance(const std::string& commandLine) {
  std::unique_ptr<RunningInstance> running = services.instances.FindOrBecomeRunning();
  if (!running) return false;
  if (IsAlarmKeyword(commandLine)) {
    running->Post(kMessageAlarm, "");
    return true;
  }
  if (!commandLine.empty() && PathExists(commandLine)) running->Post(kMessageHandOver, commandLine);
  running->BringToForeground();
  return true;
}

int PlayerApp::Run() {
  const int exitCode = services.windows.RunMessageLoop();
  Stop();
  platform::SleepMs(100);  // the workers' time to leave
  return exitCode;
}

bool PlayerApp::Init() {
  platform::EnsureInstalled(services.registry, platform::ResourceDirectory());
  // The language comes before any window, so that every text is translated.
  services.settingsKey.ReadDword("Language", settings.language);
  language.LoadLanguage(settings.language);
  SetUpFormats();
  equalizer = std::make_unique<effects::Equalizer>();
  output.SetEffect(equalizer.get());
  return true;
}

bool PlayerApp::CreateMainWindow(int x, int y, int width, int height) {
  window = services.windows.CreateMainWindow(Rect{x, y, width, height}, *this);
  if (!window) return false;
  std::optional<MenuBar> bar = CreateMenuBar(kMenuMainBar);
  if (!bar) return false;
  menuBar = std::move(*bar);
  if (!window->AttachMenuBar(menuBar)) return false;
  BuildLanguageEntries();
  BuildSkipTimeMenu();
  RebuildBookmarkMenu();
  playlist.SetMainWindow(&window->Messages());
  SetKeyTarget(&window->Messages(), false);
  playlist.SetDialogs(window->PlaylistBoxes());
  playlist.SetLoadSorter(&::playlist::SortLoaded);  // sortOnLoad, sortByTrackNumber
  if (netStream) netStream->SetNotifyWindow(&window->Messages());  // status texts and titles: 2331
  // The device volume, through the slider's scale: the way there and back
  // loses a little at each start, as it always has.
  SetVolumeFromSlider(DeviceToSlider(ReadVolume()));
  LoadSettings();
  if (equalizer && settings.extraBassEnabled) equalizer->SetBassMode(settings.extraBassStrength);
  currentDecoder = &idleDecoder;
  skin =
      window->CreateSkin(kSkinWidth, kSkinHeight, platform::JoinPath(InstallDirectory(), "BaseSkin") + "/");
  if (skin == nullptr) return false;
  PushStateToMenuAndSkin();
  services.instances.Serve(window->Messages(), [this] {
    if (window) window->BringToForeground();
  });
  return true;
}

void PlayerApp::StartOfPlaybackDecision() {
  playback::PlaybackSettings& playback = playback::Playback();
  if (playback::PlaybackSettings::Read(playback.continueFromLastPosition)) {
    if (!bookmarks || bookmarks->Load() == 0) return;
    std::string path;
    std::int32_t seconds = 0;
    if (!bookmarks->TakeLastPlayed(path, seconds)) return;
    RebuildBookmarkMenu();
    playlist.PlayPath(path, static_cast<std::uint32_t>(seconds), false);
  } else if (playback::PlaybackSettings::Read(playback.startOnLaunch)) {
    Play(false);
  }
}

std::intptr_t PlayerApp::HandleMessage(const platform::Message& message) {
  return RouteMessage(*this, message);
}

// The persist sequence of a close:
//  1. close the output (the root's own device; its engines close when it goes);
//  2. with a bookmark store and a track not stopped, store the last-played
//     bookmark (position in whole seconds, the title or else the path); when
//     the list has no current path nothing further is saved, neither list
//     nor settings: that early way out is the program's;
//  3. save the default list;
//  4. save the settings.
// Desktop components read the information block on the window thread, so
// there is no reader to wait for.
void PlayerApp::Persist() {
  CloseOutput();
  if (bookmarks && DecoderState() != playback::kStateStopped) {
    const std::optional<std::string> path = playlist.CurrentPath();
    if (!path) return;
    std::string title;
    if (!CurrentTitle(title) || title.empty()) title = *path;
    const auto seconds = static_cast<std::int32_t>(currentDecoder->GetPosition() / 1000);
    bookmarks->SetLastPlayed(*path, seconds, title);
  }
  playlist.SaveDefaultList(DefaultListPath());
  SaveSettings();
}

void PlayerApp::QuitMessageLoop() {
  services.windows.PostQuit(0);
}

void PlayerApp::PostClose() {
  Post(kMessageClose);
}

SettingsTargets PlayerApp::Targets() {
  return SettingsTargets{settings, playlist.Settings(), equalizerSettings, playback::Playback(),
                         skin::Actions()};
}

void PlayerApp::LoadSettings() {
  shell::LoadSettings(services.registry, Targets());
}

void PlayerApp::SaveSettings() {
  shell::SaveSettings(services.registry, Targets());
}

// The playlist formats, and each decoder that the program has. A missing
// decoder only narrows what plays: the registry then finds nothing for its
// files. The native list (503) stays disabled but for the default list's load.
void PlayerApp::SetUpFormats() {
  playback::FormatRegistry& formats = Formats();
  formats.AddExtension(playback::kFormatM3u, "m3u");
  formats.AddExtension(playback::kFormatPls, "pls");
  formats.AddExtension(playback::kFormatAsx, "asx");
  for (const int format : {playback::kFormatM3u, playback::kFormatPls, playback::kFormatAsx})
    formats.Enable(format, true);

  // The stream client, one for the run, shared by the MP3 and Ogg decoders.
  netStream = std::make_unique<net::NetStream>();
  SetUpMp3Format();
  SetUpOggFormat();

  // WAV: the reader and a reader-driven decoder over it.
  wavReader = std::make_unique<decoders::WavReader>();
  wavDecoder = std::make_unique<playback::ReaderDecoder>();
  wavDecoder->SetReader(wavReader.get());
  SetUpReaderFormat(*wavDecoder, playback::kFormatWav, "wav");

  // AAC through the plug-in, looked for beside the executable, then in the
  // install directory. Without it the format stays absent, without a word.
  aacPlugin = playback::LoadFormatPlugin(playback::AacPluginCandidates(
      platform::ExecutableDirectory(), platform::ReadInstallDirectory(services.registry)));
  if (aacPlugin) {
    aacDecoder = std::make_unique<playback::ReaderDecoder>();
    aacDecoder->SetReader(aacPlugin->reader.get());
    SetUpReaderFormat(*aacDecoder, playback::kFormatAac, "aac");
  }
}

// MP3: the frame back-end is libmad, linked in, so the decoder always exists.
// It is given the back-end and the output (the shared file comes with each
// track); the back-end's own equalizer is set flat, since the output's
// equalizer filters MP3 like everything else. Format 4 (MP3 streams) is bound
// to the same decoder, with the stream client.
void PlayerApp::SetUpMp3Format() {
  mp3BackEnd = std::make_unique<decoders::LibmadBackEnd>();
  mp3Decoder = std::make_unique<decoders::Mp3Decoder>();
  mp3Decoder->SetBackEnd(mp3BackEnd.get());
  mp3Decoder->SetOutput(&output);
  std::array<int, decoders::kEqualizerBands> neutral{};
  neutral.fill(31);
  mp3BackEnd->seteq(0, 31, neutral);
  playback::FormatRegistry& formats = Formats();
  for (const char* extension : {"mp3", "mp2", "mpa"}) formats.AddExtension(playback::kFormatMp3, extension);
  formats.Enable(playback::kFormatMp3, true);
  formats.SetDecoder(playback::kFormatMp3, mp3Decoder.get());
  mp3Decoder->SetNetStream(netStream.get());
  formats.SetDecoder(playback::kFormatMp3Stream, mp3Decoder.get());
}

// Ogg Vorbis: Tremor is linked in, so the decoder always exists. It is given
// the output and the stream client; the shared file comes with each track.
// Format 5 ("http://" addresses ending in ".ogg") is bound to it too.
void PlayerApp::SetUpOggFormat() {
  oggDecoder = std::make_unique<decoders::OggDecoder>();
  oggDecoder->SetOutput(&output);
  playback::FormatRegistry& formats = Formats();
  formats.AddExtension(playback::kFormatOgg, "ogg");
  formats.Enable(playback::kFormatOgg, true);
  formats.SetDecoder(playback::kFormatOgg, oggDecoder.get());
  oggDecoder->SetNetStream(netStream.get());
  formats.SetDecoder(playback::kFormatOggStream, oggDecoder.get());
}

// Wires a reader-driven decoder (the shared file, the output) and binds its
// format to it.
void PlayerApp::SetUpReaderFormat(playback::ReaderDecoder& decoder, int formatId, const char* extension) {
  playback::FormatRegistry& formats = Formats();
  formats.AddExtension(formatId, extension);
  decoder.SetOutput(&output);
  decoder.SetSource(&sharedFile);
  formats.Enable(formatId, true);
  formats.SetDecoder(formatId, &decoder);
}

// The face is made after the volume was applied, so it is given the VOLUME
// control's value with the loaded state.
void PlayerApp::PushStateToMenuAndSkin() {
  SetRepeat(settings.repeatEnabled);
  SetShuffle(settings.shuffleEnabled);
  if (skin != nullptr) {
    skin->SetVolume(faceVolume);
    skin->SetExtraBass(settings.extraBassEnabled);
    skin->SetEqualizer(equalizerSettings.GetEnabled() != 0);
  }
}

std::string PlayerApp::InstallDirectory() {
  const std::string folder = platform::ReadInstallDirectory(services.registry);
  return folder.empty() ? platform::HomeDirectory() : folder;
}

// "default.tsl" in the install directory, read anew each time.
std::string PlayerApp::DefaultListPath() {
  return playlist::PlaylistView::DefaultListPath(platform::ReadInstallDirectory(services.registry));
}

void PlayerApp::LoadDefaultList() {
  playlist.LoadDefaultList(DefaultListPath());
}

bool PlayerApp::CurrentTitle(std::string& title) {
  std::optional<std::string> current = playlist.CurrentTitle();
  if (!current) return false;
  title = std::move(*current);
  return true;
}

void PlayerApp::Post(std::uint32_t message, std::uintptr_t wParam, std::intptr_t lParam) {
  if (window) window->Messages().Post(message, wParam, lParam);
}

Dialogs* PlayerApp::DialogLauncher() {
  return window ? &window->DialogLauncher() : nullptr;
}

platform::DeviceVolume& PlayerApp::Volume() {
  return services.deviceVolume != nullptr ? *services.deviceVolume : platform::ProcessDeviceVolume();
}

playback::FormatRegistry& PlayerApp::Formats() {
  return services.formats != nullptr ? *services.formats : playback::Formats();
}

void PlayerApp::SetBookmarkStore(std::unique_ptr<BookmarkStore> store) {
  bookmarks = std::move(store);
}

}  // namespace shell

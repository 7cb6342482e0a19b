// PlayerApp: the main window's own operations: activation, the menu's
// run-time entries, stored flags, the status line, the information block,
// the dialogs and the hand-over from a later process.
#include <algorithm>

#include "platform/text.h"
#include "platform/text_format.h"
#include "platform/texts.h"
#include "playlist/playlist_editing.h"
#include "shell/dialogs.h"
#include "shell/key_map.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/registry_key.h"
#include "shell/skin_display.h"
#include "shell/window_messages.h"
#include "skin/skin_action_table.h"

namespace shell {
namespace {

constexpr std::uint32_t kTextSeconds = 6344;
constexpr std::size_t kHandOverUnits = 260;  // the 520-byte buffer of the hand-over
constexpr std::uint32_t kLanguageCheckedRange = 20;

}  // namespace

bool& ModalDialogOpen() {
  static bool open = false;
  return open;
}

// The key filter hears of the activation too: deactivated, it counts as
// inactive unless the keys are to be kept when inactive.
void PlayerApp::Activated(bool active) {
  isActive = active;
  SetInactive(!active && !settings.keepKeysWhenInactive);
}

void PlayerApp::DropQueued(std::uint32_t message) {
  if (window) window->Messages().RemovePending(message);
}

void PlayerApp::ActivateWindowBelow() {
  if (window) window->ActivateWindowBelow();
}

// In front it steps back; behind it comes forward.
void PlayerApp::ShowOrHide() {
  if (!window) return;
  if (isActive)
    window->ActivateWindowBelow();
  else
    window->BringToForeground();
}

// The path comes as the hand-over buffer had it: at most 260 UTF-16 units.
// A request without a path opens nothing, which means the default list.
void PlayerApp::OpenHandedOverPath(const std::string* path) {
  OpenMedia(path != nullptr ? platform::TruncateToUtf16Units(*path, kHandOverUnits) : std::string(), false);
}

void PlayerApp::PostActionOfRow(std::intptr_t row) {
  if (row < 0 || row >= skin::kActionRowCount) return;
  const std::uint32_t message = skin::Actions()[static_cast<std::size_t>(row)].message;
  if (message != 0) Post(message);
}

// Both flags of the pair become the inverse of the first.
void PlayerApp::FlipSpareFlagsAB() {
  const bool flipped = !settings.spareFlagA;
  settings.spareFlagA = flipped;
  settings.spareFlagB = flipped;
}

void PlayerApp::FlipSpareFlagC() {
  settings.spareFlagC = !settings.spareFlagC;
}

// The lock is only kept: keys still work while it is on, as they always did.
void PlayerApp::ToggleButtonLock() {
  buttonLock = !buttonLock;
  SetButtonLock(buttonLock, settings.lockKeepsDisplayKey);
}

// The entry's language is loaded and stored at once; menus and face keep the
// language they were made in until the next start, while texts and dialogs
// opened from now on come in the new one. An entry beyond the table counts
// as English.
void PlayerApp::SelectLanguage(std::uint32_t entry) {
  const std::uint32_t localeId = entry < languageTable.size() ? languageTable[entry] : 0;
  language.LoadLanguage(localeId);
  settings.language = localeId;
  services.settingsKey.WriteDword("Language", localeId);
  for (std::uint32_t k = 0; k < kLanguageCheckedRange; ++k) {
    if (k != entry) menuBar.Check(kCommandLanguageFirst + k, false);
  }
  menuBar.Check(kCommandLanguageFirst + entry, true);
}

// Ids past the table's end have no menu entry; such a command changes nothing.
void PlayerApp::SelectSkipTime(std::uint32_t index) {
  if (index >= kSkipSteps.size()) return;
  settings.skipSeconds = kSkipSteps[index];
  CheckSkipTimeEntries();
}

void PlayerApp::CheckSkipTimeEntries() {
  for (std::size_t i = 0; i < kSkipSteps.size(); ++i)
    menuBar.Check(kCommandSkipTimeFirst + static_cast<std::uint32_t>(i),
                  kSkipSteps[i] == settings.skipSeconds);
}

// The FF/Rewind Step entries replace the placeholder 2200. The tick shows the
// stored FFSkipTime, or 60 when there is none, since the settings aren't
// loaded yet; the load then gives 10 for a missing value, so a first run
// shows 60 while the step is 10. That is how the program has always been.
void PlayerApp::BuildSkipTimeMenu() {
  MenuItem* main = menuBar.Popup(kPopupMainMenu);
  MenuItem* steps = main != nullptr ? SubmenuAt(*main, {6, 0}) : nullptr;
  if (steps == nullptr) return;
  std::uint32_t shown = static_cast<std::uint32_t>(settings.skipSeconds);
  services.settingsKey.ReadDword("FFSkipTime", shown);
  const std::string format = platform::LoadText(kTextSeconds);
  for (std::size_t i = 0; i < kSkipSteps.size(); ++i) {
    AppendCommand(*steps, kCommandSkipTimeFirst + static_cast<std::uint32_t>(i),
                  platform::FormatText(format, {std::int64_t{kSkipSteps[i]}}),
                  static_cast<std::uint32_t>(kSkipSteps[i]) == shown);
  }
  RemoveCommand(*steps, kCommandSkipTimeFirst);  // the placeholder comes first
}

void PlayerApp::BuildLanguageEntries() {
  MenuItem* main = menuBar.Popup(kPopupMainMenu);
  MenuItem* languages = main != nullptr ? SubmenuAt(*main, {6, 6}) : nullptr;
  if (languages == nullptr) return;
  languageTable = BuildLanguageMenu(*languages, settings.language, ListPackFiles(InstallDirectory()),
                                    services.nativeLanguageNames);
}

// Message 2594 (LOADFILES) and 2648 (ADDFILES): the list's fills.
void PlayerApp::LoadFiles() {
  playlist.NewPlaylist();
}
void PlayerApp::AddFiles() {
  playlist.AddFiles();
}

// Messages 2649 and 2650: in move mode the selected rows move one row; the
// list screen, if open, redraws in any case. The focus stays.
void PlayerApp::ScrollPlaylist(bool up) {
  if (playlist.MoveMode()) playlist::MoveSelected(playlist, up ? -1 : 1);
  playlist.Invalidate(false);
}

std::intptr_t PlayerApp::RefreshInformationBlock(std::uintptr_t /*wParam*/, std::intptr_t /*lParam*/) {
  information.state = DecoderState();
  information.position =
      static_cast<std::int32_t>(currentDecoder != nullptr ? currentDecoder->GetPosition() : 0);
  information.length = LengthMs();
  information.repeat = settings.repeatEnabled ? 1 : 0;
  information.shuffle = settings.shuffleEnabled ? 1 : 0;
  std::string title;
  information.SetTitle(CurrentTitle(title) ? std::string_view(title) : kProductText);
  return reinterpret_cast<std::intptr_t>(&information);
}

void PlayerApp::ShowStatus(const std::string& text, std::uint32_t milliseconds) {
  if (!window) return;
  window->Timers().Kill(kTimerStatus);
  if (skin != nullptr) skin->SetMessage(text);
  window->Timers().Set(kTimerStatus, milliseconds);
}

void PlayerApp::StatusTimerFired() {
  if (window) window->Timers().Kill(kTimerStatus);
  if (skin != nullptr) skin->SetMessage("");
}

// Nothing starts timer 21, so the idle timer of the desktop runs as usual
// while the player plays; the handler stays for the day something does.
void PlayerApp::KeepAwakeTick() {}

void PlayerApp::OnCallEvent(bool began) {
  if (began) {
    if (IsPlaying()) TogglePause();
  } else if (DecoderState() == playback::kStatePaused) {
    TogglePause();
  }
}

void PlayerApp::SetShuffle(bool on) {
  settings.shuffleEnabled = on;
  playlist.SetShuffle(on);
  if (skin != nullptr) skin->SetShuffle(on);
  menuBar.Check(kCommandEnableShuffle, on);
}

void PlayerApp::SetRepeat(bool on) {
  settings.repeatEnabled = on;
  playlist.SetRepeatMode(on ? static_cast<int>(settings.repeatMode) : 0);
  if (skin != nullptr) skin->SetRepeat(on);
  menuBar.Check(kCommandEnableRepeat, on);
  SetRepeatMode(settings.repeatMode + kRepeatModeCommandBase);
}

void PlayerApp::SetRepeatMode(std::uint32_t command) {
  for (std::uint32_t id = kCommandRepeatAll; id <= kCommandRepeatSelected; ++id) menuBar.Check(id, false);
  menuBar.Check(command, true);
  settings.repeatMode = command - kRepeatModeCommandBase;
  if (settings.repeatEnabled) playlist.SetRepeatMode(static_cast<int>(settings.repeatMode));
}

void PlayerApp::ToggleShuffle() {
  SetShuffle(!settings.shuffleEnabled);
}

void PlayerApp::ToggleRepeat() {
  SetRepeat(!settings.repeatEnabled);
}

void PlayerApp::ShowAbout() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->About();
}
void PlayerApp::ShowEqualizer() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->Equalizer();
}
void PlayerApp::ShowPlaylist() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->Playlist();
}
void PlayerApp::ShowBookmarks() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->Bookmarks();
}
void PlayerApp::ShowSleepTimer() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->SleepTimer();
}
// The dialog takes the key filter's target while it is open; it goes back to
// the main window afterwards.
void PlayerApp::ShowKeyMapping() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->KeyMapping();
  if (window) SetKeyTarget(&window->Messages(), false);
}
void PlayerApp::ShowGeneralOptions() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->GeneralOptions();
}
void PlayerApp::ShowPlaylistOptions() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->PlaylistOptions();
}
void PlayerApp::ShowFileTypes() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->FileTypes();
}
void PlayerApp::ShowSetAlarm() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->SetAlarm();
}
void PlayerApp::ShowEffects() {
  if (Dialogs* dialogs = DialogLauncher()) dialogs->Effects();
}

}  // namespace shell

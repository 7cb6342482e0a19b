// The numbers the main window's procedure knows: platform messages, private
// messages, menu commands, timers and menu ids. They are part of the design:
// workers, skins, other processes and language packs use the same numbers.
#pragma once

#include <cstdint>

#include "platform/timers.h"

namespace shell {

// Platform messages, with the platform's numbers.
enum WindowMessage : std::uint32_t {
  kMessageCreate = 0x0001,
  kMessageDestroy = 0x0002,
  kMessageActivate = 0x0006,  // wParam 0 inactive, 1 or 2 active
  kMessageClose = 0x0010,
  kMessageKeyDown = 0x0100,  // wParam the virtual key code
  kMessageKeyUp = 0x0101,
  kMessageCommand = 0x0111,                 // low 16 bits of wParam the command id
  kMessageTimer = platform::kMessageTimer,  // wParam the timer id
};

// Private messages of the main window.
enum PrivateMessage : std::uint32_t {
  kMessageSetVolume = 2320,  // wParam slider value 0 to 1000
  kMessageActivateBelow = 2322,
  kMessageSetShuffle = 2323,  // wParam flag
  kMessageSetRepeat = 2325,   // wParam flag
  kMessageFlipSpareFlags = 2326,
  kMessageActionRow = 2327,     // wParam key, lParam row of the action table
  kMessagePlayBookmark = 2328,  // wParam enqueue flag, lParam bookmark index
  kMessageAddBookmark = 2329,
  kMessageDecoderText = 2331,  // text (owned), lParam mode
  kMessageFormatChanged = 2332,
  kMessageTitleChanged = 2333,
  kMessagePlay = 2560,  // wParam keepCurrent
  kMessageStop = 2561,
  kMessageTogglePause = 2562,
  kMessageNext = 2563,  // wParam automatic
  kMessagePrevious = 2564,
  kMessageGetPosition = 2565,  // result: milliseconds
  kMessageGetLength = 2566,    // result: milliseconds
  kMessageSeek = 2567,         // wParam milliseconds
  kMessageTrackEnded = 2568,
  kMessageGetState = 2569,  // result: decoder state
  kMessageApplyEqualizer = 2592,
  kMessageUnused2593 = 2593,
  kMessageLoadFiles = 2594,
  kMessageDisplayToggle = 2641,  // has the place of a display on/off action; does nothing
  kMessageVolumeUp = 2642,
  kMessageVolumeDown = 2643,
  kMessageMute = 2644,
  kMessageShowOrHide = 2645,
  kMessageHandOver = 2646,  // text (owned): the path a later process handed over
  kMessagePlayPause = 2647,
  kMessageAddFiles = 2648,
  kMessageScrollUp = 2649,
  kMessageScrollDown = 2650,
  kMessageToggleLock = 2651,
  kMessageFastForward = 2652,
  kMessageRewind = 2653,
  kMessageInfoBlock = 2654,  // result: pointer to the InformationBlock
  kMessageToggleEqualizer = 2655,
  kMessageToggleExtraBass = 2656,
  kMessageToggleShuffle = 2657,
  kMessageToggleRepeat = 2658,
  kMessageAlarm = 2690,
  kMessageCallBegan = 10053,
  kMessageCallEnded = 10054,
};

// Menu commands (WM_COMMAND ids).
enum CommandId : std::uint32_t {
  kCommandOk = 1,  // also Exit from the main menu
  kCommandCancel = 2,
  kCommandAbout = 1100,
  kCommandEqualizer = 1102,
  kCommandPlaylist = 1103,  // left soft key
  kCommandActivateBelow = 1104,
  kCommandExit = 1105,
  kCommandFlipSpareFlagC = 1108,
  kCommandToggleLock = 1109,
  kCommandOrganizeBookmarks = 1513,
  kCommandAddBookmark = 1514,
  kCommandSleepTimer = 1518,
  kCommandSkipTimeFirst = 2200,  // to 2250: skip table index id - 2200
  kCommandSkipTimeLast = 2250,
  kCommandPlayBookmarkFirst = 2500,  // to 2699
  kCommandPlayBookmarkLast = 2699,
  kCommandReplaceBookmarkFirst = 2700,  // to 2899
  kCommandReplaceBookmarkLast = 2899,
  kCommandKeyMapping = 40001,
  kCommandGeneralOptions = 40006,
  kCommandPlaylistOptions = 40007,
  kCommandExitMenu = 40009,
  kCommandRepeatAll = 40026,  // repeat modes 1 to 3 are 40025 + mode
  kCommandRepeatOne = 40027,
  kCommandRepeatSelected = 40028,
  kCommandPlayStop = 40041,
  kCommandEnableRepeat = 40043,
  kCommandEnableShuffle = 40044,
  kCommandFileTypes = 40045,
  kCommandSetAlarm = 40046,
  kCommandLanguageFirst = 40060,  // to 40080: language entry id - 40060
  kCommandLanguageLast = 40080,
  kCommandEffects = 40090,
};

inline constexpr std::uint32_t kRepeatModeCommandBase = 40025;

// Timers of the main window.
enum TimerId : std::uint32_t {
  kTimerUnused20 = 20,       // never started; does nothing
  kTimerKeepAwake = 21,      // never started; resets the idle timer while playing
  kTimerStatus = 33,         // clears the status line
  kTimerDecoderNudge = 137,  // never started
  kTimerFadeIn = 138,        // the alarm's fade-in, 200 ms
  kTimerSleep = 139,         // the sleep timer, 30000 ms
};

// Menu resources and popups.
enum MenuId : std::uint32_t {
  kMenuMainBar = 101,
  kMenuDone = 105,
  kMenuDoneCancel = 157,
  kMenuSaveCancel = 159,
  kMenuPlaylistScreen = 156,
  kPopupMainMenu = 1516,      // the right soft key's popup of the main bar and of the list screen's
  kPopupPlaylistFile = 1517,  // the list screen's left soft key
};

}  // namespace shell

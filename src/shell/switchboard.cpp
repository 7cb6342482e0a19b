#include "shell/switchboard.h"

#include "shell/player_operations.h"
#include "shell/window_messages.h"

namespace shell {
namespace {

bool InRange(std::uint32_t id, std::uint32_t first, std::uint32_t last) {
  return id >= first && id <= last;
}

void RouteCommand(PlayerOperations& ops, std::uint32_t id) {
  if (InRange(id, kCommandSkipTimeFirst, kCommandSkipTimeLast))
    return ops.SelectSkipTime(id - kCommandSkipTimeFirst);
  if (InRange(id, kCommandPlayBookmarkFirst, kCommandPlayBookmarkLast))
    return ops.PlayBookmark(static_cast<std::int32_t>(id - kCommandPlayBookmarkFirst), false);
  if (InRange(id, kCommandReplaceBookmarkFirst, kCommandReplaceBookmarkLast))
    return ops.ReplaceBookmark(static_cast<std::int32_t>(id - kCommandReplaceBookmarkFirst));
  if (InRange(id, kCommandRepeatAll, kCommandRepeatSelected)) return ops.SetRepeatMode(id);
  if (InRange(id, kCommandLanguageFirst, kCommandLanguageLast))
    return ops.SelectLanguage(id - kCommandLanguageFirst);
  switch (id) {
    case kCommandOk:
    case kCommandExit:
    case kCommandExitMenu:
      return ops.PostClose();
    case kCommandAbout:
      return ops.ShowAbout();
    case kCommandEqualizer:
      ops.ShowEqualizer();
      return ops.SaveSettings();
    case kCommandPlaylist:
      return ops.ShowPlaylist();
    case kCommandActivateBelow:
      return ops.ActivateWindowBelow();
    case kCommandFlipSpareFlagC:
      return ops.FlipSpareFlagC();
    case kCommandToggleLock:
      return ops.ToggleButtonLock();
    case kCommandOrganizeBookmarks:
      ops.ShowBookmarks();
      return ops.RebuildBookmarkMenu();
    case kCommandAddBookmark:
      return ops.AddBookmark();
    case kCommandSleepTimer:
      return ops.ShowSleepTimer();
    case kCommandKeyMapping:
      ops.ShowKeyMapping();
      return ops.SaveSettings();
    case kCommandGeneralOptions:
      ops.ShowGeneralOptions();
      ops.SaveSettings();
      return ops.ApplyEqualizerOption();
    case kCommandPlaylistOptions:
      ops.ShowPlaylistOptions();
      return ops.SaveSettings();
    case kCommandPlayStop:
      return ops.PlayStop();
    case kCommandEnableRepeat:
      return ops.ToggleRepeat();
    case kCommandEnableShuffle:
      return ops.ToggleShuffle();
    case kCommandFileTypes:
      return ops.ShowFileTypes();
    case kCommandSetAlarm:
      ops.ShowSetAlarm();
      return ops.SaveSettings();
    case kCommandEffects:
      return ops.ShowEffects();  // nothing is saved until exit
    default:
      return;  // any other id: ignored, handled
  }
}

void RouteTimer(PlayerOperations& ops, std::uintptr_t id) {
  switch (id) {
    case kTimerKeepAwake:
      return ops.KeepAwakeTick();
    case kTimerStatus:
      return ops.StatusTimerFired();
    case kTimerDecoderNudge:
      return ops.DecoderNudgeTimerFired();
    case kTimerFadeIn:
      return ops.FadeInStep();
    case kTimerSleep:
      return ops.SleepTimerTick();
    default:
      return;  // 20 and unknown ids: nothing
  }
}

// The messages that return a result; every other one returns 0.
bool RouteResult(PlayerOperations& ops, const platform::Message& m, std::intptr_t& result) {
  switch (m.id) {
    case kMessageGetPosition:
      result = ops.PositionMs();
      return true;
    case kMessageGetLength:
      result = ops.LengthMs();
      return true;
    case kMessageGetState:
      result = ops.DecoderState();
      return true;
    case kMessageInfoBlock:
      result = ops.RefreshInformationBlock(m.wParam, m.lParam);
      return true;
    default:
      return false;
  }
}

void RoutePrivate(PlayerOperations& ops, const platform::Message& m) {
  const bool flag = m.wParam != 0;
  switch (m.id) {
    case kMessageSetVolume:
      return ops.SetVolumeFromSlider(static_cast<std::int32_t>(m.wParam));
    case kMessageActivateBelow:
      return ops.ActivateWindowBelow();
    case kMessageSetShuffle:
      return ops.SetShuffle(flag);
    case kMessageSetRepeat:
      return ops.SetRepeat(flag);
    case kMessageFlipSpareFlags:
      return ops.FlipSpareFlagsAB();
    case kMessageActionRow:
      return ops.PostActionOfRow(m.lParam);
    case kMessagePlayBookmark:
      return ops.PlayBookmark(static_cast<std::int32_t>(m.lParam), flag);
    case kMessageAddBookmark:
      return ops.AddBookmark();
    case kMessageDecoderText:
      return ops.DecoderText(m.text.get(), m.lParam);
    case kMessageFormatChanged:
      return ops.RefreshFormat();
    case kMessageTitleChanged:
      return ops.RefreshTitle();
    case kMessagePlay:
      return ops.Play(flag);
    case kMessageStop:
      return ops.Stop();
    case kMessageTogglePause:
      return ops.TogglePause();
    case kMessageNext:
      return ops.Next(flag);
    case kMessagePrevious:
      return ops.Previous();
    case kMessageSeek:
      return ops.SeekTo(static_cast<std::int32_t>(m.wParam));
    case kMessageTrackEnded:
      return ops.TrackEnded();
    case kMessageApplyEqualizer:
      return ops.ApplyEqualizer();
    case kMessageLoadFiles:
      return ops.LoadFiles();
    case kMessageVolumeUp:
      return ops.VolumeStep(true);
    case kMessageVolumeDown:
      return ops.VolumeStep(false);
    case kMessageMute:
      return ops.ToggleMute();
    case kMessageShowOrHide:
      return ops.ShowOrHide();
    case kMessageHandOver:
      return ops.OpenHandedOverPath(m.text.get());
    case kMessagePlayPause:
      return ops.PlayPause();
    case kMessageAddFiles:
      return ops.AddFiles();
    case kMessageScrollUp:
      return ops.ScrollPlaylist(true);
    case kMessageScrollDown:
      return ops.ScrollPlaylist(false);
    case kMessageToggleLock:
      return ops.ToggleButtonLock();
    case kMessageFastForward:
      // A held key mustn't queue up seeks: further copies go first.
      ops.DropQueued(kMessageFastForward);
      return ops.SkipForward();
    case kMessageRewind:
      ops.DropQueued(kMessageRewind);
      return ops.SkipBack();
    case kMessageToggleEqualizer:
      return ops.ToggleEqualizer();
    case kMessageToggleExtraBass:
      return ops.ToggleExtraBass();
    case kMessageToggleShuffle:
      return ops.ToggleShuffle();
    case kMessageToggleRepeat:
      return ops.ToggleRepeat();
    case kMessageAlarm:
      return ops.OnAlarm();
    case kMessageCallBegan:
      return ops.OnCallEvent(true);
    case kMessageCallEnded:
      return ops.OnCallEvent(false);
    default:
      return;  // 2593, 2641 and any message not listed: nothing
  }
}

}  // namespace

std::intptr_t RouteMessage(PlayerOperations& ops, const platform::Message& m) {
  switch (m.id) {
    case kMessageCreate:
      return 0;  // the window already knows its procedure
    case kMessageDestroy:
      ops.Persist();
      return 0;
    case kMessageActivate:
      ops.Activated((m.wParam & 0xFFFF) != 0);
      return 0;
    case kMessageClose:
      ops.Persist();
      ops.QuitMessageLoop();
      return 0;
    case kMessageKeyDown:
      ops.KeyDown(static_cast<std::uint32_t>(m.wParam));
      return 0;
    case kMessageKeyUp:
      ops.KeyUp(static_cast<std::uint32_t>(m.wParam));
      return 0;
    case kMessageCommand:
      RouteCommand(ops, static_cast<std::uint32_t>(m.wParam & 0xFFFF));
      return 0;
    case kMessageTimer:
      RouteTimer(ops, m.wParam);
      return 0;
    default:
      break;
  }
  std::intptr_t result = 0;
  if (RouteResult(ops, m, result)) return result;
  RoutePrivate(ops, m);
  return 0;
}

}  // namespace shell

// PlayerApp: the changes of track. Everything here runs on the window thread.
//
// The life of a track change:
//  1. The decode thread of the playing decoder reads the end of its source,
//     leaves its stream's tail in the output (crossfade, gapless) or waits
//     until it has drained (neither), posts 2568 and ends.
//  2. TrackEnded asks the list for the next entry and closes the decoder
//     without stopping it, so that its stream survives the hand-over: that
//     difference from the user's Stop and Close is all of gapless play on
//     this side.
//  3. PlayTrack binds the next entry's decoder (the same object or another)
//     and starts it; a crossfade begins here, the new stream opening while
//     the old one still sounds. With gapless play the new track reuses the
//     old stream.
//  4. An entry that no decoder takes, or that doesn't open, posts 2563 with
//     1: the walk goes on to the following entry, one posted message per
//     dead entry, and ends at the end of the list without wrapping.
//  5. At the end of the list with gapless on and crossfade off, the stream
//     that stayed open gets its end mark here, so that it drains and goes.
//
// Leaving a track on the user's command stops and then closes its decoder.
// An end of track that a decoder posted just before the user moved on is
// still handled when it comes: it closes whatever decoder is current and
// steps on. The window's queue is the only order between the decode threads
// and this one, and that outcome is accepted.
#include <cstdio>

#include "decoders/mp3_decoder.h"
#include "playback/audio_output.h"
#include "playback/format_registry.h"
#include "playback/format_summary.h"
#include "playback/playback_settings.h"
#include "shell/main_window.h"
#include "shell/player_app.h"
#include "shell/skin_display.h"
#include "shell/window_messages.h"

namespace shell {
namespace {

// The title line: the list's title, with the length as "(m:ss)" when known.
std::string TitleWithLength(const std::string& title, std::uint32_t durationMs) {
  if (durationMs == 0) return title;
  const std::uint32_t seconds = durationMs / 1000;
  char length[32];
  std::snprintf(length, sizeof length, " (%u:%02u)", seconds / 60, seconds % 60);
  return title + length;
}

}  // namespace

void PlayerApp::PlayTrack(const std::string& path, bool skipOnFailure) {
  if (path.empty()) return;
  currentDecoder = Formats().DecoderForPath(path);
  if (currentDecoder == nullptr) {
    Post(kMessageNext, 1);
    return;
  }
  currentDecoder->SetNetStream(netStream.get());
  currentDecoder->SetSource(&sharedFile);
  currentDecoder->SetDecodePriority(settings.decodePriority);
  currentDecoder->SetOutput(&output);
  currentDecoder->SetNotifyWindow(window ? &window->Messages() : nullptr);
  ApplyEqualizer();
  if (!currentDecoder->Open(path)) {
    Post(kMessageNext, 1);
    return;
  }
  if (!currentDecoder->Play()) {
    if (skipOnFailure) Post(kMessageNext, 1);
    return;
  }
  playback::FormatSummary summary;
  currentDecoder->GetFormatSummary(summary);
  const std::uint32_t duration = currentDecoder->GetDuration();
  if (skin == nullptr) return;
  skin->SetTrackFigures(duration, summary.bitRate, summary.sampleRate);
  std::string title;
  CurrentTitle(title);
  skin->SetTitle(TitleWithLength(title, duration));
}

// From paused it resumes. Otherwise whatever plays stops, and the current
// entry starts; with shuffle on a press of Play picks a new one, unless the
// caller keeps the current entry.
void PlayerApp::Play(bool keepCurrent) {
  const std::int32_t state = DecoderState();
  if (state == playback::kStatePaused) {
    TogglePause();
    return;
  }
  if (state != playback::kStateStopped) StopAndCloseCurrent();
  RebindMp3BackEnd();
  const std::optional<std::string> path =
      settings.shuffleEnabled && !keepCurrent ? playlist.NextTrack(true, false) : playlist.CurrentPath();
  if (!path) return;
  CloseCurrent();
  PlayTrack(*path, true);
}

void PlayerApp::Stop() {
  StopAndCloseCurrent();
}

// Before a track changes, the MP3 decoder is bound to its frame back-end
// again; a running decode thread keeps the one it started with.
void PlayerApp::RebindMp3BackEnd() {
  if (mp3Decoder) mp3Decoder->SetBackEnd(mp3BackEnd.get());
}

// An automatic step (a dead entry, a silent server) goes to the following
// entry whatever the order, and finds nothing at the end of the list. A
// step by the user while nothing plays only moves the selection.
void PlayerApp::Next(bool automatic) {
  RearmAlarm();  // every step re-arms the alarm, as it always has
  RebindMp3BackEnd();
  const std::optional<std::string> next = playlist.NextTrack(!automatic, true);
  if (next) ShowListTitle();
  if (!automatic && DecoderState() == playback::kStateStopped) return;
  StopAndCloseCurrent();
  if (next)
    PlayTrack(*next, true);
  else
    EndLastStream();
}

// Going back never skips onward: an entry that fails to start stays failed.
void PlayerApp::Previous() {
  RebindMp3BackEnd();
  const std::optional<std::string> previous = playlist.PreviousTrack();
  if (previous) ShowListTitle();
  if (DecoderState() == playback::kStateStopped) return;
  StopAndCloseCurrent();
  if (previous) PlayTrack(*previous, false);
}

// With repeat one the list gives the same entry again.
void PlayerApp::TrackEnded() {
  const std::optional<std::string> next = playlist.NextTrack(true, false);
  CloseCurrent();  // it has finished: no stop, so that its stream lives on
  if (next)
    PlayTrack(*next, true);
  else
    EndLastStream();
}

void PlayerApp::StopAndCloseCurrent() {
  if (currentDecoder == nullptr) return;
  currentDecoder->Stop();
  currentDecoder->Close();
}

void PlayerApp::CloseCurrent() {
  if (currentDecoder != nullptr) currentDecoder->Close();
}

// Gapless play leaves the last track's stream open for a next one; when
// there is none it gets its end mark, drains and is removed.
void PlayerApp::EndLastStream() {
  playback::PlaybackSettings& options = playback::Playback();
  if (!playback::PlaybackSettings::Read(options.gapless) ||
      playback::PlaybackSettings::Read(options.crossfade))
    return;
  const std::uint32_t last = output.LastHandle();
  if (last != playback::kInvalidHandle) output.WriteStream(last, nullptr, 0);
}

void PlayerApp::ShowListTitle() {
  std::string title;
  if (skin != nullptr && CurrentTitle(title)) skin->SetTitle(title);
}

}  // namespace shell

// PlayerApp: what another program is shown of the player.
#include <cctype>

#include "playback/format_summary.h"
#include "playback/media_decoder.h"
#include "shell/player_app.h"

namespace shell {
namespace {

bool IsAddress(const std::string& path) {
  constexpr std::string_view kScheme = "http://";
  if (path.size() < kScheme.size()) return false;
  for (std::size_t i = 0; i < kScheme.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(path[i])) != kScheme[i]) return false;
  }
  return true;
}

}  // namespace

RemoteStatus PlayerApp::RemoteSnapshot() {
  RemoteStatus status;
  status.state = DecoderState();
  status.positionMs = currentDecoder != nullptr ? currentDecoder->GetPosition() : 0;
  status.lengthMs = LengthMs();
  status.shuffle = settings.shuffleEnabled;
  status.repeat = settings.repeatEnabled;
  status.repeatMode = settings.repeatMode;
  status.volume = currentVolume;
  const int index = playlist.CurrentIndex();
  if (index < 0 || index >= playlist.ItemCount()) return status;
  status.hasTrack = true;
  status.path = playlist.PathAt(index);
  status.isStream = IsAddress(status.path);
  std::string title;
  // A station's present title comes from its decoder while it plays.
  if (status.isStream && status.state != 1 && currentDecoder != nullptr && currentDecoder->GetDisplayTitle(title) &&
      !title.empty()) {
    status.title = title;
  } else if (CurrentTitle(title)) {
    status.title = title;
  }
  return status;
}

void PlayerApp::ReadRemoteTags(RemoteStatus& status) {
  if (!status.hasTrack || status.isStream) return;
  std::string album, artist, title;
  playback::FormatSummary summary;
  if (!Formats().GetFileDetails(status.path, nullptr, &album, &summary, nullptr, nullptr, &artist, &title)) return;
  status.album = album;
  status.artist = artist;
  if (!title.empty()) status.title = title;
  if (summary.trackNumber != 0 && summary.trackNumber != playback::kUnknownTrackNumber)
    status.trackNumber = summary.trackNumber;
}

}  // namespace shell

#include "playback/playback_settings.h"

namespace playback {

PlaybackSettings& Playback() {
  static PlaybackSettings settings;
  return settings;
}

}  // namespace playback

#include "playback/media_decoder.h"

#include "playback/audio_output.h"

namespace playback {

bool MediaDecoder::GetInfoText(const std::string& /*path*/, std::string& text) {
  text.clear();
  return false;
}

void MediaDecoder::SetNetStream(net::NetStream* /*stream*/) {}

bool MediaDecoder::CanSeek() { return true; }

void MediaDecoder::SetVolume(std::uint32_t left, std::uint32_t right) {
  if (output) output->SetVolume(left, right);
}

void MediaDecoder::SetDecodePriority(int priority) { decodePriority = priority; }

bool MediaDecoder::GetDisplayTitle(std::string& /*title*/) { return false; }

void MediaDecoder::GetFormatSummary(FormatSummary& /*summary*/) {}

void MediaDecoder::SetOutput(AudioOutput* audioOutput) { output = audioOutput; }

std::uint32_t MediaDecoder::GetDuration() { return 0; }

std::uint32_t MediaDecoder::GetPosition() { return 0; }

void MediaDecoder::SetState(int newState) { state = newState; }

int MediaDecoder::GetState() { return state; }

bool MediaDecoder::Seek(int /*positionMs*/) { return false; }

void MediaDecoder::Stop() {}

void MediaDecoder::TogglePause() {}

bool MediaDecoder::Play() { return false; }

void MediaDecoder::Close() {}

bool MediaDecoder::Open(const std::string& /*path*/) { return false; }

void MediaDecoder::SetSource(ByteSource* byteSource) { source = byteSource; }

bool MediaDecoder::GetFileDetails(const std::string& /*path*/, std::string* /*display*/,
                                  std::string* /*album*/, FormatSummary* /*summary*/,
                                  std::uint32_t* /*durationMs*/, std::uint32_t* /*reserved*/,
                                  std::string* /*artist*/, std::string* /*title*/) {
  return false;
}

void MediaDecoder::SetNotifyWindow(platform::MessageTarget* target) { notifyWindow = target; }

}  // namespace playback

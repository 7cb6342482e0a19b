#include "stream_fixture.h"

#include "playback/playback_settings.h"

namespace net_testing {

void NetStreamTest::SetUp() {
  UseBuffer(0x20000);
  playback::Playback().proxyAddress.clear();
  stream.SetNotifyWindow(log.Target());
}

void NetStreamTest::TearDown() {
  stream.Disconnect();
  UseBuffer(0x20000);
  playback::Playback().proxyAddress.clear();
}

void NetStreamTest::UseBuffer(std::uint32_t size, std::uint32_t prebufferPercent,
                              std::uint32_t rebufferPercent) {
  playback::PlaybackSettings& settings = playback::Playback();
  settings.streamBufferSize.store(size);
  settings.prebufferPercent.store(prebufferPercent);
  settings.rebufferPercent.store(rebufferPercent);
}

std::string NetStreamTest::ReadUpTo(std::size_t count, std::uint32_t piece) {
  std::string received;
  std::string chunk(piece, '\0');
  while (received.size() < count) {
    std::uint32_t got = 0;
    const auto want = static_cast<std::uint32_t>(std::min<std::size_t>(piece, count - received.size()));
    if (!stream.Read(chunk.data(), want, &got)) break;
    received.append(chunk.data(), got);
  }
  return received;
}

}  // namespace net_testing

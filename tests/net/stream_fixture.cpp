#include "stream_fixture.h"

#include <chrono>

#include "playback/media_decoder.h"
#include "playback/playback_settings.h"

namespace net_testing {

std::intptr_t MessageLog::HandleMessage(const platform::Message& message) {
  Posted entry{message.id, message.wParam, message.lParam, std::nullopt};
  if (message.text) entry.text = *message.text;
  posted.push_back(std::move(entry));
  return 0;
}

bool MessageLog::WaitUntil(const std::function<bool(const std::vector<Posted>&)>& done, int timeoutMs) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
  for (;;) {
    queue.DispatchPending();
    if (done(posted)) return true;
    if (std::chrono::steady_clock::now() >= deadline) return false;
    queue.WaitAndDispatch(20);
  }
}

bool MessageLog::WaitForText(const std::string& text, int timeoutMs) {
  return WaitUntil(
      [&](const std::vector<Posted>& all) {
        for (const Posted& p : all) {
          if (p.id == playback::kMessageDecoderText && p.text == text) return true;
        }
        return false;
      },
      timeoutMs);
}

const std::vector<Posted>& MessageLog::Collect() {
  queue.DispatchPending();
  return posted;
}

std::vector<std::string> MessageLog::Texts(std::intptr_t mode) const {
  std::vector<std::string> texts;
  for (const Posted& p : posted) {
    if (p.id == playback::kMessageDecoderText && p.lParam == mode) texts.push_back(p.text.value_or("<null>"));
  }
  return texts;
}

std::vector<std::string> MessageLog::StatusLines() const {
  std::vector<std::string> lines;
  for (const Posted& p : posted) {
    if (p.id == playback::kMessageDecoderText && p.lParam != 0) {
      lines.push_back(std::to_string(p.lParam) + ":" + p.text.value_or("<null>"));
    }
  }
  return lines;
}

int MessageLog::Count(std::uint32_t id) const {
  int count = 0;
  for (const Posted& p : posted) count += p.id == id ? 1 : 0;
  return count;
}

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

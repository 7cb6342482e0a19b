#include "shell/call_tracker.h"

#include <utility>

#include "shell/window_messages.h"

namespace shell {
namespace {

bool Rings(int state) {
  return state == kCallRingingIn || state == kCallWaiting;
}

bool UnderWay(int state) {
  return state >= kCallDialing && state <= kCallWaiting;
}

}  // namespace

std::vector<std::uint32_t> CallTracker::Update(const std::map<std::string, int>& calls) {
  std::vector<std::uint32_t> messages;
  std::map<std::string, Known> now;
  for (const auto& [path, state] : calls) {
    Known call;
    if (const auto before = known.find(path); before != known.end()) call = before->second;
    const int previous = call.state;
    if (state != previous) {
      if (Rings(state) && !Rings(previous)) messages.push_back(kMessageCallBegan);
      if (state == kCallActive) messages.push_back(kMessageCallBegan);
    }
    if (state == kCallActive) call.connected = true;
    if (!UnderWay(state) && state != kCallUnknown && call.connected) {
      endPending = true;
      call.connected = false;
    }
    call.state = state;
    now.emplace(path, call);
  }
  for (const auto& [path, call] : known) {
    if (call.connected && calls.find(path) == calls.end()) endPending = true;
  }
  known = std::move(now);
  if (endPending) {
    bool busy = false;
    for (const auto& [path, call] : known) busy = busy || UnderWay(call.state);
    if (!busy) {
      messages.push_back(kMessageCallEnded);
      endPending = false;
    }
  }
  return messages;
}

}  // namespace shell

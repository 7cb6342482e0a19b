// Phone calls as the two messages the player knows: 10053 (a call rings or
// is connected) and 10054 (a connected call ended).
//
// Fed with what the modem service says about its calls (each call's state,
// as ModemManager numbers them), the tracker answers which messages to post:
//   - a call that starts ringing (incoming, or waiting beside another call)
//     gives 10053; one that becomes active gives 10053 again, so a ring and
//     the answer make two, as the phone's shell sends them;
//   - a connected call that ends (terminated, or gone from the list) gives
//     10054 once no call is under way any more (at once, or when the last
//     other call ends), so that the music comes back when the phone is free;
//   - a call that never connected (rejected, missed) gives no 10054, and the
//     player stays paused until the user acts;
//   - dialling out gives nothing until the other side answers.
// When the modem service goes away its calls are forgotten and nothing is
// posted: the modem may still hold the call, and music in the middle of a
// call would be worse than music that waits for a key.
//
// Threads: the thread that feeds it.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace shell {

// ModemManager's MMCallState values.
enum CallState : int {
  kCallUnknown = 0,
  kCallDialing = 1,
  kCallRingingOut = 2,
  kCallRingingIn = 3,
  kCallActive = 4,
  kCallHeld = 5,
  kCallWaiting = 6,
  kCallTerminated = 7,
};

class CallTracker {
 public:
  // The calls the service lists now, by object path, with their states;
  // returns the messages to post, in order.
  std::vector<std::uint32_t> Update(const std::map<std::string, int>& calls);
  // The service went away.
  void Forget() {
    known.clear();
    endPending = false;
  }
  std::size_t TrackedCalls() const { return known.size(); }

 private:
  struct Known {
    int state = kCallUnknown;
    bool connected = false;
  };
  std::map<std::string, Known> known;
  bool endPending = false;  // a connected call ended while another was under way
};

}  // namespace shell

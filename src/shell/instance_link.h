// One player at a time: how a start finds the running instance.
//
// The first process to start claims the name of the running instance (a
// local socket named per user); a later one finds it, hands its request over
// and ends. What a later process asks for, and what the running one does
// with it, is PlayerApp's (HandOffToRunningInstance); this interface only
// carries it.
//
// Every wait here is bounded: a later process never hangs on a running one
// that is busy starting or closing, and a name left behind by a killed
// instance is taken over.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace platform {
class MessageTarget;
}

namespace shell {

class RunningInstance {
 public:
  virtual ~RunningInstance() = default;
  // Posts a private message to the running instance's main window, with
  // `text` as the message's owned text when it isn't empty. False when it
  // couldn't be delivered.
  virtual bool Post(std::uint32_t message, const std::string& text) = 0;
  // Brings the running instance's main window to the foreground.
  virtual bool BringToForeground() = 0;
};

class InstanceLink {
 public:
  virtual ~InstanceLink() = default;
  // The running instance, or null when there is none: this process has then
  // become the running instance, and the name is its until it ends.
  virtual std::unique_ptr<RunningInstance> FindOrBecomeRunning() = 0;
  // From now on requests of later processes reach `window` as posted
  // messages, and requests to come forward call `bringToForeground`.
  virtual void Serve(platform::MessageTarget& window, std::function<void()> bringToForeground) = 0;
  // Requests are no longer taken; later processes find a busy instance.
  virtual void StopServing() = 0;
};

}  // namespace shell

// The user's key mapping: which action a key reaches, the names the Key
// Mapping dialog shows for keys, and the dialog's editing rules, apart from
// any window system.
//
// Keys are the platform's virtual key codes (platform/qt/virtual_keys.h); the
// bindings are the key column of the process-wide action table
// (skin::Actions()), which the settings load and save as the value Keys.
//
// The key filter: the phone's low-level keyboard filter is never installed by
// this program, so only its state is kept, fed by the setters below (the
// process start and the Key Mapping dialog set its target; activation and the
// button lock set the rest). Nothing reads it to change what a key does: a
// locked player still takes its keys.
//
// Threads: window thread only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace platform {
class MessageTarget;
class Registry;
}  // namespace platform

namespace shell {

// The first row bound to `key` that posts a message, or -1; key 0 is never bound.
int RowOfKey(std::uint32_t key);

// The text shown for a key: the fixed names, the character of a digit or
// letter, "F%d" for the other function keys, then the string value Name of
// HKEY_LOCAL_MACHINE \SOFTWARE\Microsoft\Shell\Keys\<code plus 16384 in hex>
// (at most 128 bytes as UTF-16 with its terminator), else "Unknown".
// `registry` may be null: then only the fixed table answers.
std::string KeyName(std::uint32_t key, platform::Registry* registry);

// What the Key Mapping dialog edits: its lines are the rows of the action
// table that post a message, in table order; the bookmark row only when a
// bookmark store exists.
class KeyMappingModel {
 public:
  explicit KeyMappingModel(bool bookmarksExist, platform::Registry* registry = nullptr);

  int LineCount() const { return static_cast<int>(lines.size()); }
  // The row of the action table behind a line.
  int RowOfLine(int line) const;
  // The action's text (at most 64 characters) and the bound key's name.
  std::string ActionText(int line) const;
  std::string KeyText(int line) const;

  // Binds `key` to the selected line; lines whose text changed are returned.
  // Every other row holding the key loses it first, so a key is never bound
  // twice. The binding itself is only stored while gapless play is on: the
  // row is looked up counting only while that process-wide flag is set, so
  // with gapless off the new binding is lost although the old holder lost
  // the key too. The low 16 bits of `key` are kept.
  std::vector<int> Assign(int selectedLine, std::uint32_t key);
  // Clears the selected line's key; true when it had one.
  bool Unmap(int selectedLine);

 private:
  int LineOfRow(int row) const;

  std::vector<int> lines;
  platform::Registry* registry;
};

struct KeyFilterState {
  platform::MessageTarget* target = nullptr;
  bool dialogMode = false;
  bool inactive = false;
  bool locked = false;
  bool lockKeepsDisplayKey = false;
};

// The process-wide state of the key filter.
const KeyFilterState& KeyFilter();
void SetKeyTarget(platform::MessageTarget* target, bool dialogMode);
void SetInactive(bool inactive);
void SetButtonLock(bool locked, bool lockKeepsDisplayKey);

}  // namespace shell

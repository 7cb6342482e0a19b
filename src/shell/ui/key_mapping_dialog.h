// The Key Mapping dialog (126): the actions with their keys, edited at once.
//
// The list (1006) has two columns, "Action" and "Key". Keys in the list:
//   Action (13)        opens the capture popup ("EnterKey"): the next key
//                      pressed becomes the selected action's key, and
//                      leaves every other action that had it
//   Back (27)          clears the selected action's key; in the popup it
//                      only closes the popup
//   Record, Vol. Up, Vol. Down (121, 117, 118)
//                      are bound at once, popup or not, as the phone's
//                      overridden keys arrived
//   any other key      moves in the list as usual
// Releases are swallowed. There is no cancel: "Done" (command 1) closes.
//
// Threads: window thread.
#pragma once

#include <QDialog>
#include <cstdint>
#include <memory>

#include "shell/key_map.h"

class QTreeWidget;

namespace ui {

class EnterKeyPopup;

class KeyMappingDialog : public QDialog {
 public:
  KeyMappingDialog(shell::KeyMappingModel& model, QWidget* parent);
  ~KeyMappingDialog() override;

  QTreeWidget& List() { return *list; }
  // The capture popup while it is open, else null.
  QWidget* Popup() const;

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  int SelectedLine() const;
  void Refresh(int line);
  void StartCapture();
  void EndCapture();
  void Assign(std::uint32_t key);
  // A key the phone delivers past the list: Back, Record and the volume keys.
  void OverriddenKey(std::uint32_t key);

  shell::KeyMappingModel& model;
  QTreeWidget* list;  // owned by the dialog
  std::unique_ptr<EnterKeyPopup> popup;
};

}  // namespace ui

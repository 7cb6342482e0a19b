// The tree of the file and folder pickers: the home folder as the root "\",
// its levels read only when a node is first opened (playlist::ReadLevel),
// and, in the file picker, a tick box on every node.
//
// Ticks: ticking a node ticks its whole subtree; unticking clears the
// subtree and every ancestor. Nodes made below a ticked folder start ticked.
// The key Return toggles the current node's tick; the arrows move and open
// as the tree control does (Left closes or goes up, Right opens or goes to
// the first child, Up and Down step through the visible nodes).
//
// Threads: window thread.
#pragma once

#include <QTreeWidget>
#include <functional>
#include <string>

#include "playlist/folder_scan.h"

namespace playback {
class FormatRegistry;
}

namespace ui {

class FolderTree : public QTreeWidget {
 public:
  FolderTree(const playback::FormatRegistry& formats, QWidget* parent = nullptr);

  void SetFilter(const playlist::PickerFilter& pickerFilter) { filter = pickerFilter; }
  const playlist::PickerFilter& Filter() const { return filter; }
  // Tick boxes on the nodes (the file picker) or none (the folder picker).
  void SetTicks(bool on) { ticks = on; }
  // Deletes all nodes and fills the root level of `rootFolder` under a
  // first node "\" that stands for it. True when the root level holds
  // anything.
  bool Rebuild(const std::string& rootFolder);

  QTreeWidgetItem* Root() const { return topLevelItemCount() > 0 ? topLevelItem(0) : nullptr; }
  static std::string PathOf(const QTreeWidgetItem& node);
  static bool IsFolder(const QTreeWidgetItem& node);
  // True once the node's level has been read (it was opened).
  static bool WasExpanded(const QTreeWidgetItem& node);
  static bool IsTicked(const QTreeWidgetItem& node);
  // Toggles as the user does, with the rules above.
  void Toggle(QTreeWidgetItem& node);
  void SetTick(QTreeWidgetItem& node, bool ticked);

  // The choice, walked from the root: each ticked file goes to `file`, each
  // ticked folder to `folder` (with whether it was opened), and the children
  // of an unticked node are looked at in turn.
  void Collect(const std::function<void(const std::string&)>& file,
               const std::function<void(const std::string&, bool expanded)>& folder) const;
  // Opens the root and, for each segment of `path` below the root folder, the
  // child of that name (case ignored); selects the last node found.
  void OpenPath(const std::string& path);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QTreeWidgetItem* AddNode(QTreeWidgetItem* parent, const std::string& name, const std::string& path,
                           bool isFolder, int image, int childCount);
  void FillLevel(QTreeWidgetItem& parent);
  void Expanded(QTreeWidgetItem* node);
  void Collapsed(QTreeWidgetItem* node);
  void Changed(QTreeWidgetItem* node);
  void TickSubtree(QTreeWidgetItem& node, bool ticked);

  const playback::FormatRegistry& formats;
  playlist::PickerFilter filter;
  bool ticks = true;
  std::string root;
};

}  // namespace ui

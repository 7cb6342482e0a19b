#include "shell/ui/folder_tree.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QStyle>

#include "platform/text.h"
#include "shell/ui/dialog_frame.h"

namespace ui {
namespace {

enum Role : int {
  kPathRole = Qt::UserRole,  // the node's path, as bytes
  kFolderRole,               // a folder (or the root)
  kFilledRole,               // its level has been read
  kTickRole,                 // the tick as last seen, to tell a tick from other changes
  kImageRole,                // 0 closed folder, 1 open folder, 2 media file, 3 playlist file
};

enum Image : int { kClosedFolder = 0, kOpenFolder = 1 };


QIcon IconFor(int image) {
  QStyle* style = QApplication::style();
  switch (image) {
    case kClosedFolder:
      return style->standardIcon(QStyle::SP_DirClosedIcon);
    case kOpenFolder:
      return style->standardIcon(QStyle::SP_DirOpenIcon);
    case int(playlist::FileClass::kPlaylist):
      return style->standardIcon(QStyle::SP_FileDialogContentsView);
    default:
      return style->standardIcon(QStyle::SP_FileIcon);
  }
}

QByteArray Bytes(const std::string& text) {
  return QByteArray(text.data(), qsizetype(text.size()));
}

}  // namespace

FolderTree::FolderTree(const playback::FormatRegistry& registry, QWidget* parent)
    : QTreeWidget(parent), formats(registry) {
  setObjectName("tree");
  setHeaderHidden(true);
  setColumnCount(1);
  setRootIsDecorated(true);
  setUniformRowHeights(true);
  header()->setStretchLastSection(true);
  connect(this, &QTreeWidget::itemExpanded, this, &FolderTree::Expanded);
  connect(this, &QTreeWidget::itemCollapsed, this, &FolderTree::Collapsed);
  connect(this, &QTreeWidget::itemChanged, this, [this](QTreeWidgetItem* node, int) { Changed(node); });
}

bool FolderTree::Rebuild(const std::string& rootFolder) {
  root = rootFolder;
  const QSignalBlocker quiet(this);
  clear();
  QTreeWidgetItem* top = AddNode(nullptr, "\\", root, true, kClosedFolder, 1);
  FillLevel(*top);
  top->setExpanded(true);
  top->setIcon(0, IconFor(kOpenFolder));
  top->setData(0, kImageRole, int(kOpenFolder));
  setCurrentItem(top);
  return top->childCount() > 0;
}

QTreeWidgetItem* FolderTree::AddNode(QTreeWidgetItem* parent, const std::string& name, const std::string& path,
                                     bool isFolder, int image, int childCount) {
  auto* node = parent == nullptr ? new QTreeWidgetItem(this) : new QTreeWidgetItem(parent);
  node->setText(0, QString::fromUtf8(name.data(), qsizetype(name.size())));
  node->setData(0, kPathRole, Bytes(path));
  node->setData(0, kFolderRole, isFolder);
  node->setData(0, kFilledRole, false);
  node->setData(0, kImageRole, image);
  node->setIcon(0, IconFor(image));
  if (isFolder)
    node->setChildIndicatorPolicy(childCount > 0 ? QTreeWidgetItem::ShowIndicator
                                                 : QTreeWidgetItem::DontShowIndicator);
  if (!ticks) {
    node->setFlags(node->flags() & ~Qt::ItemIsUserCheckable);
  } else {
    const bool ticked = parent != nullptr && IsTicked(*parent);
    node->setFlags(node->flags() | Qt::ItemIsUserCheckable);
    node->setCheckState(0, ticked ? Qt::Checked : Qt::Unchecked);
    node->setData(0, kTickRole, ticked);
  }
  return node;
}

// One level: the folders, then the files, as ReadLevel gives them. The node
// is then marked as read; with showAllFolders it keeps its opener even when
// the level was empty, as it had it before.
void FolderTree::FillLevel(QTreeWidgetItem& parent) {
  const WaitCursor wait;
  const std::string folder = PathOf(parent);
  const QSignalBlocker quiet(this);
  for (const playlist::LevelEntry& entry : playlist::ReadLevel(formats, folder, filter)) {
    const int image = entry.isFolder ? int(kClosedFolder) : int(entry.fileClass);
    AddNode(&parent, entry.name, playlist::ChildPath(folder, entry.name), entry.isFolder, image, entry.childCount);
  }
  parent.setData(0, kFilledRole, true);
  parent.setChildIndicatorPolicy(filter.showAllFolders ? QTreeWidgetItem::ShowIndicator
                                                       : QTreeWidgetItem::DontShowIndicatorWhenChildless);
}

std::string FolderTree::PathOf(const QTreeWidgetItem& node) {
  return node.data(0, kPathRole).toByteArray().toStdString();
}

bool FolderTree::IsFolder(const QTreeWidgetItem& node) {
  return node.data(0, kFolderRole).toBool();
}

bool FolderTree::WasExpanded(const QTreeWidgetItem& node) {
  return node.data(0, kFilledRole).toBool();
}

bool FolderTree::IsTicked(const QTreeWidgetItem& node) {
  return node.checkState(0) == Qt::Checked;
}

void FolderTree::Expanded(QTreeWidgetItem* node) {
  if (node == nullptr || !IsFolder(*node)) return;
  if (!WasExpanded(*node)) FillLevel(*node);
  const QSignalBlocker quiet(this);
  node->setIcon(0, IconFor(kOpenFolder));
  node->setData(0, kImageRole, int(kOpenFolder));
}

void FolderTree::Collapsed(QTreeWidgetItem* node) {
  if (node == nullptr || !IsFolder(*node)) return;
  const QSignalBlocker quiet(this);
  node->setIcon(0, IconFor(kClosedFolder));
  node->setData(0, kImageRole, int(kClosedFolder));
}

void FolderTree::TickSubtree(QTreeWidgetItem& node, bool ticked) {
  node.setCheckState(0, ticked ? Qt::Checked : Qt::Unchecked);
  node.setData(0, kTickRole, ticked);
  for (int i = 0; i < node.childCount(); ++i) TickSubtree(*node.child(i), ticked);
}

void FolderTree::SetTick(QTreeWidgetItem& node, bool ticked) {
  if (!ticks) return;
  const QSignalBlocker quiet(this);
  TickSubtree(node, ticked);
  if (ticked) return;
  for (QTreeWidgetItem* above = node.parent(); above != nullptr; above = above->parent()) {
    above->setCheckState(0, Qt::Unchecked);
    above->setData(0, kTickRole, false);
  }
}

void FolderTree::Toggle(QTreeWidgetItem& node) {
  SetTick(node, !IsTicked(node));
}

// A click on a tick box changes the state before we hear of it: the rules
// follow from the new state.
void FolderTree::Changed(QTreeWidgetItem* node) {
  if (node == nullptr || !ticks) return;
  const bool ticked = IsTicked(*node);
  if (node->data(0, kTickRole).toBool() == ticked) return;
  SetTick(*node, ticked);
}

void FolderTree::keyPressEvent(QKeyEvent* event) {
  if ((event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) && currentItem() != nullptr) {
    Toggle(*currentItem());
    return;
  }
  QTreeWidget::keyPressEvent(event);
  if (currentItem() != nullptr) scrollToItem(currentItem());
}

namespace {

void CollectFrom(const QTreeWidgetItem& node, const std::function<void(const std::string&)>& file,
                 const std::function<void(const std::string&, bool)>& folder) {
  if (FolderTree::IsTicked(node)) {
    if (FolderTree::IsFolder(node))
      folder(FolderTree::PathOf(node), FolderTree::WasExpanded(node));
    else
      file(FolderTree::PathOf(node));
    return;
  }
  for (int i = 0; i < node.childCount(); ++i) CollectFrom(*node.child(i), file, folder);
}

}  // namespace

void FolderTree::Collect(const std::function<void(const std::string&)>& file,
                         const std::function<void(const std::string&, bool expanded)>& folder) const {
  if (const QTreeWidgetItem* top = Root()) CollectFrom(*top, file, folder);
}

void FolderTree::OpenPath(const std::string& path) {
  QTreeWidgetItem* node = Root();
  if (node == nullptr) return;
  node->setExpanded(true);
  std::string rest;
  if (path.size() > root.size() && path.compare(0, root.size(), root) == 0) rest = path.substr(root.size());
  std::size_t start = 0;
  while (start < rest.size()) {
    std::size_t end = rest.find('/', start);
    if (end == std::string::npos) end = rest.size();
    const std::string segment = rest.substr(start, end - start);
    start = end + 1;
    if (segment.empty()) continue;
    QTreeWidgetItem* found = nullptr;
    for (int i = 0; i < node->childCount() && found == nullptr; ++i) {
      const std::string name = PathOf(*node->child(i)).substr(PathOf(*node).size());
      const std::string bare = !name.empty() && name.front() == '/' ? name.substr(1) : name;
      if (platform::EqualsIgnoreCase(bare, segment)) found = node->child(i);
    }
    if (found == nullptr) break;
    node = found;
    node->setExpanded(true);
  }
  setCurrentItem(node);
  scrollToItem(node);
}

}  // namespace ui

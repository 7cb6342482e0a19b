#include "shell/ui/file_picker.h"

#include <QCoreApplication>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>

#include "platform/paths.h"
#include "playlist/sliced_scan.h"
#include "shell/dialogs.h"
#include "shell/menu.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/folder_tree.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr int kDefaultWidth = 352;
constexpr int kDefaultHeight = 440;

// Full screen on a phone: the size of the main window, else a picker's size.
void SizeLikeParent(QDialog& dialog) {
  const QWidget* parent = dialog.parentWidget();
  if (parent != nullptr && parent->width() >= kDefaultWidth / 2)
    dialog.resize(parent->size());
  else
    dialog.resize(kDefaultWidth, kDefaultHeight);
}

}  // namespace

bool ScanFolderKeepingWindowAlive(const playback::FormatRegistry& formats, const std::string& folder,
                                  bool expanded, bool playlistsOnly, const playlist::PathSink& deliver) {
  return playlist::ScanFolderInSlices(formats, folder, expanded, playlistsOnly, deliver,
                                      [] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); });
}

FilePicker::FilePicker(const playback::FormatRegistry& registry, QWidget* parent)
    : QDialog(parent), formats(registry) {
  setObjectName(QString::number(kFilePickerDialog));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  tree = new FolderTree(formats, this);
  noMedia = new QLabel(this);
  noMedia->setObjectName("1112");
  noMedia->setAlignment(Qt::AlignCenter);
  noMedia->hide();
  softKeys = new DialogSoftKeys(*this, kFilePickerDialog, [this](std::uint32_t id) { Command(id); });
  layout->addWidget(tree, 1);
  layout->addWidget(noMedia, 1);
  layout->addWidget(softKeys);
  ApplyDialogTexts(*this, kFilePickerDialog);
}

FilePicker::~FilePicker() = default;

int FilePicker::Show(bool foldersOnly, bool replace, std::uint32_t& pickerOption) {
  if (shell::ModalDialogOpen()) return 2;
  shell::ModalDialogOpen() = true;
  Prepare(foldersOnly, replace, pickerOption != 0, platform::HomeDirectory());
  QTimer::singleShot(0, this, [this] { Rebuild(); });  // drawn first, filled then
  const int result = ShowDialog(*this, kFilePickerDialog);
  pickerOption = ShowAllFolders() ? 1 : 0;
  shell::ModalDialogOpen() = false;
  return result;
}

void FilePicker::Prepare(bool foldersOnly, bool replace, bool showAllFolders, const std::string& rootFolder) {
  replaceList = replace;
  root = rootFolder;
  tree->SetTicks(true);
  tree->SetFilter({playlistsOnly, foldersOnly, showAllFolders});
  SizeLikeParent(*this);
  tree->setFocus();
}

bool FilePicker::ShowAllFolders() const {
  return tree->Filter().showAllFolders;
}

void FilePicker::Rebuild() {
  softKeys->Bar().Check(kCommandShowAllFolders, ShowAllFolders());
  softKeys->Bar().Check(kCommandOnlyFoldersWithMedia, !ShowAllFolders());
  tree->show();
  noMedia->hide();
  if (!tree->Rebuild(root)) {
    tree->hide();
    noMedia->show();
  }
  tree->setFocus();
}

void FilePicker::Command(std::uint32_t id) {
  QTreeWidgetItem* top = tree->Root();
  switch (id) {
    case kCommandSelectAll:
    case kCommandSelectNone:
      if (top != nullptr) tree->SetTick(*top, id == kCommandSelectAll);
      break;
    case kCommandShowAllFolders:
    case kCommandOnlyFoldersWithMedia: {
      playlist::PickerFilter filter = tree->Filter();
      filter.showAllFolders = id == kCommandShowAllFolders;
      tree->SetFilter(filter);
      Rebuild();
      break;
    }
    default:
      break;
  }
}

void FilePicker::Deliver(const std::string& path) {
  if (!deliver) return;
  if (clearBeforeFirst) {
    clearBeforeFirst = false;
    deliver(nullptr);
  }
  deliver(path.c_str());
}

void FilePicker::accept() {
  clearBeforeFirst = replaceList;
  if (replaceList && deliver) deliver(nullptr);  // cleared even when nothing is ticked
  tree->Collect([this](const std::string& path) { Deliver(path); },
                [this](const std::string& folder, bool expanded) {
                  ScanFolderKeepingWindowAlive(formats, folder, expanded, playlistsOnly,
                                               [this](const std::string& path) {
                                                 Deliver(path);
                                                 return true;
                                               });
                });
  QDialog::accept();
}

FolderPicker::FolderPicker(const playback::FormatRegistry& formats, QWidget* parent) : QDialog(parent) {
  setObjectName(QString::number(kFolderPickerDialog));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  tree = new FolderTree(formats, this);
  tree->SetTicks(false);
  layout->addWidget(tree, 1);
  layout->addWidget(new DialogSoftKeys(*this, shell::kMenuDoneCancel));
  ApplyDialogTexts(*this, kFolderPickerDialog);
}

// Every folder is offered, media or not: a list is often saved where none is.
void FolderPicker::Prepare(const std::string& rootFolder) {
  tree->SetFilter({false, true, true});
  tree->Rebuild(rootFolder);
  tree->OpenPath(path);
  SizeLikeParent(*this);
  tree->setFocus();
}

int FolderPicker::Show() {
  QTimer::singleShot(0, this, [this] { Prepare(platform::HomeDirectory()); });
  return ShowDialog(*this, kFolderPickerDialog);
}

void FolderPicker::accept() {
  const QTreeWidgetItem* chosen = tree->currentItem();
  path = chosen != nullptr ? FolderTree::PathOf(*chosen) : std::string();
  QDialog::accept();
}

void FolderPicker::reject() {
  path.clear();
  QDialog::reject();
}

}  // namespace ui

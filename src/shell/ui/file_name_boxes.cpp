#include "shell/ui/file_name_boxes.h"

#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QVBoxLayout>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/texts.h"
#include "playlist/save_target.h"
#include "shell/dialogs.h"
#include "shell/language_pack.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/file_picker.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr std::uint32_t kTextEmptyName = 6200;
constexpr std::uint32_t kTitleEmptyName = 6201;
constexpr std::uint32_t kTextReplaceFile = 6202;
constexpr std::uint32_t kTitleFileExists = 6203;
constexpr std::uint32_t kTextCannotCreate = 6204;
constexpr int kCaretPosition = 100;

// The Back key in a text field deletes, as on the phone; true when it did.
bool BackKeyToField(QDialog& dialog, QKeyEvent* event) {
  if (event->key() != Qt::Key_Escape) return false;
  if (auto* field = qobject_cast<QLineEdit*>(dialog.focusWidget())) field->backspace();
  return true;
}

QString FromBytes(const std::string& text) {
  return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

// A folder name as typed: the field holds UTF-8 text, but a folder chosen
// with Browse may hold bytes that aren't, which the field can't show. Those
// are kept as chosen as long as the field isn't changed.
std::string FieldBytes(const QLineEdit& field) {
  const QVariant chosen = field.property("chosenBytes");
  if (chosen.isValid() && field.text() == field.property("chosenText").toString())
    return chosen.toByteArray().toStdString();
  return field.text().toStdString();
}

// The text field of Edit File Name: when the box opens and focuses it, the
// text isn't selected (a key would replace it all) and the caret stands at
// character 100, or at the end of a shorter text.
class CaretField : public QLineEdit {
 public:
  using QLineEdit::QLineEdit;

 protected:
  void focusInEvent(QFocusEvent* event) override {
    QLineEdit::focusInEvent(event);
    deselect();
    setCursorPosition(std::min(kCaretPosition, int(text().size())));
  }
};

}  // namespace

bool ShowMessage(QWidget* parent, std::uint32_t textId, std::uint32_t titleId, bool question) {
  QString text = QString::fromStdString(platform::LoadText(textId));
  text.replace("\\r\\n", "\n").replace("\r\n", "\n");
  const QString title = titleId == 0 ? QString() : QString::fromStdString(platform::LoadText(titleId));
  QMessageBox box(question ? QMessageBox::Question : QMessageBox::Warning, title, text,
                  question ? QMessageBox::Yes | QMessageBox::No : QMessageBox::Ok, parent);
  box.setObjectName("messageBox");
  return box.exec() == QMessageBox::Yes;
}

SaveFileDialog::SaveFileDialog(const playback::FormatRegistry& registry, QWidget* parent)
    : QDialog(parent), formats(registry) {
  setObjectName(QString::number(kSaveFileDialog));
  auto* layout = new QVBoxLayout(this);
  auto* nameLabel = new QLabel(this);
  nameLabel->setObjectName("nameLabel");
  name = new QLineEdit(this);
  name->setObjectName("1003");
  auto* folderLabel = new QLabel(this);
  folderLabel->setObjectName("folderLabel");
  folder = new QLineEdit(this);
  folder->setObjectName("1001");
  browse = new QPushButton(this);
  browse->setObjectName("1002");
  browse->setAutoDefault(false);
  nameLabel->setBuddy(name);
  folderLabel->setBuddy(folder);
  for (QWidget* widget : std::initializer_list<QWidget*>{nameLabel, name, folderLabel, folder, browse})
    layout->addWidget(widget);
  layout->addStretch(1);
  layout->addWidget(new DialogSoftKeys(*this, shell::kMenuSaveCancel));
  connect(browse, &QPushButton::clicked, this, [this] { Browse(); });
  ApplyDialogTexts(*this, kSaveFileDialog);
}

void SaveFileDialog::Prepare(const std::string& startFolder) {
  fileName.clear();
  name->clear();
  folder->setText(FromBytes(startFolder));
  folder->setProperty("chosenBytes", QByteArray(startFolder.data(), qsizetype(startFolder.size())));
  folder->setProperty("chosenText", folder->text());
  name->setFocus();
}

// The platform's personal documents folder, or the home folder when the
// desktop names none.
int SaveFileDialog::Show() {
  if (shell::ModalDialogOpen()) return 2;
  shell::ModalDialogOpen() = true;
  const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
  Prepare(documents.isEmpty() ? platform::HomeDirectory() : documents.toStdString());
  const int result = ShowDialog(*this, kSaveFileDialog);
  shell::ModalDialogOpen() = false;
  return result;
}

void SaveFileDialog::Browse() {
  FolderPicker picker(formats, this);
  picker.SetPath(FieldBytes(*folder));
  if (picker.Show() != 1 || picker.GetPath().empty()) return;
  const std::string chosen = picker.GetPath();
  folder->setText(FromBytes(chosen));
  folder->setProperty("chosenBytes", QByteArray(chosen.data(), qsizetype(chosen.size())));
  folder->setProperty("chosenText", folder->text());
}

void SaveFileDialog::accept() {
  const std::string typed = name->text().toStdString();
  if (typed.empty()) {
    ShowMessage(this, kTextEmptyName, kTitleEmptyName, false);
    return;
  }
  const std::string folderPath = FieldBytes(*folder);
  const std::string path = playlist::SaveTargetPath(folderPath, typed);
  playlist::MakeSaveFolder(folderPath);  // failures show below, as a file that can't be made
  if (playlist::SaveTargetExists(path) && !ShowMessage(this, kTextReplaceFile, kTitleFileExists, true)) return;
  if (!playlist::CanCreateFile(path)) {
    ShowMessage(this, kTextCannotCreate, 0, false);
    return;
  }
  fileName = path;
  QDialog::accept();
}

void SaveFileDialog::reject() {
  fileName.clear();
  name->clear();
  QDialog::reject();
}

void SaveFileDialog::keyPressEvent(QKeyEvent* event) {
  if (!BackKeyToField(*this, event)) QDialog::keyPressEvent(event);
}

TextPrompt::TextPrompt(QWidget* parent) : QDialog(parent) {
  setObjectName(QString::number(kEditFileNameDialog));
  auto* layout = new QVBoxLayout(this);
  field = new CaretField(this);
  field->setObjectName("1000");
  layout->addWidget(field);
  layout->addStretch(1);
  layout->addWidget(new DialogSoftKeys(*this, shell::kMenuDoneCancel));
}

void TextPrompt::Prepare(const std::optional<std::string>& title) {
  ApplyDialogTexts(*this, kEditFileNameDialog);
  if (title) setWindowTitle(QString::fromStdString(*title));
  cancelled = true;
  field->setText(QString::fromStdString(text));
  field->setFocus();
  field->setCursorPosition(std::min(kCaretPosition, int(field->text().size())));
}

// Unlike the picker and File Save, the box doesn't look at modalDialogOpen:
// it opens from the list screen and from other boxes.
bool TextPrompt::Show(const std::optional<std::string>& title) {
  Prepare(title);
  exec();
  return !cancelled;
}

void TextPrompt::accept() {
  const std::string entered = platform::TruncateToUtf16Units(field->text().toStdString(), kTextPromptUnits);
  if (entered.empty()) return;
  text = entered;
  cancelled = false;
  QDialog::accept();
}

void TextPrompt::keyPressEvent(QKeyEvent* event) {
  if (!BackKeyToField(*this, event)) QDialog::keyPressEvent(event);
}

}  // namespace ui

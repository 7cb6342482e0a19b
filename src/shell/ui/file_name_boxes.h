// The two boxes that ask for a name: File Save (dialog 115) for a playlist
// file, and Edit File Name (dialog 155), one line of text (Add URL uses it).
//
// In both, the Back key (Escape) goes to the text field as a backspace, as a
// phone's Back key does in a text field; the soft keys accept or cancel.
//
// File Save's "Save" runs the rules of playlist/save_target.h, with the
// messages 6200/6201 (empty name), 6202/6203 (replace?) and 6204 (can't
// create); the box stays open after each of them except a "yes".
//
// Threads: window thread.
#pragma once

#include <QDialog>
#include <cstdint>
#include <optional>
#include <string>

class QLineEdit;
class QPushButton;

namespace playback {
class FormatRegistry;
}

namespace ui {

inline constexpr std::uint32_t kSaveFileDialog = 115;
inline constexpr std::uint32_t kEditFileNameDialog = 155;
inline constexpr std::size_t kTextPromptUnits = 260;  // UTF-16 units taken from the field

class SaveFileDialog : public QDialog {
 public:
  SaveFileDialog(const playback::FormatRegistry& formats, QWidget* parent = nullptr);

  // 1 accepted (GetFileName is the whole path of the list); 2 cancelled, or
  // refused because another modal dialog is open.
  int Show();
  const std::string& GetFileName() const { return fileName; }

  // For the window's tests: the fields and the steps of Show.
  QLineEdit& NameField() { return *name; }
  QLineEdit& FolderField() { return *folder; }
  QPushButton& BrowseButton() { return *browse; }
  void Prepare(const std::string& startFolder);
  void accept() override;  // "Save"
  void reject() override;  // "Cancel": the name is cleared

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void Browse();

  const playback::FormatRegistry& formats;
  QLineEdit* name;
  QLineEdit* folder;
  QPushButton* browse;
  std::string fileName;
};

class TextPrompt : public QDialog {
 public:
  explicit TextPrompt(QWidget* parent = nullptr);

  void SetText(const std::string& preset) { text = preset; }
  const std::string& GetText() const { return text; }
  // True when a text was entered; `title` replaces "Edit File Name".
  bool Show(const std::optional<std::string>& title = std::nullopt);

  QLineEdit& Field() { return *field; }
  void Prepare(const std::optional<std::string>& title);
  void accept() override;  // an empty field keeps the box open
  bool Cancelled() const { return cancelled; }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  QLineEdit* field;
  std::string text;
  bool cancelled = true;
};

// The platform's message box: `title` may be empty; with `question` the
// buttons are Yes and No and the result says whether it was Yes.
bool ShowMessage(QWidget* parent, std::uint32_t textId, std::uint32_t titleId, bool question);

}  // namespace ui

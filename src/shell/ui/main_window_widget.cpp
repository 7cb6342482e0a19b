#include "shell/ui/main_window_widget.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>

#include "platform/qt/virtual_keys.h"
#include "shell/player_app.h"
#include "shell/ui/skin_window_widget.h"
#include "shell/ui/soft_key_bar.h"
#include "shell/window_messages.h"

namespace ui {
namespace {

constexpr int kSoftKeyBarHeight = 40;
constexpr int kDesktopZoom = 2;
// A screen narrower than this, and taller than wide, is a phone's.
constexpr int kPhoneWidthLimit = 800;

}  // namespace

int FaceZoomFor(const shell::Rect& workArea) {
  const int fit = std::max(1, std::min(workArea.width / shell::kSkinWidth,
                                       (workArea.height - kSoftKeyBarHeight) / shell::kSkinHeight));
  const bool phone = workArea.width < workArea.height && workArea.width <= kPhoneWidthLimit;
  return phone ? fit : std::min(kDesktopZoom, fit);
}

MainWindowWidget::MainWindowWidget(const shell::Rect& workArea, platform::MessageHandler& procedure)
    : messages(procedure), timers(procedure), dialogs(*this), zoom(FaceZoomFor(workArea)), area(workArea) {
  setWindowTitle("Tavrinsonic");
  setObjectName("Tavrinsonic");
  setFocusPolicy(Qt::StrongFocus);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(0);
  layout->setSizeConstraint(QLayout::SetFixedSize);
  connect(
      qGuiApp, &QGuiApplication::commitDataRequest, this, [this] { messages.Send(shell::kMessageDestroy); },
      Qt::DirectConnection);
}

MainWindowWidget::~MainWindowWidget() = default;

bool MainWindowWidget::AttachMenuBar(shell::MenuBar& bar) {
  softKeys = new SoftKeyBar(
      bar, [this](std::uint32_t command) { messages.Send(shell::kMessageCommand, command); }, this);
  softKeys->setFixedHeight(kSoftKeyBarHeight);
  layout()->addWidget(softKeys);
  return true;
}

// The skin's size is fixed by its format: `width` and `height` are the
// skin's 176 by 180 pixels, which the face shows at the window's zoom.
shell::SkinDisplay* MainWindowWidget::CreateSkin(int, int, const std::string& skinDirectory) {
  std::unique_ptr<SkinWindowWidget> skin = SkinWindowWidget::Create(skinDirectory, zoom, messages);
  if (!skin) return nullptr;
  face = skin.release();
  static_cast<QVBoxLayout*>(layout())->insertWidget(0, face);
  return face;
}

// The window takes the size of its face and keys, in the middle of the work
// area; a phone's window manager gives it the whole screen anyway.
void MainWindowWidget::PlaceIn(const shell::Rect& workArea) {
  adjustSize();
  const QSize size = sizeHint();
  move(workArea.x + std::max(0, (workArea.width - size.width()) / 2),
       workArea.y + std::max(0, (workArea.height - size.height()) / 2));
}

void MainWindowWidget::Show() {
  PlaceIn(area);
  show();
}

void MainWindowWidget::BringToForeground() {
  if (isMinimized()) showNormal();
  show();
  raise();
  activateWindow();
}

void MainWindowWidget::Redraw() {
  repaint();
}

// The desktop doesn't let a program pick another's window; stepping back out
// of the way gives the foreground to the window below.
bool MainWindowWidget::ActivateWindowBelow() {
  showMinimized();
  return true;
}

bool MainWindowWidget::event(QEvent* event) {
  if (event->type() == QEvent::WindowActivate)
    messages.Send(shell::kMessageActivate, 1);
  else if (event->type() == QEvent::WindowDeactivate)
    messages.Send(shell::kMessageActivate, 0);
  return QWidget::event(event);
}

// End, the volume keys and Record are kept by a phone's shell while held, so
// that the program sees only their release; their press is dropped here to
// match, and the release makes it up (PlayerApp::KeyUp).
void MainWindowWidget::keyPressEvent(QKeyEvent* event) {
  const std::uint32_t key = platform::qt::VirtualKeyFor(event->key());
  if (key == 0) return QWidget::keyPressEvent(event);
  if (key == 115 || key == 117 || key == 118 || key == 121) return;
  messages.Send(shell::kMessageKeyDown, key);
}

// A held key repeats its press only, as the platform's keys do.
void MainWindowWidget::keyReleaseEvent(QKeyEvent* event) {
  const std::uint32_t key = platform::qt::VirtualKeyFor(event->key());
  if (key == 0) return QWidget::keyReleaseEvent(event);
  if (!event->isAutoRepeat()) messages.Send(shell::kMessageKeyUp, key);
}

// The close button asks to close as Exit does; the switchboard decides.
void MainWindowWidget::closeEvent(QCloseEvent* event) {
  event->ignore();
  messages.Post(shell::kMessageClose);
}

}  // namespace ui

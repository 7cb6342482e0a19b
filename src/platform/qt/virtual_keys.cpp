#include "platform/qt/virtual_keys.h"

#include <Qt>

namespace platform::qt {

std::uint32_t VirtualKeyFor(int qtKey) {
  if (qtKey >= Qt::Key_0 && qtKey <= Qt::Key_9) return static_cast<std::uint32_t>(qtKey);  // 48 to 57
  if (qtKey >= Qt::Key_A && qtKey <= Qt::Key_Z) return static_cast<std::uint32_t>(qtKey);  // 65 to 90
  if (qtKey >= Qt::Key_F1 && qtKey <= Qt::Key_F24)
    return static_cast<std::uint32_t>(112 + (qtKey - Qt::Key_F1));
  switch (qtKey) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return 13;
    case Qt::Key_Escape:
    case Qt::Key_Back:
      return 27;
    case Qt::Key_Space:
      return 32;
    case Qt::Key_PageUp:
      return 33;
    case Qt::Key_PageDown:
      return 34;
    case Qt::Key_Left:
      return 37;
    case Qt::Key_Up:
      return 38;
    case Qt::Key_Right:
      return 39;
    case Qt::Key_Down:
      return 40;
    case Qt::Key_Call:
      return 114;
    case Qt::Key_Hangup:
      return 115;
    case Qt::Key_VolumeUp:
      return 117;
    case Qt::Key_VolumeDown:
      return 118;
    case Qt::Key_Asterisk:
      return 119;
    case Qt::Key_NumberSign:
      return 120;
    default:
      return 0;
  }
}

}  // namespace platform::qt

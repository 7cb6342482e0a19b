// What the gui tests share: a QApplication on Qt's offscreen platform for the
// whole program, and a way to let Qt's event loop run until something holds.
#pragma once

#include <functional>

namespace testing_support {

// Runs Qt's event loop until `done` holds or `timeoutMs` has passed; returns
// whether it held.
bool ProcessEventsUntil(const std::function<bool()>& done, int timeoutMs = 10000);
// Runs Qt's event loop for `milliseconds`.
void ProcessEventsFor(int milliseconds);

}  // namespace testing_support

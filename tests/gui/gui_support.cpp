#include "gui_support.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QElapsedTimer>
#include <cstdlib>

namespace testing_support {
namespace {

class QtEnvironment : public ::testing::Environment {
 public:
  void SetUp() override {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
    application = new QApplication(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
  }
  void TearDown() override { delete application; }

 private:
  int argc = 1;
  char name[10] = "gui_tests";
  char* argv[2] = {name, nullptr};
  QApplication* application = nullptr;
};

[[maybe_unused]] const ::testing::Environment* const kQtEnvironment =
    ::testing::AddGlobalTestEnvironment(new QtEnvironment);

}  // namespace

bool ProcessEventsUntil(const std::function<bool()>& done, int timeoutMs) {
  QElapsedTimer clock;
  clock.start();
  while (!done()) {
    if (clock.elapsed() >= timeoutMs) return false;
    QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  }
  return true;
}

void ProcessEventsFor(int milliseconds) {
  QElapsedTimer clock;
  clock.start();
  while (clock.elapsed() < milliseconds) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

}  // namespace testing_support

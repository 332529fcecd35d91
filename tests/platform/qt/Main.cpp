// Starts the toolkit without a display for all tests of the program.
#include <QApplication>

#include <csignal>
#include <gtest/gtest.h>

int main(int argumentCount, char* arguments[]) {
    testing::InitGoogleTest(&argumentCount, arguments);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // No desktop of the user's has a part in it.
    qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");

    // As a program that wants to hear of signals must: before the toolkit starts threads of its own.
    sigset_t handled{};
    sigemptyset(&handled);
    sigaddset(&handled, SIGINT);
    sigaddset(&handled, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &handled, nullptr);

    const QApplication application(argumentCount, arguments);
    return RUN_ALL_TESTS();
}

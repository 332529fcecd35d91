// Runs the tests of the views: with an application object, but without a display.
#include <QApplication>
#include <QLocale>

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" TARNWICK_SCREENS);
    qputenv("QT_SCALE_FACTOR", "1");
    testing::InitGoogleMock(&argc, argv);
    const QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    QLocale::setDefault(QLocale::c()); // tests that are about numbers of others set theirs
    return RUN_ALL_TESTS();
}

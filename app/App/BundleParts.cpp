#include "app/App/BundleParts.h"

#include <QFontDatabase>
#include <QFontInfo>
#include <QGuiApplication>

#include <system_error>

namespace tarnwick::BundleParts {

namespace {

constexpr auto keyboards = "XKB_CONFIG_ROOT";

} // namespace

void prepare(const std::filesystem::path& bundle) {
    for (const char* variable : {"QT_PLUGIN_PATH", "QT_QPA_PLATFORM_PLUGIN_PATH"}) {
        qunsetenv(variable);
    }
    std::error_code error;
    if (!std::filesystem::is_directory("/usr/share/X11/xkb", error)
        && !qEnvironmentVariableIsSet(keyboards)) {
        qputenv(keyboards, (bundle / "share").c_str());
    }
}

void bringFont(const std::filesystem::path& bundle) {
    if (!QFontInfo(QGuiApplication::font()).family().isEmpty()) {
        return;
    }
    const std::filesystem::path file = bundle / "share/fonts/DejaVuSans.ttf";
    const int font = QFontDatabase::addApplicationFont(QString::fromStdString(file.string()));
    const QStringList families = QFontDatabase::applicationFontFamilies(font);
    if (!families.isEmpty()) {
        QGuiApplication::setFont(QFont(families.first(), QGuiApplication::font().pointSize()));
    }
}

} // namespace tarnwick::BundleParts

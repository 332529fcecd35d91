#include "app/App/PingAllowance.h"

#include <QStandardPaths>

#include <utility>

namespace tarnwick::PingAllowance {

namespace {

QString askingProgram() {
    return QStandardPaths::findExecutable(QStringLiteral("pkexec"));
}

} // namespace

bool canAsk() {
    return !askingProgram().isEmpty();
}

void ask(const PingPermission::GroupRange& range, DesktopOpened ended) {
    QStringList arguments;
    for (const std::string& word : PingPermission::keepingCommand(range)) {
        arguments << QString::fromStdString(word);
    }
    startBeside(askingProgram(), arguments, std::move(ended));
}

} // namespace tarnwick::PingAllowance

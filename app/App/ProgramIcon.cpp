#include "app/App/ProgramIcon.h"

namespace tarnwick {

QIcon programIcon() {
    return QIcon::fromTheme(
        QStringLiteral("tarnwick"), QIcon(QStringLiteral(":/tarnwick/icons/tarnwick.svg")));
}

} // namespace tarnwick

#include "core/DownReason.h"

namespace tarnwick {

DownReason DownReason::from(const std::optional<PingError>& startError, bool pathSatisfied) {
    if (!pathSatisfied) {
        return {Kind::noNetwork};
    }
    if (!startError) {
        return {Kind::noReplies};
    }
    if (startError->kind == PingError::Kind::socket) {
        return {Kind::socketError, startError->text};
    }
    return {Kind::hostNotFound};
}

} // namespace tarnwick

#include "app/App/UpdateNotices.h"

#include <utility>
#include <variant>

namespace tarnwick {

UpdateNotices::UpdateNotices(RunLoop& loop, Monitor& monitor, const UpdateEngine& engine)
    : monitor_(monitor), engine_(engine), following_(loop, [this] { tell(); }) {
}

void UpdateNotices::tell() {
    if (std::holds_alternative<Updating::Ready>(engine_.state())) {
        monitor_.setNotice(newVersionNotice());
    }
    const std::string& distrust = engine_.distrust();
    if (std::exchange(distrust_, distrust) == distrust) {
        return;
    }
    if (distrust.empty()) {
        monitor_.clearNotice(Notice::Kind::distrustedUpdates);
    } else {
        monitor_.setNotice(distrustNotice(distrust));
    }
}

} // namespace tarnwick

#include "app/Watch/Watch.h"

#include <utility>

namespace tarnwick {

Watch::Watch(RunLoop& loop, Monitor& monitor, std::unique_ptr<Presentation> presentation)
    : loop_(loop), monitor_(monitor), presentation_(std::move(presentation)) {
}

Watch::~Watch() {
    monitor_.onTick = nullptr;
}

void Watch::start() {
    monitor_.onTick = [this](double now) { presentation_->show(now); };
    monitor_.start();
    presentation_->show(loop_.now());
}

} // namespace tarnwick

// What the notices say of updates.
#pragma once

#include "app/Monitor/Monitor.h"
#include "app/Observation/Observation.h"
#include "app/Update/UpdateEngine.h"

#include <string>

namespace tarnwick {

/// That a newer version is ready, and that what came as news of versions is not trusted, for as long as that
/// lasts: no window tells of a scheduled check that fails. Main thread.
class UpdateNotices {
public:
    /// All of it outlives this.
    UpdateNotices(RunLoop& loop, Monitor& monitor, const UpdateEngine& engine);

private:
    void tell();

    Monitor& monitor_;
    const UpdateEngine& engine_;
    std::string distrust_; ///< as it was told
    RenderLoop following_;
};

} // namespace tarnwick

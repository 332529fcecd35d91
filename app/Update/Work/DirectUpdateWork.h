// The work of an update, done in this process.
#pragma once

#include "app/Update/UpdateWork.h"
#include "core/Update/BundleInformation.h"
#include "platform/ports/Downloader.h"
#include "platform/ports/UpdatePlace.h"

#include <string>

namespace tarnwick {

class DirectUpdateWork final : public UpdateWork {
public:
    /// Downloader and place outlive this.
    DirectUpdateWork(Downloader& downloader, UpdatePlace& place, UpdateSource source, std::string userAgent);

    [[nodiscard]] RunLoop::Handle check(std::function<void(const CheckResult&)> ended) override;
    [[nodiscard]] Problem obstacle() override;
    [[nodiscard]] RunLoop::Handle download(
        const FoundUpdate& update, std::function<void(const News&)> tell) override;
    void discard() override;

private:
    Downloader& downloader_;
    UpdatePlace& place_;
    UpdateSource source_;
    std::string userAgent_;
};

} // namespace tarnwick

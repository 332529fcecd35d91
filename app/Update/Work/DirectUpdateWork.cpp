#include "app/Update/Work/DirectUpdateWork.h"

#include "app/Update/Work/ArchiveDownload.h"
#include "app/Update/Work/FeedCheck.h"

#include <memory>
#include <utility>

namespace tarnwick {

DirectUpdateWork::DirectUpdateWork(
    Downloader& downloader, UpdatePlace& place, UpdateSource source, std::string userAgent)
    : downloader_(downloader), place_(place), source_(std::move(source)), userAgent_(std::move(userAgent)) {
}

RunLoop::Handle DirectUpdateWork::check(std::function<void(const CheckResult&)> ended) {
    return std::make_unique<FeedCheck>(downloader_, source_, userAgent_, std::move(ended));
}

UpdateWork::Problem DirectUpdateWork::obstacle() {
    return place_.obstacle();
}

RunLoop::Handle DirectUpdateWork::download(const FoundUpdate& update, std::function<void(const News&)> tell) {
    return std::make_unique<ArchiveDownload>(
        ArchiveDownload::Needs{
            .downloader = downloader_, .place = place_, .userAgent = userAgent_, .keys = source_.publicKeys},
        update, std::move(tell));
}

void DirectUpdateWork::discard() {
    place_.discard();
}

} // namespace tarnwick

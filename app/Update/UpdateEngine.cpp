#include "app/Update/UpdateEngine.h"

#include "core/Update/CheckSchedule.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tarnwick {

namespace {

using namespace Updating;

template<class... States>
bool isIn(const UpdateState& state) {
    return (std::holds_alternative<States>(state) || ...);
}

} // namespace

UpdateEngine::UpdateEngine(Needs needs) : needs_(std::move(needs)) {
    if (const std::string news = needs_.memory.takeNews(); !news.empty()) {
        fail(news, true);
    }
}

void UpdateEngine::start() {
    followingSetting_ = withTracking(
        [this] { static_cast<void>(needs_.preferences.automaticallyChecksForUpdates()); },
        [this] { needs_.loop.post(lifeline_.guarded([this] { start(); })); });
    checkDue_.reset();
    timer_.reset();
    if (needs_.preferences.automaticallyChecksForUpdates()) {
        checkDue_ = nextCheck(
            needs_.preferences.lastUpdateCheckDate(), needs_.checkInterval, needs_.random(),
            needs_.loop.wallNow());
        schedule();
    }
}

void UpdateEngine::schedule() {
    // The timer stands still while the machine sleeps, and the clock may be set: so it looks now and then.
    constexpr double longestWait = 3600;
    const std::chrono::duration<double> left = *checkDue_ - needs_.loop.wallNow();
    timer_ = needs_.loop.after(std::clamp(left.count(), 0.0, longestWait), [this] {
        const auto now = needs_.loop.wallNow();
        const bool isClockSetBack = *checkDue_ - now > 2 * needs_.checkInterval;
        if (now >= *checkDue_ || isClockSetBack) {
            beginScheduledCheck();
        } else {
            schedule();
        }
    });
}

void UpdateEngine::beginScheduledCheck() {
    const auto later = std::chrono::duration<double>(patienceWithNetwork);
    checkDue_ = needs_.loop.wallNow() + std::chrono::duration_cast<RunLoop::WallTime::duration>(later);
    schedule();
    needs_.cost.ask(lifeline_.guarded([this](bool isMetered) {
        if (!isMetered && isIn<Idle>(state_.get()) && checkDue_) {
            beginCheck(false);
        }
    }));
}

bool UpdateEngine::canCheck() const {
    return !isIn<Checking, Downloading, Preparing>(state());
}

std::string UpdateEngine::serverDomain() const {
    const std::string& address = needs_.source.feedAddress;
    const std::size_t begin = address.find("://") + 3;
    return address.substr(begin, address.find_first_of("/:?#", begin) - begin);
}

void UpdateEngine::check() {
    if (isIn<Idle, NothingNewer, Failed>(state_.get())) {
        beginCheck(true);
    } else if (auto state = state_.get(); auto* const checking = std::get_if<Checking>(&state)) {
        checking->isAskedFor = true;
        enter(state);
    } else if (auto* const found = std::get_if<Found>(&state)) {
        found->isAskedFor = true;
        enter(state);
    } else if (auto* const ready = std::get_if<Ready>(&state)) {
        ready->isWatched = true;
        enter(state);
    }
}

void UpdateEngine::beginCheck(bool isAskedFor) {
    enter(Checking{.isAskedFor = isAskedFor});
    feedCheck_ = std::make_unique<FeedCheck>(
        needs_.downloader, needs_.source, needs_.userAgent, [this](const FeedCheck::Result& result) {
            const auto* const checking = std::get_if<Checking>(&state_.get());
            checkEnded(result, checking != nullptr && checking->isAskedFor);
        });
}

void UpdateEngine::checkEnded(const FeedCheck::Result& result, bool isAskedFor) {
    const auto check = std::move(feedCheck_); // until the end of this call
    const auto* const failure = std::get_if<FeedCheck::Failure>(&result);
    if (failure == nullptr || failure->hasAnswered) {
        needs_.preferences.setLastUpdateCheckDate(needs_.loop.wallNow());
        start(); // the next one is due an interval from now
    }
    if (failure == nullptr) {
        decide(std::get<Feed>(result), isAskedFor);
    } else if (failure->hasAnswered || isAskedFor) {
        fail(failure->text, isAskedFor);
    } else {
        enter(Idle{});
    }
}

void UpdateEngine::decide(const Feed& feed, bool isAskedFor) {
    const UpdateDecision decision = decideOnUpdate(
        feed, {.running = needs_.running,
               .machine = needs_.machine,
               .system = needs_.system,
               .channel = needs_.channel,
               .lastSeen = needs_.memory.lastFeed(),
               .skipped = ReleaseVersion::parse(needs_.preferences.skippedUpdate()),
               .rolledBack = needs_.memory.rolledBack(),
               .isAskedFor = isAskedFor,
               .now = needs_.loop.wallNow()});
    if (const auto* const refused = std::get_if<RefusedUpdate>(&decision)) {
        fail(sentence(*refused), isAskedFor);
        return;
    }
    lastProblem_.set("");
    needs_.memory.setLastFeed(feed.signedAt);
    const auto* const found = std::get_if<FoundUpdate>(&decision);
    if (found == nullptr) {
        enter(isAskedFor ? UpdateState(NothingNewer{}) : Idle{});
    } else if (needs_.preferences.automaticallyDownloadsUpdates() && !isAskedFor) {
        download(*found, false);
    } else {
        enter(Found{.update = *found, .isAskedFor = isAskedFor});
    }
}

void UpdateEngine::fail(const std::string& text, bool isAskedFor) {
    lastProblem_.set(text);
    enter(isAskedFor ? UpdateState(Failed{.text = text}) : Idle{});
}

void UpdateEngine::install() {
    if (const auto* const found = std::get_if<Found>(&state_.get())) {
        download(FoundUpdate(found->update), true);
    }
}

void UpdateEngine::skip() {
    if (const auto* const found = std::get_if<Found>(&state_.get())) {
        needs_.preferences.setSkippedUpdate(found->update.release.version.text());
        enter(Idle{});
    }
}

void UpdateEngine::remindLater() {
    if (isIn<Found>(state_.get())) {
        enter(Idle{});
    }
}

void UpdateEngine::cancel() {
    if (isIn<Checking, Downloading, Preparing>(state_.get())) {
        feedCheck_.reset();
        if (std::exchange(download_, nullptr)) {
            needs_.place.discard();
        }
        enter(Idle{});
    }
}

void UpdateEngine::dismiss() {
    if (isIn<NothingNewer, Failed>(state_.get())) {
        enter(Idle{});
    } else if (auto state = state_.get(); auto* const ready = std::get_if<Ready>(&state)) {
        ready->isWatched = false;
        enter(state);
    }
}

void UpdateEngine::download(const FoundUpdate& update, bool isWatched) {
    if (const auto obstacle = needs_.place.obstacle()) {
        fail(*obstacle, isWatched);
        return;
    }
    enter(Downloading{.update = update, .received = 0, .isWatched = isWatched});
    download_ = std::make_unique<ArchiveDownload>(
        ArchiveDownload::Needs{
            .downloader = needs_.downloader,
            .place = needs_.place,
            .userAgent = needs_.userAgent,
            .keys = needs_.source.publicKeys},
        update,
        ArchiveDownload::Watcher{
            .received = [this](std::uint64_t bytes) { showProgress(bytes); },
            .complete = [this, update,
                         isWatched] { enter(Preparing{.update = update, .isWatched = isWatched}); },
            .ended =
                [this, update, isWatched](const UpdatePlace::Problem& problem) {
                    downloadEnded(problem, update, isWatched);
                }});
}

void UpdateEngine::showProgress(std::uint64_t bytes) {
    state_.mutate([bytes](UpdateState& present) {
        auto* const downloading = std::get_if<Downloading>(&present);
        if (downloading != nullptr) {
            downloading->received = bytes;
        }
        return downloading != nullptr;
    });
}

void UpdateEngine::downloadEnded(
    const UpdatePlace::Problem& problem, const FoundUpdate& update, bool isWatched) {
    const auto download = std::move(download_); // until the end of this call
    if (problem) {
        needs_.place.discard();
        fail(*problem, isWatched);
    } else {
        enter(Ready{.version = update.release.version, .isWatched = isWatched});
    }
}

void UpdateEngine::enter(UpdateState state) {
    state_.mutate([&state](UpdateState& present) {
        present = std::move(state);
        return true;
    });
}

} // namespace tarnwick

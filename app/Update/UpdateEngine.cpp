#include "app/Update/UpdateEngine.h"

#include "core/HostText.h"
#include "core/Update/CheckSchedule.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace tarnwick {

namespace {

using namespace Updating;

template<class... States>
bool isIn(const UpdateState& state) {
    return (std::holds_alternative<States>(state) || ...);
}

/// What the user asks for is there already, and is shown from now on.
struct BeginToWatch {
    template<class State>
    bool operator()(State& state) const {
        if constexpr (requires { state.isAskedFor; }) {
            state.isAskedFor = true;
            return true;
        } else if constexpr (requires { state.isWatched; }) {
            state.isWatched = true;
            return true;
        } else {
            return false;
        }
    }
};

/// Whether the user is shown that something is under way.
struct IsShownWork {
    bool operator()(const Checking& checking) const { return checking.isAskedFor; }

    bool operator()(const Downloading& downloading) const { return downloading.isWatched; }

    bool operator()(const Preparing& preparing) const { return preparing.isWatched; }

    bool operator()(const auto& /*other*/) const { return false; }
};

struct UnderWay {
    FoundUpdate update{};
    bool isWatched = false;
};

/// Empty where nothing is downloaded or prepared.
UnderWay underWay(const UpdateState& state) {
    if (const auto* const downloading = std::get_if<Downloading>(&state)) {
        return {.update = downloading->update, .isWatched = downloading->isWatched};
    }
    const auto* const preparing = std::get_if<Preparing>(&state);
    return preparing != nullptr ? UnderWay{.update = preparing->update, .isWatched = preparing->isWatched}
                                : UnderWay{};
}

RunLoop::WallTime::duration wallSeconds(double seconds) {
    return std::chrono::duration_cast<RunLoop::WallTime::duration>(std::chrono::duration<double>(seconds));
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
    timer_.reset();
    if (needs_.preferences.automaticallyChecksForUpdates()) {
        plan();
    }
}

void UpdateEngine::plan() {
    checkDue_ = nextCheck(
        needs_.preferences.lastUpdateCheckDate(), needs_.checkInterval, needs_.random(),
        needs_.loop.wallNow());
    schedule();
}

void UpdateEngine::schedule() {
    // The timer stands still while the machine sleeps, and the clock may be set: so it looks now and then.
    constexpr double longestWait = 3600;
    const std::chrono::duration<double> left = checkDue_ - needs_.loop.wallNow();
    timer_ = needs_.loop.after(std::clamp(left.count(), 0.0, longestWait), [this] {
        const auto now = needs_.loop.wallNow();
        const bool isSleptThrough = now - checkDue_ >= calmBeforeCheck; // it is a waking machine
        const bool isClockSetBack = checkDue_ - now > 2 * needs_.checkInterval;
        if (isSleptThrough || isClockSetBack) {
            plan();
        } else if (now >= checkDue_) {
            beginScheduledCheck();
        } else {
            schedule();
        }
    });
}

void UpdateEngine::beginScheduledCheck() {
    checkDue_ = needs_.loop.wallNow() + wallSeconds(patienceWithNetwork);
    schedule();
    if (!maySchedule()) {
        return;
    }
    needs_.cost.ask(lifeline_.guarded([this](bool isMetered) {
        if (!isMetered && maySchedule() && timer_ != nullptr) {
            beginCheck(false);
        }
    }));
}

bool UpdateEngine::maySchedule() const {
    // Once a version is ready, a newer one waits for the restart: making that one ready would take this one
    // away, and may fail.
    return isIn<Idle, NothingNewer, Failed, Found>(state_.get());
}

bool UpdateEngine::canCheck() const {
    return !std::visit(IsShownWork(), state());
}

std::string UpdateEngine::serverDomain() const {
    const auto host = hostIn(needs_.feedAddress);
    const auto* const domain = std::get_if<std::string>(&host);
    return domain != nullptr ? *domain : "";
}

void UpdateEngine::check() {
    if (isIn<Idle, NothingNewer, Failed>(state_.get())) {
        beginCheck(true);
    } else {
        state_.mutate([](UpdateState& present) { return std::visit(BeginToWatch(), present); });
    }
}

void UpdateEngine::beginCheck(bool isAskedFor) {
    check_.reset(); // never two at once
    if (isAskedFor || isIn<Idle>(state_.get())) {
        enter(Checking{.isAskedFor = isAskedFor});
    }
    check_ = needs_.work.check([this](const UpdateWork::CheckResult& result) {
        const auto* const checking = std::get_if<Checking>(&state_.get());
        checkEnded(result, checking != nullptr && checking->isAskedFor);
    });
}

void UpdateEngine::checkEnded(const UpdateWork::CheckResult& result, bool isAskedFor) {
    const auto check = std::move(check_); // until the end of this call
    if (const auto* const failure = std::get_if<UpdateWork::CheckFailure>(&result)) {
        checkFailed(*failure, isAskedFor);
        return;
    }
    const auto parsed = parseFeed(std::get<UpdateWork::VerifiedFeed>(result).text);
    if (const auto* const feed = std::get_if<Feed>(&parsed)) {
        decide(*feed, isAskedFor);
    } else {
        const std::string& mistake = std::get<DocumentMistake>(parsed).text;
        checkFailed(
            {.text = "The update information can't be read: " + mistake + ".", .hasAnswered = true},
            isAskedFor);
    }
}

void UpdateEngine::checkFailed(const UpdateWork::CheckFailure& failure, bool isAskedFor) {
    using Distrust = UpdateWork::Distrust;
    const bool isRepeated = failures_ > 0;
    if (failure.distrust == Distrust::certain || (failure.distrust == Distrust::likely && isRepeated)) {
        distrust_.set(failure.text);
    }
    if (failure.hasAnswered && !isAskedFor) {
        putOff();
    }
    if (failure.hasAnswered || isAskedFor) {
        fail(failure.text, isAskedFor);
    } else {
        rest();
    }
}

void UpdateEngine::putOff() {
    const double longest = std::chrono::duration<double>(needs_.checkInterval).count();
    const double wait = std::min(std::ldexp(patienceWithNetwork, failures_), longest);
    ++failures_;
    checkDue_ = needs_.loop.wallNow() + wallSeconds(wait);
}

UpdateCircumstances UpdateEngine::circumstances(bool isAskedFor) const {
    return {
        .running = needs_.running,
        .machine = needs_.machine,
        .system = needs_.system,
        .channel = needs_.channel,
        .lastSeen = needs_.memory.lastFeed(),
        .skipped = ReleaseVersion::parse(needs_.preferences.skippedUpdate()),
        .rolledBack = needs_.memory.rolledBack(),
        .isAskedFor = isAskedFor,
        .now = needs_.loop.wallNow()};
}

void UpdateEngine::decide(const Feed& feed, bool isAskedFor) {
    const auto* const offer = std::get_if<Found>(&state_.get());
    const UpdateDecision decision =
        decideOnUpdate(feed, circumstances(isAskedFor || (offer != nullptr && offer->isAskedFor)));
    const auto* const refused = std::get_if<RefusedUpdate>(&decision);
    if (!isTrusted(decision)) {
        checkFailed(
            {.text = sentence(*refused), .hasAnswered = true, .distrust = UpdateWork::Distrust::certain},
            isAskedFor);
        return;
    }
    trusted(feed);
    if (const auto* const update = std::get_if<FoundUpdate>(&decision)) {
        found(*update, isAskedFor);
        return;
    }
    if (offer != nullptr) {
        enter(Idle{}); // it was withdrawn
    }
    if (refused != nullptr) {
        fail(sentence(*refused), isAskedFor);
        return;
    }
    lastProblem_.set("");
    if (isAskedFor) {
        enter(NothingNewer{});
    } else {
        rest();
    }
}

void UpdateEngine::found(const FoundUpdate& update, bool isAskedFor) {
    lastProblem_.set("");
    const auto* const offer = std::get_if<Found>(&state_.get());
    const bool isForUser = isAskedFor || offer != nullptr || update.release.version == notInstalled_;
    if (needs_.preferences.automaticallyDownloadsUpdates() && !isForUser) {
        download(update, false);
    } else {
        enter(Found{.update = update, .isAskedFor = isAskedFor || (offer != nullptr && offer->isAskedFor)});
    }
}

void UpdateEngine::trusted(const Feed& feed) {
    failures_ = 0;
    distrust_.set("");
    needs_.memory.setLastFeed(feed.signedAt);
    needs_.preferences.setLastUpdateCheckDate(needs_.loop.wallNow());
    start(); // the next check is due an interval from now
}

void UpdateEngine::fail(const std::string& text, bool isAskedFor) {
    lastProblem_.set(text);
    if (isAskedFor) {
        enter(Failed{.text = text});
    } else {
        rest();
    }
}

void UpdateEngine::rest() {
    if (isIn<Checking, Downloading, Preparing>(state_.get())) {
        enter(Idle{});
    }
}

void UpdateEngine::install() {
    if (const auto* const found = std::get_if<Found>(&state_.get())) {
        check_.reset();
        download(FoundUpdate(found->update), true);
    }
}

void UpdateEngine::skip() {
    if (const auto* const found = std::get_if<Found>(&state_.get())) {
        needs_.preferences.setSkippedUpdate(found->update.release.version.text());
        remindLater();
    }
}

void UpdateEngine::remindLater() {
    if (isIn<Found>(state_.get())) {
        check_.reset();
        enter(Idle{});
    }
}

void UpdateEngine::cancel() {
    if (isIn<Checking, Downloading, Preparing>(state_.get())) {
        check_.reset();
        if (std::exchange(download_, nullptr)) {
            needs_.work.discard();
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
    if (const auto obstacle = needs_.work.obstacle()) {
        downloadFailed(update, *obstacle, isWatched);
        return;
    }
    enter(Downloading{.update = update, .received = 0, .isWatched = isWatched});
    download_ = needs_.work.download(update, [this](const UpdateWork::News& news) { take(news); });
}

void UpdateEngine::take(const UpdateWork::News& news) {
    if (const auto* const ended = std::get_if<UpdateWork::Ended>(&news)) {
        downloadEnded(*ended);
        return;
    }
    state_.mutate([&news](UpdateState& present) {
        auto* const downloading = std::get_if<Downloading>(&present);
        if (downloading == nullptr) {
            return false;
        }
        if (const auto* const received = std::get_if<UpdateWork::Received>(&news)) {
            downloading->received = received->bytes;
        } else {
            present = Preparing{.update = downloading->update, .isWatched = downloading->isWatched};
        }
        return true;
    });
}

void UpdateEngine::downloadEnded(const UpdateWork::Ended& ended) {
    download_.reset(); // before its files are removed
    const auto [update, isWatched] = underWay(state_.get());
    if (isIn<Preparing>(state_.get()) && !ended.problem) {
        enter(Ready{.version = update.release.version, .isWatched = isWatched});
        return;
    }
    needs_.work.discard();
    const std::string text = ended.problem.value_or("The update ended early.");
    if (ended.mayPass) {
        fail(text, isWatched);
    } else {
        downloadFailed(update, text, isWatched);
    }
}

void UpdateEngine::downloadFailed(const FoundUpdate& update, const std::string& text, bool isWatched) {
    if (isWatched) {
        fail(text, true);
        return;
    }
    // Else the user would never learn of the version, and it would be downloaded each day for nothing.
    lastProblem_.set(text);
    notInstalled_ = update.release.version;
    enter(Found{.update = update, .isAskedFor = false});
}

void UpdateEngine::enter(UpdateState state) {
    state_.mutate([&state](UpdateState& present) {
        present = std::move(state);
        return true;
    });
}

} // namespace tarnwick

// Finds newer versions, fetches them, and makes them ready to take the place of the running one.
#pragma once

#include "app/Observation/Observation.h"
#include "app/Preferences/Preferences.h"
#include "app/Update/UpdateMemory.h"
#include "app/Update/UpdateState.h"
#include "app/Update/UpdateWork.h"
#include "core/Lifeline.h"
#include "core/Update/Feed.h"
#include "platform/ports/ConnectionCost.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tarnwick {

/// Knows no window: what it does is its state, which views follow. One thing at a time. Main thread.
class UpdateEngine {
public:
    struct Needs {
        RunLoop& loop;
        UpdateWork& work;
        ConnectionCost& cost;
        Preferences& preferences;
        UpdateMemory& memory;
        ReleaseVersion running;
        std::string channel;
        std::chrono::seconds checkInterval;
        std::string feedAddress;
        std::string machine;            ///< as the system calls it
        ReleaseVersion system;          ///< the kernel's major and minor number
        std::function<double()> random; ///< from 0 to 1
    };

    /// Seconds. Between scheduled checks while there is no network, or one that is paid by use; doubled with
    /// each check after which there is an answer, yet no feed that is trusted, up to the interval.
    static constexpr double patienceWithNetwork = 3600;

    /// The needs outlive the engine. Tells at once what the run before has left to tell.
    explicit UpdateEngine(Needs needs);
    UpdateEngine(const UpdateEngine&) = delete;
    UpdateEngine& operator=(const UpdateEngine&) = delete;
    ~UpdateEngine() = default;

    /// Begins with the scheduled checks.
    void start();

    [[nodiscard]] const UpdateState& state() const { return state_.get(); }

    /// See `SoftwareUpdates`.
    [[nodiscard]] const std::string& lastProblem() const { return lastProblem_.get(); }

    /// Why what came last as a feed is not trusted, as a sentence for users, until one is trusted. Empty
    /// otherwise, also where nothing came.
    [[nodiscard]] const std::string& distrust() const { return distrust_.get(); }

    [[nodiscard]] bool canCheck() const;
    [[nodiscard]] std::string serverDomain() const;

    [[nodiscard]] const ReleaseVersion& running() const { return needs_.running; }

    // What the user does. Each does nothing in a state that it does not fit.

    /// A check or an update that is under way, or waits for an answer, stays, and is shown from now on.
    void check();
    void install();     ///< what was found
    void skip();        ///< what was found, for good
    void remindLater(); ///< of what was found, at the next scheduled check
    void cancel();      ///< the check or the download
    void dismiss();     ///< the news that the program is up to date, that something failed, or is ready

private:
    void plan();
    void schedule();
    void beginScheduledCheck();
    /// Whether a scheduled check does no harm now.
    [[nodiscard]] bool maySchedule() const;
    /// One that nobody has asked for leaves a state that waits for the user as it is, until it finds
    /// something.
    void beginCheck(bool isAskedFor);
    void checkEnded(const UpdateWork::CheckResult& result, bool isAskedFor);
    void checkFailed(const UpdateWork::CheckFailure& failure, bool isAskedFor);
    /// The next scheduled check, longer each time: a server in trouble has many programs that ask.
    void putOff();
    [[nodiscard]] UpdateCircumstances circumstances(bool isAskedFor) const;
    /// While an offer waits for its answer, a fresh one takes its place, or it is taken back.
    void decide(const Feed& feed, bool isAskedFor);
    void found(const FoundUpdate& update, bool isAskedFor);
    void trusted(const Feed& feed);
    void fail(const std::string& text, bool isAskedFor);
    /// Ends what is under way; what waits for the user stays.
    void rest();
    void download(const FoundUpdate& update, bool isWatched);
    void take(const UpdateWork::News& news);
    void downloadEnded(const UpdateWork::Ended& ended);
    /// For a reason that another try does not mend.
    void downloadFailed(const FoundUpdate& update, const std::string& text, bool isWatched);
    void enter(UpdateState state);

    Needs needs_;
    Observed<UpdateState> state_;
    Observed<std::string> lastProblem_;
    Observed<std::string> distrust_;
    std::optional<ReleaseVersion> notInstalled_; ///< the automatic download of which came to nothing
    RunLoop::WallTime checkDue_;
    RunLoop::Handle timer_; ///< null while nothing is scheduled
    int failures_ = 0;      ///< scheduled checks that were put off, since a feed was trusted
    TrackingHandle followingSetting_;
    RunLoop::Handle check_;
    RunLoop::Handle download_;
    Lifeline lifeline_;
};

} // namespace tarnwick

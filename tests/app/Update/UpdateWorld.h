// An updater with a maker and a server, in virtual time.
#pragma once

#include "app/Update/UpdateEngine.h"
#include "app/Update/Work/DirectUpdateWork.h"
#include "tests/simulation/MemoryDefaults.h"
#include "tests/simulation/VirtualServer.h"
#include "tests/support/MinisignKey.h"
#include "tests/support/TemporaryFolder.h"

#include <array>
#include <chrono>
#include <cstdio>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarnwick::test {

/// Keeps what it is given.
class RecordingPlace final : public UpdatePlace {
public:
    Problem obstacleNow;
    Problem problemAtBegin;
    Problem problemAtAdd;
    Problem problemAtPrepare;
    bool holdsPreparation = false;

    std::string content;
    int begun = 0;
    int discarded = 0;
    std::vector<Claim> claims;

    explicit RecordingPlace(RunLoop& loop) : loop_(loop) {}

    [[nodiscard]] Problem obstacle() const override { return obstacleNow; }

    [[nodiscard]] Problem begin() override {
        ++begun;
        content.clear();
        return problemAtBegin;
    }

    [[nodiscard]] Problem add(std::string_view part) override {
        content += part;
        return problemAtAdd;
    }

    void prepare(const Claim& claim, std::function<void(const Problem&)> done) override {
        claims.push_back(claim);
        if (!holdsPreparation) {
            loop_.post([done = std::move(done), problem = problemAtPrepare] { done(problem); });
        }
    }

    void discard() override { ++discarded; }

private:
    RunLoop& loop_;
};

class StatedCost final : public ConnectionCost {
public:
    bool isMetered = false;
    int questions = 0;

    explicit StatedCost(RunLoop& loop) : loop_(loop) {}

    void ask(std::function<void(bool isMetered)> answer) override {
        ++questions;
        loop_.post([answer = std::move(answer), metered = isMetered] { answer(metered); });
    }

private:
    RunLoop& loop_;
};

/// The running version is 1.0, and 2026-11-23 the day.
class UpdateWorld : public testing::Test {
public:
    static constexpr double day = 86400;
    static constexpr auto feedAddress = "https://updates.example/feed.json";
    static constexpr auto archiveAddress = "https://updates.example/Tarnwick-1.1.tar.zst";

    UpdateWorld() {
        loop.setWallClock(today);
        publish("1.1");
        server.files[archiveAddress] = std::string(5000, 'a');
        server.files[std::string(archiveAddress) + ".minisig"] = "the archive's signature";
        preferences.setLastUpdateCheckDate(today - std::chrono::hours(1));
    }

    /// The feed with one release, signed `age` days ago.
    void publish(const std::string& version, int age = 0, const MinisignKey& key = MinisignKey(1)) {
        publishText(feedText(version, "* Better", age), key);
    }

    void publishNotes(const std::string& notes) { publishText(feedText("1.1", notes, 0)); }

    void publishText(const std::string& text, const MinisignKey& key = MinisignKey(1)) {
        server.files[feedAddress] = text;
        server.files[std::string(feedAddress) + ".minisig"] = key.sign(text);
    }

    [[nodiscard]] std::unique_ptr<UpdateEngine> makeEngine() { return makeEngine(work, feedAddress); }

    [[nodiscard]] std::unique_ptr<UpdateEngine> makeEngine(UpdateWork& done, const std::string& address) {
        return std::make_unique<UpdateEngine>(UpdateEngine::Needs{
            .loop = loop,
            .work = done,
            .cost = cost,
            .preferences = preferences,
            .memory = memory,
            .running = ReleaseVersion::parse("1.0").value(),
            .channel = "stable",
            .checkInterval = std::chrono::days(1),
            .feedAddress = address,
            .machine = "x86_64",
            .system = ReleaseVersion::parse("6.1").value(),
            .random = [this] { return drawn; }});
    }

    /// For tests without views.
    UpdateEngine& engine() {
        if (!engine_) {
            engine_ = makeEngine();
        }
        return *engine_;
    }

    void restart() { engine_.reset(); }

    template<class State>
    [[nodiscard]] const State* in() {
        return std::get_if<State>(&engine().state());
    }

    /// The user's own check, until it has an end.
    void check() {
        engine().check();
        loop.advance(10);
    }

    [[nodiscard]] std::string failure() {
        const auto* const failed = in<Updating::Failed>();
        return failed != nullptr ? failed->text : "";
    }

    [[nodiscard]] std::size_t feedRequests() const {
        std::size_t count = 0;
        for (const auto& request : server.requests()) {
            count += request.address == feedAddress ? 1U : 0U;
        }
        return count;
    }

    const RunLoop::WallTime today{std::chrono::sys_days(std::chrono::year(2026) / 11 / 23)};
    simulation::VirtualRunLoop loop;
    simulation::VirtualServer server{loop};
    StatedCost cost{loop};
    simulation::MemoryDefaults defaults;
    Preferences preferences{defaults};
    RecordingPlace place{loop};
    DirectUpdateWork work{
        server,
        place,
        {.feedAddress = feedAddress,
         .publicKeys =
             {Minisign::parsePublicKey(MinisignKey(1).publicLine()).value(),
              Minisign::parsePublicKey(MinisignKey(2).publicLine()).value()}},
        "Tarnwick/1.0"};
    TemporaryFolder folder;
    UpdateMemory memory{folder.path() / "updates.json"};
    double drawn = 0.5;
    std::string minimumSystem = "6.1"; ///< of the releases published from now on

private:
    [[nodiscard]] std::string feedText(const std::string& version, const std::string& notes, int age) const {
        const auto signedAt =
            std::chrono::floor<std::chrono::seconds>(loop.wallNow()) - std::chrono::days(age);
        return R"({"signedAt":")" + utc(signedAt) + R"(","releases":[{"version":")" + version
               + R"(","channel":"stable","minimumSystem":")" + minimumSystem + R"(","archives":[{"address":")"
               + archiveAddress + R"(","machine":"x86_64","size":5000,"sha256":")" + std::string(64, '0')
               + R"("}],"notes":")" + notes + R"("}]})";
    }

    static std::string utc(std::chrono::sys_seconds time) {
        const auto days = std::chrono::floor<std::chrono::days>(time);
        const std::chrono::year_month_day date(days);
        const std::chrono::hh_mm_ss clock(time - days);
        std::array<char, 64> text{};
        std::snprintf(
            text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
            static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
            static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
            static_cast<int>(clock.seconds().count()));
        return text.data();
    }

    std::unique_ptr<UpdateEngine> engine_;
};

} // namespace tarnwick::test

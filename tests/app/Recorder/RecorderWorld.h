// A recorder in virtual time, and what the monitor would tell it.
#pragma once

#include "app/Recorder/Recorder.h"
#include "tests/simulation/RecordingJournal.h"
#include "tests/simulation/VirtualRunLoop.h"

#include <gtest/gtest.h>

#include <chrono>

namespace tarnwick::test {

inline constexpr const char* recordedHost = "one.example";

/// Begins at a full minute. A ping every second, and a tick half a second after it.
class RecorderWorld : public testing::Test {
protected:
    RecorderWorld() { loop.setWallClock(begin); }

    [[nodiscard]] static HistoryTime after(double seconds) {
        return std::chrono::floor<std::chrono::seconds>(begin + std::chrono::duration<double>(seconds));
    }

    /// Every second a ping, answered in `ms`, and a tick.
    void pass(int seconds, double ms = 20) {
        for (int second = 0; second < seconds; ++second) {
            recorder.pingSent(++lastId, true);
            recorder.pingReplied(lastId, ms, true);
            passSecond();
        }
    }

    /// Without answers; each ping is lost four seconds later. `isCounted` as long as it is not down.
    void passSilent(int seconds, bool isCounted = true) {
        for (int second = 0; second < seconds; ++second) {
            recorder.pingSent(++lastId, isCounted);
            silent.push_back(lastId);
            passSecond();
            if (silent.size() > 4) {
                recorder.pingLost(silent.front());
                silent.erase(silent.begin());
            }
        }
    }

    void passSecond() {
        loop.advance(0.5);
        recorder.tick();
        loop.advance(0.5);
    }

    void answered() {
        silent.clear();
        recorder.pingSent(++lastId, false);
        recorder.pingReplied(lastId, 20, true);
    }

    [[nodiscard]] static ConnectionState stateOf(Trouble trouble) {
        return {.trouble = trouble, .address = "192.0.2.1", .interface = "eth0"};
    }

    /// After `save`, so that nothing waits.
    [[nodiscard]] History kept(const std::string& host = recordedHost) {
        recorder.save();
        return journal.read(host, {});
    }

    static constexpr std::chrono::sys_days begin{std::chrono::year(2026) / 11 / 23};

    simulation::VirtualRunLoop loop;
    simulation::RecordingJournal journal;
    Recorder recorder{loop, &journal};
    std::uint64_t lastId = 1000;
    std::vector<std::uint64_t> silent;
};

} // namespace tarnwick::test

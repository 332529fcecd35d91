// The descriptors that a run loop watches, registered with epoll.
#pragma once

#include "core/RunLoop.h"

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <sys/epoll.h>

namespace tarnwick {

/// epoll takes each descriptor once, so this merges what the reading and the writing watch of one descriptor
/// ask for. Main thread; the handles must not outlive it.
class DescriptorWatches {
public:
    enum class Kind : std::uint8_t { reading, writing };

    /// `epoll` must stay open while this exists.
    explicit DescriptorWatches(int epoll);
    ~DescriptorWatches();

    DescriptorWatches(const DescriptorWatches&) = delete;
    DescriptorWatches& operator=(const DescriptorWatches&) = delete;

    /// No handle when epoll refuses the descriptor, or when it already has a watch of this kind.
    [[nodiscard]] RunLoop::Handle add(int descriptor, Kind kind, RunLoop::Task task);

    /// Runs the task that `event` is for; when both watches are ready, they take turns. A task may run a
    /// nested event loop that calls this again: a task that has not returned is not run again then, and its
    /// watch pauses, so that its descriptor does not keep the nested loop busy.
    void run(const epoll_event& event);

private:
    struct Watch;
    struct Entry;
    class Registration;

    void update(int descriptor);
    bool request(int descriptor, Entry& entry) const;
    void remove(const Watch& watch);

    int epoll_;
    std::map<int, Entry> entries_; ///< by descriptor
};

} // namespace tarnwick

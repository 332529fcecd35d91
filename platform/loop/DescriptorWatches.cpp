#include "platform/loop/DescriptorWatches.h"

#include <cstddef>
#include <utility>

namespace tarnwick {

namespace {

using Kind = DescriptorWatches::Kind;

constexpr std::uint32_t interest(Kind kind) {
    return kind == Kind::reading ? EPOLLIN : EPOLLOUT;
}

/// After a hang-up or an error, neither reading nor writing blocks.
constexpr bool isReady(Kind kind, std::uint32_t events) {
    return (events & (interest(kind) | EPOLLHUP | EPOLLERR)) != 0;
}

constexpr Kind other(Kind kind) {
    return kind == Kind::reading ? Kind::writing : Kind::reading;
}

} // namespace

struct DescriptorWatches::Watch {
    int descriptor;
    Kind kind;
    RunLoop::Task task;
    bool isRunning = false;
    bool isPaused = false; ///< not registered until the task has returned
};

/// The watches of one descriptor.
struct DescriptorWatches::Entry {
    std::array<std::shared_ptr<Watch>, 2> watches; ///< by kind
    std::uint32_t registered = 0;                  ///< events that epoll was asked for; 0: none
    Kind latest = Kind::writing;                   ///< whose turn it was last

    [[nodiscard]] std::shared_ptr<Watch>& of(Kind kind) {
        return watches[static_cast<std::size_t>(kind)]; // NOLINT(*-constant-array-index)
    }

    [[nodiscard]] std::uint32_t wanted() const {
        std::uint32_t events = 0;
        for (const auto& watch : watches) {
            events |= watch && !watch->isPaused ? interest(watch->kind) : 0;
        }
        return events;
    }

    /// The watch to run now; nothing when each that is ready runs already.
    [[nodiscard]] std::shared_ptr<Watch> next(std::uint32_t events) {
        for (const Kind kind : {other(latest), latest}) {
            const auto& watch = of(kind);
            if (watch && !watch->isRunning && isReady(kind, events)) {
                return watch;
            }
        }
        return nullptr;
    }

    void pauseRunning(std::uint32_t events) const {
        for (const auto& watch : watches) {
            if (watch && watch->isRunning && isReady(watch->kind, events)) {
                watch->isPaused = true;
            }
        }
    }
};

/// The handle that callers own.
class DescriptorWatches::Registration final : public RunLoop::Registration {
public:
    Registration(DescriptorWatches& watches, std::shared_ptr<Watch> watch)
        : watches_(watches), watch_(std::move(watch)) {}

    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    ~Registration() override { watches_.remove(*watch_); }

private:
    DescriptorWatches& watches_;
    std::shared_ptr<Watch> watch_;
};

DescriptorWatches::DescriptorWatches(int epoll) : epoll_(epoll) {
}

DescriptorWatches::~DescriptorWatches() = default;

RunLoop::Handle DescriptorWatches::add(int descriptor, Kind kind, RunLoop::Task task) {
    Entry& entry = entries_[descriptor];
    if (entry.of(kind)) {
        return nullptr;
    }
    auto watch =
        std::make_shared<Watch>(Watch{.descriptor = descriptor, .kind = kind, .task = std::move(task)});
    entry.of(kind) = watch;
    if (!request(descriptor, entry)) {
        remove(*watch);
        return nullptr;
    }
    return std::make_unique<Registration>(*this, std::move(watch));
}

void DescriptorWatches::run(const epoll_event& event) {
    const auto found = entries_.find(event.data.fd);
    if (found == entries_.end()) {
        return;
    }
    Entry& entry = found->second;
    const std::shared_ptr<Watch> watch = entry.next(event.events);
    if (!watch) {
        entry.pauseRunning(event.events);
        request(event.data.fd, entry);
        return;
    }
    entry.latest = watch->kind;
    watch->isRunning = true;
    watch->task();
    watch->isRunning = false;
    if (std::exchange(watch->isPaused, false)) {
        update(watch->descriptor);
    }
}

void DescriptorWatches::update(int descriptor) {
    // The task may have ended all watches of the descriptor.
    if (const auto found = entries_.find(descriptor); found != entries_.end()) {
        request(descriptor, found->second);
    }
}

/// Asks epoll for what the descriptor's watches want. False when epoll refuses the descriptor.
bool DescriptorWatches::request(int descriptor, Entry& entry) const {
    const std::uint32_t wanted = entry.wanted();
    const std::uint32_t before = std::exchange(entry.registered, wanted);
    if (wanted == before) {
        return true;
    }
    if (wanted == 0) {
        // Asked for no events, epoll would still report hang-ups.
        return ::epoll_ctl(epoll_, EPOLL_CTL_DEL, descriptor, nullptr) == 0;
    }
    epoll_event event{.events = wanted, .data = {.fd = descriptor}};
    const int operation = before == 0 ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    if (::epoll_ctl(epoll_, operation, descriptor, &event) == 0) {
        return true;
    }
    entry.registered = before;
    return false;
}

void DescriptorWatches::remove(const Watch& watch) {
    Entry& entry = entries_.at(watch.descriptor);
    entry.of(watch.kind).reset();
    request(watch.descriptor, entry);
    if (!entry.of(other(watch.kind))) {
        entries_.erase(watch.descriptor);
    }
}

} // namespace tarnwick

#include "platform/loop/Mailbox.h"

#include <cerrno>
#include <sys/eventfd.h>
#include <system_error>
#include <utility>

namespace tarnwick {

Mailbox::Mailbox() : signal_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!signal_.isOpen()) {
        throw std::system_error(errno, std::generic_category(), "eventfd");
    }
}

void Mailbox::put(RunLoop::Task task) {
    const std::lock_guard lock(mutex_);
    if (!isOpen_) {
        return;
    }
    tasks_.push_back(std::move(task));
    if (!isAwake_) {
        raiseSignal();
    }
}

std::size_t Mailbox::size() {
    const std::lock_guard lock(mutex_);
    return tasks_.size();
}

RunLoop::Task Mailbox::take() {
    const std::lock_guard lock(mutex_);
    if (tasks_.empty()) {
        return nullptr;
    }
    RunLoop::Task task = std::move(tasks_.front());
    tasks_.pop_front();
    if (tasks_.empty() && isSignalRaised_) {
        eventfd_t count = 0;
        ::eventfd_read(signal_.get(), &count);
        isSignalRaised_ = false;
    }
    return task;
}

void Mailbox::wake() {
    const std::lock_guard lock(mutex_);
    isAwake_ = true;
}

bool Mailbox::sleepUnlessTasksWait() {
    const std::lock_guard lock(mutex_);
    isAwake_ = !tasks_.empty();
    return !isAwake_;
}

void Mailbox::sleep() {
    const std::lock_guard lock(mutex_);
    isAwake_ = false;
    if (!tasks_.empty()) {
        raiseSignal();
    }
}

void Mailbox::close() {
    std::deque<RunLoop::Task> dropped; // destroyed without the lock: what the tasks hold may post
    const std::lock_guard lock(mutex_);
    isOpen_ = false;
    dropped.swap(tasks_);
}

void Mailbox::raiseSignal() {
    if (!isSignalRaised_) {
        ::eventfd_write(signal_.get(), 1);
        isSignalRaised_ = true;
    }
}

} // namespace tarnwick

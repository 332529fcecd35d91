// Owns a file descriptor and closes it.
#pragma once

#include <unistd.h>
#include <utility>

namespace tarnwick {

class FileDescriptor {
public:
    FileDescriptor() = default;

    explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}

    FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}

    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        if (this != &other) {
            reset();
            descriptor_ = std::exchange(other.descriptor_, -1);
        }
        return *this;
    }

    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    ~FileDescriptor() { reset(); }

    [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

    [[nodiscard]] int get() const { return descriptor_; }

    void reset() {
        if (isOpen()) {
            ::close(std::exchange(descriptor_, -1));
        }
    }

private:
    int descriptor_ = -1;
};

} // namespace tarnwick

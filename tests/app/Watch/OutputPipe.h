// A pipe as a program's output, with a reader that may be slow or gone.
#pragma once

#include "core/FileDescriptor.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <string_view>
#include <unistd.h>

namespace tarnwick {

class OutputPipe {
public:
    OutputPipe() {
        std::signal(SIGPIPE, SIG_IGN);
        std::array<int, 2> ends{-1, -1};
        EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
        reading_ = FileDescriptor(ends[0]);
        writing_ = FileDescriptor(ends[1]);
        ::fcntl(reading_.get(), F_SETFL, O_NONBLOCK);
    }

    [[nodiscard]] int writingEnd() const { return writing_.get(); }

    /// Writes to it never wait from now on.
    void makeNonBlocking() const { ::fcntl(writing_.get(), F_SETFL, O_NONBLOCK); }

    [[nodiscard]] std::size_t capacity() const {
        return static_cast<std::size_t>(::fcntl(writing_.get(), F_GETPIPE_SZ));
    }

    void write(std::string_view text) const {
        EXPECT_EQ(::write(writing_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    /// All that waits to be read.
    [[nodiscard]] std::string read() const {
        std::string text;
        std::array<char, 4096> buffer{};
        for (ssize_t count = 0; (count = ::read(reading_.get(), buffer.data(), buffer.size())) > 0;) {
            text.append(buffer.data(), static_cast<std::size_t>(count));
        }
        return text;
    }

    void closeReader() { reading_.reset(); }

private:
    FileDescriptor reading_;
    FileDescriptor writing_;
};

} // namespace tarnwick

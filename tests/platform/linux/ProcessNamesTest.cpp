// The names that another process goes by.
#include "platform/linux/ProcessNames.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <sys/prctl.h>
#include <unistd.h>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// The kernel calls this process by another name than its file's until the end.
class Renamed {
public:
    explicit Renamed(const char* name) {
        ::prctl(PR_GET_NAME, before_.data());
        ::prctl(PR_SET_NAME, name);
    }

    Renamed(const Renamed&) = delete;
    Renamed& operator=(const Renamed&) = delete;

    ~Renamed() { ::prctl(PR_SET_NAME, before_.data()); }

private:
    std::array<char, 16> before_{};
};

} // namespace

TEST(ProcessNamesTest, TheKernelsNameComesBeforeTheProgramsFile) {
    const Renamed renamed("some-panel");

    EXPECT_THAT(processNames(static_cast<unsigned>(::getpid())), ElementsAre("some-panel", "LinuxTest"));
}

TEST(ProcessNamesTest, AProcessThatHasGoneHasNoName) {
    constexpr unsigned beyondAllProcesses = 4'194'305;

    EXPECT_THAT(processNames(beyondAllProcesses), IsEmpty());
}

} // namespace tarnwick

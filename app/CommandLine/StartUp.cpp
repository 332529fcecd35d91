#include "app/CommandLine/StartUp.h"

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace tarnwick {

namespace {

constexpr int usageFailure = 2;

void openStandardDescriptors() {
    int descriptor = 0;
    do {
        descriptor = ::open("/dev/null", O_RDWR);
    } while (descriptor >= 0 && descriptor <= STDERR_FILENO);
    ::close(descriptor);
}

} // namespace

void startUp() {
    openStandardDescriptors();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

int refuse(const ProgramTable& program, const UsageError& error) {
    std::fprintf(stderr, "%s: %s; see --help\n", program.name, error.text.c_str());
    return usageFailure;
}

std::optional<int> explain(const ProgramTable& program, const CommonOptions& options, const char* version) {
    if (options.help) {
        std::fputs(usageOf(program).c_str(), stdout);
        return EXIT_SUCCESS;
    }
    if (options.version) {
        std::printf("%s %s\n", program.name, version);
        return EXIT_SUCCESS;
    }
    return std::nullopt;
}

} // namespace tarnwick

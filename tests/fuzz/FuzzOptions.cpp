// Any command line, its arguments divided by line breaks: it yields options, or one line that says what is
// wrong.
#include "app/CommandLine/WatchOptions.h"
#include "tests/fuzz/Fuzzing.h"

#include <algorithm>
#include <sstream>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    // Arguments hold no zero bytes.
    std::istringstream lines(std::string(data, std::find(data, data + size, 0)));
    std::vector<std::string> arguments;
    for (std::string line; std::getline(lines, line);) {
        arguments.push_back(line);
    }
    const auto parsed = parseWatchOptions(arguments);
    if (const auto* error = std::get_if<UsageError>(&parsed)) {
        fuzz::require(!error->text.empty() && error->text.find('\n') == std::string::npos);
    }
    return 0;
}

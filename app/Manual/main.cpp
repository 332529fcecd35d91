// Writes what the programs' tables know of their command lines: a shell's completion, or a manual page.
#include "app/CommandLine/AppOptions.h"
#include "app/CommandLine/WatchOptions.h"
#include "app/Manual/Completion.h"
#include "app/Manual/ManualPage.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>

namespace tarnwick {

namespace {

constexpr auto manualUsage = "usage: tarnwick-manual PROGRAM bash|zsh|fish\n"
                             "       tarnwick-manual PROGRAM page <TEMPLATE\n";

std::optional<std::string> written(const std::string& name, const std::string& kind) {
    for (const ProgramTable* const program : {&AppOptions::table(), &WatchOptions::table()}) {
        if (name != program->name) {
            continue;
        }
        if (kind == "bash") {
            return bashCompletion(*program);
        }
        if (kind == "zsh") {
            return zshCompletion(*program);
        }
        if (kind == "fish") {
            return fishCompletion(*program);
        }
        if (kind == "page") {
            const std::string page(std::istreambuf_iterator<char>(std::cin), {});
            return manualPage(*program, page);
        }
    }
    return std::nullopt;
}

int writeManual(const std::vector<std::string>& arguments) {
    const auto text = arguments.size() == 2 ? written(arguments[0], arguments[1]) : std::nullopt;
    if (!text) {
        std::fputs(manualUsage, stderr);
        return EXIT_FAILURE;
    }
    std::cout << *text << std::flush;
    return std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace tarnwick

int main(int argc, char** argv) {
    try {
        return tarnwick::writeManual(tarnwick::argumentsOf(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick-manual: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

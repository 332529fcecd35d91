// Writes a page for each sample: to look at, and for the test that prints them.
// usage: tarnwick-report-samples FOLDER
#include "app/Report/ReportHtml.h"
#include "tests/app/Report/Samples.h"
#include "tests/core/History/SomeHistory.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>

namespace tarnwick {

namespace {

bool writeSamples(const std::filesystem::path& folder) {
    const UtcOffset offset = test::centralEurope;
    bool isWritten = true;
    for (const test::Sample& sample : test::samples()) {
        const Report report = makeReport(sample.history, sample.host, sample.wanted, offset);
        std::ofstream file(folder / (sample.name + ".html"), std::ios::binary);
        file << reportHtml(report, {.version = TARNWICK_VERSION, .made = sample.wanted.to}, offset)
             << std::flush;
        isWritten = isWritten && file.good();
    }
    return isWritten;
}

} // namespace

} // namespace tarnwick

int main(int argc, char** argv) {
    try {
        if (argc != 2) {
            std::fputs("usage: tarnwick-report-samples FOLDER\n", stderr);
            return EXIT_FAILURE;
        }
        return tarnwick::writeSamples(argv[1]) ? EXIT_SUCCESS : EXIT_FAILURE;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "tarnwick-report-samples: %s\n", error.what());
        return EXIT_FAILURE;
    }
}

// Writes a year's journal that ends with the present hour, for a program that is measured.
// usage: year-journal FILE HOST
#include "bench/SomeYear.h"

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fputs("usage: year-journal FILE HOST\n", stderr);
        return EXIT_FAILURE;
    }
    tarnwick::SqliteJournal journal(argv[1]);
    const auto now = std::chrono::floor<std::chrono::hours>(std::chrono::system_clock::now());
    return tarnwick::writeYear(journal, now, argv[2]) ? EXIT_SUCCESS : EXIT_FAILURE;
}

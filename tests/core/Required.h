// Tests that need something from the machine say so where it is missing, and fail there when it is required.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <string_view>

namespace tarnwick::test {

inline bool laboratoryIsRequired() {
    const char* value = std::getenv("TARNWICK_LAB");
    return value != nullptr && std::string_view(value) == "require";
}

} // namespace tarnwick::test

/// Skips the present test aloud, or fails it with TARNWICK_LAB=require in the environment.
#define TARNWICK_CANNOT_RUN(reason)                                                                          \
    do {                                                                                                     \
        if (::tarnwick::test::laboratoryIsRequired()) {                                                      \
            FAIL() << (reason);                                                                              \
        }                                                                                                    \
        GTEST_SKIP() << (reason);                                                                            \
    } while (false)

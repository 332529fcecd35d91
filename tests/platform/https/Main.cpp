// Starts the servers and the toolkit for all tests of the program.
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/platform/https/UpdateServers.h"

#include <QCoreApplication>

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>

namespace tarnwick::test {

namespace {

std::optional<UpdateServers> presentServers;
bool isPrepared = false;

/// In the laboratory, from which nothing goes out. Where the store is looked for can't be told to the
/// library, so ours is put in the place of the system's.
bool trustOnly(const std::filesystem::path& store) {
    return std::getenv("TARNWICK_LAB_NAMESPACE") != nullptr && havePrivateMounts()
           && putInPlace(store, "/etc/ssl/certs");
}

} // namespace

UpdateServers& updateServers() {
    return *presentServers;
}

bool isAmongUpdateServers() {
    return isPrepared;
}

} // namespace tarnwick::test

int main(int argumentCount, char* arguments[]) {
    testing::InitGoogleTest(&argumentCount, arguments);
    // Before the toolkit starts threads, which would stay in the mounts of before.
    tarnwick::test::presentServers.emplace();
    tarnwick::test::isPrepared = tarnwick::test::trustOnly(tarnwick::test::updateServers().store());
    const QCoreApplication application(argumentCount, arguments);
    const int status = RUN_ALL_TESTS();
    tarnwick::test::presentServers.reset();
    return status;
}

// The name servers in files that the test writes.
#include "platform/linux/NameServers.h"

#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace tarnwick {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NameServersTest : public testing::Test {
protected:
    void write(const std::string& name, const std::string& text) const {
        test::writeFile(folder_.path() / name, text);
    }

    [[nodiscard]] std::vector<std::string> present() const { return NameServers::present(files()); }

    [[nodiscard]] std::vector<std::string> asked() const { return NameServers::asked(files()); }

private:
    [[nodiscard]] std::vector<std::filesystem::path> files() const {
        return {folder_.path() / "resolv.conf", folder_.path() / "real.conf"};
    }

    test::TemporaryFolder folder_;
};

} // namespace

TEST_F(NameServersTest, AreThoseThatTheFileNamesInItsOrder) {
    write(
        "resolv.conf",
        "# made\nsearch lan\nnameserver 10.0.0.2\n  nameserver\t2001:db8::53 \noptions rotate");

    EXPECT_THAT(present(), ElementsAre("10.0.0.2", "2001:db8::53"));
}

TEST_F(NameServersTest, CommentsAndWhatIsNoAddressNameNone) {
    write(
        "resolv.conf", "#nameserver 10.0.0.1\n;nameserver 10.0.0.2\nnameserver\nnameserver one.example\n"
                       "nameservers 10.0.0.3\nnameserver 10.0.0.256\n");

    EXPECT_THAT(present(), IsEmpty());
}

TEST_F(NameServersTest, EachIsNamedOnceAndNoMoreThanAreAsked) {
    write(
        "resolv.conf", "nameserver 10.0.0.1\nnameserver 10.0.0.1\nnameserver 10.0.0.2\nnameserver 10.0.0.3\n"
                       "nameserver 10.0.0.4\n");

    EXPECT_THAT(present(), ElementsAre("10.0.0.1", "10.0.0.2", "10.0.0.3"));
}

TEST_F(NameServersTest, BehindAForwarderOnThisMachineAreThoseThatItAsks) {
    write("real.conf", "nameserver 10.0.0.2\n");
    for (const char* const forwarder : {"127.0.0.53", "127.0.0.1", "127.8.9.1", "::1", "0.0.0.0", "::"}) {
        write("resolv.conf", std::string("nameserver ") + forwarder + "\n");
        EXPECT_THAT(present(), ElementsAre("10.0.0.2")) << forwarder;
    }
}

TEST_F(NameServersTest, WhoseFileIsNotReadWhereThereIsNoForwarder) {
    write("resolv.conf", "nameserver 10.0.0.1\n");
    write("real.conf", "nameserver 10.0.0.2\n");

    EXPECT_THAT(present(), ElementsAre("10.0.0.1"));
}

TEST_F(NameServersTest, OneThatIsLinkLocalIsNamedWithItsInterface) {
    write("resolv.conf", "nameserver fe80::1%lo\n");

    EXPECT_THAT(present(), ElementsAre("fe80::1%lo"));
}

TEST_F(NameServersTest, AskedAreThoseBehindTheForwarder) {
    write("resolv.conf", "nameserver 127.0.0.53\n");
    write("real.conf", "nameserver 10.0.0.2\n");

    EXPECT_THAT(asked(), ElementsAre("10.0.0.2"));
}

TEST_F(NameServersTest, OneOnThisMachineIsAskedItselfWhereItTellsOfNoOthers) {
    write("resolv.conf", "nameserver 127.0.0.1\nnameserver ::1\n");

    EXPECT_THAT(asked(), ElementsAre("127.0.0.1", "::1"));
}

TEST_F(NameServersTest, WithoutFilesThereAreNone) {
    EXPECT_THAT(present(), IsEmpty());
    EXPECT_THAT(asked(), IsEmpty());
}

TEST_F(NameServersTest, TheSystemsFilesAreThoseOfTheResolverAndOfForwarders) {
    const auto files = NameServers::systemFiles();

    ASSERT_FALSE(files.empty());
    EXPECT_EQ(files.front(), "/etc/resolv.conf");
    EXPECT_THAT(files, testing::Contains("/run/systemd/resolve/resolv.conf"));
}

} // namespace tarnwick

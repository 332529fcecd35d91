// What comes out of an archive, and which archives are refused.
#include "platform/archive/Unpack.h"

#include "tests/core/ChildProcess.h"
#include "tests/core/Storage/PrivateMounts.h"
#include "tests/platform/archive/MadeArchive.h"
#include "tests/support/CaseName.h"
#include "tests/support/Command.h"
#include "tests/support/Files.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <functional>
#include <sys/stat.h>

namespace tarnwick {
namespace {

namespace fs = std::filesystem;

using test::MadeArchive;
using UnpackResult = std::optional<UnpackFailure>;

UnpackResult fault(UnpackFault fault) {
    return UnpackFailure(fault);
}

mode_t permissionsOf(const fs::path& path) {
    struct stat info{};

    EXPECT_EQ(::lstat(path.c_str(), &info), 0);
    return info.st_mode & 07777;
}

class UnpackTest : public testing::Test {
protected:
    UnpackTest() : umask_(::umask(022)) { test::writeFile(outside_, "outside"); }

    ~UnpackTest() override { ::umask(umask_); }

    UnpackTest(const UnpackTest&) = delete;
    UnpackTest& operator=(const UnpackTest&) = delete;

    [[nodiscard]] UnpackResult unpacked(const UnpackLimits& limits = {}) const {
        return unpack(file_, target_, "Tarnwick.app", limits);
    }

    /// Nothing is left of what came out, and nothing outside has changed.
    void expectNothingLeft() const {
        EXPECT_FALSE(fs::exists(fs::symlink_status(target_)));
        EXPECT_EQ(test::contentOf(outside_), "outside");
        EXPECT_EQ(test::fileCount(folder_.path()), 2);
    }

    /// A small release.
    void makeRelease() const {
        MadeArchive archive(file_);
        archive.folder("Tarnwick.app/")
            .folder("Tarnwick.app/bin/")
            .file("Tarnwick.app/bin/tarnwick", "program", 0755)
            .file("Tarnwick.app/Information.json", "{}")
            .folder("Tarnwick.app/lib/")
            .link("Tarnwick.app/lib/libx.so.1", "libx.so.1.2")
            .file("Tarnwick.app/lib/libx.so.1.2", std::string(200'000, 'x'))
            .link("Tarnwick.app/tarnwick", "bin/tarnwick")
            .close();
    }

    test::TemporaryFolder folder_;
    fs::path file_ = folder_.path() / "Tarnwick.tar.zst";
    fs::path target_ = folder_.path() / "new";
    fs::path app_ = target_ / "Tarnwick.app";
    fs::path outside_ = folder_.path() / "outside";

private:
    mode_t umask_;
};

TEST_F(UnpackTest, PutsFoldersFilesAndLinksInPlace) {
    makeRelease();
    EXPECT_EQ(unpacked(), UnpackResult());
    EXPECT_EQ(test::fileCount(target_), 1);
    EXPECT_EQ(test::fileCount(app_), 4);
    EXPECT_EQ(test::contentOf(app_ / "bin/tarnwick"), "program");
    EXPECT_EQ(test::contentOf(app_ / "tarnwick"), "program");
    EXPECT_EQ(test::contentOf(app_ / "lib/libx.so.1.2"), std::string(200'000, 'x'));
    EXPECT_EQ(fs::read_symlink(app_ / "lib/libx.so.1"), "libx.so.1.2");
}

TEST_F(UnpackTest, KeepsOnlyTheRightToExecute) {
    MadeArchive archive(file_);
    archive.folder("Tarnwick.app")
        .file("Tarnwick.app/a", "", 07755)
        .file("Tarnwick.app/b", "", 0666)
        .file("Tarnwick.app/c", "", 0)
        .file("Tarnwick.app/d", "", 0100)
        .close();
    EXPECT_EQ(unpacked(), UnpackResult());
    EXPECT_EQ(permissionsOf(target_), 0700U);
    EXPECT_EQ(permissionsOf(app_), 0755U);
    EXPECT_EQ(permissionsOf(app_ / "a"), 0755U);
    EXPECT_EQ(permissionsOf(app_ / "b"), 0644U);
    EXPECT_EQ(permissionsOf(app_ / "c"), 0644U);
    EXPECT_EQ(permissionsOf(app_ / "d"), 0755U);
}

TEST_F(UnpackTest, UnpacksWhatTarPacks) {
    const fs::path source = folder_.path() / "source";
    test::writeFile(source / "Tarnwick.app/bin/tarnwick", "program");
    fs::create_symlink("bin/tarnwick", source / "Tarnwick.app/tarnwick");
    const auto packing = test::run(
        "command -v zstd && tar --zstd -C " + test::shellQuoted(source) + " -cf " + test::shellQuoted(file_)
        + " Tarnwick.app");
    if (packing.status != 0) {
        TARNWICK_CANNOT_RUN("needs tar and zstd: " + packing.output);
    }
    EXPECT_EQ(unpacked(), UnpackResult());
    EXPECT_EQ(test::contentOf(app_ / "tarnwick"), "program");
}

TEST_F(UnpackTest, TouchesNothingThatIsThere) {
    makeRelease();
    test::writeFile(target_ / "mine", "mine");
    EXPECT_EQ(unpacked(), UnpackResult(std::make_error_code(std::errc::file_exists)));
    EXPECT_EQ(test::contentOf(target_ / "mine"), "mine");
    EXPECT_EQ(test::fileCount(target_), 1);
}

TEST_F(UnpackTest, FollowsNoLinkInPlaceOfTheFolder) {
    makeRelease();
    const fs::path other = folder_.path() / "other";
    fs::create_directory(other);
    fs::create_symlink(other, target_);
    EXPECT_EQ(unpacked(), UnpackResult(std::make_error_code(std::errc::file_exists)));
    EXPECT_EQ(test::fileCount(other), 0);
}

TEST_F(UnpackTest, TellsThatTheFileIsMissing) {
    EXPECT_EQ(unpacked(), UnpackResult(std::make_error_code(std::errc::no_such_file_or_directory)));
    EXPECT_FALSE(fs::exists(target_));
}

struct EvilArchive {
    std::string name;
    std::function<void(MadeArchive&, const fs::path& outside)> fill;
    UnpackFault fault;

    friend void PrintTo(const EvilArchive& evil, std::ostream* out) { *out << evil.name; }
};

using Made = MadeArchive&;
using Outside = const fs::path&;

class RefusedArchive : public UnpackTest, public testing::WithParamInterface<EvilArchive> {};

INSTANTIATE_TEST_SUITE_P(
    Paths, RefusedArchive,
    testing::Values(
        EvilArchive{
            "ClimbsOut", [](Made made, Outside) { made.file("Tarnwick.app/../outside", "evil"); },
            UnpackFault::unsafePath},
        EvilArchive{
            "ClimbsOutAtOnce", [](Made made, Outside) { made.file("../outside", "evil"); },
            UnpackFault::unsafePath},
        EvilArchive{
            "ClimbsFar", [](Made made, Outside) { made.file("Tarnwick.app/a/../../../outside", "evil"); },
            UnpackFault::unsafePath},
        EvilArchive{
            "Absolute", [](Made made, Outside outside) { made.file(outside.string(), "evil"); },
            UnpackFault::unsafePath},
        EvilArchive{"CurrentFolder", [](Made made, Outside) { made.folder("./"); }, UnpackFault::unsafePath},
        EvilArchive{
            "LongPath",
            [](Made made, Outside) { made.file("Tarnwick.app/" + std::string(500, 'a'), "evil"); },
            UnpackFault::unsafePath},
        EvilArchive{
            "OtherFolder", [](Made made, Outside) { made.folder("Other.app"); }, UnpackFault::wrongFolder},
        EvilArchive{
            "FileBesideTheFolder", [](Made made, Outside) { made.file("evil", "evil"); },
            UnpackFault::wrongFolder},
        EvilArchive{
            "SimilarFolder", [](Made made, Outside) { made.folder("Tarnwick.apple"); },
            UnpackFault::wrongFolder}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Links, RefusedArchive,
    testing::Values(
        EvilArchive{
            "LinkOut", [](Made made, Outside) { made.link("Tarnwick.app/l", "../../outside"); },
            UnpackFault::unsafeLink},
        EvilArchive{
            "AbsoluteLink", [](Made made, Outside outside) { made.link("Tarnwick.app/l", outside.string()); },
            UnpackFault::unsafeLink},
        EvilArchive{
            "FileThroughLink",
            [](Made made, Outside) {
                made.folder("Tarnwick.app/d").link("Tarnwick.app/l", "d").file("Tarnwick.app/l/f", "evil");
            },
            UnpackFault::damaged},
        EvilArchive{
            "FolderThroughLink",
            [](Made made, Outside) { made.link("Tarnwick.app/l", "d").folder("Tarnwick.app/l/f"); },
            UnpackFault::damaged},
        EvilArchive{
            "LinkOverFile",
            [](Made made, Outside) { made.file("Tarnwick.app/f", "").link("Tarnwick.app/f", "d"); },
            UnpackFault::damaged},
        EvilArchive{
            "LinkOverFolder",
            [](Made made, Outside) {
                made.link("Tarnwick.app/f", "d").folder("Tarnwick.app/f").file("Tarnwick.app/f/g", "");
            },
            UnpackFault::damaged},
        EvilArchive{
            "LinkThroughLink",
            [](Made made, Outside) {
                made.folder("Tarnwick.app/d").link("Tarnwick.app/l", "d").link("Tarnwick.app/l/m", "x");
            },
            UnpackFault::damaged},
        EvilArchive{
            "HardLinkOut",
            [](Made made, Outside outside) { made.hardLink("Tarnwick.app/l", outside.string()); },
            UnpackFault::unsafeLink},
        EvilArchive{
            "HardLinkInside",
            [](Made made, Outside) {
                made.file("Tarnwick.app/f", "").hardLink("Tarnwick.app/l", "Tarnwick.app/f");
            },
            UnpackFault::unsafeLink}),
    test::caseName);

INSTANTIATE_TEST_SUITE_P(
    Types, RefusedArchive,
    testing::Values(
        EvilArchive{
            "CharacterDevice", [](Made made, Outside) { made.special("Tarnwick.app/d", AE_IFCHR); },
            UnpackFault::unsafeType},
        EvilArchive{
            "BlockDevice", [](Made made, Outside) { made.special("Tarnwick.app/d", AE_IFBLK); },
            UnpackFault::unsafeType},
        EvilArchive{
            "Pipe", [](Made made, Outside) { made.special("Tarnwick.app/d", AE_IFIFO); },
            UnpackFault::unsafeType},
        EvilArchive{
            "FileTwice",
            [](Made made, Outside) { made.file("Tarnwick.app/f", "a").file("Tarnwick.app/f", "b"); },
            UnpackFault::damaged},
        EvilArchive{
            "FolderOverFile",
            [](Made made, Outside) { made.file("Tarnwick.app/f", "a").folder("Tarnwick.app/f"); },
            UnpackFault::damaged},
        EvilArchive{
            "FileInFile",
            [](Made made, Outside) { made.file("Tarnwick.app/f", "a").file("Tarnwick.app/f/g", "b"); },
            UnpackFault::damaged},
        EvilArchive{
            "FileInNoFolder", [](Made made, Outside) { made.file("Tarnwick.app/d/f", "a"); },
            UnpackFault::damaged}),
    test::caseName);

TEST_P(RefusedArchive, LeavesNothingBehind) {
    MadeArchive archive(file_);
    archive.folder("Tarnwick.app/").file("Tarnwick.app/before", "before");
    GetParam().fill(archive, outside_);
    archive.file("Tarnwick.app/after", "after").close();
    EXPECT_EQ(unpacked(), fault(GetParam().fault));
    expectNothingLeft();
}

TEST_F(UnpackTest, RefusesAFileOrALinkInPlaceOfTheTopFolder) {
    {
        MadeArchive archive(file_);
        archive.file("Tarnwick.app", "evil").close();
    }
    EXPECT_EQ(unpacked(), fault(UnpackFault::wrongFolder));
    MadeArchive archive(file_);
    archive.link("Tarnwick.app", "outside").close();
    EXPECT_EQ(unpacked(), fault(UnpackFault::wrongFolder));
    expectNothingLeft();
}

TEST_F(UnpackTest, RefusesABomb) {
    MadeArchive archive(file_);
    archive.folder("Tarnwick.app").file("Tarnwick.app/zeros", std::string(64 << 20, '\0')).close();
    EXPECT_LT(fs::file_size(file_), 100'000U);
    EXPECT_EQ(unpacked({.bytes = 8 << 20}), fault(UnpackFault::tooLarge));
    expectNothingLeft();
}

TEST_F(UnpackTest, CountsTheBytesOfAllFiles) {
    {
        MadeArchive archive(file_);
        archive.folder("Tarnwick.app")
            .file("Tarnwick.app/a", std::string(600, 'a'))
            .file("Tarnwick.app/b", std::string(400, 'b'))
            .close();
    }
    EXPECT_EQ(unpacked({.bytes = 999}), fault(UnpackFault::tooLarge));
    expectNothingLeft();
    EXPECT_EQ(unpacked({.bytes = 1000}), UnpackResult());
}

TEST_F(UnpackTest, CountsEntriesOfEachKind) {
    makeRelease(); // of eight entries
    EXPECT_EQ(unpacked({.entries = 7}), fault(UnpackFault::tooManyEntries));
    expectNothingLeft();
    EXPECT_EQ(unpacked({.entries = 8}), UnpackResult());
}

TEST_F(UnpackTest, RefusesAnArchiveThatIsCutShort) {
    makeRelease();
    const std::string whole = test::contentOf(file_);
    for (std::size_t size = 0; size < whole.size(); ++size) {
        test::writeFile(file_, whole.substr(0, size));
        ASSERT_EQ(unpacked(), fault(UnpackFault::damaged)) << size;
    }
    expectNothingLeft();
}

TEST_F(UnpackTest, RefusesWhatIsNoArchive) {
    for (const std::string content : {"", "<html>Not Found</html>", "\x28\xB5\x2F\xFD junk"}) {
        test::writeFile(file_, content);
        EXPECT_EQ(unpacked(), fault(UnpackFault::damaged));
    }
    test::writeFile(file_, std::string(100'000, '\0'));
    EXPECT_EQ(unpacked(), fault(UnpackFault::damaged));
    expectNothingLeft();
}

TEST_F(UnpackTest, RefusesAnArchiveOfNothing) {
    {
        MadeArchive archive(file_);
        archive.close();
    }
    EXPECT_EQ(unpacked(), fault(UnpackFault::damaged));
    expectNothingLeft();

    MadeArchive archive(file_);
    archive.folder("Tarnwick.app").close();
    EXPECT_EQ(unpacked(), UnpackResult());
    EXPECT_TRUE(fs::is_empty(app_));
}

TEST_F(UnpackTest, FollowsNoLinkInPlaceOfTheArchive) {
    makeRelease();
    fs::rename(file_, folder_.path() / "elsewhere");
    fs::create_symlink("elsewhere", file_);
    EXPECT_EQ(unpacked(), UnpackResult(std::make_error_code(std::errc::too_many_symbolic_link_levels)));
    EXPECT_FALSE(fs::exists(target_));
}

TEST_F(UnpackTest, DoesNotWaitForAPipe) {
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(unpacked(), fault(UnpackFault::damaged));
    expectNothingLeft();
}

struct OtherArchive {
    std::string name;
    int format;
    int filter;
    int times = 1;

    friend void PrintTo(const OtherArchive& other, std::ostream* out) { *out << other.name; }
};

class OtherFormat : public UnpackTest, public testing::WithParamInterface<OtherArchive> {};

INSTANTIATE_TEST_SUITE_P(
    Unpack, OtherFormat,
    testing::Values(
        OtherArchive{"PlainTar", ARCHIVE_FORMAT_TAR_USTAR, ARCHIVE_FILTER_NONE},
        OtherArchive{"GzipTar", ARCHIVE_FORMAT_TAR_USTAR, ARCHIVE_FILTER_GZIP},
        OtherArchive{"Zip", ARCHIVE_FORMAT_ZIP, ARCHIVE_FILTER_ZSTD},
        OtherArchive{"Cpio", ARCHIVE_FORMAT_CPIO_POSIX, ARCHIVE_FILTER_ZSTD},
        OtherArchive{"PackedTwice", ARCHIVE_FORMAT_TAR_USTAR, ARCHIVE_FILTER_ZSTD, 2}),
    test::caseName);

TEST_P(OtherFormat, IsRefused) {
    MadeArchive archive(file_, GetParam().format, GetParam().filter, GetParam().times);
    archive.folder("Tarnwick.app/").file("Tarnwick.app/f", "a").close();
    EXPECT_EQ(unpacked(), fault(UnpackFault::damaged));
    expectNothingLeft();
}

TEST_F(UnpackTest, TellsThatTheDiskIsFull) {
    MadeArchive archive(file_);
    archive.folder("Tarnwick.app").file("Tarnwick.app/f", std::string(1 << 20, 'f')).close();
    const fs::path disk = folder_.path() / "disk";
    fs::create_directory(disk);
    const auto status = test::exitStatusOf([&] {
        if (!test::havePrivateMounts() || !test::mountSmallDisk(disk)
            || ::mkdir((disk / "others").c_str(), 0700) != 0) {
            return test::noMounts;
        }
        const auto result = unpack(file_, disk / "new", "Tarnwick.app");
        const bool isFull = result == UnpackResult(std::make_error_code(std::errc::no_space_on_device));
        return isFull && test::fileCount(disk) == 1 ? 0 : 1;
    });
    if (status == test::noMounts) {
        TARNWICK_CANNOT_RUN("needs mounts of its own");
    }
    EXPECT_EQ(status, 0);
}

TEST(UnpackFailureText, TellsTheReason) {
    const auto told = [](const UnpackFailure& failure) {
        const std::string text = sentence(failure);
        const std::string start = "The download can't be unpacked: ";
        return text.starts_with(start) ? text.substr(start.size()) : "";
    };
    EXPECT_EQ(told(std::make_error_code(std::errc::no_space_on_device)), "No space left on device.");
    EXPECT_EQ(told(UnpackFault::damaged), "it is damaged.");
    EXPECT_EQ(told(UnpackFault::wrongFolder), "it is not one folder of Tarnwick.");
    EXPECT_EQ(told(UnpackFault::unsafePath), "it has files that do not belong there.");
    EXPECT_EQ(told(UnpackFault::unsafeLink), told(UnpackFault::unsafePath));
    EXPECT_EQ(told(UnpackFault::unsafeType), told(UnpackFault::unsafePath));
    EXPECT_EQ(told(UnpackFault::tooLarge), "it is larger than Tarnwick can be.");
    EXPECT_EQ(told(UnpackFault::tooManyEntries), told(UnpackFault::tooLarge));
}

} // namespace
} // namespace tarnwick

// Which downloaded archives may be unpacked.
#include "core/Update/ArchiveCheck.h"

#include "tests/support/Files.h"
#include "tests/support/MinisignKey.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <vector>

namespace tarnwick {
namespace {

using test::MinisignKey;
using Refusal = std::optional<ArchiveRefusal>;

class ArchiveCheckTest : public testing::Test {
protected:
    ArchiveCheckTest() {
        test::writeFile(file_, content_);
        archive_.size = content_.size();
        archive_.sha256 = sha256Of(content_);
    }

    [[nodiscard]] static Sha256 sha256Of(const std::string& content) {
        Sha256 digest{};
        ::crypto_hash_sha256(
            digest.data(), reinterpret_cast<const unsigned char*>(content.data()), content.size());
        return digest;
    }

    [[nodiscard]] Refusal checked(const std::string& signature) const {
        return checkArchive(file_, archive_, *ReleaseVersion::parse("0.2.0"), signature, keys_);
    }

    [[nodiscard]] Refusal checked() const { return checked(key_.sign(content_, comment_)); }

    test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "download";
    /// Ends with the first byte of a piece.
    std::string content_ = std::string(std::size_t{4} << 16, 'a') + "z";
    ReleaseArchive archive_{
        .address = "https://one.example/x/Tarnwick-0.2.0-x86_64.tar.zst", .machine = "x86_64"};
    std::string comment_ = "file:Tarnwick-0.2.0-x86_64.tar.zst\tversion:0.2.0";
    MinisignKey key_{1};
    std::vector<Minisign::PublicKey> keys_{*Minisign::parsePublicKey(key_.publicLine())};
};

TEST_F(ArchiveCheckTest, LetsThroughWhatTheMakerSigned) {
    EXPECT_EQ(checked(), Refusal());
}

TEST_F(ArchiveCheckTest, LetsThroughOtherFieldsInAnyOrder) {
    comment_ = "timestamp:1795406400\tversion:0.2.0\tfile:Tarnwick-0.2.0-x86_64.tar.zst\thashed";
    EXPECT_EQ(checked(), Refusal());
}

TEST_F(ArchiveCheckTest, RefusesAMissingFile) {
    std::filesystem::remove(file_);
    EXPECT_EQ(checked(), Refusal(ArchiveFault::unreadable));
}

TEST_F(ArchiveCheckTest, RefusesAFolder) {
    std::filesystem::remove(file_);
    std::filesystem::create_directory(file_);
    EXPECT_EQ(checked(), Refusal(ArchiveFault::unreadable));
}

TEST_F(ArchiveCheckTest, FollowsNoLink) {
    std::filesystem::rename(file_, folder_.path() / "elsewhere");
    std::filesystem::create_symlink("elsewhere", file_);
    EXPECT_EQ(checked(), Refusal(ArchiveFault::unreadable));
}

TEST_F(ArchiveCheckTest, DoesNotWaitForAPipe) {
    std::filesystem::remove(file_);
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(checked(), Refusal(ArchiveFault::wrongSize));
}

TEST_F(ArchiveCheckTest, RefusesAnotherSize) {
    const std::string signature = key_.sign(content_, comment_);
    test::writeFile(file_, content_.substr(1));
    EXPECT_EQ(checked(signature), Refusal(ArchiveFault::wrongSize));
    test::writeFile(file_, content_ + "a");
    EXPECT_EQ(checked(signature), Refusal(ArchiveFault::wrongSize));
    test::writeFile(file_, "");
    EXPECT_EQ(checked(signature), Refusal(ArchiveFault::wrongSize));
}

TEST_F(ArchiveCheckTest, RefusesAnotherDigestEvenIfItIsSigned) {
    content_.front() = 'b';
    test::writeFile(file_, content_);
    EXPECT_EQ(checked(), Refusal(ArchiveFault::wrongDigest));
}

TEST_F(ArchiveCheckTest, RefusesAContentThatIsNotSignedEvenIfItsDigestFits) {
    const std::string signature = key_.sign(content_, comment_);
    content_.back() = 'b';
    test::writeFile(file_, content_);
    archive_.sha256 = sha256Of(content_);
    EXPECT_EQ(checked(signature), Refusal(Minisign::Fault::wrongContent));
}

TEST_F(ArchiveCheckTest, RefusesAnUnknownKeyAndATextThatIsNoSignature) {
    EXPECT_EQ(checked(MinisignKey(2).sign(content_, comment_)), Refusal(Minisign::Fault::unknownKey));
    EXPECT_EQ(checked("Not Found"), Refusal(Minisign::Fault::malformed));
}

class MixedUpArchive : public ArchiveCheckTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(
    ArchiveCheck, MixedUpArchive,
    testing::Values(
        "", "a comment", "file:Tarnwick-0.2.0-x86_64.tar.zst", "version:0.2.0",
        "file:Tarnwick-0.2.0-x86_64.tar.zst\tversion:0.1.0",
        "file:Tarnwick-0.2.0-x86_64.tar.zst\tversion:0.2.0 ", "file:Tarnwick-0.2.0-x86_64.tar.zst\tversion:",
        "file:Tarnwick-0.2.0-x86_64.tar.zst\tversion", "file:Tarnwick-0.2.0-x86_64.tar.zst\taversion:0.2.0",
        "file:Tarnwick-0.2.0-x86_64.tar.zst version:0.2.0",
        "file:Tarnwick-0.2.0-aarch64.tar.zst\tversion:0.2.0", "file:\tversion:0.2.0",
        "version:0.1.0\tversion:0.2.0\tfile:Tarnwick-0.2.0-x86_64.tar.zst"));

TEST_P(MixedUpArchive, IsRefused) {
    comment_ = GetParam();
    EXPECT_EQ(checked(), Refusal(ArchiveFault::wrongRelease));
}

TEST(ArchiveRefusalText, TellsTheReason) {
    EXPECT_EQ(sentence(ArchiveFault::unreadable), "The download can't be read.");
    EXPECT_EQ(sentence(ArchiveFault::wrongSize), "The download is incomplete or too large.");
    EXPECT_EQ(
        sentence(ArchiveFault::wrongDigest),
        "The download is not the file that the update information names.");
    EXPECT_EQ(
        sentence(ArchiveFault::wrongRelease),
        "The download is signed as another version, so it is not trusted.");
    EXPECT_EQ(
        sentence(Minisign::Fault::wrongContent),
        "The download does not match its signature, so it is not trusted.");
}

} // namespace
} // namespace tarnwick

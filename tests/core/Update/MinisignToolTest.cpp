// What Debian's tool signs is trusted here, and what is signed here is trusted by the tool.
#include "core/Update/Minisign.h"

#include "tests/core/Required.h"
#include "tests/support/Command.h"
#include "tests/support/Files.h"
#include "tests/support/MinisignKey.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <vector>

namespace tarnwick::Minisign {
namespace {

using ToolResult = std::variant<std::string, Fault>;

class MinisignTool : public testing::Test {
protected:
    void SetUp() override {
        if (test::run("command -v minisign").status != 0) {
            TARNWICK_CANNOT_RUN("needs the program minisign");
        }
        test::writeFile(file_, content_);
    }

    /// Makes a key pair without password, and returns the public key.
    [[nodiscard]] PublicKey makeKey(const std::string& name) const {
        EXPECT_EQ(tool("-G -W -p " + name + ".pub -s " + name + ".key").status, 0);
        const std::string text = test::contentOf(folder_.path() / (name + ".pub"));
        const std::size_t line = text.find('\n') + 1;
        return parsePublicKey(text.substr(line, text.find('\n', line) - line)).value();
    }

    /// The text of the signature file.
    [[nodiscard]] std::string signWith(const std::string& name, const std::string& options = "") const {
        const auto result = tool("-S -s " + name + ".key -m content " + options);
        EXPECT_EQ(result.status, 0) << result.output;
        return test::contentOf(folder_.path() / "content.minisig");
    }

    [[nodiscard]] test::CommandResult tool(const std::string& arguments) const {
        return test::run("cd " + test::shellQuoted(folder_.path()) + " && minisign " + arguments);
    }

    test::TemporaryFolder folder_;
    std::filesystem::path file_ = folder_.path() / "content";
    std::string content_ = std::string(200'000, 'c') + "the end";
};

TEST_F(MinisignTool, SignsWhatIsTrustedHere) {
    const std::vector keys{makeKey("one")};
    EXPECT_EQ(
        verify(content_, signWith("one", "-t \"$(printf 'file:content\\tversion:0.2.0')\""), keys),
        ToolResult("file:content\tversion:0.2.0"));
    EXPECT_TRUE(std::holds_alternative<std::string>(verify(content_, signWith("one"), keys)));
}

TEST_F(MinisignTool, SignsWithASecondKeyThatIsTrustedToo) {
    const std::vector keys{makeKey("one"), makeKey("two")};
    EXPECT_EQ(verify(content_, signWith("two", "-t x"), keys), ToolResult("x"));
}

TEST_F(MinisignTool, SignsWithAKeyThatIsUnknownHere) {
    const std::vector keys{makeKey("one")};
    static_cast<void>(makeKey("other"));
    EXPECT_EQ(verify(content_, signWith("other"), keys), ToolResult(Fault::unknownKey));
}

TEST_F(MinisignTool, SignsSoThatChangesAreNoticed) {
    const std::vector keys{makeKey("one")};
    std::string signature = signWith("one", "-t version:0.2.0");
    std::string changed = content_;
    changed.back() = 'x';
    EXPECT_EQ(verify(changed, signature, keys), ToolResult(Fault::wrongContent));

    signature.replace(signature.find("0.2.0"), 5, "0.3.0");
    EXPECT_EQ(verify(content_, signature, keys), ToolResult(Fault::wrongComment));
}

TEST_F(MinisignTool, SignsInItsLegacyWayWhatIsRefusedHere) {
    const std::vector keys{makeKey("one")};
    EXPECT_EQ(verify(content_, signWith("one", "-l"), keys), ToolResult(Fault::legacy));
}

TEST_F(MinisignTool, SignsWhatCutShortIsNoSignatureHere) {
    const std::vector keys{makeKey("one")};
    const std::string signature = signWith("one");
    for (std::size_t length = 0; length + 2 < signature.size(); length += 7) {
        EXPECT_EQ(verify(content_, signature.substr(0, length), keys), ToolResult(Fault::malformed));
    }
}

/// So that tests which sign without the tool sign as it does.
TEST_F(MinisignTool, TrustsTheKeysOfOtherTests) {
    const test::MinisignKey key(1);
    test::writeFile(folder_.path() / "content.minisig", key.sign(content_, "by a test"));
    const auto result = tool("-V -Q -m content -P " + key.publicLine());
    EXPECT_EQ(result.status, 0) << result.output;
    EXPECT_EQ(result.output, "by a test\n");
}

} // namespace
} // namespace tarnwick::Minisign

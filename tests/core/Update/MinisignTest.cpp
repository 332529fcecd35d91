// Which signatures are trusted.
#include "core/Update/Minisign.h"

#include "tests/support/CaseName.h"
#include "tests/support/MinisignKey.h"

#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <vector>

namespace tarnwick::Minisign {
namespace {

using test::MinisignKey;
using Verified = std::variant<std::string, Fault>;

std::vector<PublicKey> keysOf(const std::vector<MinisignKey>& keys) {
    std::vector<PublicKey> parsed;
    for (const MinisignKey& key : keys) {
        parsed.push_back(parsePublicKey(key.publicLine()).value());
    }
    return parsed;
}

const std::string someContent = "What was signed.";

TEST(MinisignKeyText, HasTheKeyWithItsId) {
    const auto key = parsePublicKey(MinisignKey(7).publicLine());
    ASSERT_TRUE(key);
    EXPECT_EQ(key->id, (KeyId{7, 7, 7, 7, 7, 7, 7, 7}));
    EXPECT_NE(key->key, parsePublicKey(MinisignKey(8).publicLine()).value().key);
}

TEST(MinisignKeyText, IsNoOtherText) {
    const std::string line = MinisignKey(7).publicLine();
    const std::string keyBytes(40, 'k');
    EXPECT_FALSE(parsePublicKey(""));
    EXPECT_FALSE(parsePublicKey("RW"));
    EXPECT_FALSE(parsePublicKey(line.substr(1)));
    EXPECT_FALSE(parsePublicKey(line.substr(0, line.size() - 4)));
    EXPECT_FALSE(parsePublicKey(line + "AAAA"));
    EXPECT_FALSE(parsePublicKey(line + "\n"));
    EXPECT_FALSE(parsePublicKey(" " + line));
    EXPECT_FALSE(parsePublicKey("untrusted comment: a key\n" + line));
    EXPECT_FALSE(parsePublicKey(MinisignKey::base64("ED" + keyBytes)));
    EXPECT_TRUE(parsePublicKey(MinisignKey::base64("Ed" + keyBytes)));
}

TEST(Minisign, GivesTheTrustedCommentOfASignedContent) {
    const MinisignKey key(1);
    EXPECT_EQ(verify(someContent, key.sign(someContent, "file:a\tb"), keysOf({key})), Verified("file:a\tb"));
    EXPECT_EQ(verify("", key.sign("", ""), keysOf({key})), Verified(""));
}

TEST(Minisign, TrustsEachOfSeveralKeys) {
    const std::vector keys = keysOf({MinisignKey(1), MinisignKey(2)});
    EXPECT_EQ(verify(someContent, MinisignKey(1).sign(someContent), keys), Verified("a comment"));
    EXPECT_EQ(verify(someContent, MinisignKey(2).sign(someContent), keys), Verified("a comment"));
}

TEST(Minisign, TrustsNoKeyThatIsNotOnTheList) {
    EXPECT_EQ(
        verify(someContent, MinisignKey(3).sign(someContent), keysOf({MinisignKey(1), MinisignKey(2)})),
        Verified(Fault::unknownKey));
    EXPECT_EQ(verify(someContent, MinisignKey(3).sign(someContent), {}), Verified(Fault::unknownKey));
}

TEST(Minisign, TrustsNoOtherKeyUnderAKnownId) {
    const MinisignKey disguised = MinisignKey(3).withIdOf(MinisignKey(1));
    EXPECT_EQ(
        verify(someContent, disguised.sign(someContent), keysOf({MinisignKey(1), MinisignKey(3)})),
        Verified(Fault::wrongContent));
}

TEST(Minisign, NoticesEachChangedByteOfTheContent) {
    const MinisignKey key(1);
    const std::string signature = key.sign(someContent);
    for (std::size_t at = 0; at < someContent.size(); ++at) {
        std::string changed = someContent;
        changed[at] = static_cast<char>(changed[at] ^ 1);
        EXPECT_EQ(verify(changed, signature, keysOf({key})), Verified(Fault::wrongContent));
    }
    EXPECT_EQ(verify(someContent + "x", signature, keysOf({key})), Verified(Fault::wrongContent));
    EXPECT_EQ(verify("", signature, keysOf({key})), Verified(Fault::wrongContent));
}

TEST(Minisign, NoticesAChangedTrustedComment) {
    const MinisignKey key(1);
    std::string signature = key.sign(someContent, "version:0.2.0");
    signature.replace(signature.find("0.2.0"), 5, "0.3.0");
    EXPECT_EQ(verify(someContent, signature, keysOf({key})), Verified(Fault::wrongComment));
}

TEST(Minisign, NoticesTheCommentOfAnotherSignature) {
    const MinisignKey key(1);
    const std::string mine = key.sign(someContent, "version:0.2.0");
    const std::string other = key.sign("another content", "version:0.3.0");
    const std::string mixed =
        mine.substr(0, mine.find("trusted comment", 20)) + other.substr(other.find("trusted comment", 20));
    EXPECT_EQ(verify(someContent, mixed, keysOf({key})), Verified(Fault::wrongComment));
}

TEST(Minisign, LeavesTheUntrustedCommentOutOfAccount) {
    const MinisignKey key(1);
    std::string signature = key.sign(someContent);
    signature.replace(signature.find("made by"), 7, "thought");
    EXPECT_EQ(verify(someContent, signature, keysOf({key})), Verified("a comment"));
}

TEST(Minisign, RefusesALegacySignature) {
    const MinisignKey key(1);
    EXPECT_EQ(verify(someContent, key.sign(someContent, "", "Ed"), keysOf({key})), Verified(Fault::legacy));
}

TEST(Minisign, VerifiesPieceByPiece) {
    const MinisignKey key(1);
    std::string content;
    Verifier verifier;
    for (int piece = 0; piece < 1000; ++piece) {
        const std::string bytes(static_cast<std::size_t>(piece % 300), static_cast<char>(piece));
        content += bytes;
        verifier.add(bytes);
    }
    const auto signature = parseSignature(key.sign(content));
    ASSERT_TRUE(std::holds_alternative<Signature>(signature));
    EXPECT_EQ(verifier.finish(std::get<Signature>(signature), keysOf({key})), Verified("a comment"));
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

struct Mangled {
    std::string name;
    std::function<void(std::vector<std::string>& lines)> change;

    friend void PrintTo(const Mangled& mangled, std::ostream* out) { *out << mangled.name; }
};

class MangledSignature : public testing::TestWithParam<Mangled> {};

using Lines = std::vector<std::string>&;

INSTANTIATE_TEST_SUITE_P(
    Minisign, MangledSignature,
    testing::Values(
        Mangled{"Empty", [](Lines lines) { lines.clear(); }},
        Mangled{"Junk", [](Lines lines) { lines = {"<html>Not Found</html>"}; }},
        Mangled{"OneLine", [](Lines lines) { lines.resize(1); }},
        Mangled{"TwoLines", [](Lines lines) { lines.resize(2); }},
        Mangled{"ThreeLines", [](Lines lines) { lines.resize(3); }},
        Mangled{"FifthLine", [](Lines lines) { lines.emplace_back("more"); }},
        Mangled{"EmptyFifthLine", [](Lines lines) { lines.emplace_back(); }},
        Mangled{"NoUntrustedComment", [](Lines lines) { lines.erase(lines.begin()); }},
        Mangled{"OtherUntrustedComment", [](Lines lines) { lines[0] = "comment: x"; }},
        Mangled{"NoTrustedComment", [](Lines lines) { lines.erase(lines.begin() + 2); }},
        Mangled{"OtherTrustedComment", [](Lines lines) { lines[2] = "comment: x"; }},
        Mangled{"ShortSignature", [](Lines lines) { lines[1].resize(lines[1].size() - 4); }},
        Mangled{"LongSignature", [](Lines lines) { lines[1].insert(4, "AAAA"); }},
        Mangled{"NoBase64", [](Lines lines) { lines[1][10] = '*'; }},
        Mangled{"BlankInSignature", [](Lines lines) { lines[1] += ' '; }},
        Mangled{"ShortGlobalSignature", [](Lines lines) { lines[3].resize(lines[3].size() - 4); }},
        Mangled{"EmptyGlobalSignature", [](Lines lines) { lines[3].clear(); }},
        Mangled{"UnknownAlgorithm", [](Lines lines) { lines[1].replace(0, 2, "RX"); }},
        Mangled{"CarriageReturns", [](Lines lines) { lines[1] += '\r'; }},
        Mangled{"TooLarge", [](Lines lines) { lines[2] += std::string(largestSignature, 'x'); }}),
    test::caseName);

TEST_P(MangledSignature, IsNone) {
    std::vector<std::string> lines = linesOf(MinisignKey(1).sign(someContent));
    GetParam().change(lines);
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    EXPECT_EQ(verify(someContent, text, keysOf({MinisignKey(1)})), Verified(Fault::malformed));
}

TEST(Minisign, MayHaveALongComment) {
    const MinisignKey key(1);
    const std::string comment(largestSignature - key.sign(someContent, "").size(), 'x');
    EXPECT_EQ(verify(someContent, key.sign(someContent, comment), keysOf({key})), Verified(comment));
    EXPECT_EQ(
        verify(someContent, key.sign(someContent, comment + "x"), keysOf({key})), Verified(Fault::malformed));
}

TEST(Minisign, DoesNotNeedTheLastLineBreak) {
    std::string signature = MinisignKey(1).sign(someContent);
    signature.pop_back();
    EXPECT_EQ(verify(someContent, signature, keysOf({MinisignKey(1)})), Verified("a comment"));
}

TEST(Minisign, OfANonCanonicalSignatureIsNotTrusted) {
    // All ones: no number below the group's order.
    std::vector<std::string> lines = linesOf(MinisignKey(1).sign(someContent));
    lines[1] = MinisignKey::base64("ED" + std::string(8, '\1') + std::string(64, '\xFF'));
    EXPECT_EQ(
        verify(
            someContent, lines[0] + '\n' + lines[1] + '\n' + lines[2] + '\n' + lines[3] + '\n',
            keysOf({MinisignKey(1)})),
        Verified(Fault::wrongContent));
}

TEST(MinisignFault, IsToldInASentence) {
    const auto told = [](Fault fault) { return sentence(fault, "It"); };
    EXPECT_EQ(told(Fault::malformed), "It has no signature that can be read, so it is not trusted.");
    EXPECT_EQ(told(Fault::legacy), "It is signed in an outdated way that is not trusted.");
    EXPECT_EQ(told(Fault::unknownKey), "It is signed with an unknown key, so it is not trusted.");
    EXPECT_EQ(told(Fault::wrongContent), "It does not match its signature, so it is not trusted.");
    EXPECT_EQ(told(Fault::wrongComment), "It has a signature that was changed, so it is not trusted.");
}

} // namespace
} // namespace tarnwick::Minisign

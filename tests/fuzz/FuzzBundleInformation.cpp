// Any text through `parseBundleInformation`: what is accepted keeps the bounds.
#include "core/Update/BundleInformation.h"
#include "core/Update/HttpsAddress.h"
#include "tests/fuzz/Fuzzing.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    const auto parsed = parseBundleInformation(std::string(reinterpret_cast<const char*>(data), size));
    if (const auto* const mistake = std::get_if<DocumentMistake>(&parsed)) {
        fuzz::require(!mistake->text.empty());
        return 0;
    }
    const auto& information = std::get<BundleInformation>(parsed);
    fuzz::require(information.checkInterval >= shortestCheckInterval);
    fuzz::require(information.checkInterval <= longestCheckInterval);
    fuzz::require(!information.channel.empty());
    if (information.source) {
        fuzz::require(isHttpsAddress(information.source->feedAddress));
        fuzz::require(!information.source->publicKeys.empty());
        fuzz::require(information.source->publicKeys.size() <= mostPublicKeys);
    }
    return 0;
}

// Any text as a signature file: only the two texts that were signed with the secret key verify.
#include "core/Update/Minisign.h"
#include "tests/fuzz/Fuzzing.h"

#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    using namespace tarnwick::Minisign;
    // The secret key is gone; it has signed the seeds.
    static const std::vector keys{
        parsePublicKey("RWS95pOg/rtkoz83g6jL3W4x1ovaSeOTQ8ycA9GctxRty0i3QxrvpuC0").value()};
    const std::string_view text(reinterpret_cast<const char*>(data), size);

    const auto verified = verify("What was signed.", text, keys);
    if (const auto* const comment = std::get_if<std::string>(&verified)) {
        fuzz::require(*comment == "first" || *comment == "second");
    } else {
        fuzz::require(!sentence(std::get<Fault>(verified), "The download").empty());
    }
    static_cast<void>(parsePublicKey(text));
    return 0;
}

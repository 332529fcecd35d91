// Any text where a person should have written a JSON object: what can be read of it is one.
#include "core/Storage/JsonObject.h"

#include "tests/fuzz/Fuzzing.h"

#include <algorithm>

namespace tarnwick {
namespace {

/// Of the text's lines, the end of the last one included.
bool isLineOf(const std::string& text, int line) {
    return line >= 1 && line <= std::ranges::count(text, '\n') + 1;
}

} // namespace
} // namespace tarnwick

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tarnwick;
    const std::string text(reinterpret_cast<const char*>(data), size);
    const JsonReading reading = salvageJsonObject(text);
    const std::optional<nlohmann::json> whole = parseJsonObject(text);

    fuzz::require(reading.object.is_object());
    fuzz::require(reading.mistake.has_value() != whole.has_value());
    fuzz::require(!whole || *whole == reading.object);
    fuzz::require(!reading.mistake || isLineOf(text, reading.mistake->line));
    fuzz::require(reading.lines.size() == reading.object.size());
    for (const auto& [key, line] : reading.lines) {
        fuzz::require(reading.object.contains(key) && isLineOf(text, line));
    }
    for (const std::string& key : reading.repeated) {
        fuzz::require(reading.object.contains(key));
    }
    // It may be written to a file, and is read from there as it was.
    fuzz::require(parseJsonObject(reading.object.dump()) == reading.object);
    return 0;
}

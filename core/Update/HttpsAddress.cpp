#include "core/Update/HttpsAddress.h"

#include "core/HostText.h"

#include <algorithm>
#include <string>
#include <variant>

namespace tarnwick {

namespace {

constexpr std::string_view httpsScheme = "https://";

/// The characters of RFC 3986 but for those that separate user name, query and fragment.
bool mayBeInAddress(char letter) {
    constexpr std::string_view others = "-._~:/[]!$&'()*+,;=%";
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z')
           || (letter >= '0' && letter <= '9') || others.find(letter) != std::string_view::npos;
}

} // namespace

bool isHttpsAddress(std::string_view text) {
    if (text.size() > longestAddress || !text.starts_with(httpsScheme)
        || !std::ranges::all_of(text, mayBeInAddress)) {
        return false;
    }
    const std::size_t path = text.find('/', httpsScheme.size());
    return path != std::string_view::npos && !text.ends_with('/')
           && std::holds_alternative<std::string>(hostIn(text.substr(0, path)));
}

std::string_view fileNameIn(std::string_view address) {
    return address.substr(address.rfind('/') + 1); // `npos` plus one is the beginning
}

} // namespace tarnwick

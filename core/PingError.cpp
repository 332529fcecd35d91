#include "core/PingError.h"

#include <utility>

namespace tarnwick {

PingError PingError::resolution(std::string text) {
    return {Kind::resolution, std::move(text)};
}

PingError PingError::socket(std::string text) {
    return {Kind::socket, std::move(text)};
}

std::string PingError::message() const {
    switch (kind) {
    case Kind::resolution:
        return "Could not resolve host: " + text;
    case Kind::socket:
        break;
    }
    return "Could not open ICMP socket: " + text;
}

} // namespace tarnwick

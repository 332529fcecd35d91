// Messages to and from the kernel's routing (rtnetlink), as bytes: blocks behind one another, each of which
// begins with its length.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <optional>
#include <span>
#include <type_traits>

namespace tarnwick::Netlink {

using Bytes = std::span<const std::byte>;

/// The structure that `bytes` begins with; nothing when they are too few.
template<class Structure>
[[nodiscard]] std::optional<Structure> structureAt(Bytes bytes) {
    static_assert(std::is_trivially_copyable_v<Structure>);
    if (bytes.size() < sizeof(Structure)) {
        return std::nullopt;
    }
    Structure structure{};
    std::memcpy(&structure, bytes.data(), sizeof structure);
    return structure;
}

template<class Header>
struct Block {
    Header header;
    Bytes content; ///< what follows the header; only as long as the bytes it was taken from
};

/// A message, an attribute of a message, and one of several next hops.
using Message = Block<nlmsghdr>;
using Attribute = Block<rtattr>;
using NextHopBlock = Block<rtnexthop>;

[[nodiscard]] inline std::size_t lengthIn(const nlmsghdr& header) {
    return header.nlmsg_len;
}

[[nodiscard]] inline std::size_t lengthIn(const rtattr& header) {
    return header.rta_len;
}

[[nodiscard]] inline std::size_t lengthIn(const rtnexthop& header) {
    return header.rtnh_len;
}

[[nodiscard]] inline std::size_t aligned(std::size_t length) {
    constexpr std::size_t alignment = 4;
    return (length + alignment - 1) / alignment * alignment;
}

/// Takes the first block off `rest`; nothing at the end, and where the bytes do not make a whole block.
template<class Header>
[[nodiscard]] std::optional<Block<Header>> takeBlock(Bytes& rest) {
    const std::optional<Header> header = structureAt<Header>(rest);
    if (!header) {
        return std::nullopt;
    }
    const std::size_t length = lengthIn(*header);
    if (length < sizeof(Header) || length > rest.size()) {
        return std::nullopt;
    }
    const Block<Header> block{*header, rest.subspan(sizeof(Header), length - sizeof(Header))};
    rest = rest.subspan(std::min(aligned(length), rest.size()));
    return block;
}

/// What follows the fixed part of a message: its attributes.
template<class FixedPart>
[[nodiscard]] Bytes attributesBehind(Bytes content) {
    return content.subspan(std::min(aligned(sizeof(FixedPart)), content.size()));
}

} // namespace tarnwick::Netlink

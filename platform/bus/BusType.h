// How C++ types travel over the bus.
#pragma once

#include "platform/bus/BusMessage.h"

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace tarnwick {

/// What a message needs to carry a `Value`: the protocol's signature of its type, and how it is appended and
/// read. There are specializations for `bool`, integers, `double`, `std::string`, `BusPath`,
/// `FileDescriptor`, `std::vector` (an array), `std::map` (a dictionary), `std::tuple` (a structure) and
/// `std::variant` (a value of one of several types; with `std::monostate` for every other type).
template<typename Value>
struct BusType;

template<typename Value, char type>
struct BasicBusType {
    static std::string signature() { return {type}; }

    static bool append(BusMessage& message, Value value) { return message.appendBasic(type, &value); }

    static bool read(BusMessage& message, Value& value) { return message.readBasic(type, &value); }
};

template<>
struct BusType<std::uint8_t> : BasicBusType<std::uint8_t, 'y'> {};

template<>
struct BusType<std::int32_t> : BasicBusType<std::int32_t, 'i'> {};

template<>
struct BusType<std::uint32_t> : BasicBusType<std::uint32_t, 'u'> {};

template<>
struct BusType<double> : BasicBusType<double, 'd'> {};

template<>
struct BusType<bool> {
    static std::string signature() { return "b"; }

    static bool append(BusMessage& message, bool value) {
        const int number = value ? 1 : 0;
        return message.appendBasic('b', &number);
    }

    static bool read(BusMessage& message, bool& value) {
        int number = 0;
        const bool isRead = message.readBasic('b', &number);
        value = number != 0;
        return isRead;
    }
};

template<>
struct BusType<std::string> {
    static std::string signature() { return "s"; }

    static bool append(BusMessage& message, const std::string& text) { return message.appendText('s', text); }

    static bool read(BusMessage& message, std::string& text) { return message.readText('s', text); }
};

template<>
struct BusType<BusPath> {
    static std::string signature() { return "o"; }

    static bool append(BusMessage& message, const BusPath& path) {
        return message.appendText('o', path.text);
    }

    static bool read(BusMessage& message, BusPath& path) { return message.readText('o', path.text); }
};

template<>
struct BusType<FileDescriptor> {
    static std::string signature() { return "h"; }

    static bool append(BusMessage& message, const FileDescriptor& descriptor) {
        const int number = descriptor.get();
        return message.appendBasic('h', &number);
    }

    /// A copy, closed in programs that are started from here.
    static bool read(BusMessage& message, FileDescriptor& descriptor) {
        return message.readDescriptor(descriptor);
    }
};

template<typename Element>
struct BusType<std::vector<Element>> {
    static std::string signature() { return "a" + BusType<Element>::signature(); }

    static bool append(BusMessage& message, const std::vector<Element>& elements) {
        bool isAppended = message.openContainer('a', BusType<Element>::signature());
        for (const Element& element : elements) {
            isAppended = isAppended && message.append(element);
        }
        return isAppended && message.closeContainer();
    }

    static bool read(BusMessage& message, std::vector<Element>& elements) {
        elements.clear();
        if (!message.enterContainer('a', BusType<Element>::signature())) {
            return false;
        }
        while (message.hasMoreElements()) {
            if (!message.readNext(elements.emplace_back())) {
                return false;
            }
        }
        return message.exitContainer();
    }
};

/// In one piece: images are some hundred thousand bytes.
template<>
struct BusType<std::vector<std::uint8_t>> {
    static std::string signature() { return "ay"; }

    static bool append(BusMessage& message, const std::vector<std::uint8_t>& bytes) {
        return message.appendBytes(bytes);
    }

    static bool read(BusMessage& message, std::vector<std::uint8_t>& bytes) {
        return message.readBytes(bytes);
    }
};

template<typename Key, typename Value>
struct BusType<std::map<Key, Value>> {
    static std::string entry() { return BusType<Key>::signature() + BusType<Value>::signature(); }

    static std::string signature() { return "a{" + entry() + "}"; }

    static bool append(BusMessage& message, const std::map<Key, Value>& entries) {
        bool isAppended = message.openContainer('a', "{" + entry() + "}");
        for (const auto& [key, value] : entries) {
            isAppended = isAppended && message.openContainer('e', entry()) && message.append(key, value)
                         && message.closeContainer();
        }
        return isAppended && message.closeContainer();
    }

    static bool read(BusMessage& message, std::map<Key, Value>& entries) {
        entries.clear();
        if (!message.enterContainer('a', "{" + entry() + "}")) {
            return false;
        }
        while (message.hasMoreElements()) {
            Key key;
            Value value;
            if (!message.enterContainer('e', entry()) || !message.readNext(key) || !message.readNext(value)
                || !message.exitContainer()) {
                return false;
            }
            entries.insert_or_assign(std::move(key), std::move(value));
        }
        return message.exitContainer();
    }
};

template<typename... Fields>
struct BusType<std::tuple<Fields...>> {
    static std::string contents() { return (std::string() + ... + BusType<Fields>::signature()); }

    static std::string signature() { return "(" + contents() + ")"; }

    static bool append(BusMessage& message, const std::tuple<Fields...>& fields) {
        const auto appendAll = [&message](const auto&... field) { return message.append(field...); };
        return message.openContainer('r', contents()) && std::apply(appendAll, fields)
               && message.closeContainer();
    }

    static bool read(BusMessage& message, std::tuple<Fields...>& fields) {
        const auto readAll = [&message](auto&... field) { return (message.readNext(field) && ...); };
        return message.enterContainer('r', contents()) && std::apply(readAll, fields)
               && message.exitContainer();
    }
};

/// Stands for a value of any other type, in variants that are read. It can't be sent.
template<>
struct BusType<std::monostate> {
    static std::string signature() { return ""; }

    static bool append(BusMessage& /*message*/, std::monostate /*none*/) { return false; }

    static bool read(BusMessage& /*message*/, std::monostate& /*none*/) { return false; }
};

template<typename... Alternatives>
struct BusType<std::variant<Alternatives...>> {
    using Variant = std::variant<Alternatives...>;

    static std::string signature() { return "v"; }

    static bool append(BusMessage& message, const Variant& variant) {
        const auto appendValue = [&message]<typename Value>(const Value& value) {
            return message.openContainer('v', BusType<Value>::signature()) && message.append(value)
                   && message.closeContainer();
        };
        return std::visit(appendValue, variant);
    }

    // NOLINTNEXTLINE(misc-no-recursion): the library bounds how deep containers may nest
    static bool read(BusMessage& message, Variant& variant) {
        const std::string contents = message.variantContents();
        if (contents.empty()) {
            return false;
        }
        bool isKnown = false;
        const auto readAs = [&]<typename Value>(std::type_identity<Value>) {
            const bool matches = contents == BusType<Value>::signature();
            isKnown = isKnown || matches;
            return matches && readValue<Value>(message, contents, variant);
        };
        if ((readAs(std::type_identity<Alternatives>()) || ...)) {
            return true;
        }
        return !isKnown && readOther(message, contents, variant);
    }

private:
    template<typename Value>
    static bool readValue(BusMessage& message, const std::string& contents, Variant& variant) {
        Value value{};
        const bool isRead = message.enterContainer('v', contents) && message.readNext(value);
        variant = std::move(value);
        return isRead && message.exitContainer();
    }

    // NOLINTNEXTLINE(misc-no-recursion): likewise
    static bool readOther(BusMessage& message, const std::string& contents, Variant& variant) {
        if (contents == "v") {
            // A variant inside a variant stands for what the inner one holds.
            return message.enterContainer('v', contents) && read(message, variant) && message.exitContainer();
        }
        if constexpr (std::is_same_v<std::variant_alternative_t<0, Variant>, std::monostate>) {
            variant = std::monostate();
            return message.skip("v");
        }
        return false;
    }
};

} // namespace tarnwick

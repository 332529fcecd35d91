// A message on the bus: what it carries is read and written as values of C++ types.
#pragma once

#include "core/FileDescriptor.h"

#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

struct sd_bus_message;

namespace tarnwick {

/// The path of an object on the bus.
struct BusPath {
    std::string text;

    friend bool operator==(const BusPath&, const BusPath&) = default;
};

/// The result of a method whose answer carries nothing, or nothing of interest.
struct NoResult {};

/// An error as an answer to a method call.
struct BusError {
    std::string name;
    std::string text;

    static constexpr const char* invalidArguments = "org.freedesktop.DBus.Error.InvalidArgs";
    static constexpr const char* failed = "org.freedesktop.DBus.Error.Failed";
    static constexpr const char* nameHasNoOwner = "org.freedesktop.DBus.Error.NameHasNoOwner";
};

/// How a C++ type travels, see BusType.h. Whatever reads or writes values includes that.
template<typename Value>
struct BusType;

/// Shares the message with the library. Main thread.
///
/// Another program wrote its contents: reading a wrong type gives nothing.
class BusMessage {
public:
    BusMessage() = default;

    /// Takes over the caller's reference.
    explicit BusMessage(sd_bus_message* message) : message_(message) {}

    BusMessage(const BusMessage& other);

    BusMessage(BusMessage&& other) noexcept : message_(std::exchange(other.message_, nullptr)) {}

    BusMessage& operator=(BusMessage other) noexcept {
        std::swap(message_, other.message_);
        return *this;
    }

    ~BusMessage();

    /// Adds a reference; the caller keeps its own.
    [[nodiscard]] static BusMessage sharing(sd_bus_message* message);

    [[nodiscard]] bool isValid() const { return message_ != nullptr; }

    [[nodiscard]] sd_bus_message* get() const { return message_; }

    /// The unique name of the sending connection, as the bus daemon has filled it in.
    [[nodiscard]] std::string sender() const;
    [[nodiscard]] std::string member() const;
    /// Empty unless it is an error.
    [[nodiscard]] std::string errorName() const;

    /// The first values that it carries. Nothing when they are of other types, or fewer.
    template<typename... Values>
    [[nodiscard]] std::optional<std::tuple<Values...>> read() {
        std::tuple<Values...> values;
        const auto readAll = [this](auto&... value) { return (this->readNext(value) && ...); };
        return rewind() && std::apply(readAll, values) ? std::optional(std::move(values)) : std::nullopt;
    }

    /// Adds values behind those that it has. False when they can't be sent; then the message is useless.
    template<typename... Values>
    [[nodiscard]] bool append(const Values&... values) {
        return (BusType<Values>::append(*this, values) && ...);
    }

    /// Answers to a method call: a message to be filled and sent, or a complete one.
    [[nodiscard]] BusMessage reply() const;
    [[nodiscard]] BusMessage reply(const BusError& error) const;

    /// Sends an answer from inside a handler, without waiting. False when the connection is going down. All
    /// other messages are sent by `BusLink`.
    bool send();

    // The parts that values are made of, for `BusType`. A `type` is the letter that the protocol gives it.

    template<typename Value>
    [[nodiscard]] bool readNext(Value& value) {
        return BusType<Value>::read(*this, value);
    }

    [[nodiscard]] bool appendBasic(char type, const void* value);
    /// Made valid UTF-8: the bus daemon closes the connection of a program that sends anything else.
    [[nodiscard]] bool appendText(char type, const std::string& text);
    [[nodiscard]] bool appendBytes(const std::vector<std::uint8_t>& bytes);
    [[nodiscard]] bool openContainer(char type, const std::string& contents);
    [[nodiscard]] bool closeContainer();

    [[nodiscard]] bool readBasic(char type, void* value);
    [[nodiscard]] bool readText(char type, std::string& text);
    [[nodiscard]] bool readDescriptor(FileDescriptor& descriptor);
    [[nodiscard]] bool readBytes(std::vector<std::uint8_t>& bytes);
    /// False also at the end of an array.
    [[nodiscard]] bool enterContainer(char type, const std::string& contents);
    [[nodiscard]] bool exitContainer();
    [[nodiscard]] bool hasMoreElements();
    /// The type inside the variant that comes next; empty when something else comes.
    [[nodiscard]] std::string variantContents();
    [[nodiscard]] bool skip(const char* type);

private:
    [[nodiscard]] bool rewind();

    sd_bus_message* message_ = nullptr;
};

} // namespace tarnwick

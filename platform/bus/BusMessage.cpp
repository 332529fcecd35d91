#include "platform/bus/BusMessage.h"

#include "platform/bus/BusText.h"

#include <cstddef>
#include <fcntl.h>
#include <systemd/sd-bus.h>

namespace tarnwick {

namespace {

std::string textOrEmpty(const char* text) {
    return text == nullptr ? "" : text;
}

} // namespace

BusMessage::BusMessage(const BusMessage& other) : message_(sd_bus_message_ref(other.message_)) {
}

BusMessage::~BusMessage() {
    sd_bus_message_unref(message_);
}

BusMessage BusMessage::sharing(sd_bus_message* message) {
    return BusMessage(sd_bus_message_ref(message));
}

std::string BusMessage::sender() const {
    return textOrEmpty(sd_bus_message_get_sender(message_));
}

std::string BusMessage::member() const {
    return textOrEmpty(sd_bus_message_get_member(message_));
}

std::string BusMessage::errorName() const {
    const sd_bus_error* const error = sd_bus_message_get_error(message_);
    return error == nullptr ? "" : textOrEmpty(error->name);
}

BusMessage BusMessage::reply() const {
    sd_bus_message* reply = nullptr;
    return sd_bus_message_new_method_return(message_, &reply) < 0 ? BusMessage() : BusMessage(reply);
}

BusMessage BusMessage::reply(const BusError& error) const {
    const std::string text = validUtf8(error.text);
    sd_bus_error content{};
    content.name = error.name.c_str();
    content.message = text.c_str();
    sd_bus_message* reply = nullptr;
    return sd_bus_message_new_method_error(message_, &reply, &content) < 0 ? BusMessage() : BusMessage(reply);
}

bool BusMessage::send() {
    return isValid() && sd_bus_message_send(message_) >= 0;
}

bool BusMessage::appendBasic(char type, const void* value) {
    return isValid() && sd_bus_message_append_basic(message_, type, value) >= 0;
}

bool BusMessage::appendText(char type, const std::string& text) {
    return appendBasic(type, validUtf8(text).c_str());
}

bool BusMessage::appendBytes(const std::vector<std::uint8_t>& bytes) {
    return isValid() && sd_bus_message_append_array(message_, 'y', bytes.data(), bytes.size()) >= 0;
}

bool BusMessage::openContainer(char type, const std::string& contents) {
    return isValid() && sd_bus_message_open_container(message_, type, contents.c_str()) >= 0;
}

bool BusMessage::closeContainer() {
    return sd_bus_message_close_container(message_) >= 0;
}

bool BusMessage::readBasic(char type, void* value) {
    return sd_bus_message_read_basic(message_, type, value) > 0;
}

bool BusMessage::readText(char type, std::string& text) {
    const char* found = nullptr;
    const bool isRead = readBasic(type, static_cast<void*>(&found));
    text = textOrEmpty(found);
    return isRead;
}

bool BusMessage::readDescriptor(FileDescriptor& descriptor) {
    int borrowed = -1; // the message's, which closes it
    if (!readBasic('h', &borrowed)) {
        return false;
    }
    descriptor = FileDescriptor(::fcntl(borrowed, F_DUPFD_CLOEXEC, 0));
    return descriptor.isOpen();
}

bool BusMessage::readBytes(std::vector<std::uint8_t>& bytes) {
    const void* found = nullptr;
    std::size_t count = 0;
    if (sd_bus_message_read_array(message_, 'y', &found, &count) <= 0) {
        return false;
    }
    const auto* const first = static_cast<const std::uint8_t*>(found);
    bytes.assign(first, first + count);
    return true;
}

bool BusMessage::enterContainer(char type, const std::string& contents) {
    return sd_bus_message_enter_container(message_, type, contents.c_str()) > 0;
}

bool BusMessage::exitContainer() {
    return sd_bus_message_exit_container(message_) >= 0;
}

bool BusMessage::hasMoreElements() {
    return sd_bus_message_at_end(message_, 0) == 0;
}

std::string BusMessage::variantContents() {
    char type = 0;
    const char* contents = nullptr;
    const bool isVariant = sd_bus_message_peek_type(message_, &type, &contents) > 0 && type == 'v';
    return isVariant ? textOrEmpty(contents) : "";
}

bool BusMessage::skip(const char* type) {
    return sd_bus_message_skip(message_, type) >= 0;
}

bool BusMessage::rewind() {
    return isValid() && sd_bus_message_rewind(message_, 1) >= 0;
}

} // namespace tarnwick

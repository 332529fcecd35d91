#include "platform/bus/BusObject.h"

#include <map>
#include <systemd/sd-bus.h>
#include <vector>

namespace tarnwick {

/// The library keeps pointers into it for as long as the object is published.
struct BusObject::Members {
    struct Method {
        std::string arguments;
        std::string results;
        std::string names; ///< of arguments and results, each with a null byte behind it
        Answer answer;
    };

    struct Property {
        std::string type;
        Append append;
        Change change = Change::silent;
    };

    struct Signal {
        std::string arguments;
        std::string names;
    };

    std::map<std::string, Method> methods;
    std::map<std::string, Property> properties;
    std::map<std::string, Signal> signals;
    std::vector<sd_bus_vtable> table;
    std::shared_ptr<Members> self; ///< while published

    void fillTable();
    static int onCall(sd_bus_message* message, void* members, sd_bus_error* error) noexcept;
    static int onRead(
        sd_bus* bus, const char* path, const char* interface, const char* property, sd_bus_message* reply,
        void* members, sd_bus_error* error) noexcept;
};

void BusObject::Members::fillTable() {
    table = {SD_BUS_VTABLE_START(0)};
    for (const auto& [name, method] : methods) {
        table.push_back(SD_BUS_METHOD_WITH_NAMES(
            name.c_str(), method.arguments.c_str(), method.names.c_str(), method.results.c_str(), , onCall,
            0));
    }
    for (const auto& [name, property] : properties) {
        const sd_bus_vtable silent = SD_BUS_PROPERTY(name.c_str(), property.type.c_str(), onRead, 0, 0);
        const sd_bus_vtable told = SD_BUS_PROPERTY(
            name.c_str(), property.type.c_str(), onRead, 0, SD_BUS_VTABLE_PROPERTY_EMITS_CHANGE);
        table.push_back(property.change == Change::told ? told : silent);
    }
    for (const auto& [name, signal] : signals) {
        table.push_back(
            SD_BUS_SIGNAL_WITH_NAMES(name.c_str(), signal.arguments.c_str(), signal.names.c_str(), 0));
    }
    table.push_back(SD_BUS_VTABLE_END);
}

int BusObject::Members::onCall(sd_bus_message* message, void* members, sd_bus_error* error) noexcept {
    try {
        auto* const present = static_cast<Members*>(members);
        BusMessage call = BusMessage::sharing(message);
        const auto method = present->methods.find(call.member());
        if (method != present->methods.end() && method->second.answer(call)) {
            return 1;
        }
    } catch (...) {
        // An exception must not pass through the library's C code. Only this call fails.
        return sd_bus_error_set(error, BusError::failed, "the call ended in an exception");
    }
    return sd_bus_error_set(error, BusError::failed, "the call could not be carried out");
}

int BusObject::Members::onRead(
    sd_bus* /*bus*/, const char* /*path*/, const char* /*interface*/, const char* property,
    sd_bus_message* reply, void* members, sd_bus_error* error) noexcept {
    try {
        auto* const present = static_cast<Members*>(members);
        BusMessage shared = BusMessage::sharing(reply);
        if (present->properties.at(property).append(shared)) {
            return 1;
        }
    } catch (...) {
        // As above.
        return sd_bus_error_set(error, BusError::failed, "reading the property ended in an exception");
    }
    return sd_bus_error_set(error, BusError::failed, "the property could not be read");
}

BusObject::BusObject(BusLink& link, std::string path, std::string interface)
    : link_(link),
      path_(std::move(path)),
      interface_(std::move(interface)),
      members_(std::make_shared<Members>()) {
}

BusObject::~BusObject() = default;

std::string BusObject::joined(std::initializer_list<Names> lists) {
    std::string result;
    for (const Names& names : lists) {
        for (const std::string_view name : names) {
            result += name;
            result += '\0';
        }
    }
    return result;
}

void BusObject::declareMethod(
    const std::string& name, std::string arguments, std::string results, std::string names, Answer answer) {
    members_->methods[name] = {
        .arguments = std::move(arguments),
        .results = std::move(results),
        .names = std::move(names),
        .answer = std::move(answer),
    };
}

void BusObject::declareProperty(const std::string& name, std::string type, Append append, Change change) {
    members_->properties[name] = {.type = std::move(type), .append = std::move(append), .change = change};
}

void BusObject::declareSignal(const std::string& name, std::string arguments, Names names) {
    members_->signals[name] = {.arguments = std::move(arguments), .names = joined({names})};
}

bool BusObject::publish() {
    members_->fillTable();
    sd_bus_slot* slot = nullptr;
    const int result = sd_bus_add_object_vtable(
        link_.get(), &slot, path_.c_str(), interface_.c_str(), members_->table.data(), members_.get());
    if (result < 0) {
        return false;
    }
    // A handler may end its own object. The library then uses the members until it destroys the slot.
    members_->self = members_;
    sd_bus_slot_set_destroy_callback(
        slot, [](void* members) { const auto last = std::move(static_cast<Members*>(members)->self); });
    published_ = Subscription(slot, sd_bus_slot_unref);
    return true;
}

BusMessage BusObject::newSignal(const std::string& signal) const {
    return link_.newSignal(path_, interface_, signal);
}

void BusObject::emitChange(const char* property) {
    link_.emitChange(path_, interface_, property);
}

} // namespace tarnwick

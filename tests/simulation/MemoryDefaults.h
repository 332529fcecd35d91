// Settings that live in memory; every write and removal is recorded, in order.
#pragma once

#include "platform/ports/UserDefaults.h"

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tarnwick::simulation {

class MemoryDefaults final : public UserDefaults {
public:
    struct Change {
        std::string key;
        std::optional<Value> value; ///< none: removed

        friend bool operator==(const Change&, const Change&) = default;
    };

    /// As if an earlier run had stored it: not recorded.
    void put(const std::string& key, const Value& value) { stored_[key] = value; }

    [[nodiscard]] std::optional<Value> stored(const std::string& key) const {
        const auto found = stored_.find(key);
        return found != stored_.end() ? std::optional(found->second) : std::nullopt;
    }

    [[nodiscard]] const Table& registered() const { return registered_; }

    [[nodiscard]] const std::vector<Change>& changes() const { return changes_; }

    void forgetChanges() {
        changes_.clear();
        flushed_ = 0;
    }

    /// Whether all changes were flushed.
    [[nodiscard]] bool isFlushed() const { return flushed_ == changes_.size(); }

    void registerDefaults(const Table& defaults) override {
        for (const auto& [key, value] : defaults) {
            registered_[key] = value;
        }
    }

    [[nodiscard]] std::optional<bool> boolean(const std::string& key) const override {
        return value<bool>(key);
    }

    [[nodiscard]] std::optional<double> number(const std::string& key) const override {
        return value<double>(key);
    }

    [[nodiscard]] std::optional<std::string> text(const std::string& key) const override {
        return value<std::string>(key);
    }

    void set(const std::string& key, const Value& value) override {
        stored_[key] = value;
        changes_.push_back({key, value});
    }

    void remove(const std::string& key) override {
        stored_.erase(key);
        changes_.push_back({key, std::nullopt});
    }

    void flush() override { flushed_ = changes_.size(); }

private:
    template<class T>
    [[nodiscard]] std::optional<T> value(const std::string& key) const {
        for (const Table* layer : {&stored_, &registered_}) {
            const auto found = layer->find(key);
            if (found == layer->end()) {
                continue;
            }
            if (const T* typed = std::get_if<T>(&found->second)) {
                return *typed;
            }
        }
        return std::nullopt;
    }

    Table registered_;
    Table stored_;
    std::vector<Change> changes_;
    std::size_t flushed_ = 0; ///< of the changes
};

} // namespace tarnwick::simulation

// An environment variable with another value for one test.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace tarnwick::test {

/// With this value, or with none, until it goes.
class Variable {
public:
    Variable(const char* name, const char* value) : name_(name) {
        if (const char* before = std::getenv(name)) {
            before_ = before;
        }
        put(value);
    }

    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

    ~Variable() { put(before_ ? before_->c_str() : nullptr); }

private:
    void put(const char* value) const { value != nullptr ? ::setenv(name_, value, 1) : ::unsetenv(name_); }

    const char* name_;
    std::optional<std::string> before_;
};

} // namespace tarnwick::test

// A login item controlled by the test.
#pragma once

#include "platform/ports/LoginItem.h"

#include <optional>
#include <string>

namespace tarnwick::simulation {

class FakeLoginItem final : public LoginItem {
public:
    [[nodiscard]] Status status() const override { return now; }

    [[nodiscard]] std::optional<std::string> enroll() override {
        ++enrollments;
        return change(afterEnrolling);
    }

    [[nodiscard]] std::optional<std::string> withdraw() override {
        ++withdrawals;
        return change(Status::notRegistered);
    }

    Status now = Status::notRegistered;
    Status afterEnrolling = Status::enabled;
    std::optional<std::string> failure; ///< reported by all later changes
    int enrollments = 0;
    int withdrawals = 0;

private:
    std::optional<std::string> change(Status wanted) {
        if (!failure) {
            now = wanted;
        }
        return failure;
    }
};

} // namespace tarnwick::simulation

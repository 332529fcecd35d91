// What every login item promises, as tests over a driver that plays the desktop around one.
#pragma once

#include "platform/ports/LoginItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tarnwick {

/// `Driver` offers: `LoginItem& item()`; `void switchOff()`, by which the desktop keeps an enrolled item from
/// starting; `void switchOn()`, by which it lets it start again; `void refuse()`, after which nothing can be
/// changed anymore.
template<class Driver>
class LoginItemContract : public testing::Test {
protected:
    LoginItem& item() { return driver_.item(); }

    Driver driver_;
};

TYPED_TEST_SUITE_P(LoginItemContract);

TYPED_TEST_P(LoginItemContract, IsNotRegisteredAtFirst) {
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, IsEnabledOnceEnrolled) {
    EXPECT_EQ(this->item().enroll(), std::nullopt);
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, EnrollingAgainChangesNothing) {
    ASSERT_EQ(this->item().enroll(), std::nullopt);

    EXPECT_EQ(this->item().enroll(), std::nullopt);
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, IsNotRegisteredOnceWithdrawn) {
    ASSERT_EQ(this->item().enroll(), std::nullopt);

    EXPECT_EQ(this->item().withdraw(), std::nullopt);
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, WithdrawingWhatIsNotRegisteredIsNoFailure) {
    EXPECT_EQ(this->item().withdraw(), std::nullopt);
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, RequiresApprovalWhileTheDesktopHasSwitchedItOff) {
    ASSERT_EQ(this->item().enroll(), std::nullopt);

    this->driver_.switchOff();

    EXPECT_EQ(this->item().status(), LoginItem::Status::requiresApproval);
}

TYPED_TEST_P(LoginItemContract, IsEnabledOnceTheDesktopHasSwitchedItOnAgain) {
    ASSERT_EQ(this->item().enroll(), std::nullopt);
    this->driver_.switchOff();
    ASSERT_EQ(this->item().status(), LoginItem::Status::requiresApproval);

    this->driver_.switchOn();

    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, WhatRequiresApprovalCanBeWithdrawnAndEnrolledAnew) {
    ASSERT_EQ(this->item().enroll(), std::nullopt);
    this->driver_.switchOff();

    EXPECT_EQ(this->item().withdraw(), std::nullopt);
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
    EXPECT_EQ(this->item().enroll(), std::nullopt);
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

TYPED_TEST_P(LoginItemContract, AFailureToEnrollIsToldAndChangesNothing) {
    this->driver_.refuse();

    EXPECT_THAT(this->item().enroll(), testing::Optional(testing::Not("")));
    EXPECT_EQ(this->item().status(), LoginItem::Status::notRegistered);
}

TYPED_TEST_P(LoginItemContract, AFailureToWithdrawIsToldAndChangesNothing) {
    ASSERT_EQ(this->item().enroll(), std::nullopt);
    this->driver_.refuse();

    EXPECT_THAT(this->item().withdraw(), testing::Optional(testing::Not("")));
    EXPECT_EQ(this->item().status(), LoginItem::Status::enabled);
}

REGISTER_TYPED_TEST_SUITE_P(
    LoginItemContract, IsNotRegisteredAtFirst, IsEnabledOnceEnrolled, EnrollingAgainChangesNothing,
    IsNotRegisteredOnceWithdrawn, WithdrawingWhatIsNotRegisteredIsNoFailure,
    RequiresApprovalWhileTheDesktopHasSwitchedItOff, IsEnabledOnceTheDesktopHasSwitchedItOnAgain,
    WhatRequiresApprovalCanBeWithdrawnAndEnrolledAnew, AFailureToEnrollIsToldAndChangesNothing,
    AFailureToWithdrawIsToldAndChangesNothing);

} // namespace tarnwick

// What the session manager's requests cause.
#include "platform/qt/SessionEnd.h"

#include <QGuiApplication>
#include <QSessionManager>

#include <gtest/gtest.h>
#include <optional>

namespace tarnwick {

namespace {

class SessionEndTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_NE(manager_, nullptr);
        manager_->setRestartHint(QSessionManager::RestartIfRunning);
        sessionEnd_.emplace([this] { ++calls_; });
    }

    QSessionManager* manager_ = qGuiApp->findChild<QSessionManager*>();
    int calls_ = 0;
    std::optional<SessionEnd> sessionEnd_;
};

} // namespace

TEST_F(SessionEndTest, TheRequestToCommitDataIsAnsweredBeforeItReturns) {
    Q_EMIT qGuiApp->commitDataRequest(*manager_);

    EXPECT_EQ(calls_, 1);
}

TEST_F(SessionEndTest, TheRequestToSaveTheStateIsAnsweredToo) {
    Q_EMIT qGuiApp->saveStateRequest(*manager_);

    EXPECT_EQ(calls_, 1);
}

TEST_F(SessionEndTest, TheManagerIsToldNotToStartTheProgramAgain) {
    Q_EMIT qGuiApp->commitDataRequest(*manager_);

    EXPECT_EQ(manager_->restartHint(), QSessionManager::RestartNever);
}

TEST_F(SessionEndTest, WithoutARequestNothingIsCalled) {
    EXPECT_EQ(calls_, 0);
}

TEST_F(SessionEndTest, OnceItHasGoneNothingIsCalled) {
    sessionEnd_.reset();

    Q_EMIT qGuiApp->commitDataRequest(*manager_);

    EXPECT_EQ(calls_, 0);
}

} // namespace tarnwick

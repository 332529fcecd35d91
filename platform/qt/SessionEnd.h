// The end of the user's session, where a session manager announces it.
#pragma once

#include <QObject>

#include <functional>

namespace tarnwick {

/// Calls `onEnd` on the main thread when the session manager asks for what must not be lost, and has the
/// manager wait until it returns. That comes before the end of the session, which may still be called off,
/// often twice, and from some managers also once at the program's start: it is the time to save, not to quit.
/// Managers that ask nothing end programs by SIGTERM. Needs a QGuiApplication.
///
/// The manager is also told not to start the program by itself in the next session: the login item does.
class SessionEnd {
public:
    explicit SessionEnd(std::function<void()> onEnd);

    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;

private:
    QObject receiver_;
};

} // namespace tarnwick

// The end of the user's session, where a session manager announces it.
#pragma once

#include <QObject>

#include <functional>

namespace tarnwick {

/// Calls `onEnd` on the main thread when the session manager asks programs to save; the manager waits until
/// it returns. Save there and do not quit: the user may still cancel the end of the session. Many managers
/// ask twice, some also at the program's start. Others never ask and end programs with SIGTERM. Needs a
/// QGuiApplication.
///
/// Also tells the manager not to start the program in the next session: the login item does that.
class SessionEnd {
public:
    explicit SessionEnd(std::function<void()> onEnd);

    SessionEnd(const SessionEnd&) = delete;
    SessionEnd& operator=(const SessionEnd&) = delete;

private:
    QObject receiver_;
};

} // namespace tarnwick

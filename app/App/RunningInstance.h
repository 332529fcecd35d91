// What the command line asks of the instance that is running.
#pragma once

namespace tarnwick {

/// Ends the running instance and waits until it has gone; needs no display. Returns the exit status. If it is
/// not 0, standard error has the reason.
[[nodiscard]] int quitRunningInstance();

/// Has the running instance pause for so many seconds, or with 0 resume; needs no display. Returns the exit
/// status, as above.
[[nodiscard]] int pauseRunningInstance(int seconds);

/// On standard error.
void saySilentInstance();

} // namespace tarnwick

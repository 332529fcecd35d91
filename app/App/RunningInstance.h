// What the command line asks of the instance that is running.
#pragma once

namespace tarnwick {

/// Ends the running instance and waits until it has gone; needs no display. Returns the exit status. If it is
/// not 0, standard error has the reason.
[[nodiscard]] int quitRunningInstance();

/// Asks the running instance to pause, or with 0 seconds to resume; needs no display. Returns the exit
/// status, as above.
[[nodiscard]] int pauseRunningInstance(int seconds);

/// On standard error.
void saySilentInstance();

} // namespace tarnwick

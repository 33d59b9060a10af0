#pragma once

namespace tessaril {

/// Ends the event loop when the process is asked to end (SIGTERM, SIGINT, SIGHUP), as at the end of
/// the user's session, so that what was begun is still written. One object per process, on the main
/// thread; the process reacts for good, also after the object is gone. A second signal ends the
/// process at once.
class TerminationSignals {
public:
    TerminationSignals();

    /// Whether a signal has come: then nobody is there to read an alert.
    bool haveCome() const;
};

} // namespace tessaril

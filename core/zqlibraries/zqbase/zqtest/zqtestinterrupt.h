#pragma once

#include "zqbase/zqbase_export.h"

#include <csignal>
#include <string>

// Catches SIGINT, SIGTERM and SIGHUP while it lives, so that the runner can stop its children, write
// its reports and remove its scratch directory before it ends. The first of them is remembered and
// makes GetDescriptor() readable (for poll); the handler then falls back to the default, so that a
// second signal ends the runner at once. A signal that was ignored when it was made stays ignored.
// One instance at a time.
class ZQBASE_API ZqTestInterrupt
{
public:
    ZqTestInterrupt();
    // Restores the dispositions found at construction.
    ~ZqTestInterrupt();
    ZqTestInterrupt(const ZqTestInterrupt&) = delete;
    ZqTestInterrupt& operator=(const ZqTestInterrupt&) = delete;

    // Readable once a signal has arrived.
    int GetDescriptor() const { return m_pipe[0]; }
    // The signal caught, 0 while none has arrived.
    int GetSignal() const;
    // "SIGINT", ... for the signal caught.
    std::string GetSignalName() const;

    // Ends the process by signal as if it had never been caught, so that the caller's shell and
    // tools see the signal. Returns only when the signal does not end a process.
    static void Resend(int signal);

private:
    int m_pipe[2] = {-1, -1};
    struct sigaction m_previous[3];
};

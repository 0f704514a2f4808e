#pragma once

#include <QProcess>

#include <csignal>
#include <sys/prctl.h>

/// Has a process end with the test, however the test ends.
inline void endWithTest(QProcess& process)
{
    process.setChildProcessModifier([] { prctl(PR_SET_PDEATHSIG, SIGKILL); });
}

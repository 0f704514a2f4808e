#pragma once

#include <ctime>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

/// The clock of the wall, as far as this process sees it: for one source of a test program, whose
/// functions stand before those of the C library. Steady clocks and the times of files stay true.
namespace FalseClock {

inline time_t aheadSeconds = 0;

/// As if somebody set the clock of the computer, ahead or back.
inline void setBy(time_t seconds)
{
    aheadSeconds += seconds;
}

} // namespace FalseClock

extern "C" int clock_gettime(clockid_t clock, timespec* time) noexcept
{
    const auto failed = static_cast<int>(syscall(SYS_clock_gettime, clock, time));
    if (failed == 0 && clock == CLOCK_REALTIME)
        time->tv_sec += FalseClock::aheadSeconds;
    return failed;
}

extern "C" int gettimeofday(timeval* time, void*) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    time->tv_sec = now.tv_sec;
    time->tv_usec = now.tv_nsec / 1000;
    return 0;
}

extern "C" time_t time(time_t* result) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (result)
        *result = now.tv_sec;
    return now.tv_sec;
}

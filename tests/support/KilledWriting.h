#pragma once

#include <csignal>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

/// Kills this process right before it changes a file for the n-th time, as a power cut would: for
/// one source of a test program, whose functions stand before those of the C library.
namespace KilledWriting {

/// Changes that are left; negative for ever so many.
inline int left = -1;

inline void killBefore(int change)
{
    left = change;
}

inline void count()
{
    if (left == 0)
        raise(SIGKILL);
    if (left > 0)
        --left;
}

inline bool isFile(int descriptor)
{
    struct stat about {};

    return fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode);
}

} // namespace KilledWriting

extern "C" ssize_t write(int descriptor, const void* bytes, size_t size)
{
    if (KilledWriting::isFile(descriptor))
        KilledWriting::count();
    return syscall(SYS_write, descriptor, bytes, size);
}

extern "C" int ftruncate(int descriptor, off_t size) noexcept
{
    KilledWriting::count();
    return static_cast<int>(syscall(SYS_ftruncate, descriptor, size));
}

extern "C" int rename(const char* from, const char* to) noexcept
{
    KilledWriting::count();
    return static_cast<int>(syscall(SYS_rename, from, to));
}

extern "C" int unlink(const char* path) noexcept
{
    KilledWriting::count();
    return static_cast<int>(syscall(SYS_unlink, path));
}

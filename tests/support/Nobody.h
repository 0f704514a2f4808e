#pragma once

#include <QFile>
#include <QString>

#include <sys/wait.h>
#include <unistd.h>

/// A user without rights of its own: root may write anywhere, and tests may be run by root.
namespace Nobody {

/// Has the process go on as this user, if it is root's; false if it cannot.
inline bool become()
{
    constexpr uid_t kNobody = 65534;
    return getuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0);
}

/// What a function answers to this user, as a child process that ends with it: 0 or 1, and another
/// number if it could not be asked.
template <typename Question>
int answers(Question question)
{
    const pid_t child = fork();
    if (child == 0)
        _exit(become() ? (question() ? 1 : 0) : 2);
    int status = 0;
    return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : 3;
}

/// Lets everybody write into a folder.
inline bool open(const QString& folder)
{
    return QFile::setPermissions(folder, QFile::Permissions(0x7777));
}

/// Lets nobody write into a folder, but for root.
inline bool close(const QString& folder)
{
    return QFile::setPermissions(folder, QFile::Permissions(0x5555));
}

} // namespace Nobody

#pragma once

#include <QDirIterator>
#include <QFile>

#include <unistd.h>

/// While it lives, everything below a folder can be read and not written, by the superuser neither.
class ForbiddenWriting {
public:
    explicit ForbiddenWriting(const QString& folder) : user_(geteuid())
    {
        setRights(folder, kReadOnly | kEnter);
        if (user_ == 0 && seteuid(kNobody) != 0)
            qFatal("Cannot become somebody else");
        folder_ = folder;
    }

    ~ForbiddenWriting()
    {
        if (seteuid(user_) != 0)
            qFatal("Cannot become oneself again");
        setRights(folder_, kReadOnly | kEnter | QFile::WriteOwner | QFile::WriteUser);
    }

    ForbiddenWriting(const ForbiddenWriting&) = delete;
    ForbiddenWriting& operator=(const ForbiddenWriting&) = delete;

private:
    static constexpr uid_t kNobody = 65534;
    static constexpr QFile::Permissions kReadOnly =
        QFile::ReadOwner | QFile::ReadUser | QFile::ReadGroup | QFile::ReadOther;
    static constexpr QFile::Permissions kEnter =
        QFile::ExeOwner | QFile::ExeUser | QFile::ExeGroup | QFile::ExeOther;

    static void setRights(const QString& folder, QFile::Permissions rights)
    {
        QFile::setPermissions(folder, rights);
        QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext())
            QFile::setPermissions(entries.next(), rights);
    }

    uid_t user_;
    QString folder_;
};

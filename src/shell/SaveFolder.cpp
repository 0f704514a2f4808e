#include "shell/SaveFolder.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

namespace {

bool takesFiles(const QString& folder)
{
    const QFileInfo info(folder);
    return info.isDir() && info.isWritable();
}

} // namespace

QString SaveFolder::after(const QString& last)
{
    const auto own = &QStandardPaths::writableLocation;
    const QStringList folders{last, QDir::currentPath(), own(QStandardPaths::MusicLocation),
                              own(QStandardPaths::DocumentsLocation), QDir::homePath()};
    const auto first = std::ranges::find_if(folders, takesFiles);
    return first != folders.end() ? *first : QDir::currentPath();
}

#include "content/ContentRoots.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>
#include <array>

using namespace Qt::Literals::StringLiterals;

namespace {

const QString kLoops = u"loops"_s;
const QString kSoundfonts = u"soundfonts"_s;

/// Whether files can be made in a folder, or in the nearest one above it that exists.
bool takesFiles(const QString& folder)
{
    const QFileInfo info(folder);
    if (info.exists())
        return info.isDir() && info.isWritable();
    return !info.isRoot() && takesFiles(info.absolutePath());
}

} // namespace

QStringList ContentFolder::inReadingOrder() const
{
    return isSplit() ? QStringList{own_, written_} : QStringList{own_};
}

ContentFolder ContentFolder::subfolder(const QString& name) const
{
    return {own_ + u'/' + name, written_ + u'/' + name};
}

QString ContentFolder::find(const QString& relativePath) const
{
    const QString own = own_ + u'/' + relativePath;
    const QString written = written_ + u'/' + relativePath;
    return !QFileInfo::exists(own) && QFileInfo::exists(written) ? written : own;
}

ContentRoots ContentRoots::of(const QString& resourcesDir)
{
    return of(resourcesDir, canBeWritten(resourcesDir));
}

ContentRoots ContentRoots::of(const QString& resourcesDir, bool writable)
{
    return writable ? ContentRoots(resourcesDir) : ContentRoots(resourcesDir, userFolder());
}

bool ContentRoots::canBeWritten(const QString& resourcesDir)
{
    const std::array written{resourcesDir, resourcesDir + u'/' + kLoops,
                             resourcesDir + u'/' + kSoundfonts};
    return std::ranges::all_of(written, takesFiles);
}

QString ContentRoots::userFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation) + "/contenido"_L1;
}

ContentFolder ContentRoots::loops() const
{
    return root_.subfolder(kLoops);
}

ContentFolder ContentRoots::soundfonts() const
{
    return root_.subfolder(kSoundfonts);
}

QString ContentRoots::registryFile() const
{
    return loops().written() + "/installed_registry.json"_L1;
}

QString ContentRoots::gmBank() const
{
    return soundfonts().find(u"velta_bank_gm.sf2"_s);
}

QSet<QString> ContentRoots::ownPackages() const
{
    QSet<QString> names;
    if (!root_.isSplit())
        return names;
    const QString suffix = u".content.json"_s;
    const QDir installed(loops().subfolder(u"installed"_s).own());
    for (const QString& name : installed.entryList({u'*' + suffix}, QDir::Files))
        names.insert(name.chopped(suffix.size()).toCaseFolded());
    return names;
}

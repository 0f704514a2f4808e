#include "export/ExportFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

/// A folder is among what is opened directly, so that the error is that of any file.
std::unique_ptr<QFileDevice> fileAt(const QString& path)
{
    const QFileInfo info(path);
    if (info.exists() && !info.isFile())
        return std::make_unique<QFile>(path);
    return std::make_unique<QSaveFile>(path);
}

} // namespace

ExportFile::ExportFile(const QString& path) : file_(fileAt(path))
{}

bool ExportFile::open()
{
    return file_->open(QIODevice::WriteOnly);
}

bool ExportFile::commit()
{
    // Bytes that find no room are no error to a QSaveFile that is committed with them.
    if (!flush())
        return false;
    auto* beside = qobject_cast<QSaveFile*>(file_.get());
    return !beside || beside->commit();
}

bool ExportFile::flush()
{
    // A disk takes what it still has room for without a word. Only the next try hears why it took
    // no more.
    return file_->flush() || file_->flush();
}

QString ExportFile::errorString()
{
    // Of bytes that found no room the next try alone tells why: of those that wait to be written,
    // or of one more where none does.
    if (file_->isOpen() && file_->error() == QFileDevice::NoError)
        file_->putChar('\0');
    if (file_->isOpen())
        flush();
    return file_->error() == QFileDevice::NoError ? QString() : file_->errorString();
}

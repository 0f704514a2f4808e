#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

class QIODevice;

/// One file of a ZIP as its directory has it, which may say anything.
struct ZipEntry {
    /// Its path in the archive, in whatever encoding.
    QByteArray name;
    /// Bytes when unpacked.
    qint64 size = 0;
    /// Whether it is an ordinary file that can be read without a password: no folder, link or
    /// device, stored or deflated.
    bool plain = false;
};

/// A ZIP that is read. Where it comes from is not known, so nothing in it is believed: its
/// directory and its files have to agree before the first byte is unpacked.
class ZipReader {
public:
    /// Nothing for a file that is not there, or no ZIP, or one that contradicts itself.
    static std::optional<ZipReader> open(const QString& path);

    const QList<ZipEntry>& entries() const { return entries_; }

    /// Writes a plain entry into a device. False, with part of it written, if it does not hold just
    /// as many bytes as stated, with the checksum that is stated.
    bool unpack(qsizetype index, QIODevice& to) const;

private:
    std::unique_ptr<void, void (*)(void*)> archive_{nullptr, nullptr};
    QList<ZipEntry> entries_;
};

/// A ZIP that is written. It takes its place as a whole, or not at all.
class ZipWriter {
public:
    explicit ZipWriter(const QString& path);

    /// How an entry is kept. What is stored takes just as many bytes as its file.
    enum class Method { Store, Deflate };

    bool add(const QString& name, const QByteArray& bytes, Method method);
    bool addFile(const QString& name, const QString& path, Method method);

    /// Writes it. False if anything failed, now or before: what stood at the path is still there.
    bool finish();

private:
    bool addSource(const QString& name, void* source, Method method);

    std::unique_ptr<void, void (*)(void*)> archive_;
    /// What is added is read when all of it is written.
    QList<QByteArray> bytes_;
    bool failed_ = false;
};

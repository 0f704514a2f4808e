#pragma once

#include <QByteArray>
#include <QList>
#include <QtEndian>

#include <array>

/// ZIP archives byte by byte, with everything in them that a test wants to be wrong.
namespace ZipBytes {

struct File {
    QByteArray name;
    QByteArray bytes;
    bool deflated = false;
    /// The general purpose flags: 1 is "encrypted", 0x800 "the name is UTF-8".
    quint16 flags = 0x800;
    /// Instead of 0, stored, or 8, deflated.
    int method = -1;
    /// File type and rights as Unix has them.
    quint32 unixMode = 0100644;
    /// What the directory states instead of the truth.
    qint64 statedSize = -1;
    qint64 statedCrc = -1;
    /// What the file's own header states instead of the truth.
    QByteArray localName = {};
};

inline quint32 crcOf(const QByteArray& bytes)
{
    static const std::array<quint32, 256> table = [] {
        std::array<quint32, 256> rows{};
        for (quint32 i = 0; i < rows.size(); ++i) {
            quint32 row = i;
            for (int bit = 0; bit < 8; ++bit)
                row = (row & 1U) ? 0xEDB88320U ^ (row >> 1U) : row >> 1U;
            rows[i] = row;
        }
        return rows;
    }();
    quint32 crc = 0xFFFFFFFFU;
    for (const char byte : bytes)
        crc = table[(crc ^ static_cast<quint8>(byte)) & 0xFFU] ^ (crc >> 8U);
    return ~crc;
}

template <typename Number>
QByteArray little(Number number)
{
    QByteArray bytes(sizeof(Number), '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

/// The deflated bytes, without what a zlib stream puts around them.
inline QByteArray deflate(const QByteArray& bytes)
{
    const QByteArray stream = qCompress(bytes, 9);
    return stream.mid(6, stream.size() - 10);
}

/// What a file's own header and its line of the directory have in common.
inline QByteArray common(const File& file, const QByteArray& packed, const QByteArray& name)
{
    const int method = file.method >= 0 ? file.method : file.deflated ? 8 : 0;
    const auto crc = file.statedCrc >= 0 ? static_cast<quint32>(file.statedCrc) : crcOf(file.bytes);
    const qint64 size = file.statedSize >= 0 ? file.statedSize : file.bytes.size();
    return little<quint16>(20) + little(file.flags) + little(static_cast<quint16>(method)) +
           little<quint16>(0) + little<quint16>(0x21) + little(crc) +
           little(static_cast<quint32>(packed.size())) + little(static_cast<quint32>(size)) +
           little(static_cast<quint16>(name.size())) + little<quint16>(0);
}

inline QByteArray of(const QList<File>& files)
{
    QByteArray body;
    QByteArray directory;
    for (const File& file : files) {
        const QByteArray packed = file.deflated ? deflate(file.bytes) : file.bytes;
        const QByteArray localName = file.localName.isEmpty() ? file.name : file.localName;
        const auto offset = static_cast<quint32>(body.size());
        body += "PK\3\4" + common(file, packed, localName) + localName + packed;
        directory += "PK\1\2" + little<quint16>(0x0314) + common(file, packed, file.name) +
                     little<quint16>(0) + little<quint16>(0) + little<quint16>(0) +
                     little(file.unixMode << 16U) + little(offset) + file.name;
    }
    const auto count = static_cast<quint16>(files.size());
    return body + directory + "PK\5\6" + little<quint32>(0) + little(count) + little(count) +
           little(static_cast<quint32>(directory.size())) +
           little(static_cast<quint32>(body.size())) + little<quint16>(0);
}

} // namespace ZipBytes

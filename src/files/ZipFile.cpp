#include "files/ZipFile.h"

#include <QFile>
#include <QFileInfo>

#include <array>
#include <limits>
#include <zip.h>

namespace {

using File = std::unique_ptr<zip_file_t, decltype(&zip_fclose)>;

constexpr zip_uint32_t kUnixFileType = 0170000;
constexpr zip_uint32_t kUnixRegular = 0100000;

zip_t* zipOf(const std::unique_ptr<void, void (*)(void*)>& archive)
{
    return static_cast<zip_t*>(archive.get());
}

void discard(void* archive)
{
    if (archive)
        zip_discard(static_cast<zip_t*>(archive));
}

/// Whether the rights that Unix programs write say nothing, or that this is an ordinary file. DOS
/// attributes know of folders only, whose names end with a slash.
bool isOrdinary(zip_t* archive, zip_uint64_t index)
{
    zip_uint8_t system = ZIP_OPSYS_DOS;
    zip_uint32_t attributes = 0;
    if (zip_file_get_external_attributes(archive, index, 0, &system, &attributes) != 0)
        return false;
    // Programs on other systems write the rights too, so what made the file is not asked.
    const zip_uint32_t type = (attributes >> 16U) & kUnixFileType;
    return type == 0 || type == kUnixRegular;
}

std::optional<ZipEntry> entryAt(zip_t* archive, zip_uint64_t index)
{
    zip_stat_t stat;
    const char* name = zip_get_name(archive, index, ZIP_FL_ENC_RAW);
    if (!name || zip_stat_index(archive, index, 0, &stat) != 0)
        return std::nullopt;
    constexpr zip_uint64_t kNeeded =
        ZIP_STAT_SIZE | ZIP_STAT_COMP_METHOD | ZIP_STAT_ENCRYPTION_METHOD;
    if ((stat.valid & kNeeded) != kNeeded || stat.size > std::numeric_limits<qint64>::max())
        return std::nullopt;
    const bool readable = stat.encryption_method == ZIP_EM_NONE &&
                          (stat.comp_method == ZIP_CM_STORE || stat.comp_method == ZIP_CM_DEFLATE);
    return ZipEntry{.name = name,
                    .size = static_cast<qint64>(stat.size),
                    .plain = readable && isOrdinary(archive, index)};
}

} // namespace

// ---- Reading -------------------------------------------------------------------------------

std::optional<ZipReader> ZipReader::open(const QString& path)
{
    // Opening a pipe may block for ever.
    if (!QFileInfo(path).isFile())
        return std::nullopt;
    zip_t* archive =
        zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY | ZIP_CHECKCONS, nullptr);
    if (!archive)
        return std::nullopt;
    ZipReader reader;
    reader.archive_ = {archive, &discard};
    const zip_int64_t count = zip_get_num_entries(archive, 0);
    for (zip_int64_t index = 0; index < count; ++index) {
        const auto entry = entryAt(archive, static_cast<zip_uint64_t>(index));
        if (!entry)
            return std::nullopt;
        reader.entries_.append(*entry);
    }
    return reader;
}

bool ZipReader::unpack(qsizetype index, QIODevice& to) const
{
    const File file(zip_fopen_index(zipOf(archive_), static_cast<zip_uint64_t>(index), 0),
                    &zip_fclose);
    if (!file)
        return false;
    std::array<char, 65536> chunk;
    qint64 left = entries_[index].size;
    for (;;) {
        const zip_int64_t count = zip_fread(file.get(), chunk.data(), chunk.size());
        // The end is read too: only there is the checksum compared.
        if (count == 0)
            return left == 0;
        if (count < 0 || count > left || to.write(chunk.data(), count) != count)
            return false;
        left -= count;
    }
}

// ---- Writing -------------------------------------------------------------------------------

ZipWriter::ZipWriter(const QString& path)
    : archive_(zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr),
               &discard)
{}

bool ZipWriter::add(const QString& name, const QByteArray& bytes, Method method)
{
    if (!archive_)
        return false;
    bytes_.append(bytes);
    return addSource(name,
                     zip_source_buffer(zipOf(archive_), bytes_.last().constData(),
                                       static_cast<zip_uint64_t>(bytes.size()), 0),
                     method);
}

bool ZipWriter::addFile(const QString& name, const QString& path, Method method)
{
    return archive_ &&
           addSource(name,
                     zip_source_file(zipOf(archive_), QFile::encodeName(path).constData(), 0, -1),
                     method);
}

bool ZipWriter::addSource(const QString& name, void* source, Method method)
{
    auto* content = static_cast<zip_source_t*>(source);
    const zip_int64_t index = content ? zip_file_add(zipOf(archive_), name.toUtf8().constData(),
                                                     content, ZIP_FL_ENC_UTF_8)
                                      : -1;
    if (index < 0 && content)
        zip_source_free(content);
    const zip_int32_t kept = method == Method::Store ? ZIP_CM_STORE : ZIP_CM_DEFLATE;
    const bool added =
        index >= 0 &&
        zip_set_file_compression(zipOf(archive_), static_cast<zip_uint64_t>(index), kept, 0) == 0;
    failed_ = failed_ || !added;
    return added;
}

bool ZipWriter::finish()
{
    if (!archive_ || failed_ || zip_close(zipOf(archive_)) != 0)
        return false;
    static_cast<void>(archive_.release());
    return true;
}

#pragma once

#include "storage/SongFacts.h"

#include <QString>

#include <optional>

/// What a listing says of a project file, without the notes in it.
struct ProjectHead {
    /// Title of the work; nothing where the file has no text for it.
    std::optional<QString> name;
    /// What the music is like; nothing for a file that is not parsed as a whole.
    std::optional<SongFacts> song;

    /// Bytes up to which a file is parsed as a whole. Beyond, it is read up to the title, and its
    /// end is looked at: a file that was cut is none, but what is damaged in its middle shows only
    /// when the work is opened.
    static constexpr qint64 kParsedWhole = 1024 * 1024;

    /// Bytes beyond which a file is no work. A million notes take a quarter of it.
    static constexpr qint64 kMaxFileBytes = 512 * 1024 * 1024;

    /// The head of a project file; nothing if the file holds no object.
    static std::optional<ProjectHead> read(const QString& path);
};

#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What the command line asks for. Options match exactly, at any place; the first occurrence
/// counts and everything unknown is ignored.
struct StartOptions {
    /// What the program tells of itself instead of doing anything.
    enum class About { Nothing, Help, Version };

    /// An argument that is the value of an option asks for nothing of its own.
    About about = About::Nothing;
    /// Where the self-test writes its files; nothing when it is not asked for.
    std::optional<QString> selfTestDir;
    /// Storage id of the project to open; nothing when none is named.
    std::optional<QString> projectId;
    /// A work in one file to open: the first argument of this kind that is no value of an option.
    std::optional<QString> workFile;

    /// Reads the arguments of the process, the program's name first.
    static StartOptions read(const QStringList& arguments);
};

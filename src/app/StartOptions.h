#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What the command line asks for. Options match exactly, at any place; the first occurrence
/// counts and everything unknown is ignored.
struct StartOptions {
    /// Where the self-test writes its files; nothing when it is not asked for.
    std::optional<QString> selfTestDir;
    /// Storage id of the project to open; nothing when none is named.
    std::optional<QString> projectId;

    /// Reads the arguments of the process, the program's name first.
    static StartOptions read(const QStringList& arguments);
};

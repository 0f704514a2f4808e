#pragma once

#include <QString>
#include <QStringList>

/// The rhythms that come with the program. They are known from when it was built: neither a
/// catalogue nor the registry of what was downloaded has a say in it.
namespace ShippedRhythms {

/// Their ids, sorted.
const QStringList& ids();

/// Whether an id is that of a shipped rhythm, in whatever case: to many file systems two spellings
/// are one file.
bool contains(const QString& id);

/// Whether a package file of this name, with this rhythm in it, would stand in a shipped rhythm's
/// place without being it.
bool isImpostor(const QString& packageName, const QString& rhythmId);

} // namespace ShippedRhythms

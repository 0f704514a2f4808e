#pragma once

#include "content/Instrument.h"
#include "content/Rhythm.h"
#include "music/GrooveTemplate.h"

#include <QJsonObject>
#include <QList>

/// The keys and defaults of the content files: packages, grooves and the generated index. Readers
/// take missing and mistyped members as their defaults and check neither ranges nor references.
namespace ContentPackage {

/// Reads a package into those outputs that are not null; lists are appended to. Returns false,
/// with `error` set and nothing stored, when the package names no rhythm id.
bool parse(const QJsonObject& json, MusicalStyle* style, Rhythm* rhythm,
           QList<Instrument>* instruments, QList<LoopLayer>* layers, QList<LoopVariant>* variants,
           QString* error);

/// Reads a groove file. A groove with an empty rhythm id belongs to nobody.
GrooveTemplate parseGroove(const QJsonObject& json);

/// The index of a whole library.
QJsonObject writeManifest(const QList<MusicalStyle>& styles, const QList<Rhythm>& rhythms,
                          const QList<LoopLayer>& layers, const QList<LoopVariant>& variants);

} // namespace ContentPackage

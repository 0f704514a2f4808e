#pragma once

#include "content/Instrument.h"
#include "content/Rhythm.h"
#include "music/GrooveTemplate.h"

#include <QJsonObject>
#include <QList>

/// The keys and defaults of the content files: packages, grooves and the generated index. Readers
/// take missing and mistyped members as their defaults and check neither ranges nor references.
namespace ContentPackage {

/// What no rhythm needs more of. A package beyond any of these is refused whole: what it costs to
/// show and to index grows with them, however few bytes they take.
constexpr qsizetype kMaxInstruments = 64;
constexpr qsizetype kMaxLayers = 32;
constexpr qsizetype kMaxVariants = 512;
constexpr qsizetype kMaxNotesOfVariant = 4096;
constexpr qsizetype kMaxNotes = 65536;
constexpr qsizetype kMaxTextLength = 200;
constexpr qsizetype kMaxGrooveOffsets = 256;

/// Reads a package into those outputs that are not null; lists are appended to. Returns false,
/// with `error` set and nothing stored, when the package names no rhythm id or goes beyond a
/// bound, whichever outputs are asked for.
bool parse(const QJsonObject& json, MusicalStyle* style, Rhythm* rhythm,
           QList<Instrument>* instruments, QList<LoopLayer>* layers, QList<LoopVariant>* variants,
           QString* error);

/// Reads a groove file. A groove with an empty rhythm id belongs to nobody.
GrooveTemplate parseGroove(const QJsonObject& json);

/// Whether a groove file keeps to the bounds.
bool isGrooveWithinBounds(const QJsonObject& json);

/// The index of a whole library, as indented JSON.
QByteArray writeManifest(const QList<MusicalStyle>& styles, const QList<Rhythm>& rhythms,
                         const QList<LoopLayer>& layers, const QList<LoopVariant>& variants);

} // namespace ContentPackage

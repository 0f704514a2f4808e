#pragma once

#include "content/InstalledContentRegistry.h"
#include "content/Instrument.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

class InstrumentLibrary;
class LoopLibrary;

/// What a downloaded package asks for, as functions of its text and of what is on disk.
namespace InstallPlan {

/// Appends the instruments of a package that bring a bank of their own, in its order. False, and
/// `error` set if it is not null, for a text that is no package; the error of one that is no JSON
/// object is empty.
bool readRecorded(const QByteArray& package, QList<Instrument>* recorded, QString* error);

/// Whether a rhythm came with the program, or was put among its rhythms by hand. Such a one is
/// neither downloaded nor replaced.
bool isProgramsOwn(const QString& rhythmId, const LoopLibrary& library,
                   const InstalledContentRegistry& registry);

/// Whether a package, which readRecorded() takes, is that of the rhythm that was asked for, and
/// leaves the layers of the program's own rhythms alone; and whether its groove, unless it is no
/// JSON, keeps to the bounds. Otherwise `error` says what is wrong, for the user.
bool isOfRhythm(const QString& rhythmId, const QByteArray& package, const QByteArray& groove,
                const LoopLibrary& library, QString* error);

/// Whether all these instruments keep to the bank root: their ids are names of bank files, which
/// stay inside, and the paths that they declare are those of these files. Otherwise `error` says
/// what is wrong, for the user.
bool keepToBankRoot(const QList<Instrument>& recorded, const QString& bankRoot, QString* error);

/// Ids of the instruments whose banks are not on disk.
QStringList banksToFetch(const QList<Instrument>& recorded, const InstrumentLibrary& library);

/// What the registry is to know of them.
QList<InstalledInstrumentRecord> records(const QList<Instrument>& recorded);

QStringList ids(const QList<Instrument>& recorded);

} // namespace InstallPlan

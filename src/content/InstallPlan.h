#pragma once

#include "content/InstalledContentRegistry.h"
#include "content/Instrument.h"

#include <QByteArray>
#include <QList>
#include <QStringList>

class InstrumentLibrary;

/// What a downloaded package asks for, as functions of its text and of what is on disk.
namespace InstallPlan {

/// Appends the instruments of a package that bring a bank of their own, in its order. False, and
/// `error` set if it is not null, for a text that is no package; the error of one that is no JSON
/// object is empty.
bool readRecorded(const QByteArray& package, QList<Instrument>* recorded, QString* error);

/// Whether all these instruments keep to the bank root: their ids as names of bank files and the
/// paths that they declare, none of which may be the program's own bank. Otherwise `error` says
/// what is wrong, for the user.
bool keepToBankRoot(const QList<Instrument>& recorded, const QString& bankRoot, QString* error);

/// Ids of the instruments whose banks are not on disk.
QStringList banksToFetch(const QList<Instrument>& recorded, const InstrumentLibrary& library);

/// What the registry is to know of them.
QList<InstalledInstrumentRecord> records(const QList<Instrument>& recorded);

QStringList ids(const QList<Instrument>& recorded);

/// Where the downloaded bank of an instrument is kept, relative to the bank root.
QString bankFile(const QString& instrumentId);

} // namespace InstallPlan

#pragma once

#include "content/ContentRoots.h"
#include "content/Instrument.h"

#include <QList>
#include <QObject>

/// Every instrument that may be named by id: the built-in General MIDI ones, then those that
/// content packages declare. Instruments are never removed while the program runs.
class InstrumentLibrary : public QObject {
    Q_OBJECT

public:
    /// Starts empty. Recorded banks are looked up under `bankRoot`.
    explicit InstrumentLibrary(const QString& bankRoot, QObject* parent = nullptr);

    explicit InstrumentLibrary(const ContentFolder& banks, QObject* parent = nullptr);

    /// Registers the sixteen built-in instruments.
    void loadBuiltinGmInstruments();

    /// Adds an instrument, or overwrites in its place the one of the same id.
    void registerInstrument(const Instrument& instrument);

    /// The same for many, in order, with one signal for all of them. Of none at all it tells too:
    /// what banks are on disk may have changed.
    void registerInstruments(const QList<Instrument>& instruments);

    /// The first instrument with this id, or null. Lives until the next registerInstrument().
    const Instrument* find(const QString& id) const;

    /// In order of first registration.
    const QList<Instrument>& instruments() const { return instruments_; }

    /// The folder that banks are written to.
    const QString& bankRoot() const { return banks_.written(); }

    /// Full path of the instrument's own bank, whether it is there or not; empty if it names none.
    QString customBankAbsolutePath(const Instrument& instrument) const;

    /// Whether the bank of a recorded instrument is on disk at this moment.
    bool customBankAvailable(const Instrument& instrument) const;

    /// Zero-based General MIDI program for when no recorded bank plays the instrument. A recorded
    /// instrument gets the stand-in of its id or category, whatever program it declares.
    int effectiveGmProgram(const Instrument& instrument) const;

signals:
    void instrumentsChanged();

private:
    ContentFolder banks_;
    QList<Instrument> instruments_;
};

#pragma once

#include "content/ContentRoots.h"

#include <QList>
#include <QObject>
#include <QStringList>

/// The bank of a recorded instrument that came with downloaded rhythms.
struct InstalledInstrumentRecord {
    QString instrumentId;
    /// Relative to the soundfonts folder, with forward slashes.
    QString localFilePath;
    /// How many downloaded rhythms declare the instrument.
    qint32 referenceCount = 0;

    friend bool operator==(const InstalledInstrumentRecord&,
                           const InstalledInstrumentRecord&) = default;
};

/// What was downloaded: the rhythms, and the banks that they share. Rhythms that came with the
/// program are not in it, and so cannot be uninstalled.
///
/// Every change is written to the registry's file at once.
class InstalledContentRegistry : public QObject {
    Q_OBJECT

public:
    /// Larger files are damaged and hold nothing.
    static constexpr qint64 kMaxFileBytes = 16 * 1024 * 1024;

    /// Starts empty and reads nothing.
    InstalledContentRegistry(const QString& filePath, const QString& soundfontsDir,
                             QObject* parent = nullptr);

    /// The registry of these roots.
    explicit InstalledContentRegistry(const ContentRoots& roots, QObject* parent = nullptr);

    /// Replaces everything by what the file holds; nothing, and without a signal, if there is none.
    /// Whatever the file says, rhythms that came with the program and banks that do not stand where
    /// the bank of their instrument belongs are not listed.
    void load();

    /// False if not every byte reached the disk.
    bool save() const;

    /// In order of installation.
    const QStringList& installedRhythms() const { return installedRhythms_; }

    const QList<InstalledInstrumentRecord>& installedInstruments() const
    {
        return installedInstruments_;
    }

    bool isRhythmInstalled(const QString& rhythmId) const;

    bool isInstrumentInstalled(const QString& instrumentId) const;

    /// Lists a rhythm, once, and counts one use more of each instrument. The counts in the records
    /// are ignored, and so are records whose bank does not stand where it belongs. False if the
    /// file could not be written: it then lacks the rhythm.
    bool registerRhythm(const QString& rhythmId,
                        const QList<InstalledInstrumentRecord>& instruments);

    /// Takes a rhythm off the list, counts one use less of each instrument, and deletes the banks
    /// that nobody uses any more, those of earlier times included. Returns the absolute paths of
    /// the deleted files. A rhythm that is not listed changes nothing.
    QStringList unregisterRhythm(const QString& rhythmId, const QStringList& instrumentIds);

signals:
    void registryChanged();

private:
    InstalledInstrumentRecord* findInstrument(const QString& instrumentId);
    bool removeBank(const QString& localFilePath) const;
    QString bankPath(const QString& localFilePath) const;

    QString filePath_;
    QString soundfontsDir_;
    QSet<QString> ownRhythms_;
    QStringList installedRhythms_;
    QList<InstalledInstrumentRecord> installedInstruments_;
};

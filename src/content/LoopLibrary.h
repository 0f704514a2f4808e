#pragma once

#include "content/ContentPackage.h"

#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>

class InstrumentLibrary;

/// Everything that the content files on disk describe, in the order of the sorted package names.
///
/// Look-ups are linear, case-sensitive and take the first match. Pointers that they return live
/// until the next reload(), which libraryChanged() announces.
class LoopLibrary : public QObject {
    Q_OBJECT

public:
    /// Starts empty. `instruments` is not owned and may be null; package instruments then go
    /// unregistered.
    LoopLibrary(const QString& rootDir, InstrumentLibrary* instruments, QObject* parent = nullptr);

    /// Folder of the content packages.
    QString installedDir() const;

    /// Folder of the groove files.
    QString groovesDir() const;

    const QList<MusicalStyle>& styles() const { return styles_; }

    const QList<Rhythm>& rhythms() const { return rhythms_; }

    const Rhythm* findRhythm(const QString& id) const;

    const LoopLayer* findLayer(const QString& id) const;

    /// The variant that matches in all three, or null: there is no nearest match.
    const LoopVariant* findVariant(const QString& layerId, LoopSection section,
                                   int variantIndex) const;

    QList<Rhythm> rhythmsForStyle(const QString& styleId) const;

    QList<LoopLayer> layersForRhythm(const QString& rhythmId) const;

    /// By ascending variant index.
    QList<LoopVariant> variantsFor(const QString& layerId, LoopSection section) const;

    /// The groove stored under a rhythm's own id, or null.
    const GrooveTemplate* grooveForRhythm(const QString& rhythmId) const;

    /// Rebuilds everything from disk, skipping files that cannot be read and those that are
    /// refused, and writes the index.
    void reload();

    /// Names of the files, without their suffixes, that the last reload() refused: packages and
    /// grooves beyond the bounds of ContentPackage, and those that would take the place of a rhythm
    /// that came with the program.
    const QStringList& refused() const { return refused_; }

    /// Whether the last reload() met a package file of this name, in whatever case.
    bool hasPackageFile(const QString& rhythmId) const;

    /// Whether a package with these parts would change what a rhythm that came with the program
    /// sounds like: look-ups take the first match.
    bool claimsShippedLayer(const QList<LoopLayer>& layers,
                            const QList<LoopVariant>& variants) const;

    /// Writes manifest.json into the root folder; false if not every byte reached the disk.
    bool writeManifest() const;

    /// See ContentPackage::parse().
    static bool parseContentPackage(const QJsonObject& json, MusicalStyle* style, Rhythm* rhythm,
                                    QList<Instrument>* instruments, QList<LoopLayer>* layers,
                                    QList<LoopVariant>* variants, QString* error);

signals:
    void libraryChanged();

private:
    /// What a package file holds.
    struct Package {
        QString fileName;
        MusicalStyle style;
        Rhythm rhythm;
        QList<Instrument> instruments;
        QList<LoopLayer> layers;
        QList<LoopVariant> variants;
    };

    void clear();
    QList<Package> readPackages();
    void add(const Package& package);
    void loadGrooveFile(const QString& path);
    bool isImpostor(const Package& package) const;

    QString rootDir_;
    InstrumentLibrary* instrumentLibrary_;
    QList<MusicalStyle> styles_;
    QList<Rhythm> rhythms_;
    QList<LoopLayer> layers_;
    QList<LoopVariant> variants_;
    QMap<QString, GrooveTemplate> grooves_;
    QStringList refused_;
    QSet<QString> foldedFileNames_;
    QSet<QString> shippedLayers_;
};

#pragma once

#include "content/ContentPackage.h"
#include "content/ContentRoots.h"

#include <QFuture>
#include <QMap>
#include <QObject>
#include <QSet>
#include <QStringList>

class InstrumentLibrary;

/// Everything that the content files on disk describe, in the order of the sorted package names.
/// Where the program's own files are apart from those it writes, its own come first, and none of
/// the others takes the place of one of their rhythms, layers, instruments or grooves.
///
/// Look-ups are linear, case-sensitive and take the first match. Pointers that they return live
/// until the next reload(), which libraryChanged() announces.
class LoopLibrary : public QObject {
    Q_OBJECT

public:
    /// Starts empty. `instruments` is not owned and may be null; package instruments then go
    /// unregistered.
    LoopLibrary(const QString& rootDir, InstrumentLibrary* instruments, QObject* parent = nullptr);

    LoopLibrary(const ContentFolder& root, InstrumentLibrary* instruments,
                QObject* parent = nullptr);

    /// Folder that content packages are written to.
    QString installedDir() const;

    /// Folder that groove files are written to.
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

    /// Begins to read what is on disk now, beside the caller, for the next reload().
    void readAhead();

    /// Rebuilds everything from disk, skipping files that cannot be read and those that are
    /// refused, and writes the index.
    void reload();

    /// Names of the files, without their suffixes, that the last reload() refused: packages and
    /// grooves beyond the bounds of ContentPackage, and those that would take the place of a rhythm
    /// that came with the program.
    const QStringList& refused() const { return refused_; }

    /// Whether the last reload() met a package file of this name, in whatever case.
    bool hasPackageFile(const QString& rhythmId) const;

    /// Whether a rhythm of this id, in whatever case, came with the program, as far as the build
    /// and the folders tell.
    bool cameWithProgram(const QString& rhythmId) const;

    /// Whether a package with these parts would change what a rhythm that came with the program
    /// sounds like: look-ups take the first match.
    bool claimsShippedLayer(const QList<LoopLayer>& layers,
                            const QList<LoopVariant>& variants) const;

    /// Writes manifest.json into the folder for what is written; false if not every byte reached
    /// the disk.
    bool writeManifest() const;

signals:
    void libraryChanged();

private:
    /// What a package file holds.
    struct Package {
        enum class State { Unreadable, Refused, Kept };

        State state = State::Unreadable;
        QString fileName;
        /// Whether it stands among the program's own, apart from what the program writes.
        bool own = false;
        MusicalStyle style;
        Rhythm rhythm;
        QList<Instrument> instruments;
        QList<LoopLayer> layers;
        QList<LoopVariant> variants;
    };

    void clear();
    QList<Package> readPackages();
    static Package readPackage(const QString& path, bool own);
    void noteShipped(const Package& package);
    void add(const Package& package);
    void loadGrooves(const QString& folder);
    bool isImpostor(const Package& package) const;

    ContentFolder root_;
    /// What readAhead() began.
    QFuture<Package> ahead_;
    InstrumentLibrary* instrumentLibrary_;
    QList<MusicalStyle> styles_;
    QList<Rhythm> rhythms_;
    QList<LoopLayer> layers_;
    QList<LoopVariant> variants_;
    QMap<QString, GrooveTemplate> grooves_;
    QStringList refused_;
    QSet<QString> foldedFileNames_;
    /// Case-folded ids of the rhythms of own packages, and the names of their files.
    QSet<QString> ownRhythms_;
    QSet<QString> ownInstruments_;
    QSet<QString> shippedLayers_;
    /// By their ids.
    QHash<QString, MusicalStyle> shippedStyles_;
};

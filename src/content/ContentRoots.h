#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

/// A folder of content that is read in two places and written in one of them. Where the program may
/// write beside itself both are the same folder.
class ContentFolder {
public:
    /// One folder for both.
    explicit ContentFolder(const QString& only) : own_(only), written_(only) {}

    /// `own` is what came with the program, and is read only.
    ContentFolder(const QString& own, const QString& written) : own_(own), written_(written) {}

    const QString& own() const { return own_; }

    const QString& written() const { return written_; }

    /// Whether what came with the program is apart from what it writes.
    bool isSplit() const { return own_ != written_; }

    /// Each folder once, that of the program first.
    QStringList inReadingOrder() const;

    ContentFolder subfolder(const QString& name) const;

    /// Full path of the file with this relative path: the program's own if there is one, else the
    /// written one if there is one, and else where the program's own would be.
    QString find(const QString& relativePath) const;

    friend bool operator==(const ContentFolder&, const ContentFolder&) = default;

private:
    QString own_;
    QString written_;
};

/// Where rhythms, grooves, banks and the registry of downloads stand.
///
/// A program that is installed for many users cannot write into its own resources. What it writes
/// then goes into a folder of the user's, laid out alike, and what it reads is both together.
class ContentRoots {
public:
    /// All in one folder, which holds loops/ and soundfonts/.
    explicit ContentRoots(const QString& resourcesDir) : root_(resourcesDir) {}

    ContentRoots(const QString& own, const QString& written) : root_(own, written) {}

    /// Those of a program with these resources: one if they can be written, and otherwise they and
    /// the user's folder.
    static ContentRoots of(const QString& resourcesDir);

    /// The same where it is known whether the resources can be written.
    static ContentRoots of(const QString& resourcesDir, bool writable);

    /// Whether files can be made in the resources, and in what they hold of loops and soundfonts.
    /// Resources that do not exist can be written where they could be made.
    static bool canBeWritten(const QString& resourcesDir);

    /// Where content is written that cannot stand beside the program.
    static QString userFolder();

    ContentFolder loops() const;
    ContentFolder soundfonts() const;

    /// The registry of downloads, which is the user's.
    QString registryFile() const;

    /// The General MIDI bank.
    QString gmBank() const;

    /// Case-folded names, without suffix, of the packages that came with the program; none where
    /// they stand in one folder with those that were downloaded.
    QSet<QString> ownPackages() const;

private:
    ContentFolder root_;
};

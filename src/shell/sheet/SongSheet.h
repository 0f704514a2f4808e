#pragma once

#include <QList>
#include <QString>

class Project;

/// A word at its place in a bar, of which 0 is the beginning and 1 the end.
struct SheetWord {
    double place = 0.0;
    QString text;

    friend bool operator==(const SheetWord&, const SheetWord&) = default;
};

/// One bar of a sheet.
struct SheetBar {
    QList<SheetWord> chords;
    /// The notes of each of the sheet's melodies.
    QList<QList<SheetWord>> melodies;
};

/// A song as one sings it from paper: its chords bar by bar, and the names of the notes of its
/// melodies under them.
struct SongSheet {
    QString title;
    /// "Do mayor · ♩ = 120 · 4/4".
    QString heading;
    /// The names of the melodies that have a note, in the order of their tracks.
    QList<QString> melodies;
    QList<SheetBar> bars;

    /// A damaged file may claim more bars than anybody prints.
    static constexpr int kMostBars = 4000;

    /// What is written in the song, heard or not, up to its last bar; at most kMostBars. A meter
    /// without bars has none.
    static SongSheet of(const Project& project);
};

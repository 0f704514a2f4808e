#pragma once

#include <QHash>
#include <QObject>

class NoteEditor;
class PlaybackEngine;

/// The notes that are played on the letters of the keyboard and on the keys of the roll: it sounds
/// them with the instrument of the track, and has those that are played into a song under way
/// recorded.
class LiveNotes : public QObject {
    Q_OBJECT

public:
    /// The editor is not owned; it knows the track and the song.
    explicit LiveNotes(NoteEditor* notes, QObject* parent);

    /// The octave that the letters play, 1 to 7; 4 is that of middle C.
    int octave() const { return octave_; }

    /// By a number of octaves, as far as they go.
    void shiftOctave(int by);

    /// That of the next note that is written by key: the one that was played last.
    int writtenPitch() const { return writtenPitch_; }

    /// -1 for keys other than the letters A to G.
    int pitchOfKey(int key, bool sharp) const;

    /// Sounds a pitch, until endPreview().
    void startPreview(int pitch);
    void endPreview(int pitch);

    /// Sounds a pitch until noteOff(), which writes it into the block if the song was playing.
    void noteOn(int pitch);
    void noteOff(int pitch);

    // ---- Letters ----

    /// A letter goes down. False for a key that plays nothing, or sounds already.
    bool press(int key, bool sharp);

    /// Sounds a pitch for as long as a key is held, and records nothing.
    void hold(int key, int pitch);

    /// False for a key that sounds nothing.
    bool release(int key);

    /// As if all keys came up.
    void releaseAll();

    /// As releaseAll(), but leaves nothing of what is being recorded.
    void forget();

private:
    PlaybackEngine* playback() const;

    NoteEditor* notes_;
    /// The beats at which notes that are being recorded began, by pitch.
    QHash<int, double> starts_;
    /// The pitches of what is held down, by key.
    QHash<int, int> held_;
    int octave_ = 4;
    int writtenPitch_ = 60;
};

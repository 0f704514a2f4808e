#pragma once

#include "model/KeptPart.h"
#include "model/Song.h"

#include <initializer_list>
#include <memory>

/// A state of a song that undo keeps. What it has in common with the state before it, it shares.
class KeptState {
public:
    /// A state like `song`, which takes its parts from `former` where they are equal there; null
    /// for no former state. What it takes by itself is added to `plainBytes`.
    KeptState(const Song& song, const KeptState* former, qint64* plainBytes);

    Song song() const;

    /// Whether a state that was made from another is equal to it, whatever the name of the song: a
    /// name is given by saving, which is no edit.
    bool hasMusicOf(const KeptState& former) const;

    void setName(const QString& name) { rest_.name = name; }

    QList<AudioTrack> audioTracks() const;

    /// Exchanges the voice tracks, for as many others. What is equal stays shared.
    void setAudioTracks(const QList<AudioTrack>& tracks, const KeptState* former,
                        qint64* plainBytes);

    /// Packs its parts, but for those of `present`, until the sum is within `most`.
    void pack(const KeptState& present, const qint64* plainBytes, qint64 most);

    /// Holds every part plain again.
    void unpack();

private:
    template <typename Record>
    using Part = std::shared_ptr<KeptPart<Record>>;

    template <typename Record>
    static Part<Record> kept(const Record& record, std::initializer_list<Part<Record>> former,
                             qint64* plainBytes);
    template <typename Record>
    static QList<Part<Record>> kept(const QList<Record>& records, const QList<Part<Record>>& former,
                                    qint64* plainBytes);

    template <typename Visitor>
    void forEachPart(Visitor visit) const;

    bool holds(const Part<Track>& part) const { return tracks_.contains(part); }

    bool holds(const Part<AudioTrack>& part) const { return audioTracks_.contains(part); }

    bool holds(const Part<HarmonyTrack>& part) const { return harmony_ == part; }

    /// The song without what stands in the parts.
    Song rest_;
    QList<Part<Track>> tracks_;
    QList<Part<AudioTrack>> audioTracks_;
    Part<HarmonyTrack> harmony_;
};

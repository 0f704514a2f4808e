#include "model/KeptState.h"

#include <algorithm>

namespace {

/// The song without its tracks and chords, in lists of its own.
Song restOf(const Song& song)
{
    Song rest;
    rest.name = song.name;
    rest.bpm = song.bpm;
    rest.timeSignature = song.timeSignature;
    rest.keySignature = song.keySignature;
    rest.collapsedGroups = song.collapsedGroups;
    rest.collapsedGroups.detach();
    return rest;
}

template <typename Record, typename Part>
QList<Record> recordsOf(const QList<Part>& parts)
{
    QList<Record> records;
    records.reserve(parts.size());
    for (const Part& part : parts)
        records.append(part->record());
    return records;
}

} // namespace

template <typename Record>
KeptState::Part<Record> KeptState::kept(const Record& record,
                                        std::initializer_list<Part<Record>> former,
                                        qint64* plainBytes)
{
    for (const Part<Record>& part : former) {
        if (part && part->equals(record))
            return part;
    }
    return std::make_shared<KeptPart<Record>>(record, plainBytes);
}

template <typename Record>
QList<KeptState::Part<Record>> KeptState::kept(const QList<Record>& records,
                                               const QList<Part<Record>>& former,
                                               qint64* plainBytes)
{
    QList<Part<Record>> parts;
    parts.reserve(records.size());
    // An edit adds or removes one record, so that an equal one stands as far from the beginning as
    // before, or as far from the end.
    const qsizetype shift = former.size() - records.size();
    for (qsizetype i = 0; i < records.size(); ++i)
        parts.append(kept(records.at(i), {former.value(i), former.value(i + shift)}, plainBytes));
    return parts;
}

KeptState::KeptState(const Song& song, const KeptState* former, qint64* plainBytes)
    : rest_(restOf(song)),
      tracks_(kept(song.tracks, former ? former->tracks_ : QList<Part<Track>>(), plainBytes)),
      audioTracks_(kept(song.audioTracks, former ? former->audioTracks_ : QList<Part<AudioTrack>>(),
                        plainBytes)),
      harmony_(kept(song.harmonyTrack, {former ? former->harmony_ : nullptr}, plainBytes))
{}

Song KeptState::song() const
{
    Song song = rest_;
    song.tracks = recordsOf<Track>(tracks_);
    song.audioTracks = audioTracks();
    song.harmonyTrack = harmony_->record();
    return song;
}

QList<AudioTrack> KeptState::audioTracks() const
{
    return recordsOf<AudioTrack>(audioTracks_);
}

void KeptState::setAudioTracks(const QList<AudioTrack>& tracks, const KeptState* former,
                               qint64* plainBytes)
{
    audioTracks_ =
        kept(tracks, former ? former->audioTracks_ : QList<Part<AudioTrack>>(), plainBytes);
}

bool KeptState::hasMusicOf(const KeptState& former) const
{
    Song rest = former.rest_;
    rest.name = rest_.name;
    return rest == rest_ && tracks_ == former.tracks_ && audioTracks_ == former.audioTracks_ &&
           harmony_ == former.harmony_;
}

template <typename Visitor>
void KeptState::forEachPart(Visitor visit) const
{
    std::ranges::for_each(tracks_, visit);
    std::ranges::for_each(audioTracks_, visit);
    visit(harmony_);
}

void KeptState::pack(const KeptState& present, const qint64* plainBytes, qint64 most)
{
    forEachPart([&](const auto& part) {
        if (*plainBytes > most && !present.holds(part))
            part->pack();
    });
}

void KeptState::unpack()
{
    forEachPart([](const auto& part) { part->unpack(); });
}

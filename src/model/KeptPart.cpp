#include "model/KeptPart.h"

#include "model/ProjectJson.h"
#include "model/Song.h"

#include <QCborMap>
#include <QCborValue>

namespace {

/// What deflate gains above its quickest level is not worth the wait within an edit.
constexpr int kQuickest = 1;

/// The least that a text on the heap takes beside its letters.
constexpr qint64 kTextHead = 32;

qint64 bytesOf(const QString& text)
{
    return text.isEmpty() ? 0 : kTextHead + 2 * text.size();
}

qint64 bytesOf(const Track& track)
{
    qint64 sum = qint64{sizeof(Track)} + bytesOf(track.name) + bytesOf(track.instrumentId);
    for (const MelodyBlock& block : track.melodyBlocks)
        sum += qint64{sizeof(MelodyBlock)} + qint64{sizeof(NoteEvent)} * block.notes.size();
    for (const LoopBlock& block : track.loopBlocks)
        sum += qint64{sizeof(LoopBlock)} + bytesOf(block.rhythmId) + bytesOf(block.layerId);
    return sum;
}

qint64 bytesOf(const AudioTrack& track)
{
    qint64 sum = qint64{sizeof(AudioTrack)} + bytesOf(track.name);
    for (const AudioClip& clip : track.clips)
        sum += qint64{sizeof(AudioClip)} + bytesOf(clip.audioFilePath);
    return sum;
}

qint64 bytesOf(const HarmonyTrack& track)
{
    qint64 sum = sizeof(HarmonyTrack);
    for (const HarmonyBlock& block : track.blocks)
        sum +=
            qint64{sizeof(HarmonyBlock)} + qint64{sizeof(HarmonyDegreeEvent)} * block.events.size();
    return sum;
}

} // namespace

template <typename Record>
KeptPart<Record>::KeptPart(const Record& record, qint64* plainBytes)
    : plain_(detachedCopy(record)), plainBytes_(plainBytes)
{
    *plainBytes_ += bytesOf(*plain_);
}

template <typename Record>
KeptPart<Record>::~KeptPart()
{
    if (plain_)
        *plainBytes_ -= bytesOf(*plain_);
}

template <typename Record>
Record KeptPart<Record>::record() const
{
    if (plain_)
        return *plain_;
    Record record;
    ProjectJson::read(QCborValue::fromCbor(qUncompress(packed_)).toMap().toJsonObject(), &record);
    return record;
}

template <typename Record>
void KeptPart<Record>::pack()
{
    if (!plain_)
        return;
    *plainBytes_ -= bytesOf(*plain_);
    const QCborMap map = QCborMap::fromJsonObject(ProjectJson::write(*plain_));
    packed_ = qCompress(map.toCborValue().toCbor(), kQuickest);
    plain_.reset();
}

template <typename Record>
void KeptPart<Record>::unpack()
{
    if (plain_)
        return;
    plain_ = record();
    packed_.clear();
    *plainBytes_ += bytesOf(*plain_);
}

template class KeptPart<Track>;
template class KeptPart<AudioTrack>;
template class KeptPart<HarmonyTrack>;

#include "views/pianoroll/LiveNotes.h"

#include "model/Track.h"
#include "playback/PlaybackEngine.h"
#include "views/pianoroll/NoteEditor.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int kPreviewVelocity = 100;
constexpr int kLowestOctave = 1;
constexpr int kHighestOctave = 7;

} // namespace

LiveNotes::LiveNotes(NoteEditor* notes, QObject* parent) : QObject(parent), notes_(notes)
{
    connect(notes_, &NoteEditor::drawingBegun, this, &LiveNotes::startPreview);
    connect(notes_, &NoteEditor::drawingEnded, this, &LiveNotes::endPreview);
}

PlaybackEngine* LiveNotes::playback() const
{
    return notes_->playback();
}

void LiveNotes::shiftOctave(int by)
{
    octave_ = std::clamp(octave_ + by, kLowestOctave, kHighestOctave);
}

int LiveNotes::pitchOfKey(int key, bool sharp) const
{
    return NoteEdits::keyLetterToPitch(key, sharp, octave_);
}

void LiveNotes::startPreview(int pitch)
{
    if (playback() && notes_->track())
        playback()->previewNoteOn(pitch, notes_->track()->instrumentId, kPreviewVelocity);
}

void LiveNotes::endPreview(int pitch)
{
    if (playback())
        playback()->previewNoteOff(pitch);
}

void LiveNotes::noteOn(int pitch)
{
    if (!playback() || !notes_->track())
        return;
    writtenPitch_ = pitch;
    startPreview(pitch);
    if (playback()->isPlaying() && !starts_.contains(pitch))
        starts_.insert(pitch, NoteEdits::snapped(playback()->playheadBeat(), notes_->snapBeats()));
}

void LiveNotes::noteOff(int pitch)
{
    endPreview(pitch);
    const auto start = starts_.constFind(pitch);
    if (start == starts_.constEnd())
        return;
    const double startBeat = *start;
    starts_.erase(start);
    if (playback() && notes_->project())
        notes_->recordNote(pitch, startBeat, playback()->playheadBeat());
}

// ---- Letters -------------------------------------------------------------------------------

bool LiveNotes::press(int key, bool sharp)
{
    const int pitch = pitchOfKey(key, sharp);
    if (pitch == -1 || held_.contains(key))
        return false;
    held_.insert(key, pitch);
    noteOn(pitch);
    return true;
}

void LiveNotes::hold(int key, int pitch)
{
    held_.insert(key, pitch);
    startPreview(pitch);
}

bool LiveNotes::release(int key)
{
    if (!held_.contains(key))
        return false;
    noteOff(held_.take(key));
    return true;
}

void LiveNotes::releaseAll()
{
    for (const int pitch : std::exchange(held_, {}))
        noteOff(pitch);
}

void LiveNotes::forget()
{
    starts_.clear();
    releaseAll();
}

#include "FuzzLaws.h"
#include "FuzzTargets.h"
#include "model/Project.h"
#include "model/UndoStack.h"
#include "playback/NoteRenderer.h"

#include <QJsonDocument>

#include <algorithm>
#include <cmath>

using FuzzLaws::require;

namespace {

void requireNotesInOrder(const QList<NoteEvent>& notes)
{
    require(std::ranges::is_sorted(notes, {}, &NoteEvent::startBeat), "notes are sorted");
    for (const NoteEvent& note : notes)
        require(std::isfinite(note.startBeat), "notes have a place");
}

void requireUndoIsInverse(Project& work)
{
    UndoStack stack;
    stack.reset(work);
    const QJsonObject before = work.toJson();
    work.bpm = work.bpm == 100 ? 101 : 100;
    const QJsonObject after = work.toJson();
    stack.snapshot(work);
    work.loadJson(stack.undo(work));
    require(work.toJson() == before, "undo gives the former state");
    work.loadJson(stack.redo());
    require(work.toJson() == after, "redo gives the later state");
}

} // namespace

void FuzzTargets::project(const QByteArray& input)
{
    const QJsonDocument document = QJsonDocument::fromJson(input);
    if (!document.isObject())
        return;
    Project work;
    work.loadJson(document.object());
    const QJsonObject written = work.toJson();
    Project again;
    again.loadJson(written);
    require(again.toJson() == written, "a work that is read again is the same");

    const double end = work.endBeat();
    require(!std::isnan(end) && end >= 0.0, "a song ends at its start or behind it");
    for (const Track& track : std::as_const(work.tracks))
        requireNotesInOrder(NoteRenderer::trackNotes(work, track, nullptr));
    requireNotesInOrder(NoteRenderer::harmonyNotes(work));
    requireUndoIsInverse(work);
}

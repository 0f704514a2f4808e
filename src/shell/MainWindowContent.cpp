#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "shell/ChosenLoop.h"
#include "shell/MainWindow.h"
#include "views/SectionWords.h"
#include "views/arranger/TrackArranger.h"

#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kPlacedMs = 3000;
constexpr int kAlreadyThereMs = 5000;
constexpr int kRefusedMs = 15000;

/// As the user counts bars: from 1.
QString barNumber(const Project& project, double beat)
{
    return QString::number(qint64{barAt(beat, project.beatsPerBar()).value_or(0)} + 1);
}

} // namespace

void MainWindow::nameRefusedContent()
{
    QStringList fresh;
    for (const QString& name : loopLibrary()->refused()) {
        if (!namedContent_.contains(name) && !fresh.contains(name))
            fresh.append(name);
    }
    if (fresh.isEmpty())
        return;
    namedContent_.append(fresh);
    const QString message = tr("No pude usar estos ritmos: %1.").arg(fresh.join(", "_L1));
    const QString standing = statusBar()->currentMessage();
    if (standing.isEmpty())
        statusBar()->showMessage(message, kRefusedMs);
    else
        statusBar()->showMessage(standing + u' ' + message);
}

void MainWindow::onLibraryChanged()
{
    nameRefusedContent();
    if (!project())
        return;
    finishGestures();
    // What came is heard at once, and what went falls silent.
    engine()->refreshChannels();
    engine()->rescheduleIfPlaying();
    emit project()->changed();
}

void MainWindow::placeLoop(const QString& rhythmId, const QString& layerId, int section,
                           int variantIndex, double startBeat)
{
    const auto loop =
        chosenLoop(*loopLibrary(), rhythmId, layerId, static_cast<LoopSection>(section),
                   variantIndex, startBeat > 0.0 ? startBeat : 0.0);
    if (project() && loop)
        handleLoopChosen(loop->block, loop->instrumentId, loop->trackName);
}

void MainWindow::handleLoopChosen(const LoopBlock& block, const QString& instrumentId,
                                  const QString& trackName)
{
    if (!project())
        return;
    LoopBlock placed = block;
    const bool atPlayhead = placed.startBeat < 0.0;
    if (atPlayhead)
        placed.startBeat = ProjectEdits::barStart(*project(), engine()->playheadBeat());
    if (ProjectEdits::hasLoop(*project(), placed)) {
        tellAlreadyThere(variantWords(placed.section, placed.variantIndex));
        const auto present = ProjectEdits::accompanimentOf(*project(), placed.layerId);
        arranger_->showLane({LaneKind::NoteTrack, static_cast<int>(present.value_or(-1))});
        arranger_->showBeat(placed.startBeat);
        return;
    }
    const auto track = ProjectEdits::addLoop(*project(), placed, instrumentId, trackName);
    if (!track) {
        prompts_.inform(this, tr("Veltas"), tr("No quedan veltas libres."));
        return;
    }
    snapshotAndRefresh();
    arranger_->showLane({LaneKind::NoteTrack, static_cast<int>(*track)});
    if (atPlayhead)
        goOnBehind(placed);
    statusBar()->showMessage(
        tr("%1 %2 agregada a «%3» en el compás %4.")
            .arg(sectionWord(placed.section), QString::number(placed.variantIndex),
                 project()->tracks.at(*track).name, barNumber(*project(), placed.startBeat)),
        kPlacedMs);
}

void MainWindow::tellAlreadyThere(const QString& block)
{
    statusBar()->showMessage(tr("Ahí ya está %1.").arg(block), kAlreadyThereMs);
}

void MainWindow::goOnBehind(const LoopBlock& block)
{
    if (!engine()->isPlaying())
        arranger_->placePlayhead(block.endBeat());
}

void MainWindow::takePlayheadBack(const Song& former)
{
    const auto gone = ProjectEdits::loopMissingIn(*project(), former);
    if (gone && !engine()->isPlaying() && engine()->playheadBeat() == gone->endBeat())
        arranger_->placePlayhead(gone->startBeat);
}

void MainWindow::takePlayheadOn(const Song& former)
{
    const auto come = ProjectEdits::loopMissingIn(former, *project());
    if (come && engine()->playheadBeat() == come->startBeat)
        goOnBehind(*come);
}

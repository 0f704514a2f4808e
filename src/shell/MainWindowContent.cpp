#include "content/LoopLibrary.h"
#include "model/Project.h"
#include "model/ProjectEdits.h"
#include "music/Beats.h"
#include "playback/PlaybackEngine.h"
#include "shell/MainWindow.h"
#include "views/SectionWords.h"

#include <QStatusBar>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kPlacedMs = 3000;
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
    for (const QString& name : loopLibrary_->refused()) {
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
    if (!project_)
        return;
    finishGestures();
    // What came is heard at once, and what went falls silent.
    engine_->refreshChannels();
    engine_->rescheduleIfPlaying();
    emit project_->changed();
}

void MainWindow::placeLoop(const QString& rhythmId, const QString& layerId, int section,
                           int variantIndex, double startBeat)
{
    const auto loopSection = static_cast<LoopSection>(section);
    const LoopVariant* variant = loopLibrary_->findVariant(layerId, loopSection, variantIndex);
    const LoopLayer* layer = loopLibrary_->findLayer(layerId);
    const Rhythm* rhythm = loopLibrary_->findRhythm(rhythmId);
    if (!project_ || !variant || !layer || !rhythm)
        return;
    LoopBlock block;
    block.startBeat = startBeat > 0.0 ? startBeat : 0.0;
    block.durationBeats = rhythm->timeSignature.beatsPerBar() * variant->durationBars;
    block.rhythmId = rhythmId;
    block.layerId = layerId;
    block.section = loopSection;
    block.variantIndex = variantIndex;
    handleLoopChosen(block, layer->instrumentId,
                     u"%1 · %2"_s.arg(rhythm->displayName, layer->label));
}

void MainWindow::handleLoopChosen(const LoopBlock& block, const QString& instrumentId,
                                  const QString& trackName)
{
    if (!project_)
        return;
    LoopBlock placed = block;
    if (placed.startBeat < 0.0)
        placed.startBeat = ProjectEdits::barStart(*project_, engine_->playheadBeat());
    const auto track = ProjectEdits::addLoop(*project_, placed, instrumentId, trackName);
    if (!track) {
        prompts_.inform(this, tr("Veltas"), tr("No quedan veltas libres."));
        return;
    }
    snapshotAndRefresh();
    statusBar()->showMessage(
        tr("%1 %2 agregada a «%3» en el compás %4.")
            .arg(tr(sectionWord(placed.section)), QString::number(placed.variantIndex),
                 project_->tracks.at(*track).name, barNumber(*project_, placed.startBeat)),
        kPlacedMs);
}

#include "views/pianoroll/PianoRollAccessible.h"

#include "model/Project.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/MusicWords.h"
#include "views/TimelineRuler.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollCanvas.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollScene.h"

namespace {

/// The notes of the block that is being edited, in its order.
class Notes : public ItemSource {
public:
    explicit Notes(PianoRollCanvas* canvas) : canvas_(canvas) {}

    int count() const override
    {
        const MelodyBlock* block = canvas_->activeBlock();
        return block ? static_cast<int>(block->notes.size()) : 0;
    }

    QString nameOf(int place) const override
    {
        const MelodyBlock& block = *canvas_->activeBlock();
        return PianoRollAccessible::nameOf(block, block.notes.at(place),
                                           canvas_->project()->beatsPerBar());
    }

    QRect rectOf(int place) const override
    {
        const MelodyBlock& block = *canvas_->activeBlock();
        const auto rect = PianoRollLayout::noteRect(block, block.notes.at(place));
        return rect ? canvas_->view()->mapFromScene(*rect).boundingRect() : QRect();
    }

    bool isSelected(int place) const override
    {
        return canvas_->scene()->selectedNotes().contains(place);
    }

    int current() const override { return canvas_->currentNote(); }

    void select(int place) override { canvas_->goToNote(place); }

private:
    PianoRollCanvas* canvas_;
};

/// "compás 1, pulso 1" behind what the caption of the roll says.
QString stateOf(const PianoRollCanvas& canvas)
{
    const QString place =
        QAccessible::queryAccessibleInterface(canvas.ruler())->text(QAccessible::Value);
    return MusicWords::list({canvas.caption(), place});
}

QAccessibleInterface* partWithTheKeys(const PianoRollCanvas& canvas)
{
    QAccessibleInterface* notes = QAccessible::queryAccessibleInterface(canvas.view());
    QAccessibleInterface* note = notes ? notes->focusChild() : nullptr;
    return note ? note : QAccessible::queryAccessibleInterface(canvas.ruler());
}

QString rowsOf(const PianoRollCanvas& canvas)
{
    const int lowest = canvas.topPitch() - canvas.visibleRows() + 1;
    return PianoRollCanvas::tr("de %1 a %2")
        .arg(MusicWords::note(lowest), MusicWords::note(canvas.topPitch()));
}

QAccessibleInterface* partOf(const QString& className, QObject* object)
{
    if (className == QLatin1StringView("PianoRollCanvas")) {
        auto* canvas = static_cast<PianoRollCanvas*>(object);
        return new AccessibleTeller(
            canvas, QAccessible::Grouping, [canvas] { return stateOf(*canvas); },
            [canvas] { return partWithTheKeys(*canvas); });
    }
    if (className == QLatin1StringView("PianoRollGridView")) {
        auto* view = static_cast<PianoRollGridView*>(object);
        return new AccessibleItems(view, view->viewport(), std::make_unique<Notes>(view->canvas()));
    }
    if (className == QLatin1StringView("PianoKeyboardWidget")) {
        auto* keys = static_cast<PianoKeyboardWidget*>(object);
        return new AccessibleTeller(keys, QAccessible::Grouping,
                                    [keys] { return rowsOf(*keys->canvas()); });
    }
    return nullptr;
}

} // namespace

void PianoRollAccessible::install()
{
    AccessibleRuler::install();
    QAccessible::installFactory(partOf);
}

QString PianoRollAccessible::nameOf(const MelodyBlock& block, const NoteEvent& note,
                                    double beatsPerBar)
{
    return MusicWords::list({MusicWords::note(note.pitch),
                             MusicWords::bar(block.startBeat + note.startBeat, beatsPerBar),
                             MusicWords::value(note.durationBeats)});
}

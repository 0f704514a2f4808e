#include "views/pianoroll/PianoRollAccessible.h"

#include "model/Project.h"
#include "shell/controls/ElidedLabel.h"
#include "views/AccessibleItems.h"
#include "views/AccessibleRuler.h"
#include "views/MusicWords.h"
#include "views/TimelineRuler.h"
#include "views/pianoroll/NoteEditor.h"
#include "views/pianoroll/PianoKeyboardWidget.h"
#include "views/pianoroll/PianoRollGridView.h"
#include "views/pianoroll/PianoRollLayout.h"
#include "views/pianoroll/PianoRollScene.h"

#include <QCoreApplication>

namespace {

/// The notes of the block that is being edited, in its order.
class Notes : public ItemSource {
public:
    explicit Notes(PianoRollGridView* view) : view_(view) {}

    int count() const override
    {
        const MelodyBlock* block = notes().activeBlock();
        return block ? static_cast<int>(block->notes.size()) : 0;
    }

    QString nameOf(int place) const override
    {
        const MelodyBlock& block = *notes().activeBlock();
        return PianoRollAccessible::nameOf(block, block.notes.at(place),
                                           notes().project()->beatsPerBar());
    }

    QRect rectOf(int place) const override
    {
        const MelodyBlock& block = *notes().activeBlock();
        const auto rect = PianoRollLayout::noteRect(block, block.notes.at(place));
        return rect ? view_->mapFromScene(*rect).boundingRect() : QRect();
    }

    bool isSelected(int place) const override
    {
        return view_->roll()->selectedNotes().contains(place);
    }

    int current() const override { return notes().currentNote(); }

    void select(int place) override { notes().goToNote(place); }

private:
    NoteEditor& notes() const { return *view_->notes(); }

    PianoRollGridView* view_;
};

/// "compás 1, pulso 1" behind what the caption of the roll says.
QString stateOf(const QWidget& canvas)
{
    const QString place = QAccessible::queryAccessibleInterface(canvas.findChild<TimelineRuler*>())
                              ->text(QAccessible::Value);
    return MusicWords::list({canvas.findChild<ElidedLabel*>()->text(), place});
}

QAccessibleInterface* partWithTheKeys(const QWidget& canvas)
{
    QAccessibleInterface* notes =
        QAccessible::queryAccessibleInterface(canvas.findChild<PianoRollGridView*>());
    QAccessibleInterface* note = notes ? notes->focusChild() : nullptr;
    return note ? note : QAccessible::queryAccessibleInterface(canvas.findChild<TimelineRuler*>());
}

/// Rows begin at parts of a pixel.
constexpr int kEdge = 2;

/// The rows that are seen.
QString rowsOf(const PianoKeyboardWidget& keys)
{
    const auto pitchAt = [&](int y) {
        const int pitch = keys.pitchAtY(y);
        return pitch == -1 ? PianoRollLayout::kLowestPitch : pitch;
    };
    return QCoreApplication::translate("PianoRollCanvas", "de %1 a %2")
        .arg(MusicWords::note(pitchAt(keys.view()->viewport()->height() - 1 - kEdge)),
             MusicWords::note(pitchAt(kEdge)));
}

QAccessibleInterface* partOf(const QString& className, QObject* object)
{
    if (className == QLatin1StringView("PianoRollCanvas")) {
        auto* canvas = static_cast<QWidget*>(object);
        return new AccessibleTeller(
            canvas, QAccessible::Grouping, [canvas] { return stateOf(*canvas); },
            [canvas] { return partWithTheKeys(*canvas); });
    }
    if (className == QLatin1StringView("PianoRollGridView")) {
        auto* view = static_cast<PianoRollGridView*>(object);
        return new AccessibleItems(view, view->viewport(), std::make_unique<Notes>(view));
    }
    if (className == QLatin1StringView("PianoKeyboardWidget")) {
        auto* keys = static_cast<PianoKeyboardWidget*>(object);
        return new AccessibleTeller(keys, QAccessible::Grouping, [keys] { return rowsOf(*keys); });
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

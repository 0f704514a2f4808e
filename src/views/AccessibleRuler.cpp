#include "views/AccessibleRuler.h"

#include "model/Project.h"
#include "views/Announcements.h"
#include "views/MusicWords.h"
#include "views/TimelineRuler.h"

namespace {

/// Bars that an editor shows beyond the song, and of one that is empty.
constexpr int kFreeBars = 8;

QAccessibleInterface* rulerOf(const QString& className, QObject* object)
{
    auto* ruler = className == QLatin1StringView("TimelineRuler")
                      ? qobject_cast<TimelineRuler*>(object)
                      : nullptr;
    return ruler ? new AccessibleRuler(ruler) : nullptr;
}

} // namespace

AccessibleRuler::AccessibleRuler(TimelineRuler* ruler)
    : QAccessibleWidget(ruler, QAccessible::Slider)
{}

void AccessibleRuler::install()
{
    QAccessible::installFactory(rulerOf);
}

void AccessibleRuler::tell(TimelineRuler* ruler)
{
    QAccessibleInterface* slider =
        Announcements::areHeard() ? QAccessible::queryAccessibleInterface(ruler) : nullptr;
    if (!slider)
        return;
    QAccessibleEvent focus(slider, QAccessible::Focus);
    Announcements::tell(focus);
    QAccessibleValueChangeEvent value(slider, ruler->playheadBeat());
    Announcements::tell(value);
}

QAccessible::State AccessibleRuler::state() const
{
    QAccessible::State state = QAccessibleWidget::state();
    const QAccessibleInterface* editor = parent();
    state.focusable = true;
    state.focused = editor && editor->focusChild() == this;
    return state;
}

TimelineRuler* AccessibleRuler::ruler() const
{
    return static_cast<TimelineRuler*>(widget());
}

void* AccessibleRuler::interface_cast(QAccessible::InterfaceType type)
{
    if (type == QAccessible::ValueInterface)
        return static_cast<QAccessibleValueInterface*>(this);
    return QAccessibleWidget::interface_cast(type);
}

QString AccessibleRuler::text(QAccessible::Text kind) const
{
    if (kind != QAccessible::Value && kind != QAccessible::Description)
        return QAccessibleWidget::text(kind);
    const Project* project = isValid() ? ruler()->project() : nullptr;
    return project ? MusicWords::place(ruler()->playheadBeat(), project->timeSignature) : QString();
}

QVariant AccessibleRuler::currentValue() const
{
    return isValid() ? ruler()->playheadBeat() : 0.0;
}

void AccessibleRuler::setCurrentValue(const QVariant& beat)
{
    if (isValid())
        emit ruler()->placeRequested(beat.toDouble());
}

QVariant AccessibleRuler::maximumValue() const
{
    const Project* project = isValid() ? ruler()->project() : nullptr;
    return project ? project->beatsPerBar() * (project->barCount(kFreeBars) + kFreeBars) : 0.0;
}

QVariant AccessibleRuler::minimumValue() const
{
    return 0.0;
}

QVariant AccessibleRuler::minimumStepSize() const
{
    const Project* project = isValid() ? ruler()->project() : nullptr;
    return project ? project->timeSignature.pulseBeats() : 1.0;
}

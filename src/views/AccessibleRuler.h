#pragma once

#include <QAccessibleWidget>

class TimelineRuler;

/// A ruler as a slider: its value is the playhead, in beats and in words.
class AccessibleRuler : public QAccessibleWidget, public QAccessibleValueInterface {
public:
    explicit AccessibleRuler(TimelineRuler* ruler);

    /// Has rulers be asked for from now on. May be called again.
    static void install();

    /// Tells that the keys have moved the playhead. Costs nothing as long as nobody listens.
    static void tell(TimelineRuler* ruler);

    void* interface_cast(QAccessible::InterfaceType type) override;
    QString text(QAccessible::Text kind) const override;

    /// The keys are on the playhead where they are on nothing else of the editor.
    QAccessible::State state() const override;

    QVariant currentValue() const override;
    void setCurrentValue(const QVariant& beat) override;
    QVariant maximumValue() const override;
    QVariant minimumValue() const override;
    QVariant minimumStepSize() const override;

private:
    TimelineRuler* ruler() const;
};

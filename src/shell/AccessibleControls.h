#pragma once

#include <QAccessibleWidget>

class QComboBox;

/// What those hear of the controls of the window who cannot see them, where the toolkit has another
/// idea of it.
namespace AccessibleControls {

/// Has controls be asked for from now on. May be called again.
void install();

} // namespace AccessibleControls

/// A combo box by its caption. The toolkit calls a box by what is chosen in it, and its caption
/// nothing; here the choice is the value and the description.
class AccessibleChoice : public QAccessibleWidget {
public:
    explicit AccessibleChoice(QComboBox* box);

    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QString text(QAccessible::Text kind) const override;
    QAccessible::State state() const override;
    QStringList actionNames() const override;
    void doAction(const QString& name) override;

private:
    QComboBox* box() const;
};

#pragma once

#include <QFrame>

class QHBoxLayout;
class QLabel;
class QToolButton;

/// A titled card of the ribbon: a row of buttons and controls, each with its caption below.
class RibbonGroup : public QFrame {
    Q_OBJECT

public:
    /// The index of the group in its row chooses one of three shades.
    RibbonGroup(const QString& title, int index, QWidget* parent = nullptr);

    /// A square button whose face is a symbol or a short word. The button is owned by the group
    /// and takes no focus: keys belong to the editing views.
    QToolButton* addCard(const QString& face, const QString& caption, const QString& tooltip,
                         bool checkable);

    /// A control, which the group takes over, over its caption.
    void addLabeledWidget(QWidget* widget, const QString& caption);

    /// Pixels between the columns before and after.
    void addSpacing(int spacing);

private:
    QHBoxLayout* row_;
};

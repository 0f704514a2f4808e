#pragma once

#include <QComboBox>

/// A choice in a narrow panel. Long names do not widen the box: they are elided in it, and read in
/// the list that drops down, which may be wider, up to the width of the screen.
class ChoiceBox : public QComboBox {
    Q_OBJECT

public:
    explicit ChoiceBox(const QString& tooltip, QWidget* parent = nullptr);

    /// The item stays in the list, but cannot be chosen; its tooltip says why.
    void disableItem(int index, const QString& reason);

    /// Without an enabled item nothing is chosen.
    void selectFirstEnabled();

    /// The data of the current item as text; empty if there is none.
    QString currentId() const { return currentData().toString(); }

    void showPopup() override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

#pragma once

#include <QMenu>

class TransportControls;

/// What the grid marks, as a menu beside the box of the ribbon: both show the same.
class GridMenu : public QMenu {
    Q_OBJECT

public:
    /// The ribbon is not owned.
    GridMenu(const QString& title, TransportControls* ribbon, QWidget* parent);

    /// Calls the levels as they are called in a compound meter, or in a simple one.
    void setCompound(bool compound);

private:
    void check();

    TransportControls* ribbon_;
};

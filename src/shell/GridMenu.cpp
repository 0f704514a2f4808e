#include "shell/GridMenu.h"

#include "shell/GridLevelNames.h"
#include "shell/TransportControls.h"

#include <QActionGroup>

GridMenu::GridMenu(const QString& title, TransportControls* ribbon, QWidget* parent)
    : QMenu(title, parent), ribbon_(ribbon)
{
    auto* levels = new QActionGroup(this);
    for (const GridSubdivisionLevel level : kGridLevels) {
        QAction* action =
            addAction(QString(), ribbon, [ribbon, level] { ribbon->chooseSubdivision(level); });
        action->setData(QVariant::fromValue(level));
        action->setCheckable(true);
        levels->addAction(action);
    }
    connect(ribbon, &TransportControls::subdivisionChanged, this, &GridMenu::check);
    setCompound(false);
    check();
}

void GridMenu::setCompound(bool compound)
{
    for (QAction* action : actions())
        action->setText(gridLevelName(action->data().value<GridSubdivisionLevel>(), compound));
}

void GridMenu::check()
{
    for (QAction* action : actions())
        action->setChecked(action->data().value<GridSubdivisionLevel>() == ribbon_->subdivision());
}

#include "shell/ChoiceBox.h"

#include <QAbstractItemView>
#include <QScreen>
#include <QScrollBar>
#include <QStandardItemModel>

#include <algorithm>

ChoiceBox::ChoiceBox(const QString& tooltip, QWidget* parent) : QComboBox(parent)
{
    setToolTip(tooltip);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
}

void ChoiceBox::disableItem(int index, const QString& reason)
{
    QStandardItem* item = qobject_cast<QStandardItemModel*>(model())->item(index);
    item->setEnabled(false);
    item->setToolTip(reason);
}

void ChoiceBox::selectFirstEnabled()
{
    for (int index = 0; index < count(); ++index) {
        if (model()->flags(model()->index(index, 0)).testFlag(Qt::ItemIsEnabled)) {
            setCurrentIndex(index);
            return;
        }
    }
}

void ChoiceBox::showPopup()
{
    const int margins = 2 * view()->frameWidth() + view()->verticalScrollBar()->sizeHint().width();
    view()->setMinimumWidth(
        std::min(view()->sizeHintForColumn(0) + margins, screen()->availableGeometry().width()));
    QComboBox::showPopup();
}

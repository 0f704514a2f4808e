#include "shell/ChoiceBox.h"

#include <QAbstractItemView>
#include <QScreen>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyleOption>
#include <QStylePainter>

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
    setCurrentIndex(-1);
}

void ChoiceBox::showPopup()
{
    const int margins = 2 * view()->frameWidth() + view()->verticalScrollBar()->sizeHint().width();
    view()->setMinimumWidth(
        std::min(view()->sizeHintForColumn(0) + margins, screen()->availableGeometry().width()));
    QComboBox::showPopup();
}

void ChoiceBox::paintEvent(QPaintEvent*)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    // Styles leave a pixel free on both sides.
    option.currentText =
        option.fontMetrics.elidedText(option.currentText, Qt::ElideRight, field.width() - 2);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

#include "shell/RibbonGroup.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>
#include <QVBoxLayout>
#include <QVariant>

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int kGroupShades = 3;

/// A column of the row. The style sheet makes it transparent by its name.
QVBoxLayout* addColumn(QHBoxLayout* row)
{
    auto* column = new QWidget;
    column->setObjectName(u"fila_btns"_s);
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    row->addWidget(column);
    return layout;
}

QLabel* addCaption(QVBoxLayout* column, const QString& caption)
{
    auto* label = new QLabel(caption);
    label->setObjectName(u"lbl_toolbar"_s);
    label->setAlignment(Qt::AlignHCenter);
    column->addWidget(label, 0, Qt::AlignHCenter);
    return label;
}

} // namespace

RibbonGroup::RibbonGroup(const QString& title, int index, QWidget* parent) : QFrame(parent)
{
    setObjectName(u"grupo_ribbon"_s);
    setAccessibleName(title);
    setProperty("alt", QString::number(index % kGroupShades));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 4);
    layout->setSpacing(4);

    auto* header = new QLabel(title.toUpper());
    header->setObjectName(u"header_grupo"_s);
    header->setAlignment(Qt::AlignCenter);
    layout->addWidget(header);

    auto* buttons = new QWidget;
    buttons->setObjectName(u"fila_btns"_s);
    row_ = new QHBoxLayout(buttons);
    row_->setContentsMargins(5, 0, 5, 0);
    row_->setSpacing(4);
    layout->addWidget(buttons);
}

QToolButton* RibbonGroup::addCard(const QString& face, const QString& caption,
                                  const QString& tooltip, bool checkable)
{
    auto* button = new QToolButton;
    button->setObjectName(u"btn_toolbar"_s);
    button->setText(face);
    button->setToolTip(tooltip);
    button->setCheckable(checkable);
    button->setCursor(Qt::PointingHandCursor);
    button->setFocusPolicy(Qt::NoFocus);
    // A screen reader would spell the symbol.
    button->setAccessibleName(caption);
    button->setAccessibleDescription(tooltip);

    QVBoxLayout* column = addColumn(row_);
    column->addWidget(button, 0, Qt::AlignHCenter);
    addCaption(column, caption);
    return button;
}

void RibbonGroup::addLabeledWidget(QWidget* widget, const QString& caption)
{
    QVBoxLayout* column = addColumn(row_);
    column->addStretch();
    column->addWidget(widget);
    column->addStretch();
    addCaption(column, caption)->setBuddy(widget);
    // A label is called by what it shows.
    if (!qobject_cast<QLabel*>(widget))
        widget->setAccessibleName(caption);
}

void RibbonGroup::addSpacing(int spacing)
{
    row_->addSpacing(spacing);
}

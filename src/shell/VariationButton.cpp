#include "shell/VariationButton.h"

#include "views/SectionWords.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>

using namespace Qt::Literals::StringLiterals;

VariationButton::VariationButton(const QString& rhythmId, const QString& layerId,
                                 LoopSection section, int variantIndex, QWidget* parent)
    : QToolButton(parent), payload_{.rhythmId = rhythmId,
                                    .layerId = layerId,
                                    .section = section,
                                    .variantIndex = variantIndex}
{
    const QString number = QString::number(variantIndex);
    const QString word = sectionWord(section);
    runDrag_ = [](QDrag& drag) { drag.exec(Qt::CopyAction); };
    setObjectName(u"btn_toolbar"_s);
    setText(number);
    setCursor(Qt::OpenHandCursor);
    setToolTip(tr("%1 %2 — un click la pone donde está el cabezal; arrastrala al compás que "
                  "quieras")
                   .arg(word, number));
    // A number alone would tell nothing to whom it is read.
    setAccessibleName(variantWords(section, variantIndex));
}

void VariationButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        dragStart_ = event->pos();
        pressUsedUp_ = false;
    }
    QToolButton::mousePressEvent(event);
}

void VariationButton::mouseMoveEvent(QMouseEvent* event)
{
    const bool held = event->buttons().testFlag(Qt::LeftButton);
    // The base class would take the button for pressed again, and the release for a click.
    if (held && pressUsedUp_)
        return;
    const int distance = (event->pos() - dragStart_).manhattanLength();
    if (!held || distance < QApplication::startDragDistance())
        QToolButton::mouseMoveEvent(event);
    else
        startDrag();
}

void VariationButton::startDrag()
{
    setDown(false);
    pressUsedUp_ = true;
    auto* drag = new QDrag(this);
    drag->setMimeData(payload_.toMimeData().release());
    drag->setPixmap(grab());
    drag->setHotSpot(dragStart_);
    dragging_ = true;
    runDrag_(*drag);
    dragging_ = false;
    emit dragFinished();
}

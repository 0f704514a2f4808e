#include "views/SectionWords.h"

#include <QCoreApplication>

QString sectionWord(LoopSection section)
{
    switch (section) {
    case LoopSection::Intro:
        return QCoreApplication::translate("Secciones", "Introducción");
    case LoopSection::Intermedio:
        return QCoreApplication::translate("Secciones", "Intermedio");
    case LoopSection::Final:
        return QCoreApplication::translate("Secciones", "Final");
    case LoopSection::Normal:
        break;
    }
    return QCoreApplication::translate("Secciones", "Normal");
}

QString variantWords(LoopSection section, int variantIndex)
{
    return sectionWord(section) + u' ' + QString::number(variantIndex);
}

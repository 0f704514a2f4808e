#include "shell/SectionNames.h"

#include <QCoreApplication>

QString sectionName(LoopSection section)
{
    switch (section) {
    case LoopSection::Intro:
        return QCoreApplication::translate("Secciones", "Introducción");
    case LoopSection::Intermedio:
        return QCoreApplication::translate("Secciones", "Intermedio");
    case LoopSection::Final:
        return QCoreApplication::translate("Secciones", "Final");
    default:
        return QCoreApplication::translate("Secciones", "Normal");
    }
}

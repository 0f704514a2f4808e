#include "shell/GridLevelNames.h"

#include <QCoreApplication>

QString gridLevelName(GridSubdivisionLevel level, bool compound)
{
    switch (level) {
    case GridSubdivisionLevel::Pulse:
        break;
    case GridSubdivisionLevel::Division:
        return compound ? QCoreApplication::translate("Grilla", "División ternaria (de a 3)")
                        : QCoreApplication::translate("Grilla", "División binaria (de a 2)");
    case GridSubdivisionLevel::Subdivision:
        return compound ? QCoreApplication::translate("Grilla", "Subdivisión (de a 6)")
                        : QCoreApplication::translate("Grilla", "Subdivisión (de a 4)");
    }
    return QCoreApplication::translate("Grilla", "Pulso (el pie)");
}

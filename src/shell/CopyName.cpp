#include "shell/CopyName.h"

#include <QCoreApplication>
#include <QRegularExpression>

using namespace Qt::Literals::StringLiterals;

QString copyName(const QString& name, const QStringList& taken)
{
    static const QRegularExpression copyMark(u" \\(copia( \\d+)?\\)$"_s);
    const QString original = QString(name).remove(copyMark);
    QString copy = QCoreApplication::translate("MainWindow", "%1 (copia)").arg(original);
    for (int number = 2; taken.contains(copy); ++number)
        copy = QCoreApplication::translate("MainWindow", "%1 (copia %2)").arg(original).arg(number);
    return copy;
}

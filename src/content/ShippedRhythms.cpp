#include "content/ShippedRhythms.h"

#include <QSet>

using namespace Qt::Literals::StringLiterals;

namespace {

QSet<QString> foldedIds()
{
    QSet<QString> folded;
    for (const QString& id : ShippedRhythms::ids())
        folded.insert(id.toCaseFolded());
    return folded;
}

} // namespace

const QStringList& ShippedRhythms::ids()
{
    static const QStringList ids =
        QString::fromLatin1(VELTA_SHIPPED_RHYTHMS).split(u',', Qt::SkipEmptyParts);
    return ids;
}

bool ShippedRhythms::contains(const QString& id)
{
    static const QSet<QString> folded = foldedIds();
    return folded.contains(id.toCaseFolded());
}

bool ShippedRhythms::isImpostor(const QString& packageName, const QString& rhythmId)
{
    if (!contains(packageName) && !contains(rhythmId))
        return false;
    return packageName != rhythmId || !ids().contains(rhythmId);
}

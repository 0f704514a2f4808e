#pragma once

#include <QStringList>

/// What a copy of a work is called: "Zamba (copia)", or "Zamba (copia 2)" and so on where that name
/// is taken. A copy of a copy is another copy of the same work.
QString copyName(const QString& name, const QStringList& taken);

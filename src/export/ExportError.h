#pragma once

#include <QString>

/// Stores a message where the caller asked for one.
inline void setError(QString* error, const QString& message)
{
    if (error)
        *error = message;
}

/// What an export says of a song beyond the bounds that keep memory and time finite.
inline QString tooLongMessage()
{
    return QStringLiteral("La obra es demasiado larga para exportarla.");
}

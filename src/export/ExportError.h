#pragma once

#include <QString>

/// Stores a message where the caller asked for one.
inline void setError(QString* error, const QString& message)
{
    if (error)
        *error = message;
}

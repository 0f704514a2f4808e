#pragma once

#include <QString>

namespace brusel {

/// One member of the group that works at this computer.
struct Integrante {
    /// Stable over sessions and computers.
    QString id;
    /// The name shown.
    QString nombre;
    /// The member's colour, in the form that the program which began the session chose.
    QString color;

    bool operator==(const Integrante&) const = default;
};

} // namespace brusel

#pragma once

#include <QString>

/// The style sheet of the whole application in its dark or light colours: the rules of velta.qss
/// with a value in place of every colour name. Made once for each theme.
const QString& styleSheet(bool dark);

#pragma once

#include <QString>

class QLabel;

// Labels and tool tips guess whether a text is rich, and a rich one opens the files that it names.
// What comes from a file, a server or another program is shown through these: it is read as it
// stands.

/// A label of plain text.
QLabel* plainLabel(const QString& text = {});

/// What a tool tip has to hold so that a text is read as it stands.
QString plainToolTip(const QString& text);

/// What the title of a window has to hold so that a text is read as it stands: "[*]" is the place
/// of a mark in it.
QString plainTitle(QString text);

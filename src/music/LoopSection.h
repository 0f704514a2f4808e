#pragma once

#include <QMetaType>
#include <QString>

/// The part of a song's form that a loop is written for. The order is part of the design.
enum class LoopSection : qint32 { Intro = 0, Intermedio = 1, Normal = 2, Final = 3 };

Q_DECLARE_METATYPE(LoopSection)

/// The word of a section, as files hold it and the screen shows it; "Normal" for any other value.
QString loopSectionToString(LoopSection section);

/// The section of a word, compared exactly; Normal for any other text.
LoopSection loopSectionFromString(const QString& text);

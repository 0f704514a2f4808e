#pragma once

#include <QColor>

/// How well a text is read on a ground, 1 to 21: the ratio of their luminances as WCAG 2 has it.
double contrast(const QColor& text, const QColor& ground);

/// What is written with on a ground so that the contrast is 4.5 at least: white where it will do,
/// or else a dark grey or black.
QColor inkOn(const QColor& ground);

#pragma once

#include "views/arranger/ClipEdits.h"

#include <QString>

/// The levels of a clip in words.
namespace ClipWords {

/// "Volumen: 85 %", "Entra de a poco: 0,5 s", "Se va de a poco: 0,5 s".
QString level(const ClipLevels& levels, ClipHandle handle);

/// level(), and under it how one changes it.
QString tip(const ClipLevels& levels, ClipHandle handle);

/// All of them; nothing for a clip that sounds as its file does.
QString changes(const ClipLevels& levels);

/// All of them.
QString all(const ClipLevels& levels);

} // namespace ClipWords

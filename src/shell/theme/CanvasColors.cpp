#include "shell/theme/CanvasColors.h"

const CanvasColors& canvasColors()
{
    return ThemeManager::instance()->isDark() ? kDarkCanvas : kLightCanvas;
}

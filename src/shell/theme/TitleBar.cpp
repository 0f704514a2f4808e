#include "shell/theme/TitleBar.h"

#ifdef _WIN32

// clang-format off: dwmapi.h needs what windows.h declares.
#include <dwmapi.h>
#include <windows.h>

// clang-format on

void setTitleBarDark(void* windowHandle, bool dark)
{
    // DWMWA_USE_IMMERSIVE_DARK_MODE, which older SDKs do not name.
    constexpr DWORD kImmersiveDarkMode = 20;
    const BOOL value = dark ? TRUE : FALSE;
    DwmSetWindowAttribute(static_cast<HWND>(windowHandle), kImmersiveDarkMode, &value,
                          sizeof value);
}

#else

void setTitleBarDark(void*, bool)
{}

#endif

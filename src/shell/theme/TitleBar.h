#pragma once

/// Gives a window's title bar the dark or the light look of the system, where a program has a say
/// in that: on Windows, for a native window handle. Does nothing elsewhere. Windows that refuse
/// are left as they are.
void setTitleBarDark(void* windowHandle, bool dark);

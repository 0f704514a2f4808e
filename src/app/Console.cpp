#include "app/Console.h"

#ifdef _WIN32

#include <cstdio>
#include <windows.h>

void attachConsole()
{
    if (GetStdHandle(STD_OUTPUT_HANDLE) || !AttachConsole(ATTACH_PARENT_PROCESS))
        return;
    std::freopen("CONOUT$", "w", stdout);
    std::freopen("CONOUT$", "w", stderr);
}

#else

void attachConsole()
{}

#endif

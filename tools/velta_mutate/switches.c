#include <stdlib.h>

int velta_change;

/* Before everything that a program sets up for itself. */
__attribute__((constructor(101))) static void read_change(void)
{
    const char* number = getenv("VELTA_CHANGE");
    velta_change = number ? atoi(number) : 0;
}

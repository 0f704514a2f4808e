#include "app/QMain.h"

int main(int argc, char** argv)
{
    return qMain(argc, argv);
}

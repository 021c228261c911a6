// Opens and closes the catalogue the way every unit of work does, in a process of its own, so that a
// test can watch a failed connection end the program.

#include "catalogue/Database.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    OpenDatabase();
    std::printf("opened\n");
    CloseDatabase();
    std::printf("closed\n");
    return 0;
}

#pragma once

#include <cstdio>

// One line of the summary: a figure beside what is wanted of it.
inline void printFigure(const char *what, double value, double wanted)
{
    std::printf("  %-58s %8.4f  (wanted: at most %g)\n", what, value, wanted);
}

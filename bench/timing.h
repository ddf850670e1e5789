#pragma once

#include <functional>
#include <vector>

double millisecondsOf(const std::function<void()> &body);

// The median of each, taken in turn, so that what else goes on meets all of them alike.
std::vector<double> medians(int times, const std::vector<std::function<double()>> &measures);

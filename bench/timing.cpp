#include "timing.h"

#include <QElapsedTimer>

#include <algorithm>

double millisecondsOf(const std::function<void()> &body)
{
    QElapsedTimer timer;
    timer.start();
    body();
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

std::vector<double> medians(int times, const std::vector<std::function<double()>> &measures)
{
    std::vector<std::vector<double>> taken(measures.size());
    for (int i = 0; i < times; ++i) {
        for (std::size_t j = 0; j < measures.size(); ++j)
            taken[j].push_back(measures[j]());
    }
    std::vector<double> middle;
    for (auto &values : taken) {
        std::ranges::sort(values);
        middle.push_back(values[values.size() / 2]);
    }
    return middle;
}

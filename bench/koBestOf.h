#pragma once

#include <QElapsedTimer>

#include <algorithm>
#include <functional>

// The shortest of a few runs, in milliseconds: the run least disturbed by the rest of
// the machine.
inline double bestOf(const std::function<void()>& work, int tries = 5)
{
    double best = 1e9;
    for (int run = 0; run < tries; ++run) {
        QElapsedTimer timer;
        timer.start();
        work();
        best = std::min(best, timer.nsecsElapsed() / 1e6);
    }
    return best;
}

#pragma once

#include <QStringList>

// A program measured as whole processes beside its floor, another program doing the same work:
// each run once to warm the caches, then both in turn, so that the machine's load falls on both
// alike.
namespace Bench {

struct ProcessPair {
    double median = -1.0;  // ms; negative when a run failed
    double floor = -1.0;   // ms
    double peakMegabytes = 0.0;
    double floorPeakMegabytes = 0.0;
    int runs = 0;
};

ProcessPair TimeProcessPair(const QStringList& command, const QStringList& floor, int runs);

}  // namespace Bench

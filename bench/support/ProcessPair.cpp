#include "bench/support/ProcessPair.h"

#include <algorithm>
#include <vector>

#include "bench/support/BenchSupport.h"

namespace Bench {

ProcessPair TimeProcessPair(const QStringList& command, const QStringList& floor, int runs) {
    ProcessPair pair;
    if (RunProcess(command).seconds < 0 || RunProcess(floor).seconds < 0) {
        return pair;
    }
    std::vector<double> measured;
    std::vector<double> floors;
    for (int run = 0; run < runs; ++run) {
        const ProcessRun one = RunProcess(command);
        const ProcessRun other = RunProcess(floor);
        if (one.seconds < 0 || other.seconds < 0) {
            return pair;
        }
        measured.push_back(one.seconds * 1000.0);
        floors.push_back(other.seconds * 1000.0);
        pair.peakMegabytes = std::max(pair.peakMegabytes, one.peakMegabytes);
        pair.floorPeakMegabytes = std::max(pair.floorPeakMegabytes, other.peakMegabytes);
    }
    pair.median = Median(measured);
    pair.floor = Median(floors);
    pair.runs = runs;
    return pair;
}

}  // namespace Bench

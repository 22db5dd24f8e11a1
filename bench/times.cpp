// SPDX-License-Identifier: MIT
#include "times.h"

#include "work.h"

#include <benchmark/benchmark.h>

namespace bench {

void registerTimes()
{
    for (const Work &work : allWorks()) {
        benchmark::RegisterBenchmark(work.name.c_str(), [work](benchmark::State &state) {
            const Step step = work.prepare();
            for (auto _ : state)
                step();
            if (work.size > 0)
                state.counters["size"] = work.size;
        });
    }
}

} // namespace bench

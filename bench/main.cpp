// SPDX-License-Identifier: MIT
// driver-bench: what the driver costs, beside the floor of each piece of work. scripts/bench runs it.
#include "counts.h"
#include "loopback.h"
#include "plant.h"
#ifdef BENCH_TIMES
#include "times.h"

#include <benchmark/benchmark.h>
#endif

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

const char usageText[] =
    "usage: driver-bench [waits] [--benchmark_...]     times of all works, or how long panel threads wait\n"
    "       driver-bench allocations | memory | values heap counts: of exchanges, of rebuilds, of values per "
    "station\n"
    "       driver-bench plant                         passes over 250 stations in virtual time\n"
    "       driver-bench steps NAME COUNT              one work, for a program that counts instructions\n"
    "       driver-bench counted PART COUNT            works with PART in their names, each in countedSteps\n"
    "       driver-bench loopback bare | driver PORT REGISTERS COUNT  reads over TCP from 127.0.0.1\n";

int usage()
{
    std::fputs(usageText, stderr);
    return EXIT_FAILURE;
}

int exitCode(bool good)
{
    return good ? EXIT_SUCCESS : EXIT_FAILURE;
}

#ifdef BENCH_TIMES
/// `words` are the program's name and what follows the choice.
int time(int count, char *words[])
{
    benchmark::Initialize(&count, words);
    if (benchmark::ReportUnrecognizedArguments(count, words))
        return EXIT_FAILURE;
    benchmark::RunSpecifiedBenchmarks();
    return EXIT_SUCCESS;
}
#endif

} // namespace

int main(int argc, char *argv[])
{
    const auto is = [&](const char *word, int words) {
        return argc == words && std::strcmp(argv[1], word) == 0;
    };
    const auto number = [&](int word) { return std::atoi(argv[word]); };
    if (is("allocations", 2))
        return bench::printAllocations(), EXIT_SUCCESS;
    if (is("memory", 2))
        return bench::printMemory(), EXIT_SUCCESS;
    if (is("values", 2))
        return bench::printValues(), EXIT_SUCCESS;
    if (is("plant", 2))
        return bench::printPlant(), EXIT_SUCCESS;
    if (is("steps", 4))
        return exitCode(bench::runSteps(argv[2], number(3)));
    if (is("counted", 4))
        return exitCode(bench::runCounted(argv[2], number(3)));
    if (is("loopback", 6))
        return exitCode(
            bench::printLoopback(std::strcmp(argv[2], "driver") == 0, number(3), number(4), number(5)));
#ifdef BENCH_TIMES
    if (argc > 1 && std::strcmp(argv[1], "waits") == 0) {
        bench::registerPanelWaits();
        return time(argc - 1, argv + 1);
    }
    if (argc == 1 || argv[1][0] == '-') {
        bench::registerTimes();
        return time(argc, argv);
    }
#endif
    return usage();
}

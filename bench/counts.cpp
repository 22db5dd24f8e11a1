// SPDX-License-Identifier: MIT
#include "counts.h"

#include "allocations.h"
#include "fresh_driver.h"
#include "poll_items.h"
#include "work.h"

#include <cstdio>

using namespace modbus_driver;

namespace bench {

namespace {

const int warmUp = 50; // lists have grown to the size that they keep
const int counted = 16;

/// What asks for a block of this size; everything else is a byte array or text.
const char *kindOf(std::size_t size)
{
    if (size == sizeof(Protocol))
        return "QList<Protocol> entry";
    if (size == sizeof(RW_VAR))
        return "QList<RW_VAR> entry";
    return "QByteArray";
}

void printEntry(const char *separator, const std::string &name, const std::vector<std::size_t> &sizes)
{
    std::printf("%s\n  {\"name\": \"%s\", \"per_step\": %.2f, \"kinds\": [", separator, name.c_str(),
                double(sizes.size()) / counted);
    for (std::size_t i = 0; i < sizes.size() / counted; ++i)
        std::printf("%s\"%s, %zu bytes\"", i ? ", " : "", kindOf(sizes[i]), sizes[i]);
    std::printf("]}");
}

std::vector<std::size_t> allocationsOf(const Work &work)
{
    const Step step = work.prepare();
    for (int i = 0; i < warmUp; ++i)
        step();
    HeapCount count;
    for (int i = 0; i < counted; ++i)
        step();
    count.stop();
    return count.sizes();
}

void printRebuildMemory(const char *separator, int variables, int stations)
{
    freshDriver(stations > 1 ? PerStation : Shared);
    QList<VAR_ITEM> items = pollItems(variables, stations);
    HeapCount count;
    const int requests = ReCreatReadVarList(&items);
    count.stop();
    std::printf("%s\n  {\"variables\": %d, \"stations\": %d, \"requests\": %d, \"kept_per_variable\": %.1f, "
                "\"peak_per_variable\": %.1f, \"allocations_per_variable\": %.2f}",
                separator, variables, stations, requests, double(count.heldBytes()) / variables,
                double(count.peakBytes()) / variables, double(count.allocations()) / variables);
}

EXTENDVAR recordOf(int i, const QByteArray &value)
{
    EXTENDVAR record;
    record.station = 1 + i / ImageRegisters;
    record.area = AreaHoldingRegisters;
    record.address = i % ImageRegisters;
    record.value = value;
    return record;
}

/// Bytes that `make` keeps for each of `count` values.
template <typename Make> double bytesOfEach(int count, Make make)
{
    HeapCount heap;
    for (int i = 0; i < count; ++i)
        make(i);
    heap.stop();
    return double(heap.heldBytes()) / count;
}

void printValueMemory(const char *separator, int count)
{
    const QByteArray common(4, '\0');
    QList<EXTENDVAR> bare, whole;
    const double record = bytesOfEach(count, [&](int i) { bare.append(recordOf(i, common)); });
    const double both = bytesOfEach(count, [&](int i) { whole.append(recordOf(i, QByteArray(4, '\0'))); });
    freshDriver(PerStation);
    ExtendFindSameVar(1, AreaCoils, 0); // the index forgets what it had
    freshDriver(PerStation);
    const double all = bytesOfEach(count, [](int i) {
        const EXTENDVAR wanted = recordOf(i, QByteArray());
        ExtendFindSameVar(wanted.station, wanted.area, wanted.address);
    });
    std::printf("%s\n  {\"values\": %d, \"record\": %.1f, \"value\": %.1f, \"index\": %.1f}", separator,
                count, record, both - record, all - both);
}

} // namespace

void countedSteps(const Step &step, int steps)
{
    for (int i = 0; i < steps; ++i)
        step();
    asm volatile("");
}

void printAllocations()
{
    std::printf("[");
    const char *separator = "";
    for (const Work &work : allWorks()) {
        if (work.size > 0)
            continue;
        printEntry(separator, work.name, allocationsOf(work));
        separator = ",";
    }
    std::printf("\n]\n");
}

void printMemory()
{
    std::printf("[");
    const char *separator = "";
    for (int stations : {1, 32}) {
        for (int variables : {1000, 10000, 100000}) {
            printRebuildMemory(separator, variables, stations);
            separator = ",";
        }
    }
    std::printf("\n]\n");
}

void printValues()
{
    std::printf("[");
    const char *separator = "";
    for (int count : {1000, 10000, 100000, 1000000}) {
        printValueMemory(separator, count);
        separator = ",";
    }
    std::printf("\n]\n");
}

bool runSteps(const std::string &name, int steps)
{
    for (const Work &work : allWorks()) {
        if (work.name != name)
            continue;
        countedSteps(work.prepare(), steps);
        return true;
    }
    std::fprintf(stderr, "driver-bench: no work is called %s\n", name.c_str());
    return false;
}

bool runCounted(const std::string &part, int steps)
{
    bool any = false;
    for (const Work &work : allWorks()) {
        if (work.name.find(part) == std::string::npos)
            continue;
        const bool isLong = work.name.find("rebuild/") != std::string::npos ||
                            work.name.find("plant/") == 0 || work.name.find("1000_bits") != std::string::npos;
        const int counted = isLong ? 1 : steps;
        const Step step = work.prepare();
        for (int i = 0; i < (isLong ? 1 : warmUp); ++i)
            step();
        countedSteps(step, counted);
        std::printf("%s %d\n", work.name.c_str(), counted);
        any = true;
    }
    return any;
}

} // namespace bench

// SPDX-License-Identifier: MIT
#include "work.h"

#include "plant.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

Works allWorks()
{
    Works works;
    addExchanges(&works);
    addPanelReads(&works);
    addQueueing(&works);
    addRebuilds(&works);
    addLookUps(&works);
    addChecksums(&works);
    addPlantPasses(&works);
    return works;
}

void giveUp(const char *what)
{
    std::fprintf(stderr, "bench: %s\n", what);
    std::exit(EXIT_FAILURE);
}

} // namespace bench

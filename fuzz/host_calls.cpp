// SPDX-License-Identifier: MIT
#include "guarded_image.h"
#include "panel_calls.h"
#include "targets.h"

#include "driver_checks.h"

#include <cstring>
#include <memory>

using namespace modbus_driver;

namespace {

const Protocol *inFlight()
{
    return PLC_driver.pendingList.isEmpty() ? nullptr : &PLC_driver.pendingList.at(0);
}

/// A reply that is right, short, absent or anything, and a length that is the reply's or any.
void reply(Script *script)
{
    const Protocol *request = inFlight();
    const int wanted = request ? request->replyLength : 0;
    const int kind = script->byte() % 8;
    const int right = qBound(0, wanted, 4000);
    const int size = kind < 4 ? right : kind == 4 ? 0 : kind == 5 ? right / 2 : script->byte();
    const std::unique_ptr<char[]> exact(new char[static_cast<std::size_t>(size)]());
    const QByteArray data = script->bytes(size);
    std::memcpy(exact.get(), data.constData(), static_cast<std::size_t>(data.size()));
    QByteArray received = QByteArray::fromRawData(exact.get(), size);
    guardedImage::store(&received);
    const int length = kind == 0 ? wanted : kind == 7 ? script->number() : size;
    const int status = DataCom(kind == 4 ? nullptr : &received, length)->status;
    require(status >= 0 && status <= 182, "a status is one that is documented");
}

void changeSettings(Script *script, CommSettings *settings)
{
    const int flags = script->byte();
    settings->multiStation = flags & 1;
    settings->remoteMode = flags >> 1 & 1;
    settings->linkId = flags >> 2 & 1;
    settings->writeMode = flags & 8 ? 2 : 0;
    settings->defaultStation = flags >> 4 & 3;
    settings->writeBlockSize = panel::countOf(script);
}

/// The inputs lie between the arrays that hosts write: a step beside those would change them.
struct Canary
{
    char edges[4][32];
    Canary()
    {
        std::memcpy(edges[0], PLC_driver.inputBits, 32);
        std::memcpy(edges[1], PLC_driver.inputBits + ImageBitBytes - 32, 32);
        std::memcpy(edges[2], PLC_driver.inputRegisters, 32);
        std::memcpy(edges[3], PLC_driver.inputRegisters + ImageRegisters - 16, 32);
    }
};

void (*const panelCall[])(Script *) = {panel::rebuild, panel::switchStation, panel::read,
                                       panel::write,   panel::write,         guardedImage::pack};
const int panelCalls = 6;

} // namespace

void fuzzHostCalls(const quint8 *bytes, std::size_t size)
{
    Script script(bytes, size);
    CommSettings settings;
    freshDriver(&settings);
    settings.retryLimit = script.byte() % 4;
    changeSettings(&script, &settings);
    int forced = 0;
    while (!script.atEnd()) {
        const Canary before;
        const bool mayReadInputs = inFlight() && (inFlight()->var.area == 1 || inFlight()->var.area == 4);
        const int call = script.byte() % 16;
        if (call < panelCalls)
            panelCall[call](&script);
        else if (call == panelCalls)
            forced += panel::queue(&script);
        else if (call == panelCalls + 1)
            changeSettings(&script, &settings);
        else if (call % 2)
            reply(&script);
        else
            ComCommunication();
        requireNothing(violatedInvariant(forced));
        require(mayReadInputs || std::memcmp(&before, Canary().edges, sizeof before) == 0, "only reads change the inputs");
    }
}

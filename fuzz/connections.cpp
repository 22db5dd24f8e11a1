// SPDX-License-Identifier: MIT
#include "scripted_link.h"
#include "targets.h"

#include "driver_checks.h"

#include "../driver/base/modbus_wire.h"
#include "../host/link/communication_loop.h"

using namespace modbus_driver;

namespace {

const int hostId = 100;
const int mostReceived = 1 << 18; // bytes of one exchange

void queueWrite(Script *script, int item)
{
    RW_VAR write;
    write.hostId = hostId;
    write.hostItem = item;
    write.rwFlag = AccessWrite;
    write.area = AreaHoldingRegisters;
    write.station = script->byte() % 3; // 0: a broadcast
    write.startAddress = script->byte() % 100;
    write.dataLength = 1 + script->byte() % 2;
    write.data = QByteArray(2 * write.dataLength, static_cast<char>(script->byte() & 0x7F));
    AddListWriteVar(&write, QueueMerged);
}

/// Holds the loop to its promises.
class Checks : public LoopObserver
{
public:
    Checks(Script *script, ScriptedLink *link, const ConnectionOptions &options)
        : m_script(script), m_link(link),
          m_longestMs(2 * options.backOff.longestMs + 20 * options.timeoutMs + 40 * options.quietMs + 2000),
          m_lastMs(link->nowMs())
    {
    }

    void linkIs(LinkState::State, LinkCause cause, TransactionNumbers::Habit numbers) override
    {
        require(cause != LinkCause::Flood || m_link->wasFlooded(), "a pause of the machine is no flood");
        m_numbers = numbers;
    }

    void exchangeEnded(const RW_VAR &access, const Exchange &exchange, int, const Exchange &) override
    {
        const qint64 waited = m_link->nowMs() - m_lastMs - m_link->pausedMs() + m_lastPausedMs;
        require(waited <= m_longestMs, "an exchange ends");
        require(m_link->takeReceived() <= mostReceived, "no more bytes are taken than any late replies need");
        m_lastMs = m_link->nowMs();
        m_lastPausedMs = m_link->pausedMs();
        if (exchange.end == Exchange::Answered)
            judge(access, exchange.reply);
    }

    void entryLeft(int, int) override {}
    void unitSwitched(int, bool) override {}
    void passEnded() override
    {
        if (m_script->flag())
            queueWrite(m_script, ++m_items);
    }
    void loopEnded() override { m_link->end(); }

private:
    void judge(const RW_VAR &access, const QByteArray &reply)
    {
        require(wire::wordAt(reply, wire::TransactionAt) == 0, "the driver gets the number that it sent");
        require(m_numbers != TransactionNumbers::Echoed || m_link->isTrueAnswer(reply),
                "while numbers are echoed no foreign reply is an answer");
        const bool isException = wire::byteAt(reply, wire::FunctionAt) & wire::ExceptionFlag;
        require(access.rwFlag == AccessRead || isException ||
                    reply.mid(wire::UnitAt) == m_link->request().left(wire::WriteEchoLength).mid(wire::UnitAt),
                "a write is acknowledged by its echo");
    }

    Script *const m_script;
    ScriptedLink *const m_link;
    const qint64 m_longestMs;
    qint64 m_lastMs;
    qint64 m_lastPausedMs = 0;
    int m_items = 0;
    TransactionNumbers::Habit m_numbers = TransactionNumbers::Unknown;
};

DriverLibrary linkedDriver()
{
    DriverLibrary driver;
    driver.enableStation = &EnCommStation;
    driver.nextRequest = &ComCommunication;
    driver.handReply = &DataCom;
    return driver;
}

ConnectionOptions connectionOptions(Script *script)
{
    ConnectionOptions options;
    options.timeoutMs = 20 + script->byte();
    options.gapMs = script->byte() % 16;
    options.quietMs = script->byte() % 32;
    options.patienceMs = script->byte() % 64;
    options.afterTimeout = static_cast<AfterTimeout>(script->byte() % 3);
    options.backOff = {100, 400, 10, 500};
    return options;
}

/// Three requests, whose replies have one length.
void pollSomeRegisters()
{
    QList<VAR_ITEM> items;
    for (const auto &[unit, address] : {std::pair(1, 10), {1, 30}, {2, 10}}) {
        VAR_ITEM item;
        item.area = AreaHoldingRegisters;
        item.station = static_cast<quint8>(unit);
        item.addressText = QString::number(address);
        item.count = 2;
        items.append(item);
    }
    ReCreatReadVarList(&items);
}

} // namespace

/// A whole run of the host's communication thread.
void fuzzConnection(const quint8 *bytes, std::size_t size)
{
    Script script(bytes, size);
    ScriptedLink link(&script);
    CommSettings settings;
    freshDriver(&settings);
    settings.multiStation = 1;
    settings.writeMode = WriteModeToStation;
    settings.writeBlockSize = 4;
    settings.retryLimit = script.byte() % 3;
    EnCommStation(-1, 1);
    pollSomeRegisters();
    const ConnectionOptions connection = connectionOptions(&script);
    LoopOptions options;
    options.everyMs = script.byte() % 64;
    options.passes = script.byte() % 8;
    options.offAfter = script.byte() % 4;
    options.retryOffMs = 1000;
    options.waitsForLink = script.flag();

    const DriverLibrary driver = linkedDriver();
    const LinkTrace trace;
    Checks checks(&script, &link, connection);
    CommunicationLoop loop(driver, settings, connection, options, trace, checks);
    loop.start();
    link.waitForEnd();
    loop.stop();
    requireNothing(violatedInvariant());
}

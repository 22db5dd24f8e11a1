// SPDX-License-Identifier: MIT
// The whole host over TCP against a station that lies at random. Whatever the station sends, a value that counts as
// read is the one that the register holds, and a write that counts as done is in its register. MODBUS_SOAK_SECONDS says
// for how long (two seconds), MODBUS_SOAK_SEED with which numbers (those of the clock).

#include "../host/cli/panel_session.h"
#include "../host/explain/value_text.h"
#include "../host/explain/write_outcome.h"
#include "host_words.h"

#include <QtCore/QElapsedTimer>

#include <cstdio>
#include <random>

namespace {
const char polled[] = "1/hr:100*9 2/hr:100*9 2/hr:120 1/hr:120 1/ir:100*9 2/coil:160*24 1/coil:160*24 1/hrbit:130.3 2/hr32:140*2";
const char written[] = "1/hr:300 2/hr:300 1/hr:301*3 2/coil:301 1/coil:301 1/hrbit:320.7 2/hr:310";
const int timeoutMs = 40;
const int longestMs = 60000; // of a soak that finds nothing to check

// The faults of a station that echoes transaction numbers.
const char *const faults[] = {
    "double",
    "double=0-6",
    "behind",
    "late=30-50",
    "late=80",
    "delay=35-45",
    "silence",
    "cut=5",
    "glue",
    "close",
    "reset",
    "unit=2",
    "function=4",
    "length=+2",
    "exception=4",
    "exception=5",
    "protocol=1",
    "transaction=9",
    "greet=9@unit=2,address=100",
};
// Of one that does not: without numbers nobody can tell "behind" or a wrong unit's value from the right reply.
const char *const faultsWithoutNumbers[] = {
    "double", "double=0-6", "late=80", "silence", "close", "reset", "exception=4", "cut=5", "greet=9@unit=2,address=100",
};

class Soak
{
public:
    explicit Soak(unsigned seed) : m_random(seed) {}

    void poll()
    {
        const QList<Variable> of = variables(polled);
        PanelSession session(options(), of);
        if (!prepare(session))
            return;
        session.pollVariables();
        session.start();
        PanelSnapshot now = session.state().snapshot();
        while (!now.isEnded) {
            session.state().waitForNews(now.passes, 0, 5);
            now = session.state().snapshot();
            for (const ValueState &value : now.values)
                check(value, *session.station());
        }
        session.stop();
    }

    void write()
    {
        QList<WriteItem> items;
        for (const Variable &variable : variables(written)) {
            QStringList numbers;
            for (int i = 0; i < variable.count; ++i)
                numbers << QString::number(variable.area == modbus_driver::AreaHoldingRegisters ? below(60000) : below(2));
            QString error;
            WriteItem item;
            item.variable = variable;
            item.value = *parseValues(variable, numbers.join(QLatin1Char(',')), &error);
            items << item;
        }
        PanelSession session(options(), variables(written));
        if (!prepare(session))
            return;
        queueWrites(session.driver(), 100, &items);
        session.start();
        PanelSnapshot now = session.state().snapshot();
        while (!now.isEnded && now.itemsEnded() < items.size()) {
            session.state().waitForNews(0, now.itemsEnded(), 5);
            now = session.state().snapshot();
        }
        session.stop();
        now = session.state().snapshot();
        for (int i = 0; i < items.size(); ++i)
            check(items.at(i), now.items[i], *session.station());
    }

    int values = 0, writes = 0;

private:
    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }

    template <std::size_t Count> QString oneOf(const char *const (&texts)[Count])
    {
        QString text = QLatin1String(texts[below(Count)]);
        text += QLatin1Char(text.contains(QLatin1Char('@')) ? ',' : '@');
        return text + QStringLiteral("every=%1").arg(1 + below(9));
    }

    PanelOptions options()
    {
        QStringList texts;
        const bool echoes = below(3) > 0;
        for (int i = below(3); i >= 0; --i)
            texts << (echoes ? oneOf(faults) : oneOf(faultsWithoutNumbers));
        if (!echoes)
            texts << QStringLiteral("transaction=0");
        const AfterTimeout policies[] = {AfterTimeout::Numbers, AfterTimeout::Reconnect, AfterTimeout::Drain};
        PanelOptions options;
        options.driverPath = QStringLiteral(DRIVER_PATH);
        options.faults = *parseFaults(texts, nullptr);
        options.connection.timeoutMs = timeoutMs;
        options.connection.backOff = {1, 1, 0, 0};
        options.connection.afterTimeout = policies[below(3)];
        options.loop.passes = 5;
        options.retries = below(3);
        options.block = 3 + below(20);
        m_round = QStringLiteral("%1; policy %2, %3 retries, block %4")
                      .arg(texts.join(QLatin1Char(' ')))
                      .arg(static_cast<int>(options.connection.afterTimeout))
                      .arg(options.retries)
                      .arg(options.block);
        return options;
    }

    // Every unit and every area holds other values.
    bool prepare(PanelSession &session)
    {
        QString error;
        if (session.prepare(&error) != ExitDone) {
            ADD_FAILURE() << qPrintable(error);
            return false;
        }
        for (const int unit : {1, 2}) {
            for (int address = 100; address < 200; ++address) {
                const auto set = [&](SimulatedUnit::Table table, int value) {
                    session.station()->setValue(unit, table, address, static_cast<quint16>(value));
                };
                set(QModbusDataUnit::HoldingRegisters, 1000 * unit + 7 * address);
                set(QModbusDataUnit::InputRegisters, 20000 * unit + 5 * address);
                set(QModbusDataUnit::Coils, address * unit % 3 == 0);
            }
        }
        return true;
    }

    // What the station holds for the variable, as the host shows values.
    static QString heldFor(const Variable &variable, const StationThread &station)
    {
        using namespace modbus_driver;
        const auto table = variable.area == AreaCoils            ? QModbusDataUnit::Coils
                           : variable.area == AreaInputRegisters ? QModbusDataUnit::InputRegisters
                                                                 : QModbusDataUnit::HoldingRegisters;
        const auto at = [&](int address) { return station.value(variable.unit, table, address); };
        QStringList texts;
        for (int i = 0; i < variable.count; ++i) {
            const int address = variable.address + i;
            const quint32 pair = variable.area == AreaHoldingPairs ? quint32(at(address + i)) << 16 | at(address + i + 1) : 0;
            texts << QString::number(variable.area == AreaHoldingPairs         ? pair
                                     : variable.area == AreaHoldingRegisterBit ? at(address / 16) >> address % 16 & 1
                                                                               : at(address));
        }
        return texts.join(QLatin1Char(' '));
    }

    void check(const ValueState &value, const StationThread &station)
    {
        if (value.readAtMs() < 0 || !value.failure().isEmpty())
            return;
        ++values;
        EXPECT_EQ(valueText(value.variable(), value.value()).toStdString(),
                  heldFor(value.variable(), station).toStdString())
            << qPrintable(value.variable().name) << " under " << qPrintable(m_round);
    }

    void check(const WriteItem &item, const ItemResult &result, const StationThread &station)
    {
        if (writeOutcome(item, result).end != WriteOutcome::Done)
            return;
        ++writes;
        EXPECT_EQ(valueText(item.variable, item.value).toStdString(),
                  heldFor(item.variable, station).toStdString())
            << qPrintable(item.variable.name) << " written under " << qPrintable(m_round);
    }

    std::mt19937 m_random;
    QString m_round;
};

TEST(Soak, ShowsNothingWrongAsReadAndNoWriteAsDoneThatIsNot)
{
    const QByteArray seconds = qgetenv("MODBUS_SOAK_SECONDS");
    const QByteArray given = qgetenv("MODBUS_SOAK_SEED");
    const unsigned seed = given.isEmpty() ? std::random_device()() : given.toUInt();
    Soak soak(seed);
    QElapsedTimer timer;
    timer.start();
    const auto isOver = [&] { return timer.elapsed() >= 1000 * (seconds.isEmpty() ? 2 : seconds.toInt()); };
    // A round whose faults leave nothing to check is followed by another.
    while ((!isOver() || soak.values == 0 || soak.writes == 0) && timer.elapsed() < longestMs + 1000 * seconds.toInt() &&
           !testing::Test::HasFailure()) {
        soak.poll();
        soak.write();
    }
    std::printf("seed %u: %d values and %d writes checked\n", seed, soak.values, soak.writes);
    EXPECT_GT(soak.values, 0);
    EXPECT_GT(soak.writes, 0);
}
} // namespace

// SPDX-License-Identifier: MIT
// The whole host against a station that lies at random. Whatever the station sends, a value that counts as read is the
// one that the register holds, and a write that counts as done is in its register. MODBUS_SOAK_SECONDS says for how long
// (two seconds), MODBUS_SOAK_SEED with which numbers (those of the clock).

#include "session_fixture.h"

#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <random>

namespace {

const char polled[] = "1/hr:100*9 2/hr:100*9 2/hr:120 1/hr:120 1/ir:100*9 2/coil:160*24 1/coil:160*24 1/hrbit:130.3 2/hr32:140*2";
const char written[] = "1/hr:300 2/hr:300 1/hr:301*3 2/coil:301 1/coil:301 1/hrbit:320.7 2/hr:310";
const int longestMs = 60000; // of a soak that finds nothing to check

// The faults of a station that echoes transaction numbers.
const char faults[] = "double double=0-6 behind late=30-50 late=80 delay=35-45 silence cut=5 glue close reset unit=2 function=4 "
                      "length=+2 exception=4 exception=5 protocol=1 transaction=9 greet=9@unit=2,address=100";
// Of one that does not: without numbers nobody can tell "behind" or a wrong unit's value from the right reply.
const char faultsWithoutNumbers[] = "double double=0-6 late=80 silence close reset exception=4 cut=5 greet=9@unit=2,address=100";

class Soak : public SessionTest
{
protected:
    /// One session: an honest station, then lies while it is polled and written to, then an honest station again.
    void run()
    {
        const bool echoes = below(3) > 0;
        const QByteArray honest = echoes ? "" : "transaction=0";
        QByteArray lies = honest;
        for (int i = below(3); i >= 0; --i)
            lies = oneOf(echoes ? faults : faultsWithoutNumbers) + ' ' + lies;
        options.connection.timeoutMs = 40;
        options.connection.afterTimeout = static_cast<AfterTimeout>(below(3));
        options.retries = below(3);
        options.block = 3 + below(20);
        SCOPED_TRACE(testing::Message() << lies.toStdString() << "; policy " << int(options.connection.afterTimeout) << ", "
                                        << options.retries << " retries, block " << options.block);
        open(QByteArray(polled) + ' ' + written, honest);
        for (int address = 100; address < 200; ++address) { // unlike unit 1's, whose areas and addresses differ
            session->station()->setValue(2, QModbusDataUnit::HoldingRegisters, address, static_cast<quint16>(1000 + address));
            session->station()->setValue(2, QModbusDataUnit::Coils, address, address % 5 == 0);
        }
        session->pollVariables();
        session->start();
        const PanelSnapshot truth = waitUntilRead();
        session->station()->setFaults(*parseFaults(words(lies), nullptr));
        const QList<WriteItem> items = queue(someWrites());
        const std::size_t polls = std::size_t(words(polled).size());
        PanelSnapshot now = waitUntil([&](const PanelSnapshot &n) {
            for (std::size_t i = 0; i < polls; ++i)
                check(n.values[i], truth.values[i].value(), &values);
            return n.itemsEnded() == items.size() && n.passes > truth.passes + 4;
        });
        session->station()->setFaults(*parseFaults(words(honest), nullptr));
        const PanelSnapshot then = waitUntilRead();
        for (int i = 0; i < items.size(); ++i) {
            if (writeOutcome(items.at(i), now.items[i]).end == WriteOutcome::Done)
                check(then.values[polls + std::size_t(i)], items.at(i).value, &writes);
        }
    }

    int values = 0, writes = 0;
    std::mt19937 random;

private:
    int below(int limit) { return static_cast<int>(random() % static_cast<unsigned>(limit)); }

    QByteArray oneOf(const QByteArray &texts)
    {
        const QList<QByteArray> all = texts.split(' ');
        const QByteArray &text = all.at(below(all.size()));
        return text + (text.contains('@') ? ",every=" : "@every=") + QByteArray::number(1 + below(9));
    }

    QByteArray someWrites()
    {
        QByteArray texts;
        for (const QString &name : words(written)) {
            texts += ' ' + name.toLatin1();
            for (int i = 0; i < variable(name).count; ++i)
                texts += (i == 0 ? '=' : ',') + QByteArray::number(below(name.contains(QLatin1String("hr:")) ? 60000 : 2));
        }
        return texts;
    }

    /// Until each variable was read from now on.
    PanelSnapshot waitUntilRead()
    {
        const qint64 sinceMs = session->state().snapshot().nowMs();
        return waitUntil([sinceMs](const PanelSnapshot &now) {
            return std::all_of(now.values.begin(), now.values.end(), [sinceMs](const ValueState &value) {
                return value.readAtMs() > sinceMs && value.failure().isEmpty();
            });
        });
    }

    static void check(const ValueState &value, const QByteArray &right, int *checked)
    {
        if (value.readAtMs() < 0 || !value.failure().isEmpty())
            return;
        ++*checked;
        EXPECT_EQ(value.value().toHex(), right.toHex()) << qPrintable(value.variable().name);
    }
};

TEST_F(Soak, ShowsNothingWrongAsReadAndNoWriteAsDoneThatIsNot)
{
    const int forMs = 1000 * qMax(2, qEnvironmentVariableIntValue("MODBUS_SOAK_SECONDS"));
    const QByteArray given = qgetenv("MODBUS_SOAK_SEED");
    const unsigned seed = given.isEmpty() ? std::random_device()() : given.toUInt();
    random.seed(seed);
    QElapsedTimer timer;
    timer.start();
    // A session whose faults leave nothing to check is followed by another.
    while (!HasFailure() && (timer.elapsed() < forMs || ((values == 0 || writes == 0) && timer.elapsed() < forMs + longestMs)))
        run();
    std::printf("seed %u: %d values and %d writes checked\n", seed, values, writes);
    EXPECT_GT(values, 0);
    EXPECT_GT(writes, 0);
}

} // namespace

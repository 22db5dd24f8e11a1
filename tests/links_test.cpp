// SPDX-License-Identifier: MIT
// The connections of the host and of the example hosts, against stations that send what nobody asked for. They may lose
// replies, but never take one for another. The driver has no part in it. LIES=3333 asks for ten thousand exchanges with
// each station.

#include "../driver/base/modbus_wire.h"
#include "../examples/host/link.h"
#include "../host/link/connection.h"
#include "../station/modbus_frames.h"
#include "../station/station_thread.h"
#include "host_words.h"
#include "loopback_listener.h"

#include <QtCore/QThread>

#include <dlfcn.h>
#include <netdb.h>

#include <cstring>
#include <future>

using namespace modbus_driver::wire;

namespace {

const QModbusDataUnit::RegisterType registers = QModbusDataUnit::HoldingRegisters;
const int patientMs = 60000;
const int shortMs = 40;
const char slowName[] = "slow.name.example";

/// Exchanges that are answered. Untellable: without numbers nobody can tell such a reply from the right one.
enum Share { None, Any, Some, All, Untellable };

struct Row
{
    const char *faults;
    Share echoed, notEchoed, example; ///< by the host's station with numbers, without, and by the example's
    int timeoutMs = patientMs;
    bool closes = false; ///< after each exchange
};

const Row rows[] = {
    {"", All, All, All},
    {"transaction=60000", None, Untellable, None, shortMs},
    {"double=0-5", All, Some, Some}, // milliseconds behind the first one
    {"double=0-5 exception=4@every=3", All, Some, Some},
    {"double=0-5 silence@every=3", Some, Some, Some, shortMs},
    {"greet=1@unit=1,address=300", All, Some, None},
    {"greet=1@unit=1,address=300 late=6@address=300", Some, Some, Any, shortMs},
    {"behind", None, Untellable, None, shortMs},
    {"glue@every=2", Some, Some, Some, shortMs},
    {"late=40@every=2", Some, Some, Some, shortMs},
    {"late=150", Any, Any, Any, 100}, // each reply while the next request waits, or in time when this machine was too busy
    {"", All, All, All, patientMs, true},
    {"greet=1@unit=1,address=300 flood=3600@address=300", Any, Any, None, shortMs},
};

int exchangesOfEach()
{
    return 4 * qMax(2, qEnvironmentVariableIntValue("LIES"));
}

Protocol request(int unit, int function, int address, int value)
{
    Protocol protocol;
    protocol.frame = modbus::request(unit, function, address, value);
    protocol.frameLength = protocol.frame.size();
    const bool isRead = isReadFunction(function);
    protocol.replyLength = unit == 0 ? 0 : isRead ? ReadReplyHeader + 2 * value : WriteEchoLength;
    protocol.var.station = unit;
    protocol.var.rwFlag = isRead ? 0 : 1;
    return protocol;
}

struct Station : StationThread
{
    explicit Station(const QString &faults)
        : StationThread({QStringLiteral("127.0.0.1"),
                         0,
                         {1},
                         true,
                         false,
                         *parseFaults(faults.split(QLatin1Char(' '), Qt::SkipEmptyParts), nullptr)})
    {
        QString error;
        EXPECT_TRUE(start(&error)) << qPrintable(error);
    }
};

/// The reply; nothing when there was none.
using ExchangeFunction = std::function<QByteArray(const Protocol &)>;

/// Two reads and then twice the same write, again and again. A foreign value, or a write that was answered and
/// not carried out, is a failure. A write without an answer may be carried out, at any time.
void expectShare(Share share, const Row &row, Station &station, const ExchangeFunction &exchange)
{
    int answered = 0;
    for (int i = 0; i < exchangesOfEach(); ++i) {
        const bool isRead = i % 4 < 2;
        const int address = isRead ? 40 + i % 100 : 9;
        const int held = isRead ? 1000 + address : 0;
        station.setValue(1, registers, address, static_cast<quint16>(held));
        const QByteArray reply =
            exchange(isRead ? request(1, ReadHoldingRegisters, address, 1) : request(1, WriteSingleRegister, address, 7));
        if (row.closes) {
            station.stopListening();
            EXPECT_TRUE(station.listenAgain(nullptr));
        }
        if (reply.isEmpty())
            continue;
        ++answered;
        EXPECT_EQ(wordAt(reply, TransactionAt), 0) << "the driver's frames carry 0";
        if (exceptionCode(reply) >= 0)
            continue;
        if (isRead)
            EXPECT_EQ(wordAt(reply, ReadDataAt), held) << "a foreign value";
        else
            EXPECT_EQ(station.value(1, registers, address), 7) << "acknowledged, but not carried out";
    }
    EXPECT_TRUE(share != All || answered == exchangesOfEach()) << answered;
    EXPECT_TRUE(share != Some || answered > 0);
    EXPECT_TRUE(share != None || answered < 2) << answered << "; only one number may fit by chance";
}

ConnectionOptions optionsFor(int port, int timeoutMs)
{
    ConnectionOptions options;
    options.host = QStringLiteral("127.0.0.1");
    options.port = static_cast<quint16>(port);
    options.timeoutMs = options.patienceMs = timeoutMs;
    // Without numbers nobody can tell a copy that comes later than this; among many, a busy machine delays some.
    options.quietMs = qEnvironmentVariableIsSet("LIES") ? 200 : 60;
    options.backOff = {1, 1, 0, 0};
    return options;
}

const LinkTrace noTrace;
const std::atomic<bool> never{false};

void tryHost(const Row &row, AfterTimeout policy, bool echoes)
{
    SCOPED_TRACE(testing::Message() << row.faults << (echoes ? "" : ", no numbers") << (row.closes ? ", closes" : "")
                                    << ", policy " << static_cast<int>(policy));
    Station station(QLatin1String(row.faults) + QLatin1String(echoes ? "" : " transaction=0"));
    const bool drains = policy == AfterTimeout::Drain && !echoes && *row.faults != '\0'; // each time for a time-out
    ConnectionOptions options = optionsFor(station.port(), drains ? qMin(100, row.timeoutMs) : row.timeoutMs);
    options.afterTimeout = policy;
    Connection connection(options, noTrace, never);
    expectShare(echoes ? row.echoed : row.notEchoed, row, station, [&](const Protocol &asked) {
        const Exchange exchange = connection.exchange(asked);
        return exchange.end == Exchange::Answered ? exchange.reply : QByteArray();
    });
    EXPECT_TRUE(*row.faults != '\0' ||
                connection.numbers() == (echoes ? TransactionNumbers::Echoed : TransactionNumbers::NotEchoed));
}

void tryExample(const Row &row, Share share, const char *moreFaults)
{
    SCOPED_TRACE(testing::Message() << row.faults << moreFaults << (row.closes ? ", closes" : ""));
    Station station(QLatin1String(row.faults) + QLatin1String(moreFaults));
    Link link(QStringLiteral("127.0.0.1"), station.port(), row.timeoutMs);
    expectShare(share, row, station, [&](const Protocol &asked) { return link.exchange(asked); });
}

TEST(Connection, ShowsNoForeignValueAndNoWriteThatWasNotCarriedOut)
{
    for (const AfterTimeout policy : {AfterTimeout::Numbers, AfterTimeout::Reconnect, AfterTimeout::Drain}) {
        std::vector<std::future<void>> tries;
        for (const Row &row : rows) {
            for (const bool echoes : {true, false}) {
                if (echoes || row.notEchoed != Untellable)
                    tries.push_back(std::async(std::launch::async, &tryHost, row, policy, echoes));
            }
        }
    }
}

TEST(ExampleLink, TakesNoReplyForAnother)
{
    std::vector<std::future<void>> tries;
    for (const Row &row : rows)
        tries.push_back(std::async(std::launch::async, &tryExample, row, row.example, ""));
    tries.push_back(std::async(std::launch::async, &tryExample, rows[0], None, "transaction=0"));
}

TEST(Connection, ABroadcastsEchoIsNoReplyToAnything)
{
    for (const bool echoes : {true, false}) {
        const LoopbackListener listener;
        const auto peer = std::async(std::launch::async, [&] { // sends back what it gets, broadcasts too
            listener.serve([echoes](const QByteArray &request) { return echoes ? request : QByteArray(2, 0) + request.mid(2); });
        });
        ConnectionOptions options = optionsFor(listener.port(), patientMs);
        options.gapMs = 100;
        Connection connection(options, noTrace, never);
        QElapsedTimer timer;
        timer.start();
        EXPECT_EQ(connection.exchange(request(0, WriteSingleRegister, 9, 7)).end, Exchange::Sent);
        EXPECT_GE(timer.elapsed(), 100) << "the units' turnaround";
        const Exchange next = connection.exchange(request(1, WriteSingleRegister, 9, 7));
        EXPECT_GE(timer.elapsed(), 100 + options.gapMs);
        EXPECT_EQ(next.end, Exchange::Answered);
        EXPECT_FALSE(next.before.reconnected);
        EXPECT_TRUE(next.before.lateUnits.isEmpty());
    }
}

// Else the host would read for as long as the station sends, and stop for nobody.
TEST(Connection, IsDroppedInAFlood)
{
    Station station(QStringLiteral("flood=2@nth=2"));
    ConnectionOptions options = optionsFor(station.port(), patientMs);
    options.host = QStringLiteral("localhost"); // with IPv6 it has a second address, at which nobody listens
    Connection connection(options, noTrace, never);
    for (int i = 0; i < 4; ++i)
        connection.exchange(request(1, ReadHoldingRegisters, 10, 1));
    EXPECT_EQ(connection.cause(), LinkCause::Flood);
}

TEST(Connection, KeepsLittleOfFloods)
{
    Station station(QStringLiteral("greet=1@address=300 flood=3600@address=300"));
    Connection connection(optionsFor(station.port(), shortMs), noTrace, never);
    for (int i = 0; i < 4; ++i)
        connection.exchange(request(1, ReadHoldingRegisters, 10, 1));
    station.setFaults({});
    EXPECT_LT(connection.exchange(request(1, ReadHoldingRegisters, 10, 1)).before.lateUnits.size(), 1 << 13);
}

TEST(Connection, TellsAPeerThatTakesNoRequestFromASilentOne)
{
    const LoopbackListener listener;
    Connection connection(optionsFor(listener.port(), shortMs), noTrace, never);
    Protocol asked = request(1, ReadHoldingRegisters, 10, 1);
    asked.frame.append(QByteArray(1 << 24, 0)); // more than the buffers of both ends hold
    asked.frameLength = asked.frame.size();
    EXPECT_EQ(connection.exchange(asked).cause, LinkCause::Congested);
}

std::atomic<bool> isLookedUp{false}; ///< the slow name

TEST(Connection, AStopEndsTheWaitForAName)
{
    ConnectionOptions options = optionsFor(502, patientMs);
    options.host = QLatin1String(slowName);
    Connection connection(options, noTrace, isLookedUp);
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(connection.open());
    EXPECT_LT(timer.elapsed(), patientMs / 4);
    EXPECT_TRUE(isLookedUp) << "it has not waited";
}

} // namespace

/// The C library's, but one name takes as long as an unreachable name server.
extern "C" int getaddrinfo(const char *name, const char *service, const addrinfo *hints, addrinfo **found)
{
    if (!(hints->ai_flags & AI_NUMERICHOST) && std::strcmp(name, slowName) == 0) {
        isLookedUp = true;
        QThread::msleep(patientMs / 2);
    }
    static const auto real = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
    return real(name, service, hints, found);
}

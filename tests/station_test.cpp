// SPDX-License-Identifier: MIT
// The simulated station over real sockets, bytes in hexadecimal on both sides.

#include "station_thread.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QElapsedTimer>
#include <QtCore/QProcess>
#include <QtNetwork/QTcpSocket>

#include <cerrno>
#include <csignal>
#include <poll.h>
#include <sys/socket.h>

namespace {
const int patience = 60000;

class Application : public testing::Environment
{
    int m_argc = 1;
    char m_name[5] = "test";
    char *m_argv[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argc, m_argv};
};
const auto *const application = testing::AddGlobalTestEnvironment(new Application);

QByteArray bytes(const char *hex)
{
    return QByteArray::fromHex(hex);
}
std::string text(const char *hex)
{
    return bytes(hex).toHex(' ').toStdString();
}
QList<Fault> faults(const char *fault)
{
    return *parseFaults({QLatin1String(fault)}, nullptr);
}

// A request that every station here answers, and its reply: what comes before it answers earlier requests.
struct Probe
{
    const char *request;
    const char *reply;
};
const Probe modbusProbe = {"FFFF 0000 0006 01 03 0020 0001", "FFFF 0000 0005 01 03 02 0020"};
const Probe remoteProbe = {"16 FF 00 00 01 0001 00000000 0001 00000000 00000000 18",
                           "0A FF 00 00 01 0001 0000 21"};

// For a stream that the station must close by itself.
const Probe noProbe = {"", "FFFF FFFF FFFF FFFF"};

class Master
{
public:
    explicit Master(quint16 port, const Probe &probe = modbusProbe) : m_probe(probe)
    {
        m_socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        connected = m_socket.waitForConnected(patience);
    }

    void send(const QByteArray &request)
    {
        m_socket.write(request);
        while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(patience)) {}
    }

    // What the station says until the probe is answered, or until it closes the connection.
    std::string ask(const QByteArray &request)
    {
        send(request);
        send(bytes(m_probe.request));
        const QByteArray end = bytes(m_probe.reply);
        QByteArray said;
        while (!said.endsWith(end)) {
            if (!m_socket.waitForReadyRead(patience))
                return said.toHex(' ').toStdString() + " closed";
            said += m_socket.readAll();
        }
        said.chop(end.size());
        return said.toHex(' ').toStdString();
    }
    std::string ask(const char *hex) { return ask(bytes(hex)); }

    // The error with which the connection ends, 0 for an orderly end. For Qt both are the same.
    int endingError()
    {
        const int descriptor = static_cast<int>(m_socket.socketDescriptor());
        pollfd ready = {descriptor, POLLIN, 0};
        char byte = 0;
        if (poll(&ready, 1, patience) != 1)
            return ETIMEDOUT;
        const auto received = recv(descriptor, &byte, 1, 0);
        return received == 0 ? 0 : received < 0 ? errno : EISCONN;
    }

    QTcpSocket &socket() { return m_socket; }
    bool connected = false;

private:
    Probe m_probe;
    QTcpSocket m_socket;
};

class Station : public testing::Test
{
protected:
    void start(bool remote = false)
    {
        StationOptions options;
        options.units = {1, 2, 5};
        options.still = true;
        options.remote = remote;
        station = std::make_unique<StationThread>(options);
        QString error;
        ASSERT_TRUE(station->start(&error)) << qPrintable(error);
    }
    void SetUp() override { start(); }

    quint16 holding(int unit, int address) const
    {
        return station->value(unit, QModbusDataUnit::HoldingRegisters, address);
    }

    std::unique_ptr<StationThread> station;
};

struct Exchange
{
    const char *name;
    const char *request;
    const char *reply;
};

const Exchange exchanges[] = {
    {"coils, every third on", "1234 0000 0006 01 01 0000 000A", "1234 0000 0005 01 01 02 49 02"},
    {"discrete inputs, every fifth on", "0000 0000 0006 01 02 0000 0008", "0000 0000 0004 01 02 01 21"},
    {"holding registers hold their address", "0001 0000 0006 01 03 0005 0002",
     "0001 0000 0007 01 03 04 0005 0006"},
    {"input registers ten thousand more", "0001 0000 0006 01 04 0002 0001", "0001 0000 0005 01 04 02 2712"},
    {"last register", "0001 0000 0006 01 03 FFFF 0001", "0001 0000 0005 01 03 02 FFFF"},
    {"one coil on, then read", "0001 0000 0006 01 05 0001 FF00  0002 0000 0006 01 01 0000 0003",
     "0001 0000 0006 01 05 0001 FF00  0002 0000 0004 01 01 01 03"},
    {"one register, then read", "0001 0000 0006 01 06 0064 1234  0002 0000 0006 01 03 0064 0001",
     "0001 0000 0006 01 06 0064 1234  0002 0000 0005 01 03 02 1234"},
    {"coils, then read", "0001 0000 0008 01 0F 0008 0003 01 05  0002 0000 0006 01 01 0008 0008",
     "0001 0000 0006 01 0F 0008 0003  0002 0000 0004 01 01 01 95"},
    {"registers, then read", "0001 0000 000B 01 10 0064 0002 04 ABCD 0102  0002 0000 0006 01 03 0064 0002",
     "0001 0000 0006 01 10 0064 0002  0002 0000 0007 01 03 04 ABCD 0102"},
    {"mask write, then read", "0001 0000 0008 01 16 0012 00F2 0025  0002 0000 0006 01 03 0012 0001",
     "0001 0000 0008 01 16 0012 00F2 0025  0002 0000 0005 01 03 02 0017"},
    {"write before read in one request", "0001 0000 000D 01 17 0064 0002 0065 0001 02 BEEF",
     "0001 0000 0007 01 17 04 0064 BEEF"},
    {"another unit", "0001 0000 0006 05 06 0001 0007", "0001 0000 0006 05 06 0001 0007"},
    {"no such unit", "0001 0000 0006 03 03 0000 0001", ""},
    {"broadcast read", "0001 0000 0006 00 03 0000 0001", ""},
    {"no registers", "0001 0000 0006 01 03 0000 0000", "0001 0000 0003 01 83 03"},
    {"126 registers", "0001 0000 0006 01 04 0000 007E", "0001 0000 0003 01 84 03"},
    {"2001 bits", "0001 0000 0006 01 01 0000 07D1", "0001 0000 0003 01 81 03"},
    {"past the last register", "0001 0000 0006 01 03 FFFF 0002", "0001 0000 0003 01 83 02"},
    {"coil value neither on nor off", "0001 0000 0006 01 05 0000 1234", "0001 0000 0003 01 85 03"},
    {"byte count that disagrees with the quantity", "0001 0000 0009 01 10 0000 0002 02 0001",
     "0001 0000 0003 01 90 03"},
    {"fewer bytes than the byte count", "0001 0000 0009 01 10 0000 0002 04 0001", "0001 0000 0003 01 90 03"},
    {"read too short", "0001 0000 0003 01 03 00", "0001 0000 0003 01 83 03"},
    {"read with an extra byte", "0001 0000 0007 01 03 0000 0001 00", "0001 0000 0003 01 83 03"},
    {"write and read with too many to write", "0001 0000 000D 01 17 0064 0002 0065 0002 02 BEEF",
     "0001 0000 0003 01 97 03"},
    {"unknown function", "0001 0000 0002 01 63", "0001 0000 0003 01 E3 01"},
    {"serial-line function", "0001 0000 0006 01 08 0000 0000", "0001 0000 0003 01 88 01"},
    {"function 0", "0001 0000 0002 01 00", "0001 0000 0003 01 80 01"},
};

TEST_F(Station, AnswersEachRequestAsTheProtocolSays)
{
    for (const Exchange &row : exchanges) {
        SCOPED_TRACE(row.name);
        start();
        EXPECT_EQ(Master(station->port()).ask(row.request), text(row.reply));
    }
}

TEST_F(Station, ClosesAConnectionWithABadHeader)
{
    const Exchange rows[] = {
        {"protocol identifier", "0001 0001 0006 01 03 0000 0001", ""},
        {"length of a lone unit", "0001 0000 0001 01", ""},
        {"length beyond the longest frame", "0001 0000 00FF 01 03 0000 0001", ""},
        {"a good request before it", "0001 0000 0006 01 03 0005 0001  0002 0100 0006 01 03 0000 0001",
         "0001 0000 0005 01 03 02 0005"},
    };
    for (const Exchange &row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(Master(station->port(), noProbe).ask(row.request), text(row.reply) + " closed");
    }
}

TEST_F(Station, PutsRequestsTogetherFromSingleBytes)
{
    Master master(station->port());
    master.socket().setSocketOption(QAbstractSocket::LowDelayOption, 1);
    const QByteArray request = bytes("0001 0000 0006 01 03 0005 0001");
    for (const char byte : request)
        master.send(QByteArray(1, byte));
    EXPECT_EQ(master.ask(""), text("0001 0000 0005 01 03 02 0005"));
}

TEST_F(Station, AnswersPipelinedRequestsInOrderForAMasterThatReadsLate)
{
    const QByteArray request = bytes("0001 0000 0006 01 03 0000 007D");
    const int count = 2000; // half a megabyte of replies
    Master master(station->port());
    const std::string said = master.ask(request.repeated(count));
    EXPECT_EQ(said.size() + 1, 3u * 259u * count);
    EXPECT_EQ(station->requests().size(), 1000);
    EXPECT_EQ(station->requests().last(), bytes(modbusProbe.request));
}

TEST_F(Station, CarriesABroadcastOutAtEveryUnit)
{
    EXPECT_EQ(Master(station->port()).ask("0001 0000 0006 00 06 0064 BEEF"), "");
    for (const int unit : {1, 2, 5})
        EXPECT_EQ(holding(unit, 100), 0xBEEF) << unit;
}

TEST_F(Station, ShowsMastersTheValuesSetByItsOwner)
{
    station->setValue(2, QModbusDataUnit::InputRegisters, 3, 0xABCD);
    station->setValue(2, QModbusDataUnit::Coils, 1, 5);
    EXPECT_EQ(Master(station->port()).ask("0001 0000 0006 02 04 0003 0001  0002 0000 0006 02 01 0000 0003"),
              text("0001 0000 0005 02 04 02 ABCD  0002 0000 0004 02 01 01 03"));
    EXPECT_EQ(station->value(2, QModbusDataUnit::Coils, 1), 1);
}

TEST_F(Station, ComesBackOnItsPortWithItsTables)
{
    Master before(station->port());
    before.ask("0001 0000 0006 01 06 0064 0007");
    station->dropConnections();
    EXPECT_EQ(before.endingError(), 0);
    station->stopListening();
    EXPECT_FALSE(Master(station->port()).connected);
    QString error;
    ASSERT_TRUE(station->listenAgain(&error)) << qPrintable(error);
    EXPECT_EQ(Master(station->port()).ask("0001 0000 0006 01 03 0064 0001"),
              text("0001 0000 0005 01 03 02 0007"));
}

TEST_F(Station, CannotShareItsPort)
{
    StationOptions options;
    options.port = station->port();
    QString error;
    EXPECT_FALSE(StationThread(options).start(&error));
    EXPECT_TRUE(error.contains(QString::number(options.port))) << qPrintable(error);
}

struct FaultRow
{
    const char *fault;
    const char *request;
    const char *reply;
};

// The fault strikes the first request; the reply without it is 0001 0000 0005 01 03 02 0005.
const FaultRow faultRows[] = {
    {"silence@nth=1", "", ""},
    {"cut=5@nth=1", "", "0001 0000 00"},
    {"double@nth=1", "", "0001 0000 0005 01 03 02 0005  0001 0000 0005 01 03 02 0005"},
    {"unit=9@nth=1", "", "0001 0000 0005 09 03 02 0005"},
    {"length=+2@nth=1", "", "0001 0000 0007 01 03 02 0005"},
    {"length=-1@nth=1", "", "0001 0000 0004 01 03 02 0005"},
    {"length=0xFFFF@nth=1", "", "0001 0000 FFFF 01 03 02 0005"},
    {"protocol=1@nth=1", "", "0001 0001 0005 01 03 02 0005"},
    {"transaction=7@nth=1", "", "0007 0000 0005 01 03 02 0005"},
    {"function=4@nth=1", "", "0001 0000 0005 01 04 02 0005"},
    {"exception=2@nth=1", "", "0001 0000 0003 01 83 02"},
    {"close@nth=1", "", " closed"},
    {"silence@unit=2", "", "0001 0000 0005 01 03 02 0005"},
    {"silence@unit=2,function=3", "0001 0000 0006 02 03 0005 0001  0002 0000 0006 02 04 0000 0001",
     "0002 0000 0005 02 04 02 2710"},
    {"silence@every=2", "0001 0000 0006 02 03 0005 0001  0002 0000 0006 02 03 0000 0001",
     "0001 0000 0005 02 03 02 0005"},
    {"exception=2@address=10-11", "0001 0000 0006 01 03 0008 0002  0002 0000 0006 01 03 0008 0003",
     "0001 0000 0007 01 03 04 0008 0009  0002 0000 0003 01 83 02"},
    {"exception=2@address=11",
     "0001 0000 0006 01 05 000A FF00  0002 0000 0006 01 03 000B 0001  0003 0000 0006 01 03 000C 0001",
     "0001 0000 0006 01 05 000A FF00  0002 0000 0003 01 83 02  0003 0000 0005 01 03 02 000C"},
    {"exception=2@address=0x65", "0001 0000 000D 01 17 0064 0001 0065 0001 02 BEEF",
     "0001 0000 0003 01 97 02"},
    {"exception=11@unit=3", "0001 0000 0006 03 03 0005 0001", "0001 0000 0003 03 83 0B"},
    {"exception=4@unit=0", "0001 0000 0006 00 06 0005 0001", ""},
};

TEST_F(Station, HasFaultsOnDemand)
{
    for (const FaultRow &row : faultRows) {
        SCOPED_TRACE(row.fault);
        station->setFaults(faults(row.fault));
        const char *request = *row.request ? row.request : "0001 0000 0006 01 03 0005 0001";
        const std::string closed = " closed";
        EXPECT_EQ(Master(station->port()).ask(request), row.reply == closed ? closed : text(row.reply));
    }
}

TEST_F(Station, FaultsBefallTheReplyNotTheWrite)
{
    station->setFaults(faults("silence"));
    Master(station->port()).send(bytes("0001 0000 0006 01 06 0064 0007"));
    while (station->requests().isEmpty())
        QThread::msleep(1);
    EXPECT_EQ(holding(1, 100), 7);
    station->setFaults(faults("exception=4@nth=1"));
    Master(station->port()).ask("0001 0000 0006 01 06 0064 0008");
    EXPECT_EQ(holding(1, 100), 7);
}

TEST_F(Station, DelaysAReplyAndThoseBehindIt)
{
    station->setFaults(faults("delay=100@nth=1"));
    Master master(station->port());
    QElapsedTimer timer;
    timer.start();
    EXPECT_EQ(master.ask("0001 0000 0006 01 03 0005 0001"), text("0001 0000 0005 01 03 02 0005"));
    EXPECT_GE(timer.elapsed(), 100);
}

TEST_F(Station, GluesAReplyToTheNextOne)
{
    station->setFaults(faults("glue@nth=1"));
    Master master(station->port());
    master.send(bytes("0001 0000 0006 01 03 0005 0001  0001 0000 0006 03 03 0005 0001"));
    EXPECT_FALSE(master.socket().waitForReadyRead(200));
    master.send(bytes("0002 0000 0006 01 03 0006 0001"));
    ASSERT_TRUE(master.socket().waitForReadyRead(patience));
    EXPECT_EQ(master.socket().readAll(), bytes("0001 0000 0005 01 03 02 0005 0002 0000 0005 01 03 02 0006"));
}

TEST_F(Station, EndsAConnectionInBothWays)
{
    for (const auto &[fault, error] : {std::pair{"close", 0}, std::pair{"reset", ECONNRESET}}) {
        station->setFaults(faults(fault));
        Master master(station->port());
        master.send(bytes(modbusProbe.request));
        EXPECT_EQ(master.endingError(), error) << fault;
    }
}

TEST_F(Station, RefusesConnectionsForAWhile)
{
    Master master(station->port());
    Master bystander(station->port());
    bystander.ask("");
    station->setFaults(faults("refuse=3600"));
    master.send(bytes(modbusProbe.request));
    EXPECT_EQ(bystander.endingError(), 0);
    EXPECT_FALSE(Master(station->port()).connected);

    start();
    station->setFaults(faults("refuse=1@nth=1"));
    EXPECT_EQ(Master(station->port()).ask(""), " closed");
    while (!Master(station->port()).connected)
        QThread::msleep(10);
    EXPECT_EQ(Master(station->port()).ask(""), "");
}

TEST(Faults, AreRefusedWhenAnyPartIsWrong)
{
    for (const char *wrong :
         {"", "nope", "silence=1", "delay", "delay=", "delay=-1", "delay=1x", "cut=0x", "unit=256",
          "exception=0", "silence@", "silence@unit", "silence@unit=1,unit=2", "silence@unit=3-2",
          "silence@colour=3", "silence@every=0", "silence@unit=1,", "silence @unit=1"}) {
        QString error;
        EXPECT_FALSE(parseFault(QLatin1String(wrong), &error)) << wrong;
        EXPECT_TRUE(error.startsWith(QStringLiteral("fault \"%1\": ").arg(QLatin1String(wrong)))) << wrong;
        EXPECT_FALSE(error.contains(QLatin1Char('\n'))) << wrong;
    }
}

class RemotePeer : public Station
{
protected:
    void SetUp() override { start(true); }
    std::string ask(const QByteArray &request) { return Master(station->port(), remoteProbe).ask(request); }
};

const Exchange remoteExchanges[] = {
    {"two bytes of coils", "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2B",
     "0B 00 00 02 01 0000 0010 24 49"},
    {"last byte of discrete inputs", "16 07 00 02 05 0001 0000FFF8 0001 00000000 00000000 1D",
     "0A 07 00 02 05 0001 FFF8 84"},
    {"bits past the last", "16 00 00 02 01 0000 0000FFF9 0001 00000000 00000000 12", ""},
    {"a read of registers", "16 00 00 02 01 0005 00000010 0002 00000000 00000000 30", ""},
    {"no such station", "16 00 00 02 03 0000 00000010 0002 00000000 00000000 2D", ""},
    {"a register", "18 05 01 02 01 0005 00000064 0001 00000000 00000000 3412 D1",
     "0C 05 01 02 01 0005 0064 0001 7F"},
    {"a write of input registers", "18 05 01 02 01 0004 00000064 0001 00000000 00000000 3412 D0", ""},
    {"fewer value bytes than the length", "18 05 01 02 01 0005 00000064 0002 00000000 00000000 3412 D2", ""},
    {"half a 32-bit value", "18 05 01 02 01 0007 00000064 0001 00000000 00000000 3412 D3", ""},
    {"a read with a wrong length", "17 00 00 02 01 0000 00000010 0002 00000000 00000000 2C", " closed"},
    {"a wrong byte sum", "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2C", " closed"},
    {"neither read nor write", "16 00 02 02 01 0000 00000010 0002 00000000 00000000 2D", " closed"},
    {"a Modbus request", "0000 0000 0006 01 03 0005 0001 0000 0000 0006 01 03 0005 0001", " closed"},
};

TEST_F(RemotePeer, AnswersCompactFrames)
{
    for (const Exchange &row : remoteExchanges) {
        SCOPED_TRACE(row.name);
        const std::string closed = " closed";
        EXPECT_EQ(ask(bytes(row.request)), row.reply == closed ? closed : text(row.reply));
    }
}

TEST_F(RemotePeer, ChangesTheTablesAsTheAreaSays)
{
    ask(bytes("19 00 01 00 01 0000 00000001 0003 00000000 00000000 01 01 02 23"));
    ask(bytes("17 00 01 00 01 0003 00000143 0001 00000000 00000000 01 62"));
    ask(bytes("17 00 01 00 01 0003 00000144 0001 00000000 00000000 00 62"));
    ask(bytes("1A 00 01 00 00 0007 00000064 0002 00000000 00000000 04030201 92"));
    EXPECT_EQ(station->value(1, QModbusDataUnit::Coils, 1), 1);
    EXPECT_EQ(station->value(1, QModbusDataUnit::Coils, 2), 1);
    EXPECT_EQ(station->value(1, QModbusDataUnit::Coils, 3), 0) << "only exactly 1 is on";
    EXPECT_EQ(holding(1, 20), 12) << "20 with bit 3 set and bit 4 cleared";
    EXPECT_EQ(holding(5, 100), 0x0102) << "broadcast, high register first";
    EXPECT_EQ(holding(5, 101), 0x0304);
}

TEST_F(RemotePeer, FindsTheEndOfAWriteWhoseLengthByteHasWrapped)
{
    QByteArray request = bytes("42 00 01 00 01 0005 000003E8 0096 00000000 00000000");
    request += QByteArray(300, '\x11') + bytes("B6");
    EXPECT_EQ(ask(request), text("0C 00 01 00 01 0005 03E8 0096 94"));
    EXPECT_EQ(holding(1, 1000 + 149), 0x1111);
}

TEST(ChangingValues, MoveUntilSomeoneElseWrites)
{
    SimulatedUnit unit(1);
    ChangingValues values(unit);
    for (int step = 0; step < 25; ++step)
        values.step();
    const quint16 expected[] = {25, 1000, 250, 1 << 9, 0x000F, 0xA3E8, 0x42C8, 0x0000, 8};
    for (int address = 0; address < 9; ++address) {
        EXPECT_EQ(unit.at(QModbusDataUnit::HoldingRegisters, address), expected[address]) << address;
    }
    EXPECT_EQ(unit.at(QModbusDataUnit::InputRegisters, 0), 25);
    EXPECT_EQ(unit.at(QModbusDataUnit::Coils, 3), 1);
    EXPECT_EQ(unit.at(QModbusDataUnit::DiscreteInputs, 2), 0);

    unit.set(QModbusDataUnit::HoldingRegisters, 5, 1);
    values.step();
    EXPECT_EQ(unit.at(QModbusDataUnit::HoldingRegisters, 4), 0x000F);
    EXPECT_EQ(unit.at(QModbusDataUnit::HoldingRegisters, 5), 1);
    EXPECT_EQ(unit.at(QModbusDataUnit::HoldingRegisters, 0), 26);
}

// The program, behind an emulator where its machine is another one.
class StationProgram : public testing::Test
{
protected:
    void start(const QString &arguments)
    {
        QStringList words = QStringLiteral(STATION_COMMAND).split(QLatin1Char('|'), Qt::SkipEmptyParts);
        words += arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        process.start(words.takeFirst(), words);
        ASSERT_TRUE(process.waitForStarted(patience));
    }

    QProcess process;
};

TEST_F(StationProgram, ServesUntilItIsTold)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        start(QStringLiteral("--listen 127.0.0.1:0 --units 1,2"));
        ASSERT_TRUE(process.waitForReadyRead(patience));
        const QString line = QString::fromLatin1(process.readLine()).trimmed();
        const QString prefix = QStringLiteral("listening on 127.0.0.1:");
        ASSERT_TRUE(line.startsWith(prefix)) << qPrintable(line);
        Master master(line.mid(prefix.size()).toUShort());
        while (master.ask("0001 0000 0006 02 03 0000 0001") == text("0001 0000 0005 02 03 02 0000"))
            QThread::msleep(10);
        kill(static_cast<pid_t>(process.processId()), signal);
        ASSERT_TRUE(process.waitForFinished(patience));
        EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
        EXPECT_EQ(process.exitCode(), 0);
    }
}

TEST_F(StationProgram, RefusesAWrongCommandLineInOneLine)
{
    for (const char *wrong : {"--bogus", "word", "--listen nowhere:1502", "--listen 127.0.0.1:65536",
                              "--listen 1502", "--units 0", "--units 256", "--units 1,1", "--units 1,",
                              "--fault nope", "--remote --fault unit=9"}) {
        SCOPED_TRACE(wrong);
        start(QLatin1String(wrong));
        ASSERT_TRUE(process.waitForFinished(patience));
        EXPECT_EQ(process.exitCode(), 2);
        const QByteArray complaint = process.readAllStandardError();
        EXPECT_TRUE(complaint.startsWith("modbus-station: ") && complaint.count('\n') == 1)
            << complaint.toStdString();
    }
}
} // namespace

// SPDX-License-Identifier: MIT
// The simulated station over real sockets, bytes in hexadecimal on both sides.

#include "fault_choice.h"
#include "line_output.h"
#include "program.h"
#include "station_thread.h"

#include <gtest/gtest.h>

#include <QtCore/QCoreApplication>
#include <QtCore/QTemporaryFile>
#include <QtCore/QThread>
#include <QtNetwork/QTcpSocket>

#include <cerrno>
#include <ctime>
#include <list>
#include <sys/resource.h>
#include <sys/socket.h>

namespace {
QByteArray bytes(const QByteArray &hex)
{
    return QByteArray::fromHex(hex);
}
// What a master hears: "0001 0000 !" is four bytes and the end of the connection.
std::string text(const QByteArray &heard)
{
    return bytes(heard).toHex(' ').toStdString() + (heard.endsWith('!') ? "!" : "");
}
struct Exchange
{
    const char *name, *request, *reply;
};

// What every station here answers; the bytes before this reply answer earlier requests.
const Exchange modbusProbe = {"Modbus", "FFFF 0000 0006 01 03 0020 0001", "FFFF 0000 0005 01 03 02 0020"};
const Exchange remoteProbe = {"remote", "16 FF 00 00 01 0001 00000000 0001 00000000 00000000 18", "0A FF 00 00 01 0001 0000 21"};
const char readFive[] = "0001 0000 0006 01 03 0005 0001";
const char fiveAndSix[] = "0001 0000 0006 01 03 0005 0001  0002 0000 0006 01 03 0006 0001";

// Sends hexadecimal text, and gives back what it hears as such.
struct Master
{
    explicit Master(quint16 port, const Exchange &probeOfStation = modbusProbe) : probe(probeOfStation)
    {
        socket.connectToHost(QStringLiteral("127.0.0.1"), port);
        socket.waitForConnected(patience);
    }

    void send(const QByteArray &request)
    {
        socket.write(bytes(request));
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(patience)) {}
    }

    // What the station says: at least so many bytes, and then until the probe is answered or the connection is closed.
    std::string ask(const QByteArray &request, int size = 0)
    {
        send(request);
        QByteArray said;
        while (said.size() < size && socket.waitForReadyRead(patience))
            said += socket.readAll();
        send(probe.request);
        const QByteArray end = bytes(probe.reply);
        while (!said.endsWith(end)) {
            if (!socket.waitForReadyRead(patience))
                return said.toHex(' ').toStdString() + (socket.state() == QTcpSocket::ConnectedState ? " silent" : "!");
            said += socket.readAll();
        }
        said.chop(end.size());
        return said.toHex(' ').toStdString();
    }

    // The error with which the connection ends, 0 for an orderly end. For Qt both are the same.
    int endingError() const
    {
        pollfd ready = {static_cast<int>(socket.socketDescriptor()), POLLIN, 0};
        int error = 0;
        socklen_t size = sizeof error;
        EXPECT_EQ(poll(&ready, 1, patience), 1);
        EXPECT_EQ(getsockopt(ready.fd, SOL_SOCKET, SO_ERROR, &error, &size), 0);
        return error;
    }

    Exchange probe;
    QTcpSocket socket;
};

class Station : public testing::Test
{
protected:
    void start(bool remote = false)
    {
        m_probe = remote ? remoteProbe : modbusProbe;
        station = std::make_unique<StationThread>(StationOptions{QStringLiteral("127.0.0.1"), 0, {1, 2, 5}, true, remote, {}});
        QString error;
        ASSERT_TRUE(station->start(&error)) << qPrintable(error);
    }
    void SetUp() override { start(); }

    void setFaults(const char *texts)
    {
        station->setFaults(*parseFaults(QString(QLatin1String(texts)).split(QLatin1Char(' ')), nullptr));
    }
    std::string ask(const QByteArray &request) { return Master(station->port(), m_probe).ask(request); }
    void expectReply(const Exchange &row)
    {
        const int size = bytes(row.reply).size() + QByteArray(row.reply).count('!');
        EXPECT_EQ(Master(station->port(), m_probe).ask(row.request, size), text(row.reply)) << row.name;
    }
    quint16 holding(int unit, int address) const { return station->value(unit, QModbusDataUnit::HoldingRegisters, address); }

    Exchange m_probe;
    std::unique_ptr<StationThread> station;
};

// Limits of quantity and value are judged by Qt's server class.
const Exchange exchanges[] = {
    {"coils", "0001 0000 0008 01 0F 0008 0003 01 05", "0001 0000 0006 01 0F 0008 0003"},
    {"registers", "0001 0000 000B 01 10 0065 0002 04 ABCD 0102", "0001 0000 0006 01 10 0065 0002"},
    {"mask write", "0001 0000 0008 01 16 0012 00F2 0025", "0001 0000 0008 01 16 0012 00F2 0025"},
    {"the coils written", "0001 0000 0006 01 01 0000 0010", "0001 0000 0005 01 01 02 49 95"},
    {"the registers written", "0001 0000 0006 01 03 0064 0003", "0001 0000 0009 01 03 06 0064 ABCD 0102"},
    {"the register masked", "0001 0000 0006 01 03 0012 0001", "0001 0000 0005 01 03 02 0017"},
    {"write before read in one request", "0001 0000 000D 01 17 0068 0002 0069 0001 02 BEEF", "0001 0000 0007 01 17 04 0068 BEEF"},
    {"no such unit", "0001 0000 0006 03 03 0000 0001", ""},
    {"broadcast read", "0001 0000 0006 00 03 0000 0001", ""},
    {"fewer bytes than the byte count", "0001 0000 0009 01 10 0000 0002 04 0001", "0001 0000 0003 01 90 03"},
    {"read with an extra byte", "0001 0000 0007 01 03 0000 0001 00", "0001 0000 0003 01 83 03"},
    {"protocol identifier", "0001 0001 0006 01 03 0000 0001", "!"},
    {"length of a lone unit", "0001 0000 0001 01", "!"},
    {"length beyond the longest frame", "0001 0000 00FF 01 03 0000 0001", "!"},
    {"a good request before it", "0001 0000 0006 01 03 0005 0001  0002 0100 0006 01 03 0000 0001",
     "0001 0000 0005 01 03 02 0005!"},
};

TEST_F(Station, AnswersEachRequestAsTheProtocolSays)
{
    for (const Exchange &row : exchanges)
        expectReply(row);
}

TEST_F(Station, AnswersPipelinedRequestsInOrderForAMasterThatReadsLate)
{
    const int count = 2000; // half a megabyte of replies
    const QByteArray request = "0001 0000 0006 01 03 0000 007D ";
    ask(readFive);
    EXPECT_EQ(ask(request.repeated(count)).size() + 1, 3u * 259u * count);
    EXPECT_EQ(station->requests().size(), 1000);
    EXPECT_EQ(station->requests().first(), bytes(request));
    EXPECT_EQ(station->requests().last(), bytes(modbusProbe.request));
}

TEST_F(Station, CannotShareItsPort)
{
    const quint16 port = station->port();
    QString error;
    EXPECT_FALSE(StationThread({QStringLiteral("127.0.0.1"), port, {1}, true, false, {}}).start(&error));
    EXPECT_TRUE(error.contains(QString::number(port))) << qPrintable(error);
}

// A request is carried out whatever happens to its reply; only an exception replaces it.
const Exchange faultRows[] = {
    {"cut=5@nth=1", readFive, "0001 0000 00"},
    {"length=+2@nth=1", readFive, "0001 0000 0007 01 03 02 0005"},
    {"silence@unit=2,function=3", "0001 0000 0006 02 03 0005 0001  0002 0000 0006 02 04 0000 0001",
     "0002 0000 0005 02 04 02 2710"},
    {"silence@every=2", "0001 0000 0006 02 03 0005 0001  0002 0000 0006 02 03 0000 0001", "0001 0000 0005 02 03 02 0005"},
    {"exception=2@address=10-11", "0001 0000 0006 01 03 0008 0002  0002 0000 0006 01 03 0008 0003",
     "0001 0000 0007 01 03 04 0008 0009  0002 0000 0003 01 83 02"},
    {"exception=2@address=11", "0001 0000 0006 01 05 000A FF00", "0001 0000 0006 01 05 000A FF00"},
    {"exception=2@address=19", "0001 0000 0008 01 16 0012 FFFF 0000", "0001 0000 0008 01 16 0012 FFFF 0000"},
    {"exception=2@address=9-11", "0001 0000 0006 01 03 000C 0001", "0001 0000 0005 01 03 02 000C"},
    {"exception=2@address=0x65", "0001 0000 000D 01 17 0064 0001 0065 0001 02 BEEF", "0001 0000 0003 01 97 02"},
    {"exception=11@unit=3", "0001 0000 0006 03 03 0005 0001", "0001 0000 0003 03 83 0B"},
    {"silence@function=6", "0001 0000 0006 01 06 0064 0007  0002 0000 0006 01 03 0064 0001", "0002 0000 0005 01 03 02 0007"},
    {"exception=4@function=6", "0001 0000 0006 01 06 0064 0008  0002 0000 0006 01 03 0064 0001",
     "0001 0000 0003 01 86 04  0002 0000 0005 01 03 02 0007"},
    {"exception=4@unit=0", "0001 0000 0006 00 06 0005 0001", ""},
    {"transaction=0@nth=1", "0005 0000 0006 01 03 FFFF 0002", "0000 0000 0003 01 83 02"},
    {"behind@unit=2", "0001 0000 0006 01 03 0005 0001  0002 0000 0006 02 03 0006 0001  0003 0000 0006 02 03 0007 0001",
     "0001 0000 0005 01 03 02 0005  0001 0000 0005 01 03 02 0005  0002 0000 0005 02 03 02 0006"},
    {"behind@unit=2,every=2 transaction=0@unit=2", "0001 0000 0006 02 03 0005 0001  0002 0000 0006 02 03 0006 0001",
     "0000 0000 0005 02 03 02 0005  0000 0000 0005 02 03 02 0005"},
    {"behind@unit=0", "0001 0000 0006 01 03 0005 0001  0002 0000 0006 00 03 0006 0001", "0001 0000 0005 01 03 02 0005"},
    {"close", readFive, "!"},
    {"late=200@nth=1", fiveAndSix, "0002 0000 0005 01 03 02 0006  0001 0000 0005 01 03 02 0005"},
    {"double=200@nth=1", fiveAndSix, "0001 0000 0005 01 03 02 0005  0002 0000 0005 01 03 02 0006  0001 0000 0005 01 03 02 0005"},
    {"double=0@nth=2", fiveAndSix, "0001 0000 0005 01 03 02 0005  0002 0000 0005 01 03 02 0006  0002 0000 0005 01 03 02 0006"},
    {"greet=2@unit=2,function=4,address=5 transaction=7@unit=2", "", "0007 0000 0007 02 04 04 2715 2716"},
};

TEST_F(Station, HasFaultsOnDemand)
{
    for (const Exchange &row : faultRows) {
        setFaults(row.name);
        expectReply(row);
    }
    EXPECT_FALSE(station->requests().contains(bytes("0000 0000 0006 02 04 0005 0002"))) << "nobody sent it";
}

TEST(Faults, TakeTheValuesOfARangeInTurn)
{
    QList<Fault> faults{*parseFault(QStringLiteral("delay=10-12@every=2"), nullptr)};
    QList<int> values;
    for (int request = 0; request < 8; ++request) {
        for (const Fault &fault : chooseFaults(faults, RequestFacts{1, 3, 0, 1}))
            values << fault.value;
    }
    EXPECT_EQ(values, (QList<int>{10, 11, 12, 10}));
}

// All requests wait in the sockets before the station's first turn.
TEST(StationInThisThread, ServesItsMastersInTurn)
{
    SimulatedStation station({QStringLiteral("127.0.0.1"), 0, {1}, true, false, {}});
    QString error;
    ASSERT_TRUE(station.listen(&error)) << qPrintable(error);
    Master first(station.port()), pipelining(station.port()), last(station.port());
    pipelining.send(QByteArray(readFive).repeated(900));
    first.send(modbusProbe.request);
    last.send(modbusProbe.request);
    while (first.socket.bytesAvailable() == 0 || last.socket.bytesAvailable() == 0)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    EXPECT_LT(station.requests().lastIndexOf(bytes(modbusProbe.request)), 10);
}

TEST_F(Station, ResetsAConnection)
{
    setFaults("reset");
    Master master(station->port());
    master.send(readFive);
    EXPECT_EQ(master.endingError(), ECONNRESET);
}

TEST_F(Station, RefusesConnectionsForAWhile)
{
    Master bystander(station->port());
    bystander.ask("");
    setFaults("refuse=1@nth=1");
    EXPECT_EQ(ask(""), "!");
    EXPECT_EQ(bystander.endingError(), 0);
    while (!ask("").empty())
        QThread::msleep(10);
}

const Exchange remoteExchanges[] = {
    {"last byte of discrete inputs", "16 07 00 02 05 0001 0000FFF8 0001 00000000 00000000 1D", "0A 07 00 02 05 0001 FFF8 84"},
    {"bits past the last", "16 00 00 02 01 0000 0000FFF9 0001 00000000 00000000 12", ""},
    {"a read of registers", "16 00 00 02 01 0005 00000010 0002 00000000 00000000 30", ""},
    {"fewer value bytes than the length", "18 05 01 02 01 0005 00000064 0002 00000000 00000000 3412 D2", ""},
    {"a read with a wrong length", "17 00 00 02 01 0000 00000010 0002 00000000 00000000 2C", "!"},
    {"a wrong byte sum", "16 00 00 02 01 0000 00000010 0002 00000000 00000000 2C", "!"},
    {"neither read nor write", "16 00 02 02 01 0000 00000010 0002 00000000 00000000 2D", "!"},
    {"a Modbus request", "0000 0000 0006 01 03 0005 0001 0000 0000 0006 01 03 0005 0001", "!"},
};

TEST_F(Station, AnswersCompactFrames)
{
    start(true);
    for (const Exchange &row : remoteExchanges)
        expectReply(row);
}

TEST_F(Station, CarriesCompactWritesOutAsTheAreaSays)
{
    start(true);
    ask("19 00 01 00 01 0000 00000001 0003 00000000 00000000 01 01 02 23");
    ask("17 00 01 00 01 0003 00000143 0001 00000000 00000000 01 62");
    ask("17 00 01 00 01 0003 00000144 0001 00000000 00000000 00 62");
    ask("1A 00 01 00 00 0007 00000064 0002 00000000 00000000 04030201 92");
    EXPECT_EQ(station->value(1, QModbusDataUnit::Coils, 1), 1);
    EXPECT_EQ(station->value(1, QModbusDataUnit::Coils, 2), 1);
    EXPECT_EQ(station->value(1, QModbusDataUnit::Coils, 3), 0) << "only exactly 1 is on";
    EXPECT_EQ(holding(1, 20), 12) << "20 with bit 3 set and bit 4 cleared";
    EXPECT_EQ(holding(5, 100), 0x0102) << "broadcast, high register first";
    EXPECT_EQ(holding(5, 101), 0x0304);

    const QByteArray wrappedLength = "42 00 01 00 01 0005 000003E8 0096 00000000 00000000" + QByteArray(600, '1') + "B6";
    EXPECT_EQ(ask(wrappedLength), text("0C 00 01 00 01 0005 03E8 0096 94"));
    EXPECT_EQ(holding(1, 1000 + 149), 0x1111);
}

TEST(ChangingValues, MoveUntilSomeoneElseWrites)
{
    SimulatedUnit unit(1);
    ChangingValues values(unit);
    for (int step = 0; step < 25; ++step)
        values.step();
    unit.set(QModbusDataUnit::HoldingRegisters, 5, 1); // the low half of a long counter
    values.step();
    const quint16 expected[] = {26, 998, 260, 1 << 10, 0x000F, 1};
    for (int address = 0; address < 6; ++address)
        EXPECT_EQ(unit.at(QModbusDataUnit::HoldingRegisters, address), expected[address]) << address;
}

// The program, behind an emulator where its machine is another one.
struct StationProgram : Program
{
    explicit StationProgram(const QByteArray &arguments)
        : Program(QByteArray(STATION_COMMAND).replace('|', ' ') + ' ' + arguments)
    {
    }

    // The port of the "listening on" line.
    quint16 port() const
    {
        const QByteArray line = output("\n").trimmed(), prefix = "listening on 127.0.0.1:";
        EXPECT_TRUE(line.startsWith(prefix)) << line.toStdString();
        return line.mid(prefix.size()).toUShort();
    }

    double processorSeconds() const
    {
        clockid_t clock = 0;
        timespec used = {};
        EXPECT_EQ(clock_getcpuclockid(pid, &clock), 0);
        EXPECT_EQ(clock_gettime(clock, &used), 0);
        return static_cast<double>(used.tv_sec) + static_cast<double>(used.tv_nsec) / 1e9;
    }
};

TEST(StationProgram, ServesUntilItIsTold)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        StationProgram program("--listen 127.0.0.1:0 --units 1-2");
        Master master(program.port());
        while (master.ask("0001 0000 0006 02 03 0000 0001") == text("0001 0000 0005 02 03 02 0000"))
            QThread::msleep(10);
        EXPECT_EQ(program.end(signal), 0);
    }
}

TEST(StationProgram, HoldsTheValuesGivenAndPrintsThoseWritten)
{
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write("1/hr:0=21,-1  # values that change by themselves otherwise\n\ncoil:10=1\n");
    file.close();
    StationProgram program("--listen 127.0.0.1:0 --units 1,2 --trace --set 2/ir:65535=0xBEEF --values " +
                           file.fileName().toLatin1());
    Master master(program.port());
    EXPECT_EQ(master.ask("0001 0000 0006 01 03 0000 0002"), text("0001 0000 0007 01 03 04 0015 FFFF"));
    EXPECT_EQ(master.ask("0001 0000 0006 02 04 FFFF 0001"), text("0001 0000 0005 02 04 02 BEEF"));
    EXPECT_EQ(master.ask("0001 0000 0006 02 01 0009 0003"), text("0001 0000 0004 02 01 01 03"));
    master.ask("0001 0000 000B 01 10 0065 0002 04 ABCD 0102  0001 0000 0006 00 05 0004 FF00");
    EXPECT_EQ(program.end(SIGTERM), 0);
    EXPECT_EQ(program.output(), "written 1/hr:101=43981,258\nwritten 1/coil:4=1\nwritten 2/coil:4=1\n");
    const QByteArray trace = program.errors();
    EXPECT_EQ(trace.count("\nI "), 9) << "the probes too";
    EXPECT_TRUE(trace.contains("\n000000 00 01 00 00 00 07 01 03 04 00 15 ff ff\n\n")) << trace.toStdString();
}

TEST(LineOutput, CountsTheLinesThatItLeavesOut)
{
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    LineOutput output(ends[1]);
    const QByteArray line(1023, 'x');
    const int count = 2000, calls = 40; // twice what memory holds; more than it takes to read that
    for (int i = 0; i < count; ++i)
        output.write(line);
    QByteArray heard;
    std::vector<char> bytes(1 << 16);
    for (int i = 0; i < calls; ++i) {
        output.write("next");
        heard.append(bytes.data(), static_cast<int>(read(ends[0], bytes.data(), bytes.size())));
    }
    const int leftOut = heard.mid(heard.indexOf("# ") + 2).split(' ').first().toInt();
    EXPECT_GT(leftOut, 900);
    EXPECT_EQ(heard.count(line) + heard.count("next\n") + leftOut, count + calls);
    close(ends[0]);
    close(ends[1]);
}

TEST(StationProgram, WaitsWhenDescriptorsRunOut)
{
    if (!LIMITS_DESCRIPTORS)
        GTEST_SKIP() << "sanitizers and emulators need descriptors of their own";
    const rlimit descriptors = {20, 20};
    StationProgram program("--listen 127.0.0.1:0");
    const quint16 port = program.port();
    ASSERT_EQ(prlimit(program.pid, RLIMIT_NOFILE, &descriptors, nullptr), 0);
    std::list<Master> masters;
    for (rlim_t i = 0; i < descriptors.rlim_cur; ++i)
        masters.emplace_back(port);
    EXPECT_EQ(masters.front().ask(""), "");
    const double before = program.processorSeconds();
    EXPECT_FALSE(masters.back().socket.waitForReadyRead(1000));
    EXPECT_LT(program.processorSeconds() - before, 0.1) << "it tries again and again";
    masters.erase(masters.begin(), std::prev(masters.end()));
    EXPECT_EQ(masters.back().ask(""), "");
    EXPECT_EQ(program.end(SIGTERM), 0);
}

TEST(StationProgram, RefusesAWrongCommandLineInOneLine)
{
    const char all[] =
        "--bogus|word|--listen nowhere:1502|--listen 127.0.0.1:65536|--listen 1502|--remote --fault unit=9|"
        "--units 0|--units 256|--units 1,1|--units 1,|--units 1-|--units 2-1|--units 1-3,2|--units 1-2-3|--units 0-2|"
        "--values /|--set hr:1|--set hr:1=65536|--set coil:1=2|--set hr:65535=1,2|--set 9/hr:1=1|--set 0/hr:1=1|"
        "--set tr:1=1|--set hr:1=1,|--set \x1b[2J";
    QByteArrayList lines = QByteArray(all).split('|');
    const char faults[] =
        "'' nope silence=1 delay delay= delay=-1 delay=1x cut=0x unit=256 exception=0 delay=9-8 double= double=x greet greet=126 "
        "silence@ silence@unit silence@unit=1,unit=2 silence@unit=3-2 silence@colour=3 silence@every=0 silence@unit=1,";
    for (const QByteArray &fault : QByteArray(faults).split(' '))
        lines << "--fault " + fault;
    for (const QByteArray &wrong : lines) {
        SCOPED_TRACE(wrong.toStdString());
        StationProgram program(wrong);
        EXPECT_EQ(program.end(), 2);
        const QByteArray complaint = program.errors();
        EXPECT_TRUE(complaint.startsWith("modbus-station: ") && complaint.count('\n') == 1) << complaint.toStdString();
        EXPECT_FALSE(complaint.contains('\x1b'));
    }
}
} // namespace

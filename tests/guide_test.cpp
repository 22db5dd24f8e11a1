// SPDX-License-Identifier: MIT
// The tables of docs/host-guide.md, and its way to start anew, held against the driver.
#include "driver_fixture.h"

#include "../examples/host/start_anew.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <future>
#include <map>

using namespace modbus_driver;

namespace {

QString text(const char *path)
{
    QFile file(QString::fromLatin1(SOURCES) + QString::fromLatin1(path));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return QString::fromUtf8(file.readAll());
}

/// The rows of the table whose head begins so, each as its cells, the first one at 1.
QList<QStringList> rows(const char *head)
{
    const QString guide = text("/docs/host-guide.md");
    QList<QStringList> found;
    const QStringList lines = guide.mid(guide.indexOf(QString::fromLatin1(head))).split(QLatin1Char('\n'));
    for (int i = 2; i < lines.size() && lines.at(i).startsWith(QLatin1Char('|')); ++i)
        found.append(lines.at(i).split(QLatin1Char('|')));
    EXPECT_FALSE(found.isEmpty()) << head;
    return found;
}

QStringList all(const char *pattern, const QString &cell)
{
    QStringList found;
    auto match = QRegularExpression(QString::fromLatin1(pattern)).globalMatch(cell);
    while (match.hasNext())
        found.append(match.next().captured());
    return found;
}

RW_VAR queued;
QByteArray data;
QList<VAR_ITEM> items;
const QString one = QString::number(1);
const std::map<std::string, void (*)()> calls = {
    {"SetComInfo", [] { SetComInfo(PLC_driver.comInfo); }},
    {"RegistCallBackFuncIntf", [] { RegistCallBackFuncIntf(nullptr, nullptr); }},
    {"FlashLocalRegister", [] { FlashLocalRegister(1, 2, 3); }},
    {"ComCommunication", [] { ComCommunication(); }},
    {"DataCom", [] { DataCom(&(data = bytes("0000 0000 0005 01 03 02 1234")), 11); }},
    {"AddListWriteVar", [] { AddListWriteVar(&queued, QueueMerged); }},
    {"AddListOnceReadVar", [] { AddListOnceReadVar(&queued, QueueAsIs); }},
    {"ReCreatReadVarList", [] { ReCreatReadVarList(&items); }},
    {"SetRegisterData", [] { SetRegisterData(one, AreaCoils, one, 1, data, 1, 0, 0); }},
    {"GetRegisterData", [] { GetRegisterData(0, AreaCoils, one, 1, data, 1); }},
    {"EnCommStation", [] { EnCommStation(1, 1); }},
    {"EnableEthernet", [] { EnableEthernet(1, 1); }},
    {"Ethernetcontains", [] { Ethernetcontains(1); }},
    {"PLCAddressChangeIntef", [] { PLCAddressChangeIntef(AreaCoils, one); }},
    {"QueryFinishFlag", [] { QueryFinishFlag(); }},
    {"CalCRC", [] { CalCRC(nullptr, 0); }},
};

/// True when the call waits for the mutex. One that should not is given ten seconds.
bool waits(QMutex &mutex, void (*call)(), bool expected)
{
    mutex.lock();
    const std::future<void> ended = std::async(std::launch::async, call);
    const auto patience = std::chrono::milliseconds(expected ? 20 : 10000);
    const bool waiting = ended.wait_for(patience) == std::future_status::timeout;
    mutex.unlock();
    return waiting;
}

class Guide : public DriverFixture
{
protected:
    /// So that the call takes each lock that it ever takes: a read in flight, or a write to build or to mirror.
    void prepare(const std::string &call)
    {
        startAnew(PLC_driver, settings);
        poll("5:1*1");
        if (call == "DataCom")
            ComCommunication();
        else
            write(AreaCoils, "9", 1, "01");
        PLC_driver.lastFailed = call == "SetRegisterData";
    }

    /// The function codes of all requests that the next call builds.
    QStringList functions()
    {
        ComCommunication();
        QStringList codes;
        for (const Protocol &request : PLC_driver.pendingList)
            codes.append(QString::number(request.frame.at(7)));
        startAnew(PLC_driver, settings);
        return codes;
    }
};

TEST_F(Guide, NamesTheLocksOfEachCall)
{
    const std::map<std::string, QMutex *> mutexes = {{"`listMutex`", &PLC_driver.listMutex},
                                                     {"`imageMutex`", &PLC_driver.imageMutex},
                                                     {"`stationMutex`", &PLC_driver.stationMutex}};
    std::size_t checked = 0;
    for (const QStringList &row : rows("| Call |")) {
        settings.writeMode = row.at(1).contains(QLatin1String("another")) ? 0 : WriteModeToStation;
        for (const QString &name : all("(?<=`)[A-Z]\\w+(?=`)", row.at(1))) {
            const std::string call = name.toStdString();
            ASSERT_EQ(calls.count(call), 1u) << call;
            for (const auto &mutex : mutexes) {
                prepare(call);
                const bool named = row.at(3).contains(QString::fromStdString(mutex.first));
                EXPECT_EQ(waits(*mutex.second, calls.at(call), named), named) << call << ' ' << mutex.first;
            }
            EXPECT_EQ(row.at(4).contains(QLatin1String("deadlock")), row.at(3).contains(QLatin1String("`listMutex`")));
            ++checked;
        }
    }
    EXPECT_EQ(checked, calls.size() + 1) << "SetRegisterData has two rows";
}

TEST_F(Guide, ListsTheStatusCodes)
{
    const QList<QStringList> listed = rows("| Status |");
    ASSERT_EQ(listed.size(), 10);
    EXPECT_EQ(listed.first().at(1).toInt(), StatusRetry);
    for (int outcome = 0; outcome < 9; ++outcome) {
        const QStringList codes = all("\\d+", listed.at(outcome + 1).at(1));
        EXPECT_EQ(codes.first().toInt(), GetDriverReturnValue(outcome));
        const int last = codes.first().toInt() + (outcome % 4 && outcome < 8 ? StatusCodesOfClass - 1 : 0);
        EXPECT_EQ(codes.last().toInt(), last) << "errors are classes of twelve";
    }
}

TEST_F(Guide, NumbersTheSettingsWords)
{
    const QString records = text("/driver/api/records.h").section(QLatin1String("struct CommSettings"), 1);
    const QStringList words = all("(?<=int )\\w+(?= = 0;)", records.section(QLatin1String("};"), 0, 0));
    QStringList listed;
    for (const QStringList &row : rows("| Word |")) {
        const QStringList numbers = all("\\d+", row.at(1)), names = all("(?<=`)\\w+(?=`)", row.at(2));
        EXPECT_EQ(words.value(numbers.last().toInt()), names.last());
        for (int i = numbers.first().toInt(); i <= numbers.last().toInt(); ++i)
            listed.append(words.value(i));
    }
    EXPECT_EQ(listed, words);
}

TEST_F(Guide, TellsTheFunctionsOfEachArea)
{
    for (const QStringList &row : rows("| Area | What |")) {
        const int area = row.at(1).toInt();
        const char *address = isBitOfRegister(area) ? "2.3" : "2";
        poll(qPrintable(QString::fromLatin1("%1:%2*2").arg(area).arg(QLatin1String(address))));
        EXPECT_EQ(functions(), all("\\d+", row.at(4))) << area;
        write(area, address, isBitArea(area) || isBitOfRegister(area) ? 1 : 2, "01020304");
        EXPECT_EQ(functions(), all("\\d+", row.at(5))) << area;
    }
}

TEST_F(Guide, StartsAnewAsShown)
{
    QString code = text("/examples/host/start_anew.h");
    code.remove(0, code.indexOf(QLatin1String("// `settings`")));
    EXPECT_TRUE(text("/docs/host-guide.md").contains(code));

    const auto numbers = [] {
        const char *from = reinterpret_cast<const char *>(&PLC_driver.currentKind);
        return QByteArray(from, int(reinterpret_cast<const char *>(&PLC_driver + 1) - from));
    };
    const QByteArray fresh = numbers();
    settings.multiStation = 1;
    settings.retryLimit = 5;
    poll("5:1*1 2/0:1*1");
    write(AreaHoldingRegisterBit, "1.3", 1, "01");
    AddListOnceReadVar(&(queued = access(AreaHoldingRegisters, 5, 1)), QueueAsIs);
    EnCommStation(2, 0);
    exchange("0000 0000 0006 01 03 0001 0001", "0000 0000 0005 01 03 02 1234", StatusDone, "notify(0 1) 2 2");
    noReply();
    for (quint8 *bits : {PLC_driver.coilBits, PLC_driver.inputBits})
        bits[ImageBitBytes - 1] = bits[0] = 1;
    for (quint16 *registers : {PLC_driver.inputRegisters, PLC_driver.holdingRegisters})
        registers[ImageRegisters - 1] = registers[0] = 1;
    EXPECT_FALSE(PLC_driver.pendingList.isEmpty() || PLC_driver.extendList.isEmpty());

    startAnew(PLC_driver, settings);
    EXPECT_TRUE(numbers() == fresh) << "a number or an image differs";
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_TRUE(PLC_driver.extendList.isEmpty() && PLC_driver.disabledStations.isEmpty());
    EXPECT_EQ(settings.failCount + settings.repliesExpected + settings.repliesReceived, 0);
}

} // namespace

// SPDX-License-Identifier: MIT
// The tables of docs/host-guide.md, and its way to start anew, held against the driver.
#include "driver_fixture.h"

#include "../examples/host/start_anew.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

using namespace modbus_driver;

typedef DriverFixture Guide;

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

/// The function codes of all requests that the next call builds.
QStringList functions()
{
    QStringList codes;
    ComCommunication();
    for (const Protocol &request : PLC_driver.pendingList)
        codes.append(QString::number(request.frame.at(7)));
    return codes;
}

} // namespace

TEST_F(Guide, ListsTheStatusCodes)
{
    const QList<QStringList> listed = rows("| Status |");
    EXPECT_EQ(listed.size(), 10);
    EXPECT_EQ(listed.value(0).value(1).toInt(), StatusRetry);
    for (int outcome = 0; outcome < 9; ++outcome) {
        const QStringList codes = all("\\d+", listed.value(outcome + 1).value(1));
        ASSERT_FALSE(codes.isEmpty()) << "outcome " << outcome;
        EXPECT_EQ(codes.first().toInt(), GetDriverReturnValue(outcome));
        EXPECT_EQ(codes.last().toInt() - codes.first().toInt(), outcome % 4 ? StatusCodesOfClass - 1 : 0);
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
        const std::string address = isBitOfRegister(area) ? "2.3" : "2";
        restart(0);
        poll(std::to_string(area) + ':' + address + "*2");
        EXPECT_EQ(functions(), all("\\d+", row.at(4))) << area;
        restart(0);
        write(area, address, area < AreaInputRegisters ? 1 : 2, "01020304");
        EXPECT_EQ(functions(), all("\\d+", row.at(5))) << area;
    }
}

TEST_F(Guide, StartsAnewAsShown)
{
    QString code = text("/examples/host/start_anew.h");
    code.remove(0, code.indexOf(QLatin1String("// `settings`")));
    EXPECT_TRUE(text("/docs/host-guide.md").contains(code));

    const QByteArray fresh = driverNumbers();
    settings.multiStation = settings.retryLimit = 1;
    poll("5:1*1 2/0:1*1");
    write(AreaHoldingRegisterBit, "1.3", 1, "01");
    RW_VAR read = access(AreaHoldingRegisters, 5, 1);
    AddListOnceReadVar(&read, QueueAsIs);
    EnCommStation(2, 0);
    exchange("0000 0000 0006 01 03 0001 0001", "0000 0000 0005 01 03 02 1234", StatusDone, "notify(0 1) 2 2");
    DataCom(nullptr, 0);
    for (quint8 *bits : {PLC_driver.coilBits, PLC_driver.inputBits})
        bits[ImageBitBytes - 1] = bits[0] = 1;
    for (quint16 *registers : {PLC_driver.inputRegisters, PLC_driver.holdingRegisters})
        registers[ImageRegisters - 1] = registers[0] = 1;
    startAnew(PLC_driver, settings);
    EXPECT_TRUE(driverNumbers() == fresh) << "a number or an image differs";
    EXPECT_EQ(ComCommunication(), nullptr);
    EXPECT_TRUE(PLC_driver.extendList.isEmpty() && PLC_driver.disabledStations.isEmpty());
    EXPECT_EQ(settings.failCount + settings.repliesExpected + settings.repliesReceived, 0);
}

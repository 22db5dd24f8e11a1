// SPDX-License-Identifier: MIT
// One scenario of thirty exchanges, run again and again, with the reply of every exchange spoilt in every
// way, once or until the driver gives the request up.
#include "driver_checks.h"
#include "in_memory_station.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// A late reply comes glued to the one of the retry. Were it to come alone, it would be a foreign reply.
enum Way { None, Lost, Late, Cut, TooLong, Doubled, Exception, OtherUnit, OtherFunction };

struct Fault
{
    Way way;
    int step;     ///< the exchange whose reply is spoilt
    bool forGood; ///< and so are those of its retries
    int cut;      ///< with Cut: bytes that are left
};

/// What the host queues once `after` exchanges have gone well.
struct Job
{
    int after, area;
    const char *address;
    int first, count, unit; ///< registers or coils
    int value;              ///< of each of them, a bit's for area 3, or -1 for a one-shot read
};
const Job jobs[] = {
    {3, 0, "3", 3, 3, 1, 1},        {4, 5, "0", 0, 10, 2, 0x4444}, {5, 3, "10.9", 10, 1, 1, 1},  {8, 5, "0", 0, 10, 2, -1},
    {9, 7, "12", 12, 2, 1, 0x5555}, {14, 3, "14.2", 14, 1, 2, 1},  {15, 3, "15.0", 15, 1, 2, 0}, {16, 0, "0", 0, 8, 1, -1},
};
const int jobCount = static_cast<int>(sizeof jobs / sizeof jobs[0]);
const int steps = 30;
const int retryLimit = 2; // a late reply spoils two exchanges

const int tableSize = 16;
const int tables[] = {0, 1, 4, 5};
typedef std::vector<quint16> Values; ///< of all tables of all units

int outcomes[jobCount];

void writeDone(int, int, int item, int outcome)
{
    outcomes[item] = outcome;
}

bool isForeign(Way way)
{
    return way == OtherUnit || way == OtherFunction;
}

/// What a bit write makes of a register.
int withBit(int reg, const Job &job)
{
    const int mask = 1 << (StringAddressToInt(job.area, QString::fromLatin1(job.address)) % 16);
    return job.value ? reg | mask : reg & ~mask;
}

class Scenario
{
public:
    Scenario(bool perStation, const Fault &fault);
    void play();

    std::vector<int> replyLengths; ///< of each exchange

private:
    int unitOf(const Job &job) const { return m_settings.multiStation ? job.unit : 1; }
    Values stationValues();
    Values imageValues() const;
    void note(std::size_t place, int value);
    void noteEntered(const Job &job);
    void queue(int item);
    void exchange();
    QByteArray spoilt(const QByteArray &reply);
    void checkImage();
    void checkOutcome(int item);

    const Fault m_fault;
    CommSettings m_settings;
    InMemoryStation m_station{{1, 2}, tableSize};
    std::vector<int> m_units{1};
    std::vector<Values> m_had; ///< all that each value of the station was, or was asked to be
    QByteArray m_late;
    int m_good = 0, m_badInARow = 0, m_givenUp = 0;
    bool m_over = false;
};

Scenario::Scenario(bool perStation, const Fault &fault) : m_fault(fault)
{
    m_settings.multiStation = perStation;
    m_settings.writeBlockSize = 8;
    m_settings.defaultStation = 1;
    m_settings.retryLimit = retryLimit;
    m_settings.writeMode = 2;
    freshDriver(&m_settings);
    RegistCallBackFuncIntf(writeDone, nullptr);
    std::fill_n(outcomes, jobCount, 0);
    if (perStation)
        m_units.push_back(2);
    QList<VAR_ITEM> items;
    for (int unit : m_units) {
        InMemoryStation::Unit &holds = m_station.unit(unit);
        for (std::size_t k = 0; k < tableSize; ++k) {
            holds.coils[k] = holds.inputs[k] = k % 3 == 0;
            holds.inputRegisters[k] = static_cast<quint16>(unit << 12 | int(k) << 4 | 0xA);
            holds.holdingRegisters[k] = static_cast<quint16>(unit << 12 | int(k) << 4 | 0xB);
        }
        for (int area : tables) {
            VAR_ITEM item;
            item.area = static_cast<quint8>(area);
            item.station = static_cast<quint8>(unit);
            item.addressText = QString::number(0);
            item.count = tableSize;
            items.append(item);
        }
    }
    ReCreatReadVarList(&items);
    m_had.assign(stationValues().size(), Values{0});
    checkImage();
}

Values Scenario::stationValues()
{
    Values values;
    for (int id : m_units) {
        const InMemoryStation::Unit &unit = m_station.unit(id);
        for (const Values *table : {&unit.coils, &unit.inputs, &unit.inputRegisters, &unit.holdingRegisters})
            values.insert(values.end(), table->begin(), table->end());
    }
    return values;
}

Values Scenario::imageValues() const
{
    Values values;
    for (int unit : m_units) {
        for (int area : tables) {
            QByteArray bytes;
            GetRegisterData(0, area, QString::number(0), unit, bytes, tableSize);
            for (int i = 0; i < tableSize; ++i)
                values.push_back(static_cast<quint16>(area < 4 ? quint8(bytes.at(i))
                                                               : quint8(bytes.at(2 * i)) | quint8(bytes.at(2 * i + 1)) << 8));
        }
    }
    return values;
}

void Scenario::note(std::size_t place, int value)
{
    Values &had = m_had[place];
    if (std::find(had.begin(), had.end(), value) == had.end())
        had.push_back(static_cast<quint16>(value));
}

/// The panel shows what was entered, so the image may hold it ahead of the station.
void Scenario::noteEntered(const Job &job)
{
    const int table = unitOf(job) == 2 ? 4 : 0;
    const auto first = static_cast<std::size_t>((table + (job.area == 0 ? 0 : 3)) * tableSize + job.first);
    if (job.area == 3) {
        const Values had = m_had[first];
        for (int value : had)
            note(first, withBit(value, job));
        return;
    }
    for (std::size_t k = 0; k < static_cast<std::size_t>(job.count); ++k)
        note(first + k, job.value);
}

void Scenario::queue(int item)
{
    const Job &job = jobs[item];
    if (job.value < 0) {
        RW_VAR read;
        read.hostItem = item;
        read.area = job.area;
        read.addressText = QString::fromLatin1(job.address);
        read.station = job.unit;
        read.dataLength = job.count;
        ASSERT_GT(AddListOnceReadVar(&read, 0), 0);
        return;
    }
    noteEntered(job);
    QByteArray value(2 * job.count, static_cast<char>(job.value));
    ASSERT_GT(SetRegisterData(QString(), job.area, QString::fromLatin1(job.address), job.unit, value, job.count, 0, item), 0);
}

QByteArray Scenario::spoilt(const QByteArray &reply)
{
    const QByteArray late = m_late;
    m_late.clear();
    const int exchange = static_cast<int>(replyLengths.size()) - 1;
    const bool now = exchange == m_fault.step || (m_fault.forGood && exchange > m_fault.step && m_givenUp == 0);
    if (!now || reply.isEmpty())
        return late + reply;
    QByteArray bad = reply;
    switch (m_fault.way) {
    case None:
        return reply;
    case Lost:
        return late;
    case Late:
        m_late = reply;
        return late;
    case Cut:
        return reply.left(m_fault.cut);
    case TooLong:
        return reply + '\0';
    case Doubled:
        return reply + reply;
    case Exception:
        return QByteArray::fromHex("000000000003") + reply.at(6) + static_cast<char>(reply.at(7) | 0x80) + '\4';
    case OtherUnit:
    case OtherFunction:
        bad[m_fault.way == OtherUnit ? 6 : 7] = '\x55';
    }
    for (int i = 9; i < bad.size(); ++i)
        bad[i] = static_cast<char>(~bad.at(i));
    return bad;
}

void Scenario::exchange()
{
    const Protocol *request = ComCommunication();
    ASSERT_NE(request, nullptr);
    const bool isRead = request->replyDataLength > 0;
    const QByteArray answer = m_station.reply(request->frame);
    ASSERT_EQ(answer.size(), request->replyLength) << "the station itself does not answer well";
    replyLengths.push_back(answer.size());
    QByteArray reply = spoilt(answer);
    const bool stored = isForeign(m_fault.way) && reply != answer && isRead;
    const int status = DataCom(&reply, reply.size())->status;
    ASSERT_EQ(violatedInvariant(), nullptr);

    const bool good = status == 1;
    if (!good)
        m_givenUp += status != 0;
    m_good += good;
    m_badInARow = good || status != 0 ? 0 : m_badInARow + 1;
    ASSERT_LE(m_badInARow, retryLimit) << "not back to work within the retry limit";
    EXPECT_EQ(good, reply.size() == answer.size()) << "a reply is judged by its length, and by nothing else";
    if (!m_over) {
        for (int unit : m_units)
            ++m_station.unit(unit).inputRegisters[static_cast<std::size_t>(m_good % tableSize)];
    }
    // The driver does not look at unit or function, so what it got is now in the image: holding such a reply
    // back is the host's part. The next pass over the poll list heals it.
    EXPECT_TRUE(!stored || imageValues() != stationValues());
    checkImage();
}

void Scenario::checkImage()
{
    const Values station = stationValues();
    const Values image = imageValues();
    for (std::size_t i = 0; i < station.size(); ++i) {
        note(i, station[i]);
        if (!isForeign(m_fault.way) && std::find(m_had[i].begin(), m_had[i].end(), image[i]) == m_had[i].end())
            ADD_FAILURE() << "value " << i << " is " << image[i] << ", which the station never had";
    }
}

void Scenario::checkOutcome(int item)
{
    const Job &job = jobs[item];
    ASSERT_NE(outcomes[item], 0) << "job " << item << " was neither done nor reported";
    if (outcomes[item] == 2 || job.value < 0)
        return;
    const InMemoryStation::Unit &unit = m_station.unit(unitOf(job));
    for (int k = job.first; k < job.first + job.count; ++k) {
        const int holds = (job.area == 0 ? unit.coils : unit.holdingRegisters)[static_cast<std::size_t>(k)];
        EXPECT_EQ(holds, job.area == 3 ? withBit(holds, job) : job.value) << "job " << item;
    }
}

void Scenario::play()
{
    int next = 0;
    while (m_good < steps || !PLC_driver.writeList.isEmpty() || !PLC_driver.onceReadList.isEmpty()) {
        for (; next < jobCount && jobs[next].after <= m_good; ++next)
            queue(next);
        exchange();
        if (testing::Test::HasFailure())
            return;
    }
    m_over = true;
    for (int i = 0; i <= PLC_driver.readList.size(); ++i)
        exchange();
    EXPECT_EQ(imageValues(), stationValues()) << "after a whole pass";
    EXPECT_EQ(m_settings.cycleDone, 1);
    EXPECT_EQ(m_givenUp, m_fault.forGood ? 1 : 0);
    for (int item = 0; item < jobCount; ++item)
        checkOutcome(item);
}

class FaultsAtStep : public testing::TestWithParam<bool>
{
protected:
    std::vector<int> play(const Fault &fault)
    {
        SCOPED_TRACE(testing::Message() << "way " << fault.way << ", step " << fault.step << ", cut " << fault.cut
                                        << (fault.forGood ? ", for good" : ""));
        Scenario scenario(GetParam(), fault);
        scenario.play();
        return scenario.replyLengths;
    }
    void playEveryStep(Way way, bool forGood)
    {
        for (int step = 0; step < steps && !HasFailure(); ++step)
            play({way, step, forGood, 0});
    }
};

TEST_P(FaultsAtStep, OneBadReplyLeavesNoTrace)
{
    for (Way way : {None, Lost, Late, TooLong, Doubled, Exception})
        playEveryStep(way, false);
}

TEST_P(FaultsAtStep, EveryCutIsNoticed)
{
    const std::vector<int> lengths = play({None, 0, false, 0});
    for (int step = 0; step < steps; ++step) {
        for (int cut = 1; cut < lengths[static_cast<std::size_t>(step)] && !HasFailure(); ++cut)
            play({Cut, step, false, cut});
    }
}

TEST_P(FaultsAtStep, RequestThatIsGivenUpIsReportedAndTheRestGoesOn)
{
    for (Way way : {Lost, Cut, TooLong, Doubled, Exception})
        playEveryStep(way, true);
}

TEST_P(FaultsAtStep, ForeignReplyOfTheRightLengthIsStoredUntilTheNextPass)
{
    for (Way way : {OtherUnit, OtherFunction})
        playEveryStep(way, false);
}

INSTANTIATE_TEST_SUITE_P(Image, FaultsAtStep, testing::Bool(),
                         [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace

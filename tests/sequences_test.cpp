// SPDX-License-Identifier: MIT
// Random sequences of a host's calls, with replies that are lost, of the wrong length, or foreign. Beside the driver's
// image stands a plain one that knows only the frames on the wire. A script is a list of numbers, and each number is a
// step whatever the others are: a failing script is shortened by leaving steps out. The environment's MODBUS_LONG_RUN
// is the number of exchanges of the long run.
#include "driver_checks.h"
#include "driver_fixture.h"
#include "memory_station.h"

#include "base/modbus_wire.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <random>
#include <set>

using namespace modbus_driver;

namespace {

const int addresses = 40; ///< of each table that are written, read and polled; requests may reach a little further
const int units = 3;
const int tableOf[] = {Coils, Inputs, InputRegisters, Registers, InputRegisters, Registers, InputRegisters, Registers};

/// Writes of the host. Two either have the same place or none in common, so a later one replaces all of an earlier one.
const struct Shape
{
    int area, first, places, count;
} shapes[] = {{Coils, 0, 12, 1}, {Coils, 12, 4, 3}, {Registers, 0, 2, 5}, {Pairs, 10, 2, 4}, {RegisterBit, 20 * 16, 48, 1}};

/// A write or one-shot read that the host has asked for and that is not reported yet.
struct Job
{
    int unit, area, first;
    std::vector<int> values; ///< of a write
    std::set<int> unread;    ///< addresses of a one-shot read that no reply has brought yet
};

/// What the call-backs of one call said.
struct Report
{
    int notified, notifiedId, done, item, outcome;
} report;

void writeDone(int, int, int item, int outcome)
{
    ++report.done;
    report.item = item;
    report.outcome = outcome;
}

void itemNotify(QList<RW_VAR> *, int id, int)
{
    ++report.notified;
    report.notifiedId = id;
}

QString addressText(int area, int address)
{
    const int bit = isBitOfRegister(area) ? BitsOfRegister : 1;
    return QString::number(address / bit) + (bit == 1 ? QString() : QString::fromLatin1(".%1").arg(address % bit));
}

/// As the host has values: bits, or registers of which pairs have the high word first.
QByteArray hostBytes(int area, const std::vector<int> &values)
{
    QByteArray bytes;
    for (std::size_t k = 0; k < values.size(); ++k) {
        const int value = values[area == InputPairs || area == Pairs ? k ^ 1 : k];
        bytes.append(static_cast<char>(value));
        if (area >= InputRegisters)
            bytes.append(static_cast<char>(value >> 8));
    }
    return bytes;
}

bool isQueued(int item)
{
    const QList<RW_VAR> &queue = PLC_driver.writeList;
    return std::any_of(queue.begin(), queue.end(), [=](const RW_VAR &entry) { return entry.hostItem == item; });
}

class Sequence
{
public:
    Sequence(bool perStation, bool traces);
    void step(quint32 number);
    /// Serves all that is queued, then polls a whole pass, with good replies.
    void finish();
    void compareAll();

    std::string failure; ///< empty while all is well
    std::string trace;
    int exchanges = 0;

private:
    enum Reply { Good, Lost, Unheard, WrongLength, Foreign };

    int pick(int below) { return static_cast<int>(m_random() / 64 % static_cast<unsigned>(below)); }
    int unitOf(int unit) const { return m_settings.multiStation ? unit : 1; }
    void note(const QString &what);
    void check(bool holds, const char *what);
    int known(int unit, int area, int address) const;
    void enter(int unit, int area, int address, int value);
    void compare(int unit, int area, int first, int count);

    void rebuild();
    void queueWrite();
    void queueRead();
    void show();
    void exchange(Reply kind);
    QByteArray spoilt(QByteArray reply, Reply kind);
    void mirror(const QByteArray &frame);
    void store(const QByteArray &frame, const QByteArray &reply);
    QByteArray writeHalf(QByteArray frame, const QByteArray &reply);
    void judge(const QByteArray &frame, const QByteArray &reply, bool good, int status);
    void judgeReport(const QByteArray &frame);

    CommSettings m_settings;
    MemoryStation m_station;
    std::minstd_rand m_random;
    int m_image[units + 1][8][2 * addresses] = {};
    std::map<int, Job> m_jobs;                ///< by item
    std::map<int, std::vector<int>> m_places; ///< items of writes, the last is the one that must be reported
    QList<VAR_ITEM> m_polled;
    QByteArray m_next; ///< the frame that must come next; empty for any
    int m_items = 0, m_failures = 0;
    bool m_failed = false;
    const bool m_traces;
};

Sequence::Sequence(bool perStation, bool traces) : m_traces(traces)
{
    m_settings.multiStation = perStation;
    m_settings.writeBlockSize = 4;
    m_settings.defaultStation = 1;
    m_settings.retryLimit = 1;
    m_settings.writeMode = WriteModeToStation;
    freshDriver(&m_settings);
    RegistCallBackFuncIntf(writeDone, itemNotify);
}

void Sequence::note(const QString &what)
{
    if (m_traces)
        trace += qPrintable(what + QLatin1Char('\n'));
}

void Sequence::check(bool holds, const char *what)
{
    if (!holds && failure.empty())
        failure = what;
}

int Sequence::known(int unit, int area, int address) const
{
    const int *const table = m_image[unitOf(unit)][tableOf[area]];
    return isBitOfRegister(area) ? table[address / 16] >> address % 16 & 1 : table[address];
}

void Sequence::enter(int unit, int area, int address, int value)
{
    int *const table = m_image[unitOf(unit)][tableOf[area]];
    if (isBitOfRegister(area))
        table[address / 16] = (table[address / 16] & ~(1 << address % 16)) | value << address % 16;
    else
        table[address] = value;
}

void Sequence::compare(int unit, int area, int first, int count)
{
    std::vector<int> values;
    for (int k = 0; k < count; ++k)
        values.push_back(known(unit, area, first + k));
    QByteArray shown;
    GetRegisterData(0, area, addressText(area, first), unit, shown, count);
    if (shown != hostBytes(area, values))
        check(false,
              qPrintable(QString::fromLatin1("unit %1, area %2 from %3 on is %4 instead of %5")
                             .arg(unit)
                             .arg(area)
                             .arg(addressText(area, first))
                             .arg(QString::fromLatin1(shown.toHex()), QString::fromLatin1(hostBytes(area, values).toHex()))));
}

void Sequence::compareAll()
{
    for (int unit = 1; unit <= unitOf(units); ++unit) {
        for (int area : {Coils, Inputs, InputRegisters, Registers})
            compare(unit, area, 0, addresses);
    }
}

void Sequence::rebuild()
{
    m_polled.clear();
    for (int n = 1 + pick(6); n > 0; --n) {
        VAR_ITEM item;
        item.area = static_cast<quint8>(pick(8));
        item.station = static_cast<quint8>(1 + pick(units));
        const int scale = isBitOfRegister(item.area) ? 16 : 1, first = pick(addresses * scale);
        item.addressText = addressText(item.area, first);
        item.count = 1 + pick(qMin(20, addresses * scale - first));
        m_polled << item;
    }
    ReCreatReadVarList(&m_polled);
    note(QString::fromLatin1("polls %1 requests").arg(PLC_driver.readList.size()));
}

void Sequence::queueWrite()
{
    const Shape &shape = shapes[pick(5)];
    const int item = ++m_items;
    Job &job = m_jobs[item];
    job.unit = unitOf(1 + pick(units));
    job.area = shape.area;
    job.first = shape.first + shape.count * pick(shape.places);
    for (int k = 0; k < shape.count; ++k)
        job.values.push_back(pick(shape.area < InputRegisters ? 2 : 65536));
    std::vector<int> &items = m_places[(job.unit * 8 + job.area) * 1000 + job.first];
    check(items.empty() || !m_jobs.count(items.back()) || isQueued(items.back()), "a write is gone and was not reported");
    for (int earlier : items) {
        if (!isQueued(earlier))
            m_jobs.erase(earlier);
    }
    items.erase(std::remove_if(items.begin(), items.end(), [this](int earlier) { return !m_jobs.count(earlier); }), items.end());
    items.push_back(item);
    QByteArray value = hostBytes(job.area, job.values);
    SetRegisterData(QString(), job.area, addressText(job.area, job.first), job.unit, value, shape.count, item % 14, item);
    for (int k = 0; m_failed && k < shape.count; ++k)
        enter(job.unit, job.area, job.first + k, job.values[static_cast<std::size_t>(k)]);
    note(QString::fromLatin1("item %1 writes unit %2, area %3 from %4 on: %5")
             .arg(item)
             .arg(job.unit)
             .arg(job.area)
             .arg(addressText(job.area, job.first), QString::fromLatin1(value.toHex())));
}

void Sequence::queueRead()
{
    RW_VAR read;
    read.hostItem = ++m_items;
    read.hostId = m_items % 14;
    read.station = unitOf(1 + pick(units));
    read.area = pick(8);
    const int scale = isBitOfRegister(read.area) ? 16 : 1, first = pick(addresses * scale);
    read.addressText = addressText(read.area, first);
    read.dataLength = 1 + pick(qMin(20, addresses * scale - first));
    Job &job = m_jobs[read.hostItem];
    job.unit = read.station;
    job.area = tableOf[read.area];
    for (int k = 0; k < read.dataLength; ++k)
        job.unread.insert((first + k) / scale);
    note(QString::fromLatin1("item %1 reads unit %2, area %3 from %4 on, %5")
             .arg(m_items)
             .arg(job.unit)
             .arg(read.area)
             .arg(read.addressText)
             .arg(read.dataLength));
    AddListOnceReadVar(&read, QueueMerged);
}

/// A panel's read of any area.
void Sequence::show()
{
    const int area = pick(8), scale = isBitOfRegister(area) ? 16 : 1, first = pick((addresses - 20) * scale);
    compare(1 + pick(units), area, first, 2 * pick(10));
}

/// A new write shows in the image before its reply comes.
void Sequence::mirror(const QByteArray &frame)
{
    const int unit = wire::byteAt(frame, wire::UnitAt), first = wire::wordAt(frame, wire::AddressAt);
    const int value = wire::wordAt(frame, wire::ValueAt);
    if (wire::byteAt(frame, wire::FunctionAt) == wire::WriteSingleCoil)
        enter(unit, Coils, first, value != 0);
    for (int k = 0; wire::byteAt(frame, wire::FunctionAt) == wire::WriteMultipleRegisters && k < value; ++k)
        enter(unit, Registers, first + k, wire::wordAt(frame, wire::WriteDataAt + 2 * k));
}

/// Also a foreign reply is stored: the driver judges replies by their length alone, the rest is the host's part.
void Sequence::store(const QByteArray &frame, const QByteArray &reply)
{
    const int areas[] = {0, Coils, Inputs, Registers, InputRegisters}; // by function code
    const int unit = wire::byteAt(frame, wire::UnitAt), area = areas[wire::byteAt(frame, wire::FunctionAt)];
    const int first = wire::wordAt(frame, wire::AddressAt), count = wire::wordAt(frame, wire::ValueAt);
    for (int k = 0; k < count; ++k) {
        const int bit = wire::byteAt(reply, wire::ReadDataAt + k / 8) >> k % 8 & 1;
        enter(unit, area, first + k, isBitArea(area) ? bit : wire::wordAt(reply, wire::ReadDataAt + 2 * k));
        for (auto &job : m_jobs) {
            if (job.second.unit == unit && job.second.area == area)
                job.second.unread.erase(first + k);
        }
    }
}

/// The frame that must follow the read half of a bit write: other bits stay as they were read.
QByteArray Sequence::writeHalf(QByteArray frame, const QByteArray &reply)
{
    const Job &job = m_jobs.at(PLC_driver.writeList.at(0).hostItem);
    const int mask = 1 << job.first % 16, was = wire::wordAt(reply, wire::ReadDataAt);
    frame[wire::FunctionAt] = wire::WriteSingleRegister;
    wire::putWord(frame.data() + wire::ValueAt, job.values[0] ? was | mask : was & ~mask);
    return frame;
}

QByteArray Sequence::spoilt(QByteArray reply, Reply kind)
{
    if (kind == WrongLength && pick(3) == 0)
        return reply + reply;
    if (kind == WrongLength)
        return reply.left(pick(2) ? int(wire::ExceptionReplyLength) : 1 + pick(reply.size() - 1));
    for (int i = wire::UnitAt; kind == Foreign && i < reply.size(); ++i)
        reply[i] = static_cast<char>(~reply.at(i));
    return kind == Lost || kind == Unheard ? QByteArray() : reply;
}

void Sequence::exchange(Reply kind)
{
    report = Report();
    const Protocol *request = ComCommunication();
    check(request || m_next.isEmpty(), "the request in flight is gone");
    if (!request)
        return;
    ++exchanges;
    const QByteArray frame = request->frame;
    const bool readHalf = PLC_driver.pendingList.size() == 2;
    const bool builtWrite = m_next.isEmpty() && PLC_driver.currentKind == OriginWrite;
    check(m_next.isEmpty() || frame == m_next, "another frame than the retry or the write half");
    check(report.notified == builtWrite, "itemNotify is called once for each write that is built");
    if (builtWrite && !m_failed)
        mirror(frame);
    const QByteArray right = kind == Unheard ? QByteArray(request->replyLength, '\0') : m_station.reply(frame);
    check(right.size() == request->replyLength, "the station's reply has another length than is expected");
    QByteArray reply = spoilt(right, kind);
    const bool good = reply.size() == right.size();
    note(QString::fromLatin1("%1 -> %2").arg(QString::fromLatin1(frame.toHex()), QString::fromLatin1(reply.toHex())));
    report = Report();
    const int status = DataCom(&reply, reply.size())->status;
    if (good && wire::byteAt(frame, wire::FunctionAt) <= wire::ReadInputRegisters)
        store(frame, reply);
    m_next = good && readHalf ? writeHalf(frame, reply) : QByteArray();
    judge(frame, reply, good, status);
    const char *const broken = violatedInvariant();
    check(!broken, broken);
}

void Sequence::judge(const QByteArray &frame, const QByteArray &reply, bool good, int status)
{
    m_failed = !good;
    if (good) {
        check(status == StatusDone, "a reply of the right length is not accepted");
        check(report.notified == 0 && report.outcome != WriteDoneGivenUp, "a good exchange is reported as given up");
    } else if (++m_failures <= m_settings.retryLimit) {
        check(status == StatusRetry && report.notified + report.done == 0, "not to be tried again");
        m_next = frame;
    } else {
        m_failures = 0;
        const int shift = report.notifiedId < StatusCodesOfClass ? report.notifiedId : 0;
        check(status == (reply.isEmpty() ? StatusLocalNoReply : StatusLocalWrongLength) + shift, "another status than given up");
        check(report.notified == 1 && report.done == (PLC_driver.currentKind != OriginPoll), "given up and not reported");
        check(report.done == 0 || report.outcome == WriteDoneGivenUp, "given up and reported as done");
    }
    if (report.done)
        judgeReport(frame);
}

/// What is reported is known, and was read or written as it was asked for.
void Sequence::judgeReport(const QByteArray &frame)
{
    const auto found = m_jobs.find(report.item);
    if (found == m_jobs.end())
        return check(false, "something unknown is reported");
    const Job job = found->second;
    m_jobs.erase(found);
    if (report.outcome == WriteDoneGivenUp)
        return;
    check(job.unread.empty(), "a one-shot read is done before all was read");
    if (job.values.empty())
        return;
    const int address = wire::wordAt(frame, wire::AddressAt); // the last of the job's frames may be of any of its blocks
    const int held = m_station.table(job.unit, tableOf[job.area])[static_cast<std::size_t>(address)];
    const bool bit = isBitOfRegister(job.area);
    check((bit ? held >> job.first % 16 & 1 : held) == job.values[static_cast<std::size_t>(bit ? 0 : address - job.first)],
          "a write is done, but the station has another value");
}

void Sequence::step(quint32 number)
{
    m_random.seed(number);
    switch (pick(16)) {
    case 0:
    case 1:
        return queueWrite();
    case 2:
        return queueRead();
    case 3:
        return show();
    case 4:
        return pick(4) ? EnCommStation(1 + pick(units), pick(4) != 0) : rebuild();
    case 5:
        for (int area : {Coils, Inputs, InputRegisters, Registers})
            m_station.table(1 + pick(units), area)[static_cast<std::size_t>(pick(addresses))] =
                quint16(pick(isBitArea(area) ? 2 : 65536));
        return;
    default:
        return exchange(pick(4) ? Good : static_cast<Reply>(Lost + pick(4)));
    }
}

void Sequence::finish()
{
    EnCommStation(-1, 0);
    note(QString::fromLatin1("all stations on"));
    const Modbus_TCPIP_RTU_M &driver = PLC_driver;
    for (int i = 0; i < 3000 && !(driver.writeList.isEmpty() && driver.onceReadList.isEmpty() && driver.pendingList.isEmpty());
         ++i)
        exchange(Good);
    for (int i = 0; i <= 2 * driver.readList.size(); ++i)
        exchange(Good);
    check(m_settings.cycleDone == 1, "a whole pass is not complete");
    for (const auto &place : m_places) {
        check(!m_jobs.count(place.second.back()), "a write was not reported");
        for (int item : place.second)
            m_jobs.erase(item); // overwritten by a later one
    }
    check(m_jobs.empty(), "a one-shot read was not reported");
    for (const VAR_ITEM &item : m_polled) {
        const int scale = isBitOfRegister(item.area) ? 16 : 1, area = tableOf[item.area], unit = unitOf(item.station);
        const int first = StringAddressToInt(item.area, item.addressText);
        for (int k = first / scale; k <= (first + item.count - 1) / scale; ++k)
            check(known(unit, area, k) == m_station.table(unit, area)[static_cast<std::size_t>(k)],
                  "a polled value is not the station's");
    }
    compareAll();
}

typedef std::vector<quint32> Script;

/// What goes wrong, or an empty text.
std::string play(const Script &script, bool perStation, std::string *trace = nullptr)
{
    Sequence sequence(perStation, trace != nullptr);
    for (quint32 number : script) {
        sequence.step(number);
        sequence.compareAll();
    }
    sequence.finish();
    if (trace)
        *trace = sequence.trace;
    return sequence.failure;
}

/// Leaves out halves, quarters and so on down to single steps, as long as the script still fails.
Script shortened(Script script, bool perStation)
{
    for (std::size_t size = script.size(); (size /= 2) > 0;) {
        for (std::size_t from = 0; from + size <= script.size();) {
            Script shorter = script;
            const auto begin = shorter.begin() + static_cast<int>(from);
            shorter.erase(begin, begin + static_cast<int>(size));
            if (play(shorter, perStation).empty())
                from += size;
            else
                script = shorter;
        }
    }
    return script;
}

/// Memory of this process, in pages.
long residentPages()
{
    QFile file(QString::fromLatin1("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly) ? file.readAll().split(' ').value(1).toLong() : 0;
}

class Sequences : public testing::TestWithParam<bool>
{
};

TEST_P(Sequences, ImageStationAndReportsAgreeWhateverTheWireDoes)
{
    for (quint32 seed = 1; seed <= 150; ++seed) {
        std::minstd_rand random(seed);
        Script script(200);
        for (quint32 &number : script)
            number = static_cast<quint32>(random());
        if (play(script, GetParam()).empty())
            continue;
        std::string trace;
        script = shortened(script, GetParam());
        const std::string failure = play(script, GetParam(), &trace);
        FAIL() << failure << "\nseed " << seed << ", shortened to " << script.size() << " steps:\n" << trace;
    }
}

TEST_P(Sequences, NothingGrows)
{
    const char *const asked = std::getenv("MODBUS_LONG_RUN");
    const int warmUp = 10000, total = asked ? qMax(2 * warmUp, std::atoi(asked)) : 100000;
    Sequence sequence(GetParam(), false);
    std::minstd_rand random(7);
    int longest = 0, values = 0;
    long pages = 0;
    for (int step = 0; sequence.exchanges < total && sequence.failure.empty(); ++step) {
        sequence.step(static_cast<quint32>(random()));
        longest = qMax(longest, PLC_driver.writeList.size() + PLC_driver.onceReadList.size());
        if (step % 1000 == 0)
            sequence.compareAll();
        if (sequence.exchanges == warmUp) {
            values = PLC_driver.extendList.size();
            pages = residentPages();
        }
    }
    const long now = residentPages();
    std::printf("%d exchanges, %ld resident pages, %ld after the first %d\n", sequence.exchanges, now, pages, warmUp);
    EXPECT_EQ(sequence.failure, "");
    EXPECT_LE(longest, 800) << "places that are written and read, not times";
    EXPECT_EQ(PLC_driver.extendList.size(), values);
    EXPECT_TRUE(!MEASURES_MEMORY || now <= pages + pages / 100) << now << " pages instead of " << pages;
}

INSTANTIATE_TEST_SUITE_P(Image, Sequences, testing::Bool(),
                         [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace

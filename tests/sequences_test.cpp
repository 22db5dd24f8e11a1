// SPDX-License-Identifier: MIT
// Random sequences of a host's calls, with replies that are lost, of the wrong length, or foreign. Beside the driver's
// image stands a plain one that knows only the frames on the wire. A script is a list of numbers, and each number is a
// step whatever the others are: a failing script is shortened by leaving steps out. The environment's MODBUS_LONG_RUN
// is the number of exchanges of the long run.
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

typedef testing::Message Text;
typedef std::vector<quint32> Script;

const int addresses = 40; ///< of each table that are written, read and polled; requests may reach a little further
const int units = 3;
const int wholeTables[] = {Coils, Inputs, InputRegisters, Registers};

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
    report = {report.notified, report.notifiedId, report.done + 1, item, outcome};
}

void itemNotify(QList<RW_VAR> *, int id, int)
{
    report = {report.notified + 1, id, report.done, report.item, report.outcome};
}

int scaleOf(int area)
{
    return isBitOfRegister(area) ? BitsOfRegister : 1;
}

QString addressText(int area, int address)
{
    const QString bit = isBitOfRegister(area) ? QString::fromLatin1(".%1").arg(address % BitsOfRegister) : QString();
    return QString::number(address / scaleOf(area)) + bit;
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
    explicit Sequence(bool perStation);
    void step(quint32 number);
    void compareAll();
    /// Serves all that is queued, then polls a whole pass, with good replies.
    void finish();

    std::string failure; ///< empty while all is well
    std::string trace;
    int exchanges = 0;

private:
    enum Reply { Good, Lost, Unheard, WrongLength, Foreign };

    int pick(int below) { return static_cast<int>(m_random() / 64 % static_cast<unsigned>(below)); }
    int pickUnit() { return m_settings.multiStation ? 1 + pick(units) : 1; }
    void check(bool holds, const char *what);
    void note(const Text &what) { trace += what.GetString() + '\n'; }
    void compare(int unit, int area, int first, int count);
    void rebuild();
    void queueWrite();
    void queueRead();
    void exchange(Reply kind);
    QByteArray spoilt(const QByteArray &reply, Reply kind);
    void store(const Asked &asked, const QByteArray &reply);
    QByteArray writeHalf(QByteArray frame, const QByteArray &reply);
    void judgeFailure(const QByteArray &frame, const QByteArray &reply, int status);
    void judgeReport(const Asked &asked);

    CommSettings m_settings;
    MemoryStation m_station;
    Tables m_image;
    std::minstd_rand m_random;
    std::map<int, Job> m_jobs;                ///< by item
    std::map<int, std::vector<int>> m_places; ///< items of writes; the last one must be reported
    QList<VAR_ITEM> m_polled;
    QByteArray m_next; ///< the frame that must come next; empty for any
    int m_items = 0, m_failures = 0;
    bool m_failed = false;
};

Sequence::Sequence(bool perStation)
{
    reloadDriver(&m_settings);
    m_settings.multiStation = perStation;
    m_settings.writeBlockSize = 4;
    m_settings.defaultStation = m_settings.retryLimit = 1;
    m_settings.writeMode = WriteModeToStation;
    RegistCallBackFuncIntf(writeDone, itemNotify);
}

void Sequence::check(bool holds, const char *what)
{
    if (!holds && failure.empty())
        failure = what;
}

void Sequence::compare(int unit, int area, int first, int count)
{
    std::vector<int> values;
    for (int k = 0; k < count; ++k)
        values.push_back(m_image.at(unit, area, first + k));
    const QByteArray wanted = hostBytes(area, values);
    QByteArray shown;
    GetRegisterData(0, area, addressText(area, first), unit, shown, count);
    if (shown != wanted)
        check(false, (Text() << "unit " << unit << ", area " << area << " from " << qPrintable(addressText(area, first))
                             << " on: " << hex(shown) << " instead of " << hex(wanted))
                         .GetString()
                         .c_str());
}

void Sequence::compareAll()
{
    for (int unit = 1; unit <= (m_settings.multiStation ? units : 1); ++unit) {
        for (int area : wholeTables)
            compare(unit, area, 0, addresses);
    }
}

void Sequence::rebuild()
{
    m_polled.clear();
    for (int n = 1 + pick(6); n > 0; --n) {
        VAR_ITEM item;
        item.area = static_cast<quint8>(pick(8));
        item.station = static_cast<quint8>(pickUnit());
        const int first = pick(addresses * scaleOf(item.area));
        item.addressText = addressText(item.area, first);
        item.count = 1 + pick(qMin(20, addresses * scaleOf(item.area) - first));
        m_polled << item;
    }
    note(Text() << "polls " << ReCreatReadVarList(&m_polled) << " requests");
}

void Sequence::queueWrite()
{
    const Shape &shape = shapes[pick(5)];
    const int item = ++m_items;
    Job &job = m_jobs[item];
    job.unit = pickUnit();
    job.area = shape.area;
    job.first = shape.first + shape.count * pick(shape.places);
    std::vector<int> &items = m_places[(job.unit * 8 + job.area) * 1000 + job.first];
    check(items.empty() || !m_jobs.count(items.back()) || isQueued(items.back()), "a write is gone and was not reported");
    for (int earlier : items) {
        if (!isQueued(earlier))
            m_jobs.erase(earlier);
    }
    items.erase(std::remove_if(items.begin(), items.end(), [this](int earlier) { return !m_jobs.count(earlier); }), items.end());
    items.push_back(item);
    for (int k = 0; k < shape.count; ++k) {
        job.values.push_back(pick(shape.area < InputRegisters ? 2 : 65536));
        if (m_failed)
            m_image.put(job.unit, job.area, job.first + k, job.values.back());
    }
    QByteArray value = hostBytes(job.area, job.values);
    const QString address = addressText(job.area, job.first);
    note(Text() << "item " << item << ": unit " << job.unit << ", area " << job.area << " from " << qPrintable(address)
                << " on becomes " << hex(value));
    SetRegisterData(QString(), job.area, address, job.unit, value, shape.count, item % 14, item);
}

void Sequence::queueRead()
{
    RW_VAR read;
    read.hostItem = ++m_items;
    read.hostId = m_items % 14;
    read.station = pickUnit();
    read.area = pick(8);
    const int scale = scaleOf(read.area), first = pick(addresses * scale);
    read.addressText = addressText(read.area, first);
    read.dataLength = 1 + pick(qMin(20, addresses * scale - first));
    Job &job = m_jobs[m_items];
    job.unit = read.station;
    job.area = getPlcReg(read.area);
    for (int k = 0; k < read.dataLength; ++k)
        job.unread.insert((first + k) / scale);
    note(Text() << "item " << m_items << ": reads unit " << job.unit << ", area " << read.area << " from "
                << qPrintable(read.addressText) << " on, " << read.dataLength);
    AddListOnceReadVar(&read, QueueMerged);
}

/// Also a foreign reply is stored: the driver judges replies by their length alone, the rest is the host's part.
void Sequence::store(const Asked &asked, const QByteArray &reply)
{
    for (int k = 0; k < asked.count; ++k) {
        m_image.put(asked.unit, asked.area, asked.first + k, valueIn(reply, asked.area, k));
        for (auto &job : m_jobs) {
            if (job.second.unit == asked.unit && job.second.area == asked.area)
                job.second.unread.erase(asked.first + k);
        }
    }
}

/// The frame that must follow the read half of a bit write: other bits stay as they were read.
QByteArray Sequence::writeHalf(QByteArray frame, const QByteArray &reply)
{
    const Job &job = m_jobs.at(PLC_driver.writeList.at(0).hostItem);
    const int mask = 1 << job.first % 16, was = valueIn(reply, Registers, 0);
    frame[int(wire::FunctionAt)] = wire::WriteSingleRegister;
    wire::putWord(frame.data() + wire::ValueAt, job.values[0] ? was | mask : was & ~mask);
    return frame;
}

QByteArray Sequence::spoilt(const QByteArray &reply, Reply kind)
{
    if (kind == Good)
        return reply;
    if (kind == WrongLength)
        return pick(3) ? reply.left(pick(2) ? int(wire::ExceptionReplyLength) : 1 + pick(reply.size() - 1)) : reply + reply;
    QByteArray foreign = reply;
    for (int i = wire::UnitAt; i < reply.size(); ++i)
        foreign[i] = static_cast<char>(~reply.at(i));
    return kind == Foreign ? foreign : QByteArray();
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
    const Asked asked(frame);
    const bool readHalf = PLC_driver.pendingList.size() == 2;
    const bool builtWrite = m_next.isEmpty() && PLC_driver.currentKind == OriginWrite;
    check(m_next.isEmpty() || frame == m_next, "another frame than the retry or the write half");
    check(report.notified == builtWrite, "itemNotify is called once for each write that is built");
    for (int k = 0; builtWrite && !m_failed && !asked.reads && k < asked.count; ++k)
        m_image.put(asked.unit, asked.area, asked.first + k, asked.written[static_cast<std::size_t>(k)]);
    const QByteArray right = kind == Unheard ? QByteArray(request->replyLength, '\0') : m_station.reply(frame);
    check(right.size() == request->replyLength, "the station's reply has another length than is expected");
    QByteArray reply = spoilt(right, kind);
    note(Text() << hex(frame) << " -> " << hex(reply));
    report = Report();
    const int status = DataCom(&reply, reply.size())->status;
    m_failed = reply.size() != right.size();
    if (m_failed)
        return judgeFailure(frame, reply, status);
    check(status == StatusDone, "a reply of the right length is not accepted");
    check(report.notified == 0 && report.outcome != WriteDoneGivenUp, "a good exchange is reported as given up");
    if (asked.reads)
        store(asked, reply);
    m_next = readHalf ? writeHalf(frame, reply) : QByteArray();
    if (report.done)
        judgeReport(asked);
}

void Sequence::judgeFailure(const QByteArray &frame, const QByteArray &reply, int status)
{
    if (++m_failures <= m_settings.retryLimit) {
        check(status == StatusRetry && report.notified + report.done == 0, "not to be tried again");
        m_next = frame;
        return;
    }
    m_failures = 0;
    m_next.clear();
    const int shift = report.notifiedId < StatusCodesOfClass ? report.notifiedId : 0;
    check(status == (reply.isEmpty() ? StatusLocalNoReply : StatusLocalWrongLength) + shift, "another status than given up");
    check(report.notified == 1 && report.done == (PLC_driver.currentKind != OriginPoll), "given up and not reported");
    check(report.done == 0 || report.outcome == WriteDoneGivenUp, "given up and reported as done");
    m_jobs.erase(report.item);
}

/// What is done is known, and was read or written as it was asked for.
void Sequence::judgeReport(const Asked &asked)
{
    const auto found = m_jobs.find(report.item);
    if (found == m_jobs.end())
        return check(false, "something unknown is reported");
    const Job job = found->second;
    m_jobs.erase(found);
    check(job.unread.empty(), "a one-shot read is done before all was read");
    const int first = isBitOfRegister(job.area) ? job.first : asked.first; // the last frame may be of any block
    for (int k = 0; !job.values.empty() && k < asked.count; ++k)
        check(m_station.at(job.unit, job.area, first + k) == job.values[static_cast<std::size_t>(first + k - job.first)],
              "a write is done, but the station has another value");
}

void Sequence::step(quint32 number)
{
    m_random.seed(number);
    const int unit = pickUnit(), area = pick(8), address = pick((addresses - 20) * scaleOf(area));
    switch (pick(16)) {
    case 0:
    case 1:
        return queueWrite();
    case 2:
        return queueRead();
    case 3:
        return compare(unit, area, address, 2 * pick(10));
    case 4:
        return pick(4) ? EnCommStation(1 + pick(units), pick(4) != 0) : rebuild();
    case 5: // the station changes by itself
        return m_station.put(unit, area, address, pick(area < InputRegisters ? 2 : 65536));
    default:
        return exchange(pick(4) ? Good : static_cast<Reply>(Lost + pick(4)));
    }
}

void Sequence::finish()
{
    EnCommStation(-1, 0);
    const Modbus_TCPIP_RTU_M &driver = PLC_driver;
    for (int i = 0; i < 3000 && !(driver.writeList.isEmpty() && driver.onceReadList.isEmpty() && driver.pendingList.isEmpty());
         ++i)
        exchange(Good);
    for (const auto &place : m_places) {
        check(!m_jobs.count(place.second.back()), "a write was not reported");
        for (int item : place.second)
            m_jobs.erase(item); // overwritten by a later one
    }
    check(m_jobs.empty(), "a one-shot read was not reported");
    for (int i = 0; i <= 2 * driver.readList.size(); ++i)
        exchange(Good);
    check(m_settings.cycleDone == 1, "a whole pass is not complete");
    for (const VAR_ITEM &item : m_polled) {
        const int first = StringAddressToInt(item.area, item.addressText);
        for (int k = first; k < first + item.count; ++k)
            check(m_image.at(item.station, item.area, k) == m_station.at(item.station, item.area, k),
                  "a polled value is not the station's");
    }
    compareAll();
}

/// What goes wrong, or an empty text.
std::string play(const Script &script, bool perStation, std::string *trace)
{
    Sequence sequence(perStation);
    for (quint32 number : script) {
        sequence.step(number);
        sequence.compareAll();
    }
    sequence.finish();
    *trace = sequence.trace;
    return sequence.failure;
}

/// Leaves out halves, quarters and so on down to single steps, as long as the script still fails.
Script shortened(Script script, bool perStation)
{
    std::string trace;
    for (std::size_t size = script.size(); (size /= 2) > 0;) {
        for (std::size_t from = 0; from + size <= script.size();) {
            Script shorter(script.begin(), script.begin() + static_cast<int>(from));
            shorter.insert(shorter.end(), script.begin() + static_cast<int>(from + size), script.end());
            if (play(shorter, perStation, &trace).empty())
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
    std::string trace;
    for (quint32 seed = 1; seed <= 150; ++seed) {
        std::minstd_rand random(seed);
        Script script(200);
        std::generate(script.begin(), script.end(), [&] { return static_cast<quint32>(random()); });
        if (play(script, GetParam(), &trace).empty())
            continue;
        script = shortened(script, GetParam());
        FAIL() << play(script, GetParam(), &trace) << "\nseed " << seed << ", " << script.size() << " steps are enough:\n"
               << trace;
    }
}

TEST_P(Sequences, NothingGrows)
{
    const char *const asked = std::getenv("MODBUS_LONG_RUN");
    const int warmUp = 10000, total = asked ? qMax(2 * warmUp, std::atoi(asked)) : 100000;
    Sequence sequence(GetParam());
    std::minstd_rand random(7);
    int longest = 0, values = 0;
    long pages = 0;
    while (sequence.exchanges < total && sequence.failure.empty()) {
        sequence.step(static_cast<quint32>(random()));
        sequence.trace.clear();
        longest = qMax(longest, PLC_driver.writeList.size() + PLC_driver.onceReadList.size());
        if (sequence.exchanges == warmUp) {
            values = PLC_driver.extendList.size();
            pages = residentPages();
        }
    }
    sequence.finish();
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

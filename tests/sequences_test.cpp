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

typedef testing::Message Line;
typedef std::vector<quint32> Script;

const int addresses = 40; ///< of each table that are written, read and polled; requests may reach a little further
const int units = 3;

/// Writes of the host. Two either have the same place or none in common, so a later one replaces all of an earlier one.
const struct Shape
{
    int area, first, places, count;
} shapes[] = {{Coils, 0, 12, 1}, {Coils, 12, 4, 3}, {Registers, 0, 2, 5}, {Pairs, 10, 2, 4}, {RegisterBit, 20 * 16, 48, 1}};

/// Bits or registers of one unit, an even number of them.
struct Range
{
    int unit, area, first, count;
    QString address;
};

/// A write or one-shot read that the host has asked for and that is not reported yet.
struct Job
{
    Range range;
    int place;               ///< of a write: the same for all that overwrite each other
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

Range rangeOf(int unit, int area, int first, int count)
{
    const QString bit = isBitOfRegister(area) ? QString::fromLatin1(".%1").arg(first % BitsOfRegister) : QString();
    return {unit, area, first, count, QString::number(first / scaleOf(area)) + bit};
}

std::ostream &operator<<(std::ostream &out, const Range &range)
{
    return out << "unit " << range.unit << ", area " << range.area << " from " << qPrintable(range.address) << " on, "
               << range.count;
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
    Sequence(bool perStation, bool traces) : m_traces(traces)
    {
        reloadDriver(&m_settings);
        m_settings.multiStation = perStation;
        m_settings.writeBlockSize = 4;
        m_settings.defaultStation = m_settings.retryLimit = 1;
        m_settings.writeMode = WriteModeToStation;
        RegistCallBackFuncIntf(writeDone, itemNotify);
    }

    void step(quint32 number)
    {
        m_random.seed(number);
        const Range range = pickRange();
        switch (pick(16)) {
        case 0:
        case 1:
            return queueWrite();
        case 2:
            return queueRead(range);
        case 3:
            return compare(range);
        case 4:
            return pick(4) ? EnCommStation(1 + pick(units), pick(4) != 0) : rebuild();
        case 5: // the station changes by itself
            return m_station.put(range.unit, range.area, range.first, pick(range.area < InputRegisters ? 2 : 65536));
        default:
            return exchange(pick(4) ? Good : static_cast<Reply>(Lost + pick(4)));
        }
    }

    void compareAll()
    {
        for (int unit = 1; unit <= (m_settings.multiStation ? units : 1); ++unit) {
            for (int area : {Coils, Inputs, InputRegisters, Registers})
                compare(rangeOf(unit, area, 0, addresses));
        }
    }

    /// Serves all that is queued, then polls a whole pass, with good replies.
    void finish()
    {
        EnCommStation(-1, 0);
        const Modbus_TCPIP_RTU_M &driver = PLC_driver;
        for (int i = 0;
             i < 3000 && !(driver.writeList.isEmpty() && driver.onceReadList.isEmpty() && driver.pendingList.isEmpty()); ++i)
            exchange(Good);
        for (const auto &job : m_jobs)
            check(!job.second.values.empty() && m_last[job.second.place] != job.first, "an item was not reported");
        for (int i = 0; i <= 2 * driver.readList.size(); ++i)
            exchange(Good);
        check(m_settings.cycleDone == 1, "a whole pass is not complete");
        for (const Range &range : m_polled) {
            for (int k = range.first; k < range.first + range.count; ++k)
                check(m_image.at(range.unit, range.area, k) == m_station.at(range.unit, range.area, k),
                      "a polled value is not the station's");
        }
        compareAll();
    }

    std::string failure; ///< empty while all is well
    std::string trace;
    int exchanges = 0;

private:
    enum Reply { Good, Lost, Unheard, WrongLength, Foreign };

    int pick(int below) { return static_cast<int>(m_random() / 64 % static_cast<unsigned>(below)); }
    int pickUnit() { return m_settings.multiStation ? 1 + pick(units) : 1; }
    Range pickRange()
    {
        const int area = pick(8);
        return rangeOf(pickUnit(), area, pick((addresses - 20) * scaleOf(area)), 2 + 2 * pick(10));
    }
    void note(const Line &what) { trace += what.GetString() + '\n'; }

    void check(bool holds, const char *what)
    {
        if (!holds && failure.empty())
            failure = what;
    }

    void compare(const Range &range)
    {
        std::vector<int> values;
        for (int k = 0; k < range.count; ++k)
            values.push_back(m_image.at(range.unit, range.area, range.first + k));
        const QByteArray wanted = hostBytes(range.area, values);
        QByteArray shown;
        GetRegisterData(0, range.area, range.address, range.unit, shown, range.count);
        if (shown != wanted && failure.empty())
            failure = (Line() << range << ": " << hex(shown) << " instead of " << hex(wanted)).GetString();
    }

    void rebuild()
    {
        m_polled.clear();
        QList<VAR_ITEM> items;
        for (int n = 1 + pick(6); n > 0; --n) {
            m_polled.push_back(pickRange());
            VAR_ITEM item;
            item.area = static_cast<quint8>(m_polled.back().area);
            item.station = static_cast<quint8>(m_polled.back().unit);
            item.addressText = m_polled.back().address;
            item.count = m_polled.back().count;
            items << item;
        }
        const int requests = ReCreatReadVarList(&items);
        if (m_traces)
            note(Line() << "polls " << requests << " requests");
    }

    void queueWrite()
    {
        const Shape &shape = shapes[pick(5)];
        const int item = ++m_items, first = shape.first + shape.count * pick(shape.places);
        const Range range = rangeOf(pickUnit(), shape.area, first, shape.count);
        const int place = (range.unit * 8 + range.area) * 1000 + first;
        check(!m_jobs.count(m_last[place]) || isQueued(m_last[place]), "a write is gone and was not reported");
        for (auto job = m_jobs.begin(); job != m_jobs.end();) // overwritten by a later one
            job = job->second.place == place && !isQueued(job->first) ? m_jobs.erase(job) : std::next(job);
        m_last[place] = item;
        std::vector<int> values;
        for (int k = 0; k < range.count; ++k) {
            values.push_back(pick(range.area < InputRegisters ? 2 : 65536));
            if (m_failed)
                m_image.put(range.unit, range.area, first + k, values.back());
        }
        m_jobs[item] = {range, place, values, {}};
        QByteArray bytes = hostBytes(range.area, values);
        if (m_traces)
            note(Line() << "item " << item << " writes " << range << ": " << hex(bytes));
        SetRegisterData(QString(), range.area, range.address, range.unit, bytes, range.count, item % 14, item);
    }

    void queueRead(const Range &range)
    {
        RW_VAR read = access(range.area, 0, range.count, "", range.unit);
        read.hostItem = ++m_items;
        read.hostId = m_items % 14;
        read.addressText = range.address;
        Job &job = m_jobs[m_items];
        job.range = range;
        for (int k = 0; k < range.count; ++k)
            job.unread.insert((range.first + k) / scaleOf(range.area));
        if (m_traces)
            note(Line() << "item " << m_items << " reads " << range);
        AddListOnceReadVar(&read, QueueMerged);
    }

    /// Also a foreign reply is stored: the driver judges replies by their length alone, the rest is the host's part.
    void store(const Asked &asked, const QByteArray &reply)
    {
        for (int k = 0; k < asked.count; ++k) {
            m_image.put(asked.unit, asked.area, asked.first + k, valueIn(reply, asked.area, k));
            for (auto &job : m_jobs) {
                if (job.second.range.unit == asked.unit && getPlcReg(job.second.range.area) == asked.area)
                    job.second.unread.erase(asked.first + k);
            }
        }
    }

    /// The frame that must follow the read half of a bit write: other bits stay as they were read.
    QByteArray writeHalf(QByteArray frame, const QByteArray &reply)
    {
        const Job &job = m_jobs.at(PLC_driver.writeList.at(0).hostItem);
        const int mask = 1 << job.range.first % 16, was = valueIn(reply, Registers, 0);
        frame[int(wire::FunctionAt)] = wire::WriteSingleRegister;
        wire::putWord(frame.data() + wire::ValueAt, job.values[0] ? was | mask : was & ~mask);
        return frame;
    }

    QByteArray spoilt(const QByteArray &reply, Reply kind)
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

    void exchange(Reply kind)
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
        if (m_traces)
            note(Line() << hex(frame) << " -> " << hex(reply));
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

    void judgeFailure(const QByteArray &frame, const QByteArray &reply, int status)
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
    void judgeReport(const Asked &asked)
    {
        const auto found = m_jobs.find(report.item);
        if (found == m_jobs.end())
            return check(false, "something unknown is reported");
        const Job job = found->second;
        m_jobs.erase(found);
        check(job.unread.empty(), "a one-shot read is done before all was read");
        const Range &range = job.range;
        const int first = isBitOfRegister(range.area) ? range.first : asked.first; // the last frame may be of any block
        for (int k = 0; !job.values.empty() && k < asked.count; ++k)
            check(m_station.at(range.unit, range.area, first + k) ==
                      job.values.at(static_cast<std::size_t>(first + k - range.first)),
                  "a write is done, but the station has another value");
    }

    CommSettings m_settings;
    MemoryStation m_station;
    Tables m_image;
    std::minstd_rand m_random;
    std::map<int, Job> m_jobs; ///< by item
    std::map<int, int> m_last; ///< the last item of each place, which must be reported
    std::vector<Range> m_polled;
    QByteArray m_next; ///< the frame that must come next; empty for any
    int m_items = 0, m_failures = 0;
    bool m_failed = false;
    const bool m_traces;
};

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
            Script shorter(script.begin(), script.begin() + static_cast<int>(from));
            shorter.insert(shorter.end(), script.begin() + static_cast<int>(from + size), script.end());
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
    std::string trace;
    for (quint32 seed = 1; seed <= 100; ++seed) {
        std::minstd_rand random(seed);
        Script script(200);
        std::generate(script.begin(), script.end(), [&] { return static_cast<quint32>(random()); });
        if (play(script, GetParam()).empty())
            continue;
        script = shortened(script, GetParam());
        FAIL() << play(script, GetParam(), &trace) << "\nseed " << seed << ", " << script.size() << " steps are enough:\n"
               << trace;
    }
}

TEST_P(Sequences, NothingGrows)
{
    const char *const asked = std::getenv("MODBUS_LONG_RUN");
    const int warmUp = 10000, total = asked ? qMax(2 * warmUp, std::atoi(asked)) : 50000;
    Sequence sequence(GetParam(), false);
    std::minstd_rand random(7);
    int longest = 0, values = 0;
    long pages = 0;
    while (sequence.exchanges < total && sequence.failure.empty()) {
        sequence.step(static_cast<quint32>(random()));
        longest = qMax(longest, PLC_driver.writeList.size() + PLC_driver.onceReadList.size());
        if (sequence.exchanges == warmUp) {
            sequence.compareAll(); // so that every record is made
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
    // 100 pages: the heap's fragments, at most 60 in ten million exchanges.
    EXPECT_TRUE(!MEASURES_MEMORY || now <= pages + 100) << now << " pages instead of " << pages;
}

INSTANTIATE_TEST_SUITE_P(Image, Sequences, testing::Bool(),
                         [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace

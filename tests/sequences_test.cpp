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
#include <sstream>

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

/// Bits or registers of one unit, an even number of them for pairs.
struct Range
{
    int unit, area, first, count;

    int scale() const { return isBitOfRegister(area) ? BitsOfRegister : 1; }
    std::string address() const
    {
        return std::to_string(first / scale()) + (scale() > 1 ? '.' + std::to_string(first % BitsOfRegister) : "");
    }
    bool isSamePlace(const Range &other) const { return unit == other.unit && area == other.area && first == other.first; }
};

/// As poll() reads items.
std::ostream &operator<<(std::ostream &out, const Range &range)
{
    return out << range.unit << '/' << range.area << ':' << range.address() << '*' << range.count;
}

/// A write or one-shot read that the host has asked for and that is not reported yet.
struct Job
{
    Range range;
    std::vector<int> values; ///< of a write
};

/// As the host has values: bits, or registers of which pairs have the high word first.
std::string hostBytes(int area, const std::vector<int> &values)
{
    QByteArray bytes;
    for (std::size_t k = 0; k < values.size(); ++k) {
        const int value = values[area == InputPairs || area == Pairs ? k ^ 1 : k];
        bytes.append(static_cast<char>(value));
        if (area >= InputRegisters)
            bytes.append(static_cast<char>(value >> 8));
    }
    return hex(bytes);
}

bool isQueued(int item)
{
    const QList<RW_VAR> &queue = PLC_driver.writeList;
    return std::any_of(queue.begin(), queue.end(), [=](const RW_VAR &entry) { return entry.hostItem == item; });
}

class Sequence
{
public:
    explicit Sequence(bool perStation, std::ostream *trace = nullptr) : m_trace(trace ? trace->rdbuf() : nullptr)
    {
        reloadDriver(&m_settings, perStation);
        m_settings.writeBlockSize = 4;
        m_settings.retryLimit = 1;
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
            return m_station.put(range.unit, range.area, range.first, pickValue(range.area));
        default:
            return exchange(pick(4) ? Good : static_cast<Reply>(Lost + pick(3)));
        }
    }

    void compareAll()
    {
        for (int unit = 1; unit <= (m_settings.multiStation ? units : 1); ++unit) {
            for (int area : {Coils, Inputs, InputRegisters, Registers})
                compare({unit, area, 0, addresses});
        }
    }

    /// Serves all that is queued, then polls a whole pass, with good replies.
    void finish()
    {
        EnCommStation(-1, 0);
        const auto &d = PLC_driver;
        for (int i = 0; i < 3000 && d.writeList.size() + d.onceReadList.size() + d.pendingList.size() > 0; ++i)
            exchange(Good);
        check(m_jobs.empty(), "an item was not reported");
        for (int i = 0; i <= 2 * d.readList.size(); ++i)
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
    int exchanges = 0;

private:
    enum Reply { Good, Lost, WrongLength, Foreign };

    int pick(int below) { return static_cast<int>(m_random() / 64 % static_cast<unsigned>(below)); }
    int pickUnit() { return m_settings.multiStation ? 1 + pick(units) : 1; }
    int pickValue(int area) { return pick(area < InputRegisters ? 2 : 65536); }
    Range pickRange()
    {
        Range range = {pickUnit(), pick(8), 0, 2 + 2 * pick(10)};
        range.first = pick((addresses - 20) * range.scale());
        return range;
    }

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
        const std::string wanted = hostBytes(range.area, values);
        const std::string shown = value(range.area, range.address(), range.count, range.unit);
        if (shown != wanted && failure.empty())
            failure = (Line() << range << ": " << shown << " instead of " << wanted).GetString();
    }

    void rebuild()
    {
        m_polled.clear();
        Line items;
        for (int n = 1 + pick(6); n > 0; --n) {
            m_polled.push_back(pickRange());
            items << m_polled.back() << ' ';
        }
        const int requests = poll(items.GetString());
        m_trace << "polls " << items << "in " << requests << " requests\n";
    }

    void queueWrite()
    {
        const Shape &shape = shapes[pick(5)];
        const Range range = {pickUnit(), shape.area, shape.first + shape.count * pick(shape.places), shape.count};
        const auto isOfPlace = [&](const Job &job) { return !job.values.empty() && job.range.isSamePlace(range); };
        Job made = {range, {}};
        for (int k = 0; k < range.count; ++k) {
            made.values.push_back(pickValue(range.area));
            if (m_failed) // what was entered is shown at once
                m_image.put(range.unit, range.area, range.first + k, made.values.back());
        }
        for (const auto &job : m_jobs)
            check(!isOfPlace(job.second) || isQueued(job.first), "a write is gone and was not reported");
        const std::string bytes = hostBytes(range.area, made.values);
        m_trace << "item " << ++m_items << " writes " << range << ": " << bytes << '\n';
        write(range.area, range.address(), range.count, bytes, m_items % 14, m_items, range.unit);
        for (auto job = m_jobs.begin(); job != m_jobs.end();) // overwritten
            job = isOfPlace(job->second) && !isQueued(job->first) ? m_jobs.erase(job) : std::next(job);
        m_jobs[m_items] = made;
    }

    void queueRead(const Range &range)
    {
        RW_VAR read = access(range.area, 0, range.count, "", range.unit);
        read.hostItem = ++m_items;
        read.hostId = m_items % 14;
        read.linkId = m_settings.linkId;
        read.addressText = QString::fromStdString(range.address());
        m_jobs[m_items].range = range;
        m_trace << "item " << m_items << " reads " << range << '\n';
        AddListOnceReadVar(&read, QueueMerged);
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

    QByteArray spoilt(QByteArray reply, Reply kind)
    {
        if (kind == WrongLength)
            return pick(3) ? reply.left(pick(2) ? int(wire::ExceptionReplyLength) : 1 + pick(reply.size() - 1)) : reply + reply;
        for (int i = wire::UnitAt; kind == Foreign && i < reply.size(); ++i)
            reply[i] = static_cast<char>(~reply.at(i));
        return kind == Good || kind == Foreign ? reply : QByteArray();
    }

    void exchange(Reply kind)
    {
        const Protocol *request = ComCommunication();
        check(request || m_next.isEmpty(), "the request in flight is gone");
        if (!request)
            return;
        ++exchanges;
        const QByteArray frame = request->frame;
        const Asked asked(frame);
        const int built = PLC_driver.pendingList.size(), id = PLC_driver.pendingList.last().var.hostId;
        const bool isNew = m_next.isEmpty(), isNewWrite = isNew && PLC_driver.currentKind == OriginWrite;
        check(isNew || frame == m_next, "another frame than the retry or the write half");
        check(!isNew || !Ethernetcontains(asked.unit), "the station is switched off");
        check(takeCalls() == (isNewWrite ? notified(id, built, queued()) : ""), "itemNotify follows each write that is built");
        for (std::size_t k = 0; isNewWrite && !m_failed && k < asked.written.size(); ++k)
            m_image.put(asked.unit, asked.area, asked.first + int(k), asked.written[k]);
        const QByteArray right = m_station.reply(frame);
        check(right.size() == request->replyLength, "the station's reply has another length than is expected");
        QByteArray reply = spoilt(right, kind);
        m_trace << hex(frame) << " -> " << hex(reply) << '\n';
        const int queuedBefore = queued(), status = DataCom(&reply, reply.size())->status;
        m_failed = reply.size() != right.size();
        m_next = m_failed ? frame : built == 2 ? writeHalf(frame, reply) : QByteArray();
        if (m_failed)
            return judgeFailure(status, reply.isEmpty() ? StatusLocalNoReply : StatusLocalWrongLength, queuedBefore);
        check(status == StatusDone, "a reply of the right length is not accepted");
        // Also a foreign reply is stored: the driver judges replies by their length alone, the rest is the host's part.
        for (int k = 0; asked.reads && k < asked.count; ++k)
            m_image.put(asked.unit, asked.area, asked.first + k, valueIn(reply, asked.area, k));
        const std::string calls = takeCalls();
        if (calls.empty())
            return;
        check(calls == reported(WriteDoneServed, queuedBefore), "another report than done");
        judgeReport(asked);
    }

    static int queued() { return PLC_driver.writeList.size() + PLC_driver.onceReadList.size(); }
    static std::string notified(int id, int pending, int queued)
    {
        return (Line() << "notify(" << id << " 1) " << pending << ' ' << queued).GetString();
    }
    /// Of the entry that the exchange ended.
    static std::string reported(int outcome, int queued)
    {
        const RW_VAR &entry = PLC_driver.result;
        return (Line() << "done(9 " << entry.hostId << ' ' << entry.hostItem << ' ' << outcome << ") 0 " << queued).GetString();
    }

    void judgeFailure(int status, int givenUp, int queuedBefore)
    {
        const std::string calls = takeCalls();
        if (++m_failures <= m_settings.retryLimit)
            return check(status == StatusRetry && calls.empty(), "not to be tried again");
        m_failures = 0;
        m_next.clear();
        const int id = PLC_driver.result.hostId, isPoll = PLC_driver.currentKind == OriginPoll;
        check(status == givenUp + (id < StatusCodesOfClass ? id : 0), "another status than given up");
        check(calls == (isPoll ? notified(id, 0, queuedBefore)
                               : reported(WriteDoneGivenUp, queuedBefore) + ' ' + notified(id, 0, queuedBefore - 1)),
              "another report than given up, ahead of dropping the rest of the item");
        m_jobs.erase(PLC_driver.result.hostItem);
    }

    /// What is reported as done is known, and was written as it was asked for.
    void judgeReport(const Asked &asked)
    {
        const auto found = m_jobs.find(PLC_driver.result.hostItem);
        if (found == m_jobs.end())
            return check(false, "something unknown is reported");
        const Job job = found->second;
        m_jobs.erase(found);
        const int first = isBitOfRegister(job.range.area) ? job.range.first : asked.first; // the last frame's block
        for (int k = 0; !job.values.empty() && k < asked.count; ++k)
            check(m_station.at(asked.unit, job.range.area, first + k) ==
                      job.values.at(static_cast<std::size_t>(first + k - job.range.first)),
                  "a write is done, but the station has another value");
    }

    std::ostream m_trace;
    CommSettings m_settings;
    MemoryStation m_station;
    Tables m_image;
    std::minstd_rand m_random;
    std::map<int, Job> m_jobs; ///< by item
    std::vector<Range> m_polled;
    QByteArray m_next; ///< the frame that must come next; empty for any
    int m_items = 0, m_failures = 0;
    bool m_failed = false;
};

/// What goes wrong, or an empty text.
std::string play(const Script &script, bool perStation, std::ostream *trace = nullptr)
{
    Sequence sequence(perStation, trace);
    for (quint32 number : script) {
        sequence.step(number);
        sequence.compareAll();
    }
    sequence.finish();
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
    std::ostringstream trace;
    for (quint32 seed = 1; seed <= 100; ++seed) {
        std::minstd_rand random(seed);
        Script script(200);
        std::generate(script.begin(), script.end(), [&] { return static_cast<quint32>(random()); });
        if (play(script, GetParam()).empty())
            continue;
        script = shortened(script, GetParam());
        FAIL() << play(script, GetParam(), &trace) << "\nseed " << seed << ", " << script.size() << " steps are enough:\n"
               << trace.str();
    }
}

TEST_P(Sequences, NothingGrows)
{
    const char *const asked = std::getenv("MODBUS_LONG_RUN");
    const int warmUp = 10000, total = asked ? qMax(2 * warmUp, std::atoi(asked)) : 50000;
    Sequence sequence(GetParam());
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

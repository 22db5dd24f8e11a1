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
#include <random>
#include <sstream>
#include <stdexcept>

using namespace modbus_driver;

namespace {

typedef testing::Message Line;
typedef std::vector<quint32> Script;

const int addresses = 40; ///< of each table that are written, read and polled; requests may reach a little further
const int units = 3;

/// Bits or registers of one unit, as a host names them.
RW_VAR place(int unit, int area, int first, int count)
{
    RW_VAR var = access(area, first, count, "", unit);
    const QString bit = QString::fromLatin1(".%1").arg(first % BitsOfRegister);
    var.addressText = isBitOfRegister(area) ? QString::number(first / BitsOfRegister) + bit : QString::number(first);
    return var;
}

/// Bit or register k of the host's bytes; pairs have the low word first.
int hostValue(int area, const QByteArray &data, int k)
{
    if (area < InputRegisters)
        return data.at(k);
    const int at = 2 * (area == InputPairs || area == Pairs ? k ^ 1 : k);
    return static_cast<quint8>(data.at(at)) | static_cast<quint8>(data.at(at + 1)) << 8;
}

bool samePlace(const RW_VAR &a, const RW_VAR &b)
{
    return a.station == b.station && a.area == b.area && a.startAddress == b.startAddress && a.dataLength == b.dataLength;
}

bool sameItem(const RW_VAR &a, const RW_VAR &b)
{
    return a.hostId == b.hostId && a.hostItem == b.hostItem;
}

bool sameEntry(const RW_VAR &a, const RW_VAR &b)
{
    return samePlace(a, b) && sameItem(a, b) && a.data == b.data;
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
        const RW_VAR var = pickVar();
        switch (pick(16)) {
        case 0:
            return enter(var);
        case 1:
            return queueRead(var);
        case 2:
            return compare(var);
        case 3:
            return pick(4) ? EnCommStation(1 + pick(units), pick(4) != 0) : rebuild();
        case 4: // the station changes by itself
            return m_station.put(var.station, var.area, var.startAddress, pick(var.area < InputRegisters ? 2 : 65536));
        case 5: // the host has seen the pass, and may change links and stations
            m_pass = m_settings.cycleDone = 0;
            m_settings.linkId = 2 + !pick(4);
            m_settings.defaultStation = 1 + pick(units);
            return;
        default:
            return exchange(pick(4) ? Good : static_cast<Reply>(Lost + pick(3)));
        }
    }

    /// The image, the queues and the counters against those that are kept here.
    void compareAll()
    {
        for (int table = 0; table < (m_settings.multiStation ? 4 * units : 4); ++table)
            compare(place(1 + table / 4, table % 4 < 2 ? table % 4 : 2 + table % 4, 0, addresses));
        const auto &d = PLC_driver;
        check(m_settings.cycleDone == m_pass && d.cyclicDone == m_done, "a pass is counted otherwise");
        check(m_settings.failCount == m_failures, "failures are counted otherwise");
        for (int kind : {OriginPoll, OriginWrite, OriginOnceRead}) {
            const QList<RW_VAR> &is = kind == OriginPoll ? d.readList : kind == OriginWrite ? d.writeList : d.onceReadList;
            const QList<RW_VAR> &wanted = m_queues[kind];
            if (!std::equal(is.begin(), is.end(), wanted.begin(), wanted.end(), sameEntry))
                fail(Line() << "queued is " << listed(is) << " instead of " << listed(wanted));
        }
    }

    /// Serves all that is queued, then polls a whole pass, with good replies.
    void finish()
    {
        EnCommStation(-1, 0);
        m_settings.linkId = 2;
        rebuild();
        for (int i = 0; i < 3000 && (queued() > 0 || !m_next.isEmpty()); ++i)
            exchange(Good);
        for (int i = 0; i <= 2 * m_queues[OriginPoll].size(); ++i)
            exchange(Good);
        check(queued() == 0, "an entry stays in its queue");
        check(m_settings.cycleDone == 1, "a whole pass is not complete");
        for (const RW_VAR &var : m_polled) {
            for (int k = var.startAddress; k < var.startAddress + var.dataLength; ++k)
                check(m_image.at(imageOf(var.station), var.area, k) == m_station.at(var.station, var.area, k),
                      "a polled value is not the station's");
        }
        compareAll();
    }

    int exchanges = 0;

private:
    enum Reply { Good, Lost, WrongLength, Foreign };

    int pick(int below) { return static_cast<int>(m_random() / 64 % static_cast<unsigned>(below)); }
    int imageOf(int unit) const { return m_settings.multiStation ? unit : 0; }
    /// As the host asks for it; an even number of registers, for pairs.
    RW_VAR pickVar()
    {
        const int area = pick(8), unit = m_settings.multiStation ? 1 + pick(units) : m_settings.defaultStation;
        const int first = pick((addresses - 20) * (isBitOfRegister(area) ? BitsOfRegister : 1));
        RW_VAR var = by(3 * pick(5), place(unit, area, first, 2 + 2 * pick(10)), AccessRead, m_settings.linkId);
        var.hostItem = pick(3);
        return var;
    }

    [[noreturn]] static void fail(const Line &what) { throw std::runtime_error(what.GetString()); }
    static void check(bool holds, const char *what)
    {
        if (!holds)
            fail(Line() << what);
    }

    void compare(const RW_VAR &var)
    {
        const QByteArray shown = bytes(value(var.area, qPrintable(var.addressText), var.dataLength, var.station).c_str());
        check(shown.size() == var.dataLength * (var.area < InputRegisters ? 1 : 2), "another number of bytes is shown");
        for (int k = 0; k < var.dataLength; ++k) {
            const int is = hostValue(var.area, shown, k),
                      wanted = m_image.at(imageOf(var.station), var.area, var.startAddress + k);
            if (is != wanted)
                fail(Line() << listed(var) << ", element " << k << ": " << is << " instead of " << wanted);
        }
    }

    void rebuild()
    {
        Line items;
        m_polled.clear();
        for (int n = 1 + pick(6); n > 0; --n) {
            const RW_VAR var = pickVar();
            items << ' ' << var.station << '/' << var.area << ':' << qPrintable(var.addressText) << '*' << var.dataLength;
            m_polled << var;
        }
        m_trace << "polls" << items << '\n';
        poll(items.GetString());
        m_queues[OriginPoll] = PLC_driver.readList;
        m_done = m_pass = 0;
    }

    /// What the host enters is sent, or kept in the image only.
    void enter(RW_VAR var)
    {
        var.area = var.area < InputBit ? Coils : var.area | 1;
        const bool isSent = pick(4) != 0;
        const int count = var.area == RegisterBit && !isSent ? 1 : 2 + 2 * pick(3);
        const int size = var.area < InputRegisters ? 1 : 2, block = !isSent ? count : size == 1 ? 1 : m_settings.writeBlockSize;
        QByteArray data;
        while (data.size() < size * count)
            data.append(static_cast<char>(pick(size == 1 ? 2 : 256)));
        m_settings.writeMode = isSent ? int(WriteModeToStation) : 0;
        m_trace << "enters " << listed(var) << ": " << hex(data) << (isSent ? "\n" : ", not sent\n");
        write(var.area, qPrintable(var.addressText), count, hex(data), var.hostId, var.hostItem, var.station);
        for (; !data.isEmpty(); var.startAddress += block) {
            var.data = data.left(size * block);
            data.remove(0, var.data.size());
            var.dataLength = var.data.size() / size;
            if (isSent)
                merge(var);
            if (!isSent || m_failed)
                show(var);
        }
    }

    void merge(const RW_VAR &made)
    {
        QList<RW_VAR> &queue = m_queues[OriginWrite];
        for (int i = 1; i < queue.size(); ++i) { // never the head
            if (!samePlace(queue.at(i), made))
                continue;
            queue[i] = made;
            return;
        }
        queue.append(made);
    }

    void show(const RW_VAR &made)
    {
        for (int k = 0; k < made.dataLength; ++k)
            m_image.put(imageOf(made.station), made.area, made.startAddress + k, hostValue(made.area, made.data, k));
    }

    void queueRead(RW_VAR var)
    {
        RW_VAR asked = var;
        AddListOnceReadVar(&asked, QueueMerged);
        m_trace << "reads " << listed(var) << '\n';
        const int step = isBitArea(var.area) ? 8 : 1, size = isBitOfRegister(var.area) ? BitsOfRegister : step;
        const int end = (var.startAddress + var.dataLength - 1) / size + 1;
        QList<RW_VAR> &queue = m_queues[OriginOnceRead];
        var.area = requestArea(var.area);
        for (int at = var.startAddress / size; at < end; at += m_settings.writeBlockSize) {
            var.startAddress = step * at;
            var.dataLength = qMin(m_settings.writeBlockSize, end - at);
            if (std::none_of(queue.begin(), queue.end(), [&](const RW_VAR &other) { return sameEntry(other, var); }))
                queue.append(var);
        }
    }

    /// Of the writes, the one-shot reads and the poll list, the first entry whose station is switched on becomes the
    /// head. A queue that was looked at five times waits until the poll list was.
    bool choose()
    {
        for (int kind : {OriginWrite, OriginOnceRead, OriginPoll}) {
            QList<RW_VAR> &queue = m_queues[m_kind = kind];
            if (kind == OriginPoll)
                m_bursts[OriginWrite] = m_bursts[OriginOnceRead] = 0;
            else if (queue.isEmpty() || ++m_bursts[kind] > 5)
                continue;
            for (int n = queue.size(); n > 0; --n) {
                if (!Ethernetcontains(queue.at(0).station))
                    return true;
                queue.append(queue.takeFirst());
            }
        }
        m_pass = 1;
        return false;
    }

    /// The frame that must follow the read half of a bit write: other bits stay as they were read.
    QByteArray writeHalf(QByteArray frame, const QByteArray &reply)
    {
        const int mask = 1 << m_entry.startAddress % 16, was = valueIn(reply, Registers, 0);
        frame[int(wire::FunctionAt)] = wire::WriteSingleRegister;
        wire::putWord(frame.data() + wire::ValueAt, m_entry.data.at(0) ? was | mask : was & ~mask);
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
        const bool isNew = m_next.isEmpty(), isAny = !isNew || choose();
        const Protocol *request = ComCommunication();
        check((request != nullptr) == isAny, "there is a request although none must be sent, or none although one must be");
        if (!request)
            return check(DataCom(nullptr, 0)->status == StatusDone, "a reply to nothing is not harmless");
        ++exchanges;
        if (isNew)
            m_entry = m_queues[m_kind].at(0);
        const QByteArray frame = request->frame;
        const Asked asked(frame);
        const bool isWrite = m_kind == OriginWrite, isHalf = isWrite && asked.reads, isBit = m_entry.area == RegisterBit;
        check(isNew || frame == m_next, "another frame than the retry or the write half");
        check(asked.unit == m_entry.station && asked.area == requestArea(m_entry.area) &&
                  asked.first == m_entry.startAddress / (isBit ? 16 : 1) &&
                  asked.count == m_entry.dataLength * (asked.reads && isBitArea(m_entry.area) ? 8 : 1),
              "something else is asked for than the entry whose turn it is");
        check(takeCalls() == (isNew && isWrite ? notified(m_entry, PLC_driver.pendingList.size()) : ""),
              "itemNotify follows each write that is built");
        if (isNew && isWrite && !isBit && !m_failed)
            show(m_entry);
        const QByteArray right = m_station.reply(frame);
        check(right.size() == request->replyLength, "the station's reply has another length than is expected");
        QByteArray reply = spoilt(right, kind);
        m_trace << hex(frame) << " -> " << hex(reply) << '\n';
        const int status = DataCom(&reply, reply.size())->status;
        m_failed = reply.size() != right.size();
        const bool isRemote = m_entry.linkId != m_settings.linkId;
        // Also a foreign reply is stored: the driver judges replies by their length alone, the rest is the host's part.
        for (int k = 0; !m_failed && asked.reads && (isHalf || !isRemote) && k < asked.count; ++k)
            m_image.put(imageOf(asked.unit), asked.area, asked.first + k, valueIn(reply, asked.area, k));
        if (m_failed)
            m_pass = m_done = 0;
        if (m_failed ? ++m_failures <= m_settings.retryLimit : isHalf) {
            m_next = m_failed ? frame : writeHalf(frame, reply);
            check(status == (m_failed ? StatusRetry : StatusDone) && takeCalls().empty(), "the access does not go on");
            return;
        }
        m_next.clear();
        const int shift = m_failed && m_entry.hostId < StatusCodesOfClass ? m_entry.hostId : 0;
        const int local = !m_failed ? StatusDone : reply.isEmpty() ? StatusLocalNoReply : StatusLocalWrongLength;
        const int remote = !m_failed ? StatusRemoteAccepted : reply.isEmpty() ? StatusRemoteNoReply : StatusRemoteWrongLength;
        check(status == shift + (isRemote ? remote : local), "another status than the exchange has");
        end(isRemote);
    }

    int queued() const { return m_queues[OriginWrite].size() + m_queues[OriginOnceRead].size(); }
    std::string notified(const RW_VAR &entry, int pending)
    {
        return (Line() << "notify(" << entry.hostId << " 1) " << pending << ' ' << queued()).GetString();
    }

    /// The head of the queue is done or given up.
    void end(bool isRemote)
    {
        QList<RW_VAR> &queue = m_queues[m_kind];
        const bool isPoll = m_kind == OriginPoll, isReported = !isPoll && !(isRemote && m_kind == OriginOnceRead);
        Line calls;
        const RW_VAR head = queue.first();
        const auto isOfItem = [&](const RW_VAR &other) { return sameItem(head, other); };
        if (isReported && (m_failed || std::none_of(queue.begin() + 1, queue.end(), isOfItem)))
            calls << "done(9 " << head.hostId << ' ' << head.hostItem << (m_failed ? " 2) 0 " : " 1) 0 ") << queued();
        queue.removeFirst();
        if (isPoll)
            queue.append(head);
        if (m_failed) {
            m_failures = 0;
            calls << (isReported ? " " : "") << notified(head, 0);
            const auto isDropped = [&](const RW_VAR &other) {
                return !isPoll && isOfItem(other) && (!m_settings.multiStation || other.station == head.station);
            };
            queue.erase(std::remove_if(queue.begin(), queue.end(), isDropped), queue.end());
        } else if (m_pass == 0 && !isRemote && ++m_done > m_queues[OriginPoll].size()) {
            m_done = 0;
            m_pass = 1;
        }
        check(takeCalls() == calls.GetString(), "other call-backs than the access has, or in another order");
        check(samePlace(PLC_driver.result, head) && sameItem(PLC_driver.result, head), "another access is returned");
        for (int k = 0; k < m_entry.dataLength && m_kind == OriginWrite && !m_failed; ++k)
            check(m_station.at(head.station, head.area, head.startAddress + k) == hostValue(head.area, head.data, k),
                  "a write is done, but the station has another value");
    }

    std::ostream m_trace;
    CommSettings m_settings;
    MemoryStation m_station;
    Tables m_image;
    QList<RW_VAR> m_queues[3]; ///< as the driver's must be; this and the next by RequestOrigin
    int m_bursts[3] = {};
    std::minstd_rand m_random;
    QList<RW_VAR> m_polled;
    RW_VAR m_entry;    ///< that is in flight
    QByteArray m_next; ///< the frame that must come next; empty for any
    int m_kind = OriginNone, m_failures = 0, m_done = 0, m_pass = 0;
    bool m_failed = false;
};

/// What goes wrong, or an empty text.
std::string play(const Script &script, bool perStation, std::ostream *trace = nullptr)
{
    Sequence sequence(perStation, trace);
    try {
        for (quint32 number : script) {
            sequence.step(number);
            sequence.compareAll();
        }
        sequence.finish();
        return std::string();
    } catch (const std::runtime_error &error) {
        return error.what();
    }
}

/// Without the steps that it fails without, too.
Script shortened(Script script, bool perStation)
{
    for (std::size_t i = script.size(); i-- > 0;) {
        Script shorter = script;
        shorter.erase(shorter.begin() + static_cast<int>(i));
        if (!play(shorter, perStation).empty())
            script.swap(shorter);
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
    int values = 0;
    long pages = 0;
    while (sequence.exchanges < total) {
        sequence.step(static_cast<quint32>(random()));
        if (sequence.exchanges == warmUp) {
            sequence.compareAll(); // so that every record is made
            values = PLC_driver.extendList.size();
            pages = residentPages();
        }
    }
    sequence.finish();
    const long now = residentPages();
    std::printf("%d exchanges, %ld resident pages, %ld after the first %d\n", sequence.exchanges, now, pages, warmUp);
    EXPECT_EQ(PLC_driver.extendList.size(), values);
    // 100 pages: the heap's fragments, at most 60 in ten million exchanges.
    EXPECT_TRUE(!MEASURES_MEMORY || now <= pages + 100) << now << " pages instead of " << pages;
}

INSTANTIATE_TEST_SUITE_P(Image, Sequences, testing::Bool(),
                         [](const auto &mode) { return mode.param ? "PerStation" : "Shared"; });

} // namespace

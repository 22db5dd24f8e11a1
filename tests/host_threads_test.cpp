// SPDX-License-Identifier: MIT
// The host's communication thread polls and writes while another thread takes snapshots and queues writes. Under
// ThreadSanitizer this shows races.
#include "host_words.h"
#include "loopback_listener.h"
#include "memory_station.h"

#include "../driver/base/modbus_wire.h"
#include "../host/explain/panel_state.h"
#include "../host/explain/poll_list.h"
#include "../host/explain/writes.h"
#include "../host/link/communication_loop.h"

#include <future>

using namespace modbus_driver::wire;

namespace {

const int rounds = 200;
CommSettings settings; // the driver keeps a pointer to it

void itemNotify(QList<RW_VAR> *, int, int) {}

TEST(HostThreads, SnapshotsAndWritesMeetTheCommunication)
{
    QString error;
    const auto driver = loadDriver(QStringLiteral(DRIVER_PATH), &error);
    ASSERT_TRUE(driver) << qPrintable(error);
    const QList<Variable> polled = variables("1/hr:10 2/coil:8*3 1/hr:40");
    settings = pollSettings(polled, 100);
    settings.writeMode = 2; // to the station
    driver->setComInfo(&settings);
    driver->registerCallBacks(&CommunicationLoop::writeDone, &itemNotify);
    driver->flashLocalRegister(0, 0, 0);
    pollVariables(*driver, polled);

    const LoopbackListener listener;
    const auto station = std::async(std::launch::async, [&listener] {
        MemoryStation values;
        listener.serve([&values](const QByteArray &request) {
            QByteArray reply = values.reply(request);
            putWord(reply.data() + LengthAt, reply.size() - LengthFieldEnd);
            return reply;
        });
    });
    ConnectionOptions connection;
    connection.host = QStringLiteral("127.0.0.1");
    connection.port = listener.port();
    connection.timeoutMs = 60000;
    const LinkTrace trace;
    PanelState state(*driver, polled);
    CommunicationLoop loop(*driver, settings, connection, LoopOptions(), trace, state);
    loop.start();
    PanelSnapshot now = state.snapshot();
    for (int round = 1; round <= rounds && !now.isEnded; ++round) {
        QList<WriteItem> items = {WriteItem()};
        items[0].variable = polled.at(0);
        items[0].value = QByteArray(1, static_cast<char>(round)).append('\0');
        queueWrites(*driver, settings.writeBlockSize, &items);
        const int passes = now.passes;
        state.waitForNews(passes, now.itemsEnded(), 1000);
        now = state.snapshot();
        for (const ValueState &value : now.values)
            EXPECT_EQ(value.failure(), QString());
    }
    for (int passes = now.passes; now.passes < passes + 3 && !now.isEnded; now = state.snapshot())
        state.waitForNews(now.passes, now.itemsEnded(), 1000);
    loop.stop();
    EXPECT_EQ(now.values.at(0).value(), QByteArray(1, static_cast<char>(rounds)).append('\0'));
    EXPECT_EQ(now.units.at(1).timeOuts, 0);
}

} // namespace

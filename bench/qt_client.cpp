// SPDX-License-Identifier: MIT
// qt-client PORT REGISTERS READS PASSES: reads registers from unit 1 at 127.0.0.1 with Qt's own client class, in passes
// of so many reads at different addresses, and prints the CPU time as JSON. What scripts/bench holds modbus-panel against.
#include "cpu_time.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QVariant>
#include <QtSerialBus/QModbusDataUnit>
#include <QtSerialBus/QModbusReply>
#include <QtSerialBus/QModbusTcpClient>

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

class Poller : public QObject
{
public:
    Poller(int port, int registers, int reads, int passes)
        : m_registers(registers), m_reads(reads), m_left(reads * passes), m_exchanges(m_left)
    {
        m_client.setConnectionParameter(QModbusDevice::NetworkAddressParameter, QStringLiteral("127.0.0.1"));
        m_client.setConnectionParameter(QModbusDevice::NetworkPortParameter, port);
        connect(&m_client, &QModbusClient::stateChanged, this, [this](QModbusDevice::State state) {
            if (state == QModbusDevice::ConnectedState) {
                m_cpuAtStart = bench::cpuSeconds();
                m_start = std::chrono::steady_clock::now();
                readNext();
            }
        });
        connect(&m_client, &QModbusClient::errorOccurred, this,
                [](QModbusDevice::Error) { end(EXIT_FAILURE); });
        m_client.connectDevice();
    }

private:
    static void end(int code) { QCoreApplication::exit(code); }

    void readNext()
    {
        if (m_left-- == 0)
            return print();
        const QModbusDataUnit unit(QModbusDataUnit::HoldingRegisters, m_left % m_reads * m_registers,
                                   static_cast<quint16>(m_registers));
        QModbusReply *reply = m_client.sendReadRequest(unit, 1);
        if (!reply)
            return end(EXIT_FAILURE);
        connect(reply, &QModbusReply::finished, this, [this, reply] { take(reply); });
    }

    void take(QModbusReply *reply)
    {
        if (reply->error() != QModbusDevice::NoError ||
            static_cast<int>(reply->result().valueCount()) != m_registers)
            return end(EXIT_FAILURE);
        reply->deleteLater();
        readNext();
    }

    void print()
    {
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - m_start;
        std::printf("{\"exchanges_per_second\": %.0f, \"cpu_microseconds\": %.3f}\n",
                    m_exchanges / wall.count(), (bench::cpuSeconds() - m_cpuAtStart) * 1e6 / m_exchanges);
        end(EXIT_SUCCESS);
    }

    QModbusTcpClient m_client;
    const int m_registers, m_reads;
    int m_left; ///< reads
    const int m_exchanges;
    double m_cpuAtStart = 0;
    std::chrono::steady_clock::time_point m_start;
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc != 5) {
        std::fputs("usage: qt-client PORT REGISTERS READS PASSES\n", stderr);
        return EXIT_FAILURE;
    }
    const Poller poller(std::atoi(argv[1]), std::atoi(argv[2]), std::atoi(argv[3]), std::atoi(argv[4]));
    const int code = QCoreApplication::exec();
    if (code != EXIT_SUCCESS)
        std::fprintf(stderr, "qt-client: no good reply from 127.0.0.1:%s\n", argv[1]);
    return code;
}

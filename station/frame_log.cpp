// SPDX-License-Identifier: MIT
#include "frame_log.h"

#include "value_text.h"

#include <QtCore/QDateTime>

namespace {
void printFrame(LineOutput &output, char direction, const QByteArray &bytes)
{
    const QByteArray time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz")).toLatin1();
    output.write(direction + (' ' + time) + "\n000000 " + bytes.toHex(' ') + '\n');
}
} // namespace

void printWrites(SimulatedStation &station, LineOutput &output)
{
    QObject::connect(
        &station, &SimulatedStation::written, [&output](int unit, const QModbusDataUnit &written) {
            output.write("written " +
                         valueText({unit, written.registerType(), written.startAddress(), written.values()})
                             .toLatin1());
        });
}

void printFrames(SimulatedStation &station, LineOutput &output)
{
    output.write(
        "# text2pcap -D -t '%Y-%m-%d %H:%M:%S.%f' -4 127.0.0.1,127.0.0.1 -T 40000,502 TRACE FILE.pcap");
    QObject::connect(&station, &SimulatedStation::received,
                     [&output](const QByteArray &frame) { printFrame(output, 'I', frame); });
    QObject::connect(&station, &SimulatedStation::sent,
                     [&output](const QByteArray &bytes) { printFrame(output, 'O', bytes); });
}

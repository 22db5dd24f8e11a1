// SPDX-License-Identifier: MIT
// The smallest complete host: polls one holding register of unit 1 and prints it.
//   smallest-host ADDRESS PORT REGISTER PASSES
#include <modbus_tcpip_rtu_m.h>

#include <QtCore/QDeadlineTimer>
#include <QtCore/QThread>
#include <QtCore/QtEndian>
#include <QtNetwork/QTcpSocket>

#include <cstdio>
#include <cstdlib>

using namespace modbus_driver;

namespace {

const int patience = 1000; // ms, for a connection and for a whole reply

// The connection to the station. Any failure drops it: a late reply must not be taken for the next one, since
// every request carries the same transaction identifier.
class Link
{
public:
    Link(const QString &address, quint16 port) : address(address), port(port) {}

    // Sends the request. The whole reply; nothing when none is due or none came.
    QByteArray exchange(const Protocol &request)
    {
        if (!connected() || socket.write(request.frame.constData(), request.frameLength) < 0)
            return dropped();
        if (request.replyLength == 0)
            return socket.waitForBytesWritten(patience) ? QByteArray() : dropped();
        const QDeadlineTimer deadline(patience);
        const QByteArray head = receive(6, deadline);
        if (head.isEmpty() || head.mid(2, 2) != QByteArray(2, '\0'))
            return dropped();
        const int rest = qFromBigEndian<quint16>(head.constData() + 4);
        const QByteArray body = rest < 2 || rest > 254 ? QByteArray() : receive(rest, deadline);
        return body.isEmpty() ? dropped() : head + body;
    }

private:
    bool connected()
    {
        if (socket.state() == QAbstractSocket::ConnectedState)
            return true;
        socket.abort();
        socket.connectToHost(address, port);
        return socket.waitForConnected(patience);
    }

    // Exactly `size` bytes, or nothing when they did not come in time.
    QByteArray receive(int size, const QDeadlineTimer &deadline)
    {
        while (socket.bytesAvailable() < size) {
            if (!socket.waitForReadyRead(int(deadline.remainingTime())))
                return QByteArray();
        }
        return socket.read(size);
    }

    QByteArray dropped()
    {
        socket.abort();
        return QByteArray();
    }

    QString address;
    quint16 port;
    QTcpSocket socket;
};

} // namespace

int main(int argc, char *argv[])
{
    VAR_ITEM item;
    bool isRegister = false;
    if (argc == 5)
        item.addressText = QString::number(QString::fromLatin1(argv[3]).toUShort(&isRegister));
    if (!isRegister) {
        std::fprintf(stderr, "usage: smallest-host ADDRESS PORT REGISTER PASSES\n");
        return EXIT_FAILURE;
    }

    static CommSettings settings; // the driver keeps a pointer to it
    settings.defaultStation = 1;
    settings.writeBlockSize = 100;
    settings.retryLimit = 2;
    SetComInfo(&settings);

    item.area = AreaHoldingRegisters;
    item.count = 1;
    QList<VAR_ITEM> items = {item};
    ReCreatReadVarList(&items);

    Link link(QString::fromLatin1(argv[1]), quint16(std::atoi(argv[2])));
    int good = 0;
    // [the host's loop]
    for (int pass = std::atoi(argv[4]); pass > 0; --pass) {
        Protocol *request = ComCommunication(); // what to send next; null: nothing
        if (request) {
            QByteArray reply = link.exchange(*request); // empty: no reply came in time
            RW_VAR *done = DataCom(&reply, reply.size());
            if (done->status == StatusDone) // 0: is asked again; else given up
                ++good;
            QByteArray value; // what the last good reply said
            GetRegisterData(0, item.area, item.addressText, item.station, value, item.count);
            std::printf("status %d, value %d\n", done->status, qFromLittleEndian<quint16>(value.constData()));
        }
        QThread::msleep(100);
    }
    // [end of the loop]
    return good > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

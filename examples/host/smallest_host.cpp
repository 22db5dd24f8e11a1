// SPDX-License-Identifier: MIT
// The smallest complete host: polls one holding register of unit 1 and prints it.
//   smallest-host ADDRESS PORT REGISTER PASSES
#include "link.h"

#include <QtCore/QThread>

#include <cstdio>
#include <cstdlib>

using namespace modbus_driver;

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
            // Two codes mean success. 0: the request will be sent again; any other code: it was given up.
            if (done->status == StatusDone || done->status == StatusRemoteAccepted) {
                settings.failCount = 0; // else failures add up over all requests
                ++good;
            }
            QByteArray value; // as it was read last; 0 before that
            GetRegisterData(0, item.area, item.addressText, item.station, value, item.count);
            std::printf("status %d, value %d\n", done->status, qFromLittleEndian<quint16>(value.constData()));
        }
        QThread::msleep(100);
    }
    // [end of the loop]
    return good > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

// SPDX-License-Identifier: MIT
// A host that has nothing but the built library's file: every name by symbol look-up, then one read, one write and
// one bit-in-register write through the pointers.
#include "modbus_tcpip_rtu_m.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

using namespace modbus_driver;

namespace {

void *library()
{
    static void *const handle = dlopen(DRIVER_PATH, RTLD_NOW | RTLD_LOCAL);
    return handle;
}

#define LOOK_UP(name) reinterpret_cast<decltype(&::name)>(dlsym(library(), #name))

QByteArray answered; // hostItem and outcome of every finished write

void writeDone(int, int, int item, int outcome)
{
    answered.append(static_cast<char>(item)).append(static_cast<char>(outcome));
}

/// Sends what the driver asks for, which must be `request`, and hands back `reply`.
void exchange(const char *request, const char *reply)
{
    const Protocol *asked = LOOK_UP(ComCommunication)();
    ASSERT_NE(asked, nullptr);
    EXPECT_EQ(asked->frame.toHex().toStdString(), QByteArray::fromHex(request).toHex().toStdString());
    QByteArray bytes = QByteArray::fromHex(reply);
    EXPECT_EQ(LOOK_UP(DataCom)(&bytes, bytes.size())->status, 1);
}

} // namespace

TEST(PlainConsumer, FindsEveryNameAndTalks)
{
    ASSERT_NE(library(), nullptr) << dlerror();
    const QByteArray names =
        "SetComInfo RegistCallBackFuncIntf FlashLocalRegister QueryFinishFlag EnCommStation EnableEthernet "
        "Ethernetcontains GetDriverReturnValue SwitchErrorReturn ComCommunication DataCom PLCAddressChangeIntef "
        "AddListWriteVar AddListOnceReadVar AddListReadVar ReCreatReadVarList GetRegisterData SetRegisterData "
        "PLC_driver LB LW RWI";
    for (const QByteArray &name : names.split(' '))
        EXPECT_NE(dlsym(library(), name.constData()), nullptr) << name.constData();

    CommSettings settings;
    settings.defaultStation = 1;
    settings.writeBlockSize = 100;
    settings.writeMode = 2;
    LOOK_UP(SetComInfo)(&settings);
    LOOK_UP(RegistCallBackFuncIntf)(writeDone, nullptr);
    LOOK_UP(FlashLocalRegister)(1, 2, 3);
    EXPECT_EQ(*static_cast<int *>(dlsym(library(), "RWI")), 3);

    VAR_ITEM item;
    item.area = AreaHoldingRegisters;
    item.addressText = QString::number(100);
    item.count = 1;
    QList<VAR_ITEM> items = {item};
    ASSERT_EQ(LOOK_UP(ReCreatReadVarList)(&items), 1);
    exchange("0000 0000 0006 01 03 0064 0001", "0000 0000 0005 01 03 02 1234");
    QByteArray value;
    EXPECT_EQ(LOOK_UP(GetRegisterData)(0, item.area, item.addressText, 1, value, 1), 1);
    EXPECT_EQ(value, QByteArray::fromHex("3412"));

    QByteArray bit(1, '\1');
    const auto setRegisterData = LOOK_UP(SetRegisterData);
    setRegisterData(QString(), AreaHoldingRegisters, item.addressText, 1, value, 1, 0, 7);
    setRegisterData(QString(), AreaHoldingRegisterBit, QString::fromLatin1("2.3"), 1, bit, 1, 0, 8);
    exchange("0000 0000 0009 01 10 0064 0001 02 1234", "0000 0000 0006 01 10 0064 0001");
    exchange("0000 0000 0006 01 03 0002 0001", "0000 0000 0005 01 03 02 0000");
    exchange("0000 0000 0006 01 06 0002 0008", "0000 0000 0006 01 06 0002 0008");
    EXPECT_EQ(answered, QByteArray::fromHex("0701 0801"));
    EXPECT_EQ(static_cast<Modbus_TCPIP_RTU_M *>(dlsym(library(), "PLC_driver"))->writeList.size(), 0);
}

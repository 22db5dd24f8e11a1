// SPDX-License-Identifier: MIT
#include "api/host_calls.h"
#include "api/steps/driver_object.h"

void SetComInfo(CommSettings *settings)
{
    settings->cfgWord13 = 0;
    PLC_driver.comInfo = settings;
    settings->cfgWord10 = 0;
}

void RegistCallBackFuncIntf(void (*writeDone)(int, int, int, int),
                            void (*itemNotify)(QList<RW_VAR> *, int, int))
{
    PLC_driver.writeDoneCallBack = writeDone;
    PLC_driver.itemNotifyCallBack = itemNotify;
}

void FlashLocalRegister(int localBits, int localWords, int thirdArea)
{
    LB = localBits;
    LW = localWords;
    RWI = thirdArea;
}

int QueryFinishFlag()
{
    return 1;
}

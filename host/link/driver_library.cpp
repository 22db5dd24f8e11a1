// SPDX-License-Identifier: MIT
#include "driver_library.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QLibrary>

namespace {

const char fileName[] = "libModbus_TCPIP_RTU_M.so.1";

/// Looks every function up. The name of the first that is missing, else an empty text.
QString resolveAll(QLibrary *library, DriverLibrary *driver)
{
    QString missing;
    const auto resolve = [&](const char *symbol, auto *function) {
        *function = reinterpret_cast<std::decay_t<decltype(*function)>>(library->resolve(symbol));
        if (!*function && missing.isEmpty())
            missing = QString::fromLatin1(symbol);
    };
    resolve("SetComInfo", &driver->setComInfo);
    resolve("RegistCallBackFuncIntf", &driver->registerCallBacks);
    resolve("FlashLocalRegister", &driver->flashLocalRegister);
    resolve("ReCreatReadVarList", &driver->recreateReadList);
    resolve("AddListOnceReadVar", &driver->addOnceRead);
    resolve("AddListWriteVar", &driver->addWrite);
    resolve("EnCommStation", &driver->enableStation);
    resolve("ComCommunication", &driver->nextRequest);
    resolve("DataCom", &driver->handReply);
    resolve("GetRegisterData", &driver->getRegisterData);
    resolve("SetRegisterData", &driver->setRegisterData);
    return missing;
}

QString defaultPath()
{
    const QString fromEnvironment = qEnvironmentVariable("MODBUS_DRIVER");
    if (!fromEnvironment.isEmpty())
        return fromEnvironment;
    const QDir programs(QCoreApplication::applicationDirPath());
    const QString name = QString::fromLatin1(fileName);
    for (const QString &path :
         {programs.filePath(name), programs.filePath(QStringLiteral("../lib/") + name)}) {
        if (QFileInfo::exists(path))
            return QDir::cleanPath(path);
    }
    return name;
}

} // namespace

std::optional<DriverLibrary> loadDriver(const QString &path, QString *error)
{
    QLibrary library(path.isEmpty() ? defaultPath() : path);
    // All undefined symbols show now, not in the middle of the communication.
    library.setLoadHints(QLibrary::ResolveAllSymbolsHint);
    if (!library.load()) {
        *error =
            QStringLiteral("cannot load the driver %1: %2").arg(library.fileName(), library.errorString());
        return std::nullopt;
    }
    DriverLibrary driver;
    const QString missing = resolveAll(&library, &driver);
    if (!missing.isEmpty()) {
        *error =
            QStringLiteral("%1 is not the driver: it has no function %2").arg(library.fileName(), missing);
        return std::nullopt;
    }
    return driver;
}

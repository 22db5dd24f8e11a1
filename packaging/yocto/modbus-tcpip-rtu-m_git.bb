# SPDX-License-Identifier: MIT
# MODBUS_SOURCES is the folder of the repository, set in local.conf.
SUMMARY = "Modbus TCP master without I/O of its own"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=c1c1980347df38c2e80fcdd77e1ba9a1"
SRC_URI = "git://${MODBUS_SOURCES};protocol=file;branch=main"
SRCREV = "${AUTOREV}"
S = "${WORKDIR}/git"
DEPENDS = "qtbase"
inherit cmake_qt5
EXTRA_OECMAKE = "-DMODBUS_BUILD_TOOLS=OFF -DBUILD_TESTING=OFF"

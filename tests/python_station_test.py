#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""python_station_test.py MODBUS-PANEL: values of every type and word order at a station by another author.

Starts that station, writes with the panel and looks into the station's registers, then fills them and reads with the panel.
The registers are computed here, from Python's own packing of numbers. Ends with 77 where the station's package is missing.
"""
import asyncio
import logging
import struct
import subprocess
import sys
import threading

try:
    from pymodbus.datastore import ModbusSequentialDataBlock, ModbusServerContext, ModbusSlaveContext
    from pymodbus.server.async_io import ModbusTcpServer
except ImportError:
    sys.exit(77)

PATIENCE = 60  # seconds
logging.getLogger("pymodbus").setLevel(logging.CRITICAL)  # else it reports each connection that ends


def registers(value_bytes, order):
    """The registers of a value's bytes, most significant first, as a device of this order sends them."""
    size = len(order)
    runs = [value_bytes[at:at + size] for at in range(0, len(value_bytes), size)]
    wire = bytes(run[ord(letter) - ord("A")] for run in runs for letter in order)
    return list(struct.unpack(f">{len(wire) // 2}H", wire))


def rows():
    """Area, address and type; values as the panel takes and shows them; what the station must hold."""
    address = 10
    orders32, orders16 = ("ABCD", "CDAB", "BADC", "DCBA"), ("AB", "BA")
    kinds = [
        ("s16", ">h", orders16, [-2, 32767]), ("u16", ">H", orders16, [65535, 258]), ("hex", ">H", orders16, [0xBEEF]),
        ("s32", ">i", orders32, [-2, 2147483647]), ("u32", ">I", orders32, [4294967295, 16909060]),
        ("hex", ">I", orders32, [0x01020304]), ("float", ">f", orders32, [21.5, -0.1015625, 1e10]),
    ]
    for kind, packing, orders, values in kinds:
        for order in orders:
            packed = b"".join(struct.pack(packing, value) for value in values)
            area = "32" if len(order) == 4 else ""
            digits = 2 * len(order)
            texts = [f"0x{value:0{digits}X}" if kind == "hex" else str(value).replace("10000000000.0", "1e+10") for value in values]
            yield area, address, f"*{len(values)}:{kind}:{order}", texts, registers(packed, order)
            address += len(packed) // 2 + 1
    for order in orders16:
        yield "", address, f"*4:text:{order}", ["PUMP 12"], registers(b"PUMP 12\0", order)
        address += 5


class Station:
    """Unit 1 of a server on a free port of the loopback interface, in a thread of its own."""

    def __init__(self):
        self.tables = {name: ModbusSequentialDataBlock(0, [0] * 1000) for name in ("co", "di", "ir", "hr")}
        self.unit = ModbusSlaveContext(zero_mode=True, **self.tables)
        started = threading.Event()
        threading.Thread(target=lambda: asyncio.run(self.serve(started)), daemon=True).start()
        assert started.wait(PATIENCE), "the station does not start"

    async def serve(self, started):
        server = ModbusTcpServer(ModbusServerContext(slaves={1: self.unit}, single=False), address=("127.0.0.1", 0))
        task = asyncio.ensure_future(server.serve_forever())
        await server.serving
        self.peer = "127.0.0.1:%d" % server.server.sockets[0].getsockname()[1]
        started.set()
        await task


def panel(command, *words):
    run = subprocess.run([*sys.argv[1].split(), command, "--connect", station.peer, *words], timeout=PATIENCE,
                         stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    named, *lines = run.stdout.splitlines()
    check("first line", named, f"station {station.peer}")
    return lines


def check(what, seen, expected):
    if seen != expected:
        failures.append(f"{what}\n  seen:     {seen}\n  expected: {expected}")


station, failures = Station(), []
table = list(rows())
for area, address, suffix, texts, held in table:
    variable = f"hr{area}:{address}{suffix}"
    check(variable, panel("write", f"{variable}={','.join(texts)}"), [f"{variable}={','.join(texts)}: acknowledged"])
    check(f"registers of {variable}", station.tables["hr"].getValues(address, len(held)), held)
    station.tables["ir"].setValues(address, held)
    station.tables["hr"].setValues(address, [0] * len(held))
variables = [f"ir{area}:{address}{suffix}" for area, address, suffix, _, _ in table]
shown = [f"{variable} = {' '.join(texts)}" for variable, (_, _, _, texts, _) in zip(variables, table)]
check("input registers", sorted(panel("read", *variables)), sorted(shown))

panel("write", "coil:3*3=1,0,1", "hr:0=8", "hrbit:0.5=1", "hrbit:0.3=0")
check("coils", station.tables["co"].getValues(2, 5), [0, 1, 0, 1, 0])
check("bits of a register", station.tables["hr"].getValues(0, 1), [32])
station.tables["di"].setValues(9, [1, 1])
check("bits", sorted(panel("read", "input:8*4", "coil:3*3", "hrbit:0.5")),
      ["coil:3*3 = 1 0 1", "hrbit:0.5 = 1", "input:8*4 = 0 1 1 0"])

print("\n".join(failures) or f"{len(table)} types and orders, both ways, and bits")
sys.exit(1 if failures else 0)

// SPDX-License-Identifier: MIT
#include "exception_text.h"
#include "field_reader.h"

#include "../../driver/base/modbus_wire.h"

using namespace modbus_driver::wire;

namespace {

struct Function
{
    int code;
    const char *name = "unknown function";
    int table = 4; ///< the digit of its addresses in manuals that count from 1
    int most = 0;  ///< bits or registers of one request

    bool isOfBits() const { return table < 3; }
    const char *noun() const { return isOfBits() ? "bit" : "register"; }
};

const Function functions[] = {
    {ReadCoils, "read coils", 0, MostBitsRead},
    {ReadDiscreteInputs, "read discrete inputs", 1, MostBitsRead},
    {ReadHoldingRegisters, "read holding registers", 4, MostRegistersRead},
    {ReadInputRegisters, "read input registers", 3, MostRegistersRead},
    {WriteSingleCoil, "write coil", 0},
    {WriteSingleRegister, "write register"},
    {WriteMultipleCoils, "write coils", 0, MostBitsWritten},
    {WriteMultipleRegisters, "write registers", 4, MostRegistersWritten},
    {MaskWriteRegister, "mask write register"},
    {ReadWriteMultipleRegisters, "read and write registers"},
    {43, "read device identification"},
};

Function functionOf(int code)
{
    for (const Function &function : functions) {
        if (function.code == code)
            return function;
    }
    return {code};
}

QString registerText(const QByteArray &bytes)
{
    const int number = wordAt(bytes, 0);
    return number < 0x8000 ? asText(number) : filled("%1, signed %2", number, number - 0x10000);
}

/// "1 0 1 1", the first `count` bits of a byte, lowest first.
QString bitsText(int byte, int count)
{
    QStringList bits;
    for (int i = 0; i < count; ++i)
        bits << asText(byte >> i & 1);
    return bits.join(QLatin1Char(' '));
}

class ModbusReader : private FieldReader
{
public:
    ModbusReader(const QByteArray &frame, bool isReply) : FieldReader(frame), m_isReply(isReply) {}

    FrameText read()
    {
        const int unit = header();
        const int code = m_function.code;
        if ((code & ExceptionFlag) && m_isReply)
            exception();
        else if (code == WriteSingleCoil || code == WriteSingleRegister)
            singleWrite();
        else if (m_isReply && isReadFunction(code))
            readReply();
        else if (m_function.most > 0)
            rangeRequest();
        else
            unknown();
        if (!isAtEnd())
            unusedBytes();
        notes.meaning = filled("unit %1: %2", unit, m_meaning);
        return notes;
    }

private:
    /// Returns the unit.
    int header()
    {
        take("transaction", 2);
        const int protocol = take("protocol", 2);
        check(protocol == 0,
              "protocol identifier %1 instead of 0: this is no Modbus TCP header (serial frames have none)",
              protocol);
        const int length = take("length", 2);
        means("%1 bytes follow", length);
        check(length == left(), "the length field says %1, but %2 bytes follow it", length, left());
        check(length <= LongestLengthField, "a length above 254 is more than a frame holds");
        const int unit = take("unit", 1);
        if (unit == 0)
            means("0, all units: no reply comes");
        m_function = functionOf(take("function", 1));
        means("%1, %2", m_function.code, m_function.name);
        m_meaning = asText(m_function.name);
        return unit;
    }

    void exception()
    {
        const Function function = functionOf(m_function.code - ExceptionFlag);
        means("%1 + 128, exception to %2", function.code, function.name);
        const int code = take("exception", 1);
        const QString name = filled("%1, %2", code, exceptionName(code));
        means("%1", name);
        m_meaning = filled("exception %1, to %2", name, function.name);
    }

    int address()
    {
        const int first = take("address", 2);
        const int digits = first < 9999 ? 4 : 5;
        means("%1 (%2%3 when counted from 1)", first, m_function.table,
              asText(first + 1).rightJustified(digits, QLatin1Char('0')));
        return first;
    }

    /// Function 5 or 6, whose reply repeats the request.
    void singleWrite()
    {
        const int first = address();
        const int value = take("value", 2);
        QString text = QStringLiteral("%1 (0x%2)").arg(value).arg(value, 4, 16, QLatin1Char('0'));
        if (m_function.code == WriteSingleCoil) {
            text = value == CoilOn ? asText("on") : value == 0 ? asText("off") : text;
            check(value == CoilOn || value == 0, "a coil's value is FF 00 for on or 00 00 for off");
        }
        means("%1", text);
        m_meaning += filled(" %1: %2", first, text);
    }

    /// A first address and a quantity: all other requests, and the replies to writes of several.
    void rangeRequest()
    {
        const int first = address();
        const int quantity = take("quantity", 2);
        const int most = m_function.most;
        means("%1", counted(quantity, m_function.noun()));
        check(quantity >= 1 && quantity <= most, "quantity %1, the protocol allows 1 to %2", quantity,
              counted(most, m_function.noun()));
        check(first + quantity <= AddressesOfTable, "it passes the last address, 65535");
        m_meaning += QLatin1Char(' ') + (quantity > 0 ? range(first, quantity) : asText("(none)"));
        if (m_isReply || isReadFunction(m_function.code))
            return;
        data(byteCount(m_function.isOfBits() ? (quantity + 7) / 8 : 2 * quantity), quantity, first, "");
    }

    void readReply()
    {
        const bool isOfBits = m_function.isOfBits();
        const int count = byteCount(-1);
        check(isOfBits || count % 2 == 0, "byte count %1: registers take two bytes each", count);
        data(count, isOfBits ? 8 * count : count / 2, 0, "+");
    }

    /// `due`: the byte count that the quantity needs; -1 when that is not known.
    int byteCount(int due)
    {
        const int count = take("byte count", 1);
        check(count == left(), "byte count %1, but %2 data bytes follow", count, left());
        check(due < 0 || count == due, "byte count %1, but the quantity takes %2 bytes", count, due);
        check(count > 0, "a byte count of 0 carries nothing");
        return count;
    }

    /// One field for each register or byte of bits. `sign` stands before their addresses.
    void data(int size, int quantity, int first, const char *sign)
    {
        const bool isOfBits = m_function.isOfBits();
        const int bytesEach = isOfBits ? 1 : 2;
        const int each = isOfBits ? 8 : 1;
        const int shown = isOfBits ? 2 : 8; // bytes of bits, or registers, in the meaning
        QStringList values;
        for (int i = 0; (i + 1) * bytesEach <= size && !isAtEnd(); ++i) {
            const int count = qBound(1, quantity - i * each, each);
            const QString where = range(first + i * each, count);
            const QByteArray bytes = takeBytes(
                filled(count == 1 ? "%1 %2%3" : "%1s %2%3", m_function.noun(), sign, where), bytesEach);
            const QString bits = bitsText(bytes.at(0), count);
            means("%1", isOfBits ? bits : registerText(bytes));
            values << (isOfBits ? bits : filled("0x%1", bytes.toHex().toUpper().constData()));
        }
        if (values.size() > shown)
            values = values.mid(0, shown) << asText("...");
        m_meaning += asText(": ") + values.join(QLatin1Char(' '));
    }

    void unknown()
    {
        const int code = m_function.code;
        m_meaning = filled("function %1", code);
        check(code < ExceptionFlag, "function %1 is that of an exception reply, not of a request", code);
        check(code != 0, "there is no function 0");
        takeBytes(asText("data"), left());
    }

    /// Bytes after the last field are a fault of their own only when no other fault explains them.
    void unusedBytes()
    {
        const int count = left();
        takeBytes(asText("unused"), count);
        check(!notes.faults.isEmpty(), "bytes that this function does not use: %1", count);
    }

    const bool m_isReply;
    Function m_function = {};
    QString m_meaning; ///< behind the unit
};

} // namespace

FrameText modbusText(const QByteArray &frame, bool isReply)
{
    return ModbusReader(frame, isReply).read();
}

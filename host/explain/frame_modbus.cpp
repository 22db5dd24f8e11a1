// SPDX-License-Identifier: MIT
#include "frame_dissection.h"

#include "exception_text.h"

#include "../../driver/base/modbus_wire.h"

using namespace modbus_driver::wire;

namespace {

/// Functions that the driver never sends.
enum OtherFunction {
    MaskWriteRegister = 22,
    ReadWriteMultipleRegisters = 23,
    EncapsulatedInterfaceTransport = 43,
};

QString functionName(int function)
{
    switch (function) {
    case ReadCoils:
        return QStringLiteral("read coils");
    case ReadDiscreteInputs:
        return QStringLiteral("read discrete inputs");
    case ReadHoldingRegisters:
        return QStringLiteral("read holding registers");
    case ReadInputRegisters:
        return QStringLiteral("read input registers");
    case WriteSingleCoil:
        return QStringLiteral("write coil");
    case WriteSingleRegister:
        return QStringLiteral("write register");
    case WriteMultipleCoils:
        return QStringLiteral("write coils");
    case WriteMultipleRegisters:
        return QStringLiteral("write registers");
    case MaskWriteRegister:
        return QStringLiteral("mask write register");
    case ReadWriteMultipleRegisters:
        return QStringLiteral("read and write registers");
    case EncapsulatedInterfaceTransport:
        return QStringLiteral("read device identification");
    default:
        return QStringLiteral("unknown function");
    }
}

bool isOfBits(int function)
{
    return function == ReadCoils || function == ReadDiscreteInputs || function == WriteSingleCoil ||
           function == WriteMultipleCoils;
}

/// Most bits or registers of one request.
int quantityLimit(int function)
{
    switch (function) {
    case ReadCoils:
    case ReadDiscreteInputs:
        return MostBitsRead;
    case WriteMultipleCoils:
        return MostBitsWritten;
    case WriteMultipleRegisters:
        return MostRegistersWritten;
    default:
        return MostRegistersRead;
    }
}

int dataBytes(int function, int quantity)
{
    return isOfBits(function) ? (quantity + 7) / 8 : 2 * quantity;
}

QString noun(int function, int count)
{
    const QString one = isOfBits(function) ? QStringLiteral("bit") : QStringLiteral("register");
    return count == 1 ? one : one + QLatin1Char('s');
}

/// The number in manuals that count from 1, with the table's digit in front: 40001 is holding register 0.
QString countedFromOne(int function, int address)
{
    const int tableDigit = function == ReadDiscreteInputs   ? 1
                           : function == ReadInputRegisters ? 3
                           : isOfBits(function)             ? 0
                                                            : 4;
    const int digits = address < 9999 ? 4 : 5;
    return QString::number(tableDigit) + QStringLiteral("%1").arg(address + 1, digits, 10, QLatin1Char('0'));
}

QString range(int first, int count)
{
    return count == 1 ? QString::number(first) : QStringLiteral("%1-%2").arg(first).arg(first + count - 1);
}

class ModbusDissector
{
public:
    ModbusDissector(const QByteArray &frame, bool isReply)
        : m_size(frame.size()), m_isReply(isReply), m_reader(frame, &m_notes)
    {
    }

    FrameDissection dissect()
    {
        header();
        if ((m_function & ExceptionFlag) && m_isReply)
            exception();
        else if (m_function == WriteSingleCoil || m_function == WriteSingleRegister)
            singleWrite();
        else if (m_isReply && isReadFunction(m_function))
            readReply();
        else if (isReadFunction(m_function) || m_function == WriteMultipleCoils ||
                 m_function == WriteMultipleRegisters)
            rangeRequest();
        else
            unknown();
        if (!m_reader.isAtEnd())
            unusedBytes();
        m_notes.summary = QStringLiteral("unit %1: %2").arg(m_unit).arg(m_summary);
        return m_notes;
    }

private:
    void header()
    {
        m_reader.take("transaction", 2);
        const int protocol = m_reader.take("protocol", 2);
        m_reader.check(protocol == 0,
                       QStringLiteral("protocol identifier %1 instead of 0: this is no Modbus TCP "
                                      "header (serial frames have none)")
                           .arg(protocol));
        const int length = m_reader.take("length", 2);
        m_reader.means(QStringLiteral("%1 bytes follow").arg(length));
        const int body = m_size - LengthFieldEnd;
        m_reader.check(
            length == body,
            QStringLiteral("the length field says %1, but %2 bytes follow it").arg(length).arg(body));
        m_reader.check(length <= LongestLengthField,
                       QStringLiteral("a length above 254 is more than a frame holds"));
        m_unit = m_reader.take("unit", 1);
        if (m_unit == 0)
            m_reader.means(QStringLiteral("0, all units: no reply comes"));
        m_function = m_reader.take("function", 1);
        m_reader.means(QStringLiteral("%1, %2").arg(m_function).arg(functionName(m_function)));
        m_summary = functionName(m_function);
    }

    void exception()
    {
        const int function = m_function - ExceptionFlag;
        m_reader.means(QStringLiteral("%1 + 128, exception to %2").arg(function).arg(functionName(function)));
        const int code = m_reader.take("exception", 1);
        const QString name = QStringLiteral("%1, %2").arg(code).arg(exceptionName(code));
        m_reader.means(name);
        m_summary = QStringLiteral("exception %1, to %2").arg(name, functionName(function));
    }

    int address()
    {
        const int first = m_reader.take("address", 2);
        m_reader.means(
            QStringLiteral("%1 (%2 when counted from 1)").arg(first).arg(countedFromOne(m_function, first)));
        return first;
    }

    /// Function 5 or 6, whose reply repeats the request.
    void singleWrite()
    {
        const int first = address();
        const int value = m_reader.take("value", 2);
        QString text = QStringLiteral("%1 (0x%2)").arg(value).arg(value, 4, 16, QLatin1Char('0'));
        if (m_function == WriteSingleCoil) {
            text = value == CoilOn ? QStringLiteral("on") : value == 0 ? QStringLiteral("off") : text;
            m_reader.check(value == CoilOn || value == 0,
                           QStringLiteral("a coil's value is FF 00 for on or 00 00 for off"));
        }
        m_reader.means(text);
        m_summary += QStringLiteral(" %1: %2").arg(first).arg(text);
    }

    /// A first address and a quantity: all other requests, and the replies to writes of several.
    void rangeRequest()
    {
        const int first = address();
        const int quantity = m_reader.take("quantity", 2);
        m_reader.means(QStringLiteral("%1 %2").arg(quantity).arg(noun(m_function, quantity)));
        const int limit = quantityLimit(m_function);
        m_reader.check(quantity >= 1 && quantity <= limit,
                       QStringLiteral("quantity %1, the protocol allows 1 to %2 %3")
                           .arg(quantity)
                           .arg(limit)
                           .arg(noun(m_function, limit)));
        m_reader.check(first + quantity <= AddressesOfTable,
                       QStringLiteral("it passes the last address, 65535"));
        m_summary +=
            QStringLiteral(" %1").arg(quantity > 0 ? range(first, quantity) : QStringLiteral("(none)"));
        if (m_isReply || isReadFunction(m_function))
            return;
        const int count = byteCount(dataBytes(m_function, quantity));
        data(count, quantity, first);
    }

    void readReply()
    {
        const int count = byteCount(-1);
        m_reader.check(isOfBits(m_function) || count % 2 == 0,
                       QStringLiteral("byte count %1: registers take two bytes each").arg(count));
        data(count, isOfBits(m_function) ? 8 * count : count / 2, -1);
    }

    /// `due`: the byte count that the quantity needs; -1 when that is not known.
    int byteCount(int due)
    {
        const int count = m_reader.take("byte count", 1);
        m_reader.check(
            count == m_reader.left(),
            QStringLiteral("byte count %1, but %2 data bytes follow").arg(count).arg(m_reader.left()));
        m_reader.check(due < 0 || count == due,
                       QStringLiteral("byte count %1, but the quantity takes %2 bytes").arg(count).arg(due));
        m_reader.check(count > 0, QStringLiteral("a byte count of 0 carries nothing"));
        return count;
    }

    /// One field for each register or byte of bits. `first` is the address of the first, or -1.
    void data(int size, int quantity, int first)
    {
        const int elementSize = isOfBits(m_function) ? 1 : 2;
        const int perElement = isOfBits(m_function) ? 8 : 1;
        QByteArray all;
        for (int i = 0; (i + 1) * elementSize <= size && !m_reader.isAtEnd(); ++i) {
            const int from = i * perElement;
            const int count = qBound(1, quantity - from, perElement);
            const QString where =
                first < 0 ? QLatin1Char('+') + range(from, count) : range(first + from, count);
            const QByteArray bytes =
                m_reader.takeBytes(noun(m_function, count) + QLatin1Char(' ') + where, elementSize);
            m_reader.means(isOfBits(m_function) ? bitsText(bytes, count) : registerText(bytes));
            all += bytes;
        }
        m_summary +=
            QStringLiteral(": ") + (isOfBits(m_function) ? bitsText(all, quantity) : registersText(all));
    }

    static QString registerText(const QByteArray &bytes)
    {
        const quint16 number = static_cast<quint16>(bytes.toHex().toUInt(nullptr, 16));
        const QString text = QString::number(number);
        return number < 0x8000 ? text
                               : QStringLiteral("%1, signed %2").arg(text).arg(static_cast<qint16>(number));
    }

    void unknown()
    {
        m_summary = QStringLiteral("function %1").arg(m_function);
        const bool isException = m_function & ExceptionFlag;
        m_reader.check(
            !isException,
            QStringLiteral("function %1 is that of an exception reply, not of a request").arg(m_function));
        m_reader.check(isException || m_function != 0, QStringLiteral("there is no function 0"));
        if (!m_reader.isAtEnd())
            m_reader.takeBytes(QStringLiteral("data"), m_reader.left());
    }

    /// Bytes after the last field are a fault of their own only when no other fault explains them.
    void unusedBytes()
    {
        const int count = m_reader.left();
        m_reader.takeBytes(QStringLiteral("unused"), count);
        m_reader.check(!m_notes.faults.isEmpty(),
                       QStringLiteral("bytes that this function does not use: %1").arg(count));
    }

    const int m_size;
    const bool m_isReply;
    FrameDissection m_notes;
    FieldReader m_reader;
    int m_unit = 0;
    int m_function = 0;
    QString m_summary;
};

} // namespace

FrameDissection dissectModbus(const QByteArray &frame, bool isReply)
{
    return ModbusDissector(frame, isReply).dissect();
}

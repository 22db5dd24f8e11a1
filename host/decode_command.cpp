// SPDX-License-Identifier: MIT
#include "commands.h"

#include "byte_orders.h"
#include "command_line.h"
#include "frame_text.h"

#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstdio>

namespace {

const char description[] = R"(Explains a frame field by field, and what is wrong with it: length field,
counts, byte counts, limits, checksum. What kind of frame it is shows by
itself, unless an option says so; a frame of a serial line (RTU) is recognised,
and explained as it would be over TCP. Hexadecimal digits may stand together or
apart, with blanks, colons, commas or 0x between them. Four bytes alone are two
registers, and are shown as a number in every word and byte order.

Ends with 0 for a sound frame, 1 for a faulty one, 2 when the text is not
hexadecimal.

Examples:
  modbus-panel decode 00 00 00 00 00 06 01 03 00 64 00 0A
  modbus-panel decode --reply 000000000003018302
  modbus-panel decode --bytes "12 34 56 78")";

const int twoRegisters = 4;   // bytes
const int shortestSerial = 5; // an exception reply

/// The bytes of all words; nothing, with one line in *error, when one is not hexadecimal.
std::optional<QByteArray> bytesOf(const QStringList &words, QString *error)
{
    const QRegularExpression separators(QStringLiteral("[\\s:,;-]+"));
    const QRegularExpression digits(QStringLiteral("^[0-9a-fA-F]+$"));
    QByteArray bytes;
    for (QString word : words.join(QLatin1Char(' ')).split(separators, Qt::SkipEmptyParts)) {
        if (word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
            word.remove(0, 2);
        if (word.size() == 1)
            word.prepend(QLatin1Char('0'));
        if (!digits.match(word).hasMatch())
            *error = QStringLiteral("\"%1\" is not hexadecimal").arg(word);
        else if (word.size() % 2 != 0)
            *error = QStringLiteral("\"%1\" has an odd number of digits; a byte has two").arg(word);
        if (!error->isEmpty())
            return std::nullopt;
        bytes += QByteArray::fromHex(word.toLatin1());
    }
    if (bytes.isEmpty())
        *error = QStringLiteral("no bytes are given; --help shows how they are written");
    return error->isEmpty() ? std::optional<QByteArray>(bytes) : std::nullopt;
}

void print(const QString &line)
{
    std::printf("%s\n", qPrintable(line));
}

QString kindName(FrameKind kind)
{
    return kind == FrameKind::Request ? QStringLiteral("request")
           : kind == FrameKind::Reply ? QStringLiteral("reply")
                                      : QStringLiteral("remote frame");
}

/// The kinds that the options ask for, else those that the frame may be.
QList<FrameKind> kindsToShow(const CommandLine &line, const QByteArray &frame)
{
    QList<FrameKind> kinds;
    if (line.isSet("request"))
        kinds << FrameKind::Request;
    if (line.isSet("reply"))
        kinds << FrameKind::Reply;
    if (line.isSet("remote"))
        kinds << FrameKind::Remote;
    return kinds.isEmpty() ? likelyKinds(frame) : kinds;
}

void printKind(const QByteArray &frame, FrameKind kind, const QString &title)
{
    print(QStringLiteral("%1, %2 bytes: %3").arg(title).arg(frame.size()).arg(frameMeaning(frame, kind)));
    for (const QString &field : frameFields(frame, kind))
        print(QStringLiteral("  ") + field);
    for (const QString &fault : frameFaults(frame, kind))
        print(QStringLiteral("  fault: ") + fault);
}

/// Modbus CRC-16, which closes serial frames: 0 over a frame with its own checksum, low byte first.
int serialChecksum(const QByteArray &bytes)
{
    int crc = 0xFFFF;
    for (char byte : bytes) {
        crc ^= static_cast<quint8>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = crc & 1 ? crc >> 1 ^ 0xA001 : crc >> 1;
    }
    return crc;
}

/// The frame as it is sent over TCP, when these bytes are one from a serial line; else nothing.
QByteArray fromSerial(const QByteArray &bytes)
{
    if (bytes.size() < shortestSerial || serialChecksum(bytes) != 0)
        return QByteArray();
    const QByteArray body = bytes.left(bytes.size() - 2);
    return QByteArray(5, '\0') + static_cast<char>(body.size()) + body;
}

bool isSound(const QByteArray &frame, const QList<FrameKind> &kinds)
{
    return std::any_of(kinds.begin(), kinds.end(),
                       [&frame](FrameKind kind) { return frameFaults(frame, kind).isEmpty(); });
}

void explain(const QByteArray &frame, const QList<FrameKind> &kinds)
{
    const bool readsAlike = kinds.size() == 2 && frameFields(frame, kinds[0]) == frameFields(frame, kinds[1]);
    if (readsAlike)
        printKind(frame, kinds[0], QStringLiteral("request, or a reply that reads alike"));
    for (int i = 0; !readsAlike && i < kinds.size(); ++i)
        printKind(frame, kinds[i],
                  i == 0 ? kindName(kinds[i]) : QStringLiteral("or a ") + kindName(kinds[i]));
}

} // namespace

int decodeCommand(const QStringList &arguments)
{
    CommandLine line(QStringLiteral("decode"), QStringLiteral("[OPTION]... HEX..."),
                     QString::fromLatin1(description));
    line.addOption("request", QStringLiteral("It is a request."));
    line.addOption("reply", QStringLiteral("It is a reply."));
    line.addOption("remote", QStringLiteral("It is a request in the driver's own compact form."));
    line.addOption("bytes", QStringLiteral("It is two registers: four bytes."));
    if (const std::optional<ExitCode> end = line.parse(arguments))
        return *end;
    QString error;
    const std::optional<QByteArray> bytes = bytesOf(line.words(), &error);
    if (!bytes)
        return line.fail(ExitUsage, error);
    const bool isForcedFrame = line.isSet("request") || line.isSet("reply") || line.isSet("remote");
    if (line.isSet("bytes") && (isForcedFrame || bytes->size() != twoRegisters))
        return line.fail(ExitUsage, QStringLiteral("--bytes takes four bytes, and no option beside it"));
    if (bytes->size() == twoRegisters && !isForcedFrame) {
        for (const QString &row : byteOrderTable(*bytes))
            print(row);
        return ExitDone;
    }
    const QList<FrameKind> kinds = kindsToShow(line, *bytes);
    const QByteArray tcpFrame = fromSerial(*bytes);
    if (isSound(*bytes, kinds) || tcpFrame.isEmpty()) {
        explain(*bytes, kinds);
        return isSound(*bytes, kinds) ? ExitDone : ExitFailed;
    }
    print(QStringLiteral(
        "no Modbus TCP frame, but one of a serial line (RTU): its checksum fits. Over TCP it is"));
    explain(tcpFrame, kindsToShow(line, tcpFrame));
    return ExitFailed;
}

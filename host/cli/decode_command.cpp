// SPDX-License-Identifier: MIT
#include "commands.h"

#include "command_line.h"
#include "standard_output.h"

#include "../explain/byte_orders.h"
#include "../explain/filled.h"
#include "../explain/frame_text.h"

#include "../../driver/base/block_checks.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace {

const char description[] =
    R"(Explains a frame field by field, and finds its faults. The kind of frame is found
from its bytes, unless an option names it; a frame of a serial line (RTU) is
explained as it would be over TCP. Hexadecimal digits may be separated by blanks,
colons, commas or 0x. Four bytes alone are two registers, and are shown as a
number in every word and byte order.

With -, or without HEX when standard input is no terminal, frames are read from
there: one a line, or a trace of this program or of modbus-station.

Examples:
  modbus-panel decode 00 00 00 00 00 06 01 03 00 64 00 0A
  modbus-panel decode --reply 000000000003018302
  modbus-panel decode - <trace.txt)";

const char noBytes[] = "no bytes are given; --help shows how they are written";
const int twoRegisters = 4;   // bytes
const int shortestSerial = 5; // an exception reply
const int longestLine = 65536;
const int longestShown = 40; // of a wrong word

/// The bytes of all words. One line in *error when one is not hexadecimal, or when there is none.
QByteArray bytesOf(const QString &text, QString *error)
{
    const QRegularExpression separators(QStringLiteral("[\\s:,;-]+"));
    const QRegularExpression digits(QStringLiteral("^[0-9a-fA-F]+$"));
    QByteArray bytes;
    for (QString word : text.split(separators, Qt::SkipEmptyParts)) {
        if (word.startsWith(QLatin1String("0x"), Qt::CaseInsensitive))
            word.remove(0, 2);
        if (word.size() == 1)
            word.prepend(QLatin1Char('0'));
        if (!digits.match(word).hasMatch())
            *error = filled("\"%1\" is not hexadecimal", word.left(longestShown));
        else if (word.size() % 2 != 0)
            *error = filled("\"%1\" has an odd number of digits; a byte has two", word.left(longestShown));
        if (!error->isEmpty())
            return bytes;
        bytes += QByteArray::fromHex(word.toLatin1());
    }
    if (bytes.isEmpty())
        *error = QLatin1String(noBytes);
    return bytes;
}

struct Kind
{
    const char *option;
    FrameKind kind;
    const char *name;
    const char *help;
};

const Kind kindTable[] = {
    {"request", FrameKind::Request, "request", "It is a request."},
    {"reply", FrameKind::Reply, "reply", "It is a reply."},
    {"remote", FrameKind::Remote, "remote frame", "It is a request in the driver's own compact form."},
};

/// The kinds that the frame may be: the one that an option names or a trace tells, else the likely ones.
QList<FrameKind> kindsOf(const QByteArray &frame, const CommandLine &line, std::optional<FrameKind> direction)
{
    for (const Kind &kind : kindTable) {
        if (line.isSet(kind.option))
            return {kind.kind};
    }
    const QList<FrameKind> likely = likelyKinds(frame);
    const bool isTold = direction && (direction == FrameKind::Reply || likely.first() != FrameKind::Remote);
    return isTold ? QList<FrameKind>{*direction} : likely;
}

void printKind(int size, const FrameText &text, const QString &title)
{
    QString lines = filled("%1, %2 bytes: %3", title, size, text.meaning);
    for (const QString &field : text.fields)
        lines += QStringLiteral("\n  ") + field;
    for (const QString &fault : text.faults)
        lines += QStringLiteral("\n  fault: ") + fault;
    printLine(lines);
}

/// The frame as it is sent over TCP, when these bytes are one from a serial line; else nothing.
QByteArray fromSerial(const QByteArray &bytes)
{
    const auto *const first = reinterpret_cast<const unsigned char *>(bytes.constData());
    // Over a frame with its own checksum it is 0.
    if (bytes.size() < shortestSerial ||
        modbus_driver::crc16(first, static_cast<unsigned>(bytes.size())) != 0)
        return QByteArray();
    const QByteArray body = bytes.left(bytes.size() - 2);
    return QByteArray(5, '\0') + static_cast<char>(body.size()) + body;
}

bool isCorrect(const QByteArray &frame, const QList<FrameKind> &kinds)
{
    return std::any_of(kinds.begin(), kinds.end(),
                       [&frame](FrameKind kind) { return frameText(frame, kind).faults.isEmpty(); });
}

void explain(const QByteArray &frame, const QList<FrameKind> &kinds)
{
    const FrameText first = frameText(frame, kinds.first());
    if (kinds.size() == 2 && first.fields == frameText(frame, kinds.last()).fields)
        return printKind(frame.size(), first, asText("request, or a reply with the same bytes"));
    for (const Kind &kind : kindTable) {
        if (kinds.contains(kind.kind))
            printKind(frame.size(), frameText(frame, kind.kind),
                      asText(kind.kind == kinds.first() ? "" : "or a ") + asText(kind.name));
    }
}

ExitCode decode(const CommandLine &line, const QByteArray &bytes, std::optional<FrameKind> direction)
{
    const bool isFrame = direction || (line.optionCount() > 0 && !line.isSet("bytes"));
    if (line.isSet("bytes") && (isFrame || bytes.size() != twoRegisters))
        return line.fail(ExitUsage, "--bytes takes four bytes");
    if (bytes.size() == twoRegisters && !isFrame) {
        printLine(byteOrderTable(bytes, 1).join(QLatin1Char('\n')));
        return ExitDone;
    }
    const bool isCorrectTcp = isCorrect(bytes, kindsOf(bytes, line, direction));
    const QByteArray fromLine = isCorrectTcp ? QByteArray() : fromSerial(bytes);
    if (!fromLine.isEmpty())
        printLine(asText("not a Modbus TCP frame, but one of a serial line (RTU): its checksum is right. "
                         "Over TCP it is"));
    const QByteArray &frame = fromLine.isEmpty() ? bytes : fromLine;
    explain(frame, kindsOf(frame, line, direction));
    return isCorrectTcp ? ExitDone : ExitFailed;
}

/// Standard input: a frame a line, or a trace, where a line with direction and time stands before each frame.
ExitCode decodeInput(const CommandLine &line)
{
    QFile input;
    input.open(STDIN_FILENO, QIODevice::ReadOnly);
    const QRegularExpression directionLine(QStringLiteral("^[IO] [0-9: .-]+$"));
    std::optional<FrameKind> direction;
    bool hasFrame = false;
    ExitCode worst = ExitDone;
    for (int number = 1; worst != ExitUsage && !std::ferror(stdout); ++number) {
        const QByteArray read = input.readLine(longestLine + 1);
        if (read.isEmpty())
            return hasFrame ? worst : line.fail(ExitUsage, QLatin1String(noBytes));
        QString text = QString::fromUtf8(read.constData(), read.size()).trimmed(); // with NULs
        if (text.isEmpty() || text.startsWith(QLatin1Char('#')))
            continue;
        if (directionLine.match(text).hasMatch()) {
            direction = text.startsWith(QLatin1Char('I')) ? FrameKind::Request : FrameKind::Reply;
            printLine(text);
            continue;
        }
        if (direction && text.startsWith(QLatin1String("000000 ")))
            text.remove(0, 7);
        QString error;
        const QByteArray bytes = bytesOf(text, &error);
        if (read.size() >= longestLine)
            error = QStringLiteral("a frame is not that long");
        if (!error.isEmpty())
            return line.fail(ExitUsage, "line %1: %2", number, error);
        worst = std::max(worst, decode(line, bytes, direction));
        direction.reset();
        hasFrame = true;
    }
    return worst;
}

} // namespace

int decodeCommand(const QStringList &arguments)
{
    CommandLine line("decode", "[OPTION]... [HEX... | -]", description);
    for (const Kind &kind : kindTable)
        line.addOption(kind.option, kind.help);
    line.addOption("bytes", "It is two registers: four bytes.");
    if (const auto code = line.parse(arguments))
        return *code;
    if (line.optionCount() > 1)
        return line.fail(ExitUsage, "one option tells what the bytes are, not %1", line.optionCount());
    const QString text = line.words().join(QLatin1Char(' '));
    if (text == QLatin1String("-") || (text.isEmpty() && isatty(STDIN_FILENO) == 0))
        return decodeInput(line);
    QString error;
    const QByteArray bytes = bytesOf(text, &error);
    if (!error.isEmpty() && QFile::exists(text))
        return line.fail(ExitUsage, "\"%1\" is a file; write: modbus-panel decode - <%1", text);
    return error.isEmpty() ? decode(line, bytes, std::nullopt) : line.fail(ExitUsage, error);
}

// SPDX-License-Identifier: MIT
#include "commands.h"
#include "common_options.h"
#include "interrupt.h"
#include "standard_output.h"

#include "../explain/exchange_text.h"
#include "../explain/filled.h"
#include "../link/exception_codes.h"

#include "../../driver/api/codes.h"
#include "../../station/unit_numbers.h"

#include <cstdio>

#include <unistd.h>

using namespace modbus_driver;

namespace {

const char description[] = R"(Asks units or registers one after the other, slowly, and tells which answer.
With --units each unit is asked for VARIABLE, hr:0 when none is named; an
exception is an answer too, unless it is that of a gateway. Without --units each
register (or eight bits) of the variables is asked for by itself.

Examples: who is there, and which registers has unit 2:
  modbus-panel scan --connect 192.0.2.7:502 --units 1-20,247
  modbus-panel scan --connect 192.0.2.7:502 2/hr:0*100)";

const int patienceMs = 120000; // for a link that was lost; longer than any back-off

/// One request of the scan.
struct Target
{
    Variable variable;
    QString name;     ///< "unit 3", or "1/hr:7"
    QString answered; ///< between the name and a value
};

void addUnits(CommandLine *line, const QList<Variable> &variables, QList<Target> *targets)
{
    const QString text = line->value("units");
    const auto units = parseUnitNumbers(text);
    if (!units)
        line->complain("--units takes different numbers from 1 to 255, as in 1-5,7, not \"%1\"", text);
    Variable asked = variables.value(0);
    if (variables.size() != 1 || asked.count != 1 || asked.name.contains(QLatin1Char('/')))
        line->complain("--units takes one variable, without unit and count");
    for (const int unit : units.value_or(QList<int>())) {
        asked.unit = unit;
        *targets << Target{asked, filled("unit %1", unit), filled(": answered, %1 = ", asked.name)};
    }
}

/// The parts of a variable that have a request of their own, of at most `block` registers or bytes of bits.
void addParts(CommandLine *line, const Variable &whole, int block, QList<Target> *targets)
{
    if (isBitOfRegister(whole.area))
        line->complain("%1: scan asks for whole registers, hr or ir", whole.name);
    const int step = isPairArea(whole.area) ? 2 : 1; // addresses of a value
    Variable part = whole;
    for (int left = whole.count; left > 0; left -= part.count) {
        const int most = isBitArea(whole.area) ? 8 * block - part.address % 8 : qMax(1, block / step);
        part.count = qMin(left, most);
        Variable named = part; // counted as the user does
        named.address += whole.base;
        *targets << Target{part, placeText(named), QStringLiteral(" = ")};
        part.address += step * part.count;
    }
}

/// On a terminal, until the next text takes its place.
void showProgress(const QString &text)
{
    if (isatty(STDERR_FILENO) == 1)
        std::fprintf(stderr, "\r\x1b[K%s", qPrintable(text));
}

class Scan
{
public:
    explicit Scan(const PanelSession &session)
        : m_session(session), m_connection(session.connection(), session.trace(), interruptedFlag())
    {
    }

    ExitCode run(const CommandLine &line, const QList<Target> &targets, int retries);

private:
    void exchange(const Variable &variable);
    QString answer(const Target &target);

    const PanelSession &m_session;
    Connection m_connection;
    RW_VAR m_access; ///< of the last exchange
    Exchange m_exchange;
    int m_status = StatusUnknown;
    int m_answered = 0;
    int m_refused = 0; ///< of the answered
};

ExitCode Scan::run(const CommandLine &line, const QList<Target> &targets, int retries)
{
    bool hasLink = m_connection.open();
    int asked = 0;
    const auto counts = [&] {
        const QString text = filled("%1 of %2 asked, %3 answered", asked, targets.size(), m_answered);
        return m_refused > 0 ? filled("%1, %2 of these with an exception", text, m_refused) : text;
    };
    while (hasLink && asked < targets.size() && !std::ferror(stdout)) {
        const Target &target = targets.at(asked);
        showProgress(counts());
        m_exchange = Exchange();
        for (int i = 0; i <= retries && m_exchange.end != Exchange::Answered; ++i)
            exchange(target.variable);
        showProgress(QString());
        hasLink = m_exchange.end != Exchange::NotSent;
        if (!hasLink || isInterrupted())
            break;
        printLine(target.name + answer(target));
        ++asked;
    }
    if (asked > 0 || isInterrupted())
        printLine(counts());
    if (!hasLink && !isInterrupted())
        return line.fail(ExitNoLink, "%1: %2", m_session.peer(), linkCauseText(m_connection.cause()));
    // main() tells of lost output.
    return (m_answered > 0 || std::ferror(stdout)) && !isInterrupted() ? ExitDone : ExitFailed;
}

void Scan::exchange(const Variable &variable)
{
    const DriverLibrary &driver = m_session.driver();
    CommSettings settings;
    settings.remoteMode = m_session.connection().remote ? 1 : 0;
    queueReads(driver, settings, {variable});
    const Protocol *request = driver.nextRequest();
    if (!request) // a first "nothing to send" may only end a burst
        request = driver.nextRequest();
    if (!request)
        return;
    const Protocol asked = *request; // the driver's record ends with handReply
    m_access = asked.var;
    m_exchange = m_connection.exchange(asked);
    if (!m_exchange.before.lateUnits.isEmpty())
        printLine(filled("unit %1: a late reply, raise --timeout", m_exchange.before.lateUnits.first()));
    QByteArray reply = m_exchange.reply;
    m_status = driver.handReply(&reply, reply.size())->status;
}

/// An exception is an answer, unless it is a gateway's that has none.
QString Scan::answer(const Target &target)
{
    const Variable &variable = target.variable;
    const int exception = exceptionCode(m_exchange.reply);
    const bool isOfGateway = exception == ExceptionGatewayPath || exception == ExceptionGatewayTarget;
    m_answered += m_exchange.end == Exchange::Answered && !isOfGateway;
    m_refused += exception >= 0 && !isOfGateway;
    if (exception < 0 && isGoodStatus(m_status)) {
        QByteArray value;
        m_session.driver().getRegisterData(0, variable.area, variable.addressText(), variable.unit, value,
                                           variable.driverCount());
        return target.answered + valueText(variable, value);
    }
    if (m_exchange.cause == LinkCause::Silent)
        return QStringLiteral(": silent");
    return QStringLiteral(": ") + failureText(m_access, m_exchange, m_status, variable.base);
}

} // namespace

int scanCommand(const QStringList &arguments)
{
    CommandLine line("scan", "[OPTION]... --units UNITS [VARIABLE] | VARIABLE...", description);
    line.addOption("units", "Ask each of these units, such as 1-5,7.", "UNITS");
    addLinkOptions(&line, "0", "100", "1");
    addReadOptions(&line);
    if (const auto code = line.parse(arguments))
        return *code;
    if (line.isSet("units") && line.words().isEmpty() && !line.isSet("file"))
        line.parse(arguments + QStringList(QStringLiteral("hr:0")));
    PanelOptions options = linkOptions(&line);
    options.connection.patienceMs = patienceMs;
    options.connection.isSilenceUsual = line.isSet("units");
    const QList<Variable> variables = variablesToRead(&line, options.connection.remote, formatOption(&line));
    QList<Target> targets;
    if (line.isSet("units"))
        addUnits(&line, variables, &targets);
    for (int i = 0; !line.isSet("units") && i < variables.size(); ++i)
        addParts(&line, variables.at(i), options.block, &targets);
    options.block = qMax(2, options.block); // the driver reads a 32-bit value whole
    QList<Variable> asked;
    for (const Target &target : targets)
        asked << target.variable;
    PanelSession session(options, asked);
    if (const ExitCode code = prepare(line, &session); code != ExitDone)
        return code;
    printLine(session.peer());
    return Scan(session).run(line, targets, options.retries);
}

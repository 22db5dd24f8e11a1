// SPDX-License-Identifier: MIT
#include "commands.h"
#include "common_options.h"
#include "interrupt.h"
#include "panel_text.h"

#include "../explain/exchange_text.h"
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
register (or eight bits) of the variables is asked for by itself. Only reads;
Ctrl-C ends it.

Prints the station, a line for each unit or register as it comes, and a summary.
Ends with 0 when anything answered, 1 when nothing did, 3 without a connection.

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

QList<Target> unitTargets(CommandLine *line, QList<Variable> variables)
{
    const auto units = parseUnitNumbers(line->value("units"));
    if (!units)
        line->complain(
            QStringLiteral("--units takes different numbers from 1 to 255, as in 1-5,7, not \"%1\"")
                .arg(line->value("units")));
    const bool isOneValue = variables.size() == 1 && variables.first().count == 1;
    if (!isOneValue || variables.first().name.contains(QLatin1Char('/')))
        line->complain(QStringLiteral("--units takes one variable, without unit and count"));
    QList<Target> targets;
    for (const int unit : units.value_or(QList<int>())) {
        Variable variable = variables.value(0);
        variable.unit = unit;
        targets << Target{variable, QStringLiteral("unit %1").arg(unit),
                          QStringLiteral(": answered, %1 = ").arg(variable.name)};
    }
    return targets;
}

/// The parts of a variable that have a request of their own, of at most `block` registers or bytes of bits.
QList<Target> rangeTargets(CommandLine *line, const Variable &whole, int block)
{
    if (isBitOfRegister(whole.area))
        line->complain(QStringLiteral("%1: scan asks for whole registers, hr or ir").arg(whole.name));
    const int step = isPairArea(whole.area) ? 2 : 1; // addresses of a value
    QList<Target> targets;
    Variable part = whole;
    for (int left = whole.count; left > 0; left -= part.count) {
        part.count = isBitArea(whole.area) ? 8 * block - part.address % 8 : qMax(1, block / step);
        part.count = qMin(left, part.count);
        part.addressText = QString::number(part.address);
        targets << Target{part, placeText(part), QStringLiteral(" = ")};
        part.address += step * part.count;
    }
    return targets;
}

QList<Target> readTargets(CommandLine *line, const PanelOptions &options)
{
    QList<Variable> variables;
    QString error;
    if (line->isSet("units") && line->words().isEmpty() && !line->isSet("file"))
        variables << *parseVariable(QLatin1String(options.connection.remote ? "coil:0" : "hr:0"), &error);
    else
        variables = variablesToRead(line, options.connection.remote, formatOption(line));
    if (line->isSet("units"))
        return unitTargets(line, variables);
    QList<Target> targets;
    for (const Variable &variable : variables)
        targets << rangeTargets(line, variable, options.block);
    return targets;
}

class Scan
{
public:
    Scan(const PanelSession &session, const QList<Target> &targets, const PanelOptions &options)
        : m_session(session), m_targets(targets), m_options(options),
          m_connection(session.connection(), session.trace(), interruptedFlag()),
          m_hasProgress(isatty(STDERR_FILENO) == 1 && !(options.trace && options.traceFile.isEmpty()))
    {
    }

    /// False when there is no link, for linkCause().
    bool run()
    {
        bool hasLink = m_connection.open();
        for (int i = 0; hasLink && i < m_targets.size() && !isInterrupted() && !std::ferror(stdout); ++i) {
            if (m_hasProgress)
                std::fprintf(stderr, "\r%d of %d, %d answered", i, m_targets.size(), m_values + m_exceptions);
            hasLink = ask(m_targets.at(i));
        }
        if (m_hasProgress)
            std::fputs("\r\x1b[K", stderr);
        return hasLink || isInterrupted();
    }
    LinkCause linkCause() const { return m_connection.cause(); }
    bool hasAnswers() const { return m_values + m_exceptions > 0; }

    QString summary() const
    {
        const QString text =
            QStringLiteral(
                "%1 of %2 asked; values: %3, exceptions: %4, exceptions of a gateway: %5, no answer: %6")
                .arg(m_values + m_exceptions + m_ofGateway + m_none)
                .arg(m_targets.size())
                .arg(m_values)
                .arg(m_exceptions)
                .arg(m_ofGateway)
                .arg(m_none);
        return m_late > 0 ? QStringLiteral("%1; late replies: %2, raise --timeout").arg(text).arg(m_late)
                          : text;
    }

private:
    bool ask(const Target &target)
    {
        RW_VAR access;
        Exchange exchange;
        int status = StatusRetry;
        for (int tries = 0; tries <= m_options.retries && exchange.end != Exchange::Answered; ++tries) {
            status = exchangeOne(target.variable, &access, &exchange);
            if (exchange.end == Exchange::NotSent || exchange.cause == LinkCause::Stopped)
                return exchange.cause == LinkCause::Stopped;
        }
        const QString text = answer(target, access, exchange, status);
        if (m_hasProgress)
            std::fputs("\r\x1b[K", stderr);
        std::printf("%s%s\n", qPrintable(target.name), qPrintable(text));
        std::fflush(stdout);
        return true;
    }
    int exchangeOne(const Variable &variable, RW_VAR *access, Exchange *exchange);
    QString answer(const Target &target, const RW_VAR &access, const Exchange &exchange, int status);

    const PanelSession &m_session;
    const QList<Target> m_targets;
    const PanelOptions m_options;
    Connection m_connection;
    const bool m_hasProgress;
    int m_values = 0, m_exceptions = 0, m_ofGateway = 0, m_none = 0;
    int m_late = 0; ///< replies that came after their time-out
};

/// Returns the driver's status.
int Scan::exchangeOne(const Variable &variable, RW_VAR *access, Exchange *exchange)
{
    const DriverLibrary &driver = m_session.driver();
    CommSettings settings;
    settings.remoteMode = m_options.connection.remote ? 1 : 0;
    queueReads(driver, settings, {variable});
    const Protocol *request = driver.nextRequest();
    if (!request) // a first "nothing to send" may only end a burst
        request = driver.nextRequest();
    if (!request)
        return StatusUnknown;
    const Protocol asked = *request; // the driver's record ends with handReply
    *access = asked.var;
    *exchange = m_connection.exchange(asked);
    m_late += exchange->before.lateUnits.size();
    QByteArray reply = exchange->reply;
    return driver.handReply(&reply, reply.size())->status;
}

/// Counts the answer and tells it.
QString Scan::answer(const Target &target, const RW_VAR &access, const Exchange &exchange, int status)
{
    const Variable &variable = target.variable;
    if (status == StatusDone || status == StatusRemoteAccepted) {
        ++m_values;
        QByteArray value;
        m_session.driver().getRegisterData(0, variable.area, variable.addressText, variable.unit, value,
                                           variable.driverCount());
        return target.answered + valueText(variable, value);
    }
    const int exception = exceptionCode(exchange.reply);
    const bool isOfGateway = exception == ExceptionGatewayPath || exception == ExceptionGatewayTarget;
    ++(isOfGateway ? m_ofGateway : exception >= 0 ? m_exceptions : m_none);
    const bool isSilent = exchange.cause == LinkCause::Silent;
    return QStringLiteral(": ") +
           (isSilent ? QStringLiteral("silent") : failureText(access, exchange, status)) +
           QLatin1String(isOfGateway ? ", says the gateway" : "");
}

} // namespace

int scanCommand(const QStringList &arguments)
{
    CommandLine line(QStringLiteral("scan"),
                     QStringLiteral("[OPTION]... --units UNITS [VARIABLE] | VARIABLE..."),
                     QString::fromLatin1(description) + variablesHelp());
    line.addOption("units", QStringLiteral("Ask each of these units, such as 1-5,7."), "UNITS");
    addLinkOptions(&line, "0", "100", "1");
    addReadOptions(&line);
    if (const auto code = line.parse(arguments))
        return *code;
    PanelOptions options = linkOptions(&line);
    options.connection.patienceMs = patienceMs;
    options.connection.isSilenceUsual = line.isSet("units");
    const QList<Target> targets = readTargets(&line, options);
    if (!line.isFine())
        return line.fail();

    QList<Variable> variables;
    for (const Target &target : targets)
        variables << target.variable;
    options.block = qMax(2, options.block); // the driver reads a 32-bit value whole
    PanelSession session(options, variables);
    QString error;
    if (const ExitCode code = session.prepare(&error); code != ExitDone)
        return line.fail(code, error);
    tellOfSimulation(line);
    std::printf("%s\n", qPrintable(session.peer()));
    std::fflush(stdout);
    catchInterrupts();
    Scan scan(session, targets, options);
    const bool hasLink = scan.run();
    if (hasLink || scan.hasAnswers())
        std::printf("%s\n", qPrintable(scan.summary()));
    if (!hasLink)
        return line.fail(ExitNoLink,
                         QStringLiteral("%1: %2").arg(session.peer(), linkCauseText(scan.linkCause())));
    return scan.hasAnswers() ? ExitDone : ExitFailed;
}

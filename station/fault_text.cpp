// SPDX-License-Identifier: MIT
#include "fault_text.h"

#include <QtCore/QSet>

namespace {
enum ValueForm { NoValue, Number, FirstToLast };

struct KindRow
{
    const char *name;
    Fault::Kind kind;
    ValueForm form;
    int lowest;
    int highest;
};

const int longestWait = 3600000; // milliseconds

// A name may have two rows: one for the fault with a value, one for the fault without.
const KindRow kindRows[] = {
    {"silence", Fault::Silence, NoValue, 0, 0},
    {"delay", Fault::Delay, FirstToLast, 1, longestWait},
    {"late", Fault::Late, FirstToLast, 1, longestWait},
    {"cut", Fault::Cut, Number, 0, 65535},
    {"double", Fault::Double, NoValue, 0, 0},
    {"double", Fault::Repeat, FirstToLast, 0, longestWait},
    {"flood", Fault::Flood, Number, 1, 3600},
    {"glue", Fault::Glue, NoValue, 0, 0},
    {"close", Fault::Close, NoValue, 0, 0},
    {"reset", Fault::Reset, NoValue, 0, 0},
    {"refuse", Fault::Refuse, Number, 1, 3600},
    {"behind", Fault::Behind, NoValue, 0, 0},
    {"unit", Fault::Unit, Number, 0, 255},
    {"length", Fault::Length, Number, -65535, 65535},
    {"protocol", Fault::Protocol, Number, 0, 65535},
    {"transaction", Fault::Transaction, Number, 0, 65535},
    {"function", Fault::Function, Number, 0, 255},
    {"exception", Fault::Exception, Number, 1, 255},
    {"greet", Fault::Greet, Number, 1, 125},
};

// The row of the name. Of two rows, the one with a value when hasValue is true, else the other. nullptr: no
// row.
const KindRow *findKind(const QString &name, bool hasValue)
{
    const KindRow *found = nullptr;
    for (const KindRow &row : kindRows) {
        if (name == QLatin1String(row.name) && (!found || (row.form != NoValue) == hasValue))
            found = &row;
    }
    return found;
}

QString knownKinds()
{
    QStringList names;
    for (const KindRow &row : kindRows)
        names << QLatin1String(row.name);
    names.removeDuplicates();
    return names.join(QStringLiteral(", "));
}

// Reads one fault text, and keeps the first error that it finds.
class Reader
{
public:
    explicit Reader(const QString &text) { m_fault.text = text; }

    std::optional<Fault> read(QString *error)
    {
        const int at = m_fault.text.indexOf(QLatin1Char('@'));
        readKind(m_fault.text.left(at));
        if (at >= 0) {
            for (const QString &selector : m_fault.text.mid(at + 1).split(QLatin1Char(',')))
                readSelector(selector);
        }
        if (m_problem.isEmpty())
            return m_fault;
        if (error)
            *error = QStringLiteral("fault \"%1\": %2").arg(m_fault.text, m_problem);
        return std::nullopt;
    }

private:
    void readKind(const QString &part)
    {
        const int equals = part.indexOf(QLatin1Char('='));
        const QString name = part.left(equals);
        const QString value = equals < 0 ? QString() : part.mid(equals + 1);
        const KindRow *row = findKind(name, equals >= 0);
        if (!row)
            return report(QStringLiteral("unknown fault \"%1\"; the faults are %2").arg(name, knownKinds()));
        m_fault.kind = row->kind;
        if (row->form == NoValue && equals >= 0)
            report(QStringLiteral("%1 takes no value").arg(name));
        else if (row->form == Number)
            readNumber(*row, value);
        else if (row->form == FirstToLast)
            readFirstToLast(*row, value);
    }

    void readNumber(const KindRow &row, const QString &value)
    {
        m_fault.relative = row.kind == Fault::Length &&
                           (value.startsWith(QLatin1Char('+')) || value.startsWith(QLatin1Char('-')));
        m_fault.value = number(QLatin1String(row.name), value, row.lowest, row.highest);
    }

    void readFirstToLast(const KindRow &row, const QString &value)
    {
        const Fault::Range values = range(QLatin1String(row.name), value, row.lowest, row.highest);
        m_fault.value = values.first;
        m_fault.lastValue = values.last;
    }

    void readSelector(const QString &selector)
    {
        const int equals = selector.indexOf(QLatin1Char('='));
        const QString name = selector.left(equals);
        const QString value = equals < 0 ? QString() : selector.mid(equals + 1);
        if (m_selectors.contains(name))
            return report(QStringLiteral("selector %1 is given twice").arg(name));
        m_selectors << name;
        if (name == QLatin1String("unit"))
            m_fault.unit = range(name, value, 0, 255);
        else if (name == QLatin1String("function"))
            m_fault.function = range(name, value, 0, 255);
        else if (name == QLatin1String("address"))
            m_fault.address = range(name, value, 0, std::numeric_limits<int>::max());
        else if (name == QLatin1String("every"))
            m_fault.every = number(name, value, 1, std::numeric_limits<int>::max());
        else if (name == QLatin1String("nth"))
            m_fault.nth = number(name, value, 1, std::numeric_limits<int>::max());
        else
            report(QStringLiteral(
                       "unknown selector \"%1\"; the selectors are unit, function, address, every, nth")
                       .arg(name));
    }

    int number(const QString &name, const QString &text, int lowest, int highest)
    {
        bool ok = false;
        const bool hexadecimal = text.startsWith(QLatin1String("0x"));
        const int value = hexadecimal ? text.mid(2).toInt(&ok, 16) : text.toInt(&ok, 10);
        if (!ok || value < lowest || value > highest)
            report(QStringLiteral("%1 takes a number from %2 to %3").arg(name).arg(lowest).arg(highest));
        return value;
    }

    Fault::Range range(const QString &name, const QString &text, int lowest, int highest)
    {
        const int dash = text.indexOf(QLatin1Char('-'));
        Fault::Range range;
        range.first = number(name, text.left(dash), lowest, highest);
        range.last = dash < 0 ? range.first : number(name, text.mid(dash + 1), lowest, highest);
        if (range.last < range.first)
            report(QStringLiteral("%1 takes FIRST-LAST, with FIRST not above LAST").arg(name));
        return range;
    }

    void report(const QString &problem)
    {
        if (m_problem.isEmpty())
            m_problem = problem;
    }

    Fault m_fault;
    QSet<QString> m_selectors;
    QString m_problem;
};
} // namespace

std::optional<Fault> parseFault(const QString &text, QString *error)
{
    return Reader(text).read(error);
}

std::optional<QList<Fault>> parseFaults(const QStringList &texts, QString *error)
{
    QList<Fault> faults;
    for (const QString &text : texts) {
        const std::optional<Fault> fault = parseFault(text, error);
        if (!fault)
            return std::nullopt;
        faults << *fault;
    }
    return faults;
}

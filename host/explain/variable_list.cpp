// SPDX-License-Identifier: MIT
#include "variable_list.h"

#include "filled.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <array>
#include <cmath>

namespace {

const qint64 longestFile = 1 << 20; // bytes
const double largestScale = 1e12;

/// By Column.
const char columnNames[] = "name, variable, type, order, scale, unit, value";
enum Column { Name, VariableText, Type, Order, Scale, Unit, Value, Ignored, ColumnCount };
using Row = std::array<QString, ColumnCount>;

/// A list as far as it is read.
struct List
{
    int base = 0;
    QChar separator;
    QList<Column> columns; ///< of a CSV
    QString place;         ///< of the line
    QList<ListedVariable> variables;
};

/// The cells of a line; they may stand in quotes, which are doubled inside.
QStringList cellsOf(const QString &line, QChar separator)
{
    QStringList parts = line.split(QLatin1Char('"')); // every second one stands in quotes
    for (int i = 0; i < parts.size(); i += 2)
        parts[i].replace(separator, QChar::Null);
    QStringList cells = parts.join(QLatin1Char('"')).split(QChar::Null);
    for (QString &cell : cells) {
        cell = cell.trimmed();
        if (cell.startsWith(QLatin1Char('"')))
            cell = cell.mid(1, cell.size() - 2).replace(QLatin1String("\"\""), QLatin1String("\""));
    }
    return cells;
}

/// What is wrong with the scale; empty when the variable has it.
QString readScale(const QString &text, Variable *variable)
{
    const bool isOfNumber = variable->width() > 1 && variable->type != ValueType::Text &&
                            variable->type != ValueType::Hexadecimal;
    bool isNumber = false;
    variable->scale = text.toDouble(&isNumber);
    const double size = std::abs(variable->scale);
    if (!isNumber || !(size >= 1 / largestScale && size <= largestScale))
        return filled("the scale \"%1\" is no number from 1e-12 to 1e12", text);
    return isOfNumber || variable->scale == 1 ? QString() : QStringLiteral("only numbers have a scale");
}

QString readRow(Row row, List *list)
{
    static const QRegularExpression control(QStringLiteral("\\p{Cc}")), number(QStringLiteral("^\\d+$"));
    QString fault;
    if (!row[Order].isEmpty())
        row[Type] += QLatin1Char(':') + row[Order];
    if (!row[Type].isEmpty())
        row[VariableText] += QLatin1Char(':') + row[Type];
    std::optional<ListedVariable> listed = parseAssignment(row[VariableText], list->base, &fault);
    if (!listed)
        return fault;
    Variable &variable = listed->variable;
    if (!row[Name].isEmpty())
        variable.name = row[Name];
    variable.measure = row[Unit];
    if ((variable.name + variable.measure).contains(control))
        return QStringLiteral("the name or unit holds a control character");
    if (row[Unit].contains(number))
        return filled("the column \"unit\" holds units of measure; write %1/hr:5 for the station's unit",
                      row[Unit]);
    if (!row[Value].isEmpty())
        listed->value = row[Value];
    if (list->separator == QLatin1Char(';')) { // beside which a decimal comma is usual
        row[Scale].replace(QLatin1Char(','), QLatin1Char('.'));
        if (variable.type != ValueType::Text)
            listed->value.replace(QLatin1Char(','), QLatin1Char('.'));
    }
    if (!row[Scale].isEmpty())
        fault = readScale(row[Scale], &variable);
    listed->place = list->place;
    list->variables << *listed;
    return fault;
}

QString readHeader(const QString &line, List *list)
{
    const QStringList known = asText(columnNames).split(QStringLiteral(", ")) << QString();
    list->separator = QLatin1Char(line.contains(QLatin1Char(';')) ? ';' : ',');
    for (const QString &cell : cellsOf(line, list->separator)) {
        const int column = known.indexOf(cell.toLower());
        if (column < 0)
            return filled("there is no column \"%1\"; the columns are %2", cell, columnNames);
        list->columns << static_cast<Column>(column);
    }
    return asText(list->columns.contains(VariableText) ? "" : "no column is called \"variable\"");
}

/// The line's cells in the list's columns; a plain line has a variable and a name.
QString readCells(const QString &line, List *list)
{
    Row row;
    if (list->columns.isEmpty()) {
        const QString text = line.left(line.indexOf(QLatin1Char('#'))).simplified();
        row[VariableText] = text.section(QLatin1Char(' '), 0, 0);
        row[Name] = text.section(QLatin1Char(' '), 1);
        return readRow(row, list);
    }
    if (line.count(QLatin1Char('"')) % 2 != 0)
        return QStringLiteral("a quote is not closed");
    const QStringList cells = cellsOf(line, list->separator);
    if (!cells.mid(list->columns.size()).join(QString()).isEmpty())
        return QStringLiteral("it has more cells than the first line has columns");
    for (int i = 0; i < qMin(cells.size(), list->columns.size()); ++i)
        row[list->columns.at(i)] = cells.at(i);
    return readRow(row, list);
}

QString readLine(const QString &line, List *list)
{
    static const QRegularExpression nothing(QStringLiteral("^([,;\\s\"]*|#.*)$"));
    static const QRegularExpression base(QStringLiteral("^base[,;\\s]+([01])[,;\\s]*$"));
    static const QRegularExpression header(QStringLiteral("^((?!\\d)[^:]*[,;]|[ \"]*variable\\b)[^:]*$"),
                                           QRegularExpression::CaseInsensitiveOption);
    if (nothing.match(line).hasMatch())
        return QString();
    if (line.contains(QChar::ReplacementCharacter))
        return QStringLiteral("it is no UTF-8 text; save the list as UTF-8");
    if (!list->variables.isEmpty() || !list->columns.isEmpty())
        return readCells(line, list);
    const auto found = base.match(line);
    if (!found.hasMatch())
        return header.match(line).hasMatch() ? readHeader(line, list) : readCells(line, list);
    list->base = found.captured(1).toInt();
    return QString();
}

} // namespace

std::optional<ListedVariable> parseAssignment(const QString &text, int base, QString *error)
{
    const int equals = text.indexOf(QLatin1Char('='));
    const std::optional<Variable> variable = parseVariable(text.left(equals), error, base);
    if (!variable)
        return std::nullopt;
    return ListedVariable{*variable, equals < 0 ? QString() : text.mid(equals + 1), QString()};
}

std::optional<QList<ListedVariable>> readVariableList(const QString &path, int base, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = filled("cannot read %1: %2", path, file.errorString());
        return std::nullopt;
    }
    const QByteArray content = file.read(longestFile + 1);
    const QStringList lines = QString::fromStdString(content.toStdString()).split(QLatin1Char('\n'));
    List list;
    list.base = base;
    error->clear();
    if (content.size() > longestFile)
        *error = filled("%1 is larger than a list of variables may be (1 MiB)", path);
    for (int i = 0; i < lines.size() && error->isEmpty(); ++i) {
        list.place = filled("%1:%2: ", path, i + 1);
        const QString fault = readLine(lines.at(i).trimmed(), &list);
        if (!fault.isEmpty())
            *error = list.place + fault;
    }
    if (list.variables.isEmpty() && error->isEmpty())
        *error = filled("%1 holds no variable", path);
    return error->isEmpty() ? std::optional<QList<ListedVariable>>(list.variables) : std::nullopt;
}

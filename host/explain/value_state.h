// SPDX-License-Identifier: MIT
/// \file
/// The age and state of a shown value: when it was read, whether it changed, why its last read failed. The image keeps a
/// value for ever, so only the host knows its age. Plain data; whoever shares it locks it.

#pragma once

#include "span.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <map>

class ValueState
{
public:
    explicit ValueState(const Variable &variable);

    const Variable &variable() const { return m_variable; }
    const QString &addressText() const { return m_addressText; }
    const QString &place() const { return m_place; } ///< as placeText() tells it
    const Span &span() const { return m_span; }
    /// As last stored, in the driver's host-side layout.
    const QByteArray &value() const { return m_value; }
    /// The value differs from the one before, and no read failed since.
    bool hasChanged() const { return m_changed; }
    /// Why the last read of any part failed; empty when the last reads of all parts were good.
    QString failure() const;
    /// When the oldest part of the value was read; -1 while any part never was.
    qint64 readAtMs() const;

    /// A read that overlaps this variable was answered; `value` is what the image now holds for it.
    void store(const Span &read, const QByteArray &value, qint64 nowMs);
    /// A read that overlaps this variable failed. Other parts keep what their own last read came to.
    void fail(const Span &read, const QString &why);

    enum State { Fresh, Old, Never, Failed };
    /// Failed when the last read of any part did, whatever is known from before.
    State state(qint64 nowMs, qint64 freshForMs) const;
    /// "fresh", "old 12.4 s", "never", after a failure with "failed: ..." in front.
    QString stateText(qint64 nowMs, qint64 freshForMs) const;

private:
    /// Neighbouring bits or registers that were read together.
    struct Part
    {
        qint64 readAtMs = -1;
        QString failure; ///< of the last read
    };

    Part &partOf(const Span &read);
    std::map<int, Part>::iterator splitAt(int address);

    Variable m_variable;
    QString m_addressText;
    QString m_place;
    Span m_span;
    std::map<int, Part> m_parts; ///< by first address, the whole span; a long variable takes several requests
    QByteArray m_value;
    bool m_changed = false;
};

// SPDX-License-Identifier: MIT
/// \file
/// Where the connection reports every frame. A host that wants no trace passes NoTrace. Called on the communication
/// thread only.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

class LinkTrace
{
public:
    virtual ~LinkTrace() = default;

    /// False: nothing is written, so no text need be made.
    virtual bool isOn() const = 0;
    virtual void request(const QByteArray &frame) const = 0;
    /// A whole reply. `remark` says why it is not used as the answer; empty when it is.
    virtual void reply(const QByteArray &frame, const QString &remark) const = 0;
    /// Anything that is not a whole frame.
    virtual void comment(const QString &text) const = 0;
};

class NoTrace : public LinkTrace
{
public:
    bool isOn() const override { return false; }
    void request(const QByteArray &) const override {}
    void reply(const QByteArray &, const QString &) const override {}
    void comment(const QString &) const override {}
};

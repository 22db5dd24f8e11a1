// SPDX-License-Identifier: MIT
/// \file
/// Where the connection reports every frame. This class itself writes nothing. Called on the communication
/// thread only.

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

class LinkTrace
{
public:
    virtual ~LinkTrace() = default;

    virtual void request(const QByteArray & /*frame*/) const {}
    /// A whole reply. `remark` says why it is not used as the answer; empty when it is.
    virtual void reply(const QByteArray & /*frame*/, const QString & /*remark*/) const {}
    /// Anything that is not a whole frame.
    virtual void comment(const QString & /*text*/) const {}
};

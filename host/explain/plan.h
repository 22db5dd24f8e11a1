// SPDX-License-Identifier: MIT
/// \file
/// The requests that a list of variables becomes: the driver is asked for its requests and given made-up
/// replies, until its poll list has been walked once. Touches no device. On the main thread, with no
/// communication loop running: the driver is one object per process.

#pragma once

#include "span.h"

#include "../link/driver_library.h"

#include <QtCore/QStringList>

/// One request of the poll list.
struct PlannedRequest
{
    Span span; ///< bits (areas 0 and 1) or registers
    QByteArray frame;
    int replyLength = 0; ///< bytes
};

/// Elements that a request reads although no variable asks for them: addresses `first` to `last`.
struct Gap
{
    int first = 0;
    int last = 0;
};

/// Builds the poll list, with at most `block` registers (or bytes of bits) in a request, and walks it once.
/// Empty when the driver does not give all the requests that it announced.
QList<PlannedRequest> planRequests(const DriverLibrary &driver, const QList<Variable> &variables, int block);

/// For each request the variables that lie in it, whole or in part, in the order of `variables`.
QList<QList<Variable>> carriedVariables(const QList<PlannedRequest> &requests,
                                        const QList<Variable> &variables);

/// In ascending order. `variables` are those that lie in the request.
QList<Gap> gapsOf(const PlannedRequest &request, const QList<Variable> &variables);

/// One paragraph: the request, its bytes, the variables that it carries, its gaps, and warnings. `variables` as above.
QStringList planLines(const PlannedRequest &request, const QList<Variable> &variables);

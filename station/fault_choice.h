// SPDX-License-Identifier: MIT
/// \file
/// Decides which faults apply to a request or to a new connection. The station's thread calls this once for
/// each request and once for each connection.

#pragma once

#include "fault.h"
#include "request_facts.h"

#include <QtCore/QList>

/// The faults that apply to the request, in the order of `faults`. Counts the request in each fault that
/// selects it.
QList<Fault> chooseFaults(QList<Fault> &faults, const RequestFacts &request);

/// The `greet` faults that apply to a new connection. Counts the connection in each of them.
QList<Fault> chooseGreetings(QList<Fault> &faults);

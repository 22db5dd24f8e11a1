// SPDX-License-Identifier: MIT
/// \file
/// Modbus TCP master without input or output of its own. A host includes this one header.
///
/// The host hands over its settings and call-backs (host_control.h) and the variables to poll
/// (varlists/read_list.h). Then one thread of the host alternates ComCommunication
/// (communication_cycle.h), which gives the next request to send, and DataCom (reply_handling.h),
/// which takes the reply or the lack of one. Its other threads read and write values at any time with
/// GetRegisterData (image/host_reads.h) and SetRegisterData (image/host_writes.h).

#pragma once

#include "checksums.h"
#include "communication_cycle.h"
#include "driver_object.h"
#include "host_control.h"
#include "records.h"
#include "reply_handling.h"
#include "reply_judging.h"
#include "stations.h"
#include "status_codes.h"

#include "../frames/analog_write_requests.h"
#include "../frames/bit_in_register_write.h"
#include "../frames/read_requests.h"
#include "../frames/write_requests.h"

#include "../varlists/address_text.h"
#include "../varlists/areas.h"
#include "../varlists/grouping.h"
#include "../varlists/once_reads.h"
#include "../varlists/read_list.h"
#include "../varlists/remote_frames.h"
#include "../varlists/write_queue.h"

#include "../image/host_reads.h"
#include "../image/host_writes.h"
#include "../image/local_writes.h"
#include "../image/packing.h"
#include "../image/reply_storage.h"
#include "../image/station_values.h"

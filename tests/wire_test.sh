#!/bin/bash
# SPDX-License-Identifier: MIT
# wire_test.sh MODBUS-PANEL: what goes over the wire, as an independent decoder sees it. Polls all eight areas at three
# units and writes in each writable area, then compares every request, field by field, with what was asked for.
set -euo pipefail
panel=$1
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

variables=()
for unit in 1 2 3; do
    for variable in coil:0*8 input:0*8 irbit:1.3 hrbit:1.3 ir:10*2 hr:10*2 ir32:10 hr32:10; do
        variables+=("$unit/$variable")
    done
done
$panel poll --passes 1 --trace="$work/trace" "${variables[@]}" >/dev/null
$panel write --simulate --trace="$work/trace" 2/coil:20=1 2/hr:30=0x1234 2/hr32:40=0x12345678 2/hrbit:50.3=1 0/coil:7=0 >/dev/null

# Columns: unit, function, address, registers, bits, byte count, registers' values, value; then what must be empty.
fields=(mbtcp.unit_id modbus.func_code modbus.reference_num modbus.word_cnt modbus.bit_cnt modbus.byte_cnt
    modbus.regval_uint16 modbus.data)
decode() {
    grep -v '^#' "$work/trace" |
        text2pcap -q -D -t '%Y-%m-%d %H:%M:%S.%f' -4 127.0.0.1,127.0.0.1 -T 40000,502 - "$work/frames.pcap" 2>/dev/null
    tshark -r "$work/frames.pcap" -o mbtcp.desegment:FALSE -Y "$1" -T fields -E separator=, -E 'aggregator=|' \
        "${@:2}" 2>/dev/null
}

{
    for unit in 1 2 3; do
        printf "$unit,%s\n" 1,0,,8,,, 2,0,,8,,, 4,1,11,,,, 3,1,11,,,,
    done
    printf '%s\n' 2,5,20,,,,,ff00 2,16,30,1,,2,4660, '2,16,40,2,,4,4660|22136,' 2,3,50,1,,,, 2,6,50,,,,,003a 0,5,7,,,,,0000
} >"$work/expected"
decode 'tcp.dstport == 502' "${fields[@]/#/-e}" >"$work/seen"
diff -u --label 'asked for' --label 'on the wire' "$work/expected" "$work/seen"

# Requests and replies: dissected as Modbus, none malformed, protocol 0. A reply has the number of the request before it.
decode 'frame' -e tcp.dstport -e mbtcp.prot_id -e modbus.func_code -e _ws.malformed -e mbtcp.trans_id >"$work/frames"
total=$(grep -c . "$work/frames")
sound=$(awk -F, '$1 == 502 { asked = $5 } $2 == 0 && $3 > 0 && $4 == "" && $5 > 0 && $5 == asked' "$work/frames" | grep -c .)
numbers=$(awk -F, '$1 == 502 { print $5 }' "$work/frames" | sort -u | grep -c .)
replies=$((total - $(grep -c . "$work/expected")))
if grep '^[IO]' "$work/trace" | grep -vE '^[IO] [0-9]{4}-[0-9]{2}-[0-9]{2} [0-9:]{8}\.[0-9]{6}$'; then
    echo "these lines lack date or time"
    exit 1
fi
echo "$sound of $total frames sound, $replies of them replies"
[ "$sound" -eq "$total" ] && [ "$replies" -eq 17 ] && [ "$numbers" -eq $((total - replies)) ]

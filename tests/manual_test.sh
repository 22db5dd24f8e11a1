#!/bin/bash
# SPDX-License-Identifier: MIT
# manual_test.sh MODBUS-PANEL MANUAL-PAGE: every option in the help of a command stands in the manual page, and no others.
set -euo pipefail
panel=$1
page=$2
commands=$($panel --help | sed -n 's/^  \([a-z]\+\) .*/\1/p' | grep -v modbus-panel)
help=$(for command in $commands; do $panel "$command" --help | grep -oE '^  (-h, )?--[a-z-]+'; done | grep -oE -- '--[a-z-]+' | sort -u)
manual=$(sed 's/\\-/-/g' "$page" | grep -oE -- '--[a-z-]+' | grep -v -- '--version' | sort -u)
diff -u --label help --label manual <(echo "$help") <(echo "$manual")
for command in $commands; do
    grep -q "^\.B modbus-panel $command\$" "$page" || { echo "the manual page lacks the command $command"; exit 1; }
done
echo "$(wc -l <<<"$help") options of $(wc -w <<<"$commands") commands stand in the manual page"

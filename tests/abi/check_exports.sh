#!/bin/sh
# The dynamic symbols of the library are exactly those listed: check_exports.sh NM LIBRARY LIST
set -eu
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
"$1" -D --defined-only --extern-only "$2" | awk '{print $NF}' | LC_ALL=C sort >"$actual"
diff "$3" "$actual" || { echo "left: listed in $3 alone; right: in the library alone"; exit 1; }

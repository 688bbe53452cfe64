#!/bin/sh
# The symbols that the library shows are exactly those listed: check_exports.sh NM OBJDUMP LIBRARY LIST
set -eu
actual=$(mktemp)
trap 'rm -f "$actual"' EXIT
case $3 in
*.dll) "$2" -p "$3" | sed -n '/Ordinal\/Name Pointer/,/^$/s/^\t\[.*\] //p' ;;
*) "$1" -D --defined-only --extern-only "$3" | awk '{print $NF}' ;;
esac | sed 's/.* //' | LC_ALL=C sort >"$actual"
diff "$4" "$actual" || { echo "left: listed in $4 alone; right: in the library alone"; exit 1; }

#!/bin/sh
# A program prints what a file holds: check_output.sh PROGRAM EXPECTED FOLDER
set -eu
rm -rf "$3"
mkdir -p "$3"
cd "$3"
"$1" >output
[ -s "$2" ]
diff "$2" output

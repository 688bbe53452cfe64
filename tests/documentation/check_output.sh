#!/bin/sh
# Fails unless a program prints the content of a file.  check_output.sh PROGRAM EXPECTED FOLDER
set -eu
rm -rf "$3"
mkdir -p "$3"
cd "$3"
"$1" >output
[ -s "$2" ]
diff "$2" output

#!/bin/sh
# table_tour over the samples loses nothing, and it isn't blind: a document that JSON can't carry is told from one that
# it can.  check_table_tour.sh PROGRAM SAMPLES FOLDER
set -eu
program=$1
samples=$2
folder=$3
rm -rf "$folder"
mkdir -p "$folder"
output=$folder/output.txt

# Runs the program over a game document and compares its exit status.
tour() {
    expected=$1
    status=0
    "$program" "$2" "$samples/settings.json" "$folder" >"$output" 2>&1 || status=$?
    [ $status -eq "$expected" ] || { cat "$output"; echo "$2: exit status $status, not $expected"; exit 1; }
}

# Lines of the output, spaces squeezed.
says() {
    sed -E 's/ +/ /g; s/^ //' "$output" | grep -qxF -- "$1" || { cat "$output"; echo "missing: $1"; exit 1; }
}

tour 0 "$samples/saltmarch.table"
says "Nothing was lost."
says "origin float3 [-2048, -64, -2048]"           # no blanks behind the commas
says "build real 2024.3"                           # a comment behind the value
says "texts table 73 entries"
says "anchor string \"C\""                         # the one behind a block comment, not the one inside
says "hash integer -559038737"                     # more than 32 bits
says "crew alone record renaming crew: integer 7"
says "the table argument removed speed: no entry"
grep -q '"greeting":"Ahoj — γειά σου — 海へようこそ ⚓"' "$folder/settings.json"

# A save doubles backslashes, and a load takes them as they are.
printf 'path = data\\ships\n' >"$folder/backslash.table"
tour 1 "$folder/backslash.table"
says 'path: was "data\ships", came back as "data\\ships"'
says "Not all of it came back."

printf 'key_alone\n' >"$folder/broken.table"
tour 2 "$folder/broken.table"

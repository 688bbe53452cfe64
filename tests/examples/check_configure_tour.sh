#!/bin/sh
# configure_tour over the samples loses nothing, and it isn't blind: files that one of the forms can't carry are told
# from those that both can.  check_configure_tour.sh PROGRAM SAMPLES FOLDER
set -eu
program=$1
samples=$2
folder=$3
rm -rf "$folder"
mkdir -p "$folder/made"
output=$folder/output.txt

# Runs the program over files and compares its exit status.
tour() {
    expected=$1
    shift
    status=0
    "$program" "$folder/made" "$@" >"$output" 2>&1 || status=$?
    [ $status -eq "$expected" ] || { cat "$output"; echo "$*: exit status $status, not $expected"; exit 1; }
}

# The tour of a file that is made of a text in the format of printf.
text_tour() {
    printf "$2" >"$folder/text.txt"
    tour "$1" "$folder/text.txt"
}

# Lines of the output, spaces squeezed.
says() {
    sed -E 's/ +/ /g; s/^ //' "$output" | grep -qxF -- "$1" || { cat "$output"; echo "missing: $1"; exit 1; }
}

tour 0 "$samples"/config/*
says "Nothing was lost."

# Every entry counted, once under each kind of key that it is fit for.
text_tour 0 'A = 1 -- b = 2
    "C/D" = [3,4] Drop : 7 : = x drop:7 = "y" 12 = { u, "v w" { } }
    _default = { oil = 2 lit = no } t = { OIL = 3 }'
says "3 tables, 1 arrays, 9 texts, 1 of them intervals"
says "text found by text 9, by number 1, by path 1, by pieces 1, in a default table 1"
says "compiled found by text 9, by number 1, by path 1, by pieces 1, in a default table 1"
says "compiled the added table gave 15 right answers of 15"
# What was edited is what was saved: two values, and an array that lost its first element and got a last one.
tr -d '\r\n\t ' <"$folder/made/text.txt" >"$folder/edited.txt"
for text in 'a="changedonthetour"c\d="[-2.5,7)"drop:7:="x"' '12={"vw"{}"onemore"}'; do
    grep -qF -- "$text" "$folder/edited.txt" || { cat "$folder/edited.txt"; echo "not saved: $text"; exit 1; }
done

# A key with a blank is saved bare, and is then the end of something else.
text_tour 1 'a = 1 "two words" = 2 z = 3'
says "root.two words: was lost"
says "root.words: was never there"
# The compiled form has one entry a key.
text_tour 1 'a = 1 A = 2 z = 3'
says "root: had 3 entries, came back with 2"
says "Not all of it came back."

text_tour 2 '= 1'
text_tour 2 'tour = { } z = 1'
tour 2 "$folder/missing.txt"

#!/bin/sh
# configure_tour loses nothing of the samples, and it notices losses: it reports files that one of the forms can't
# express.
. "$(dirname "$0")/tour.sh"

# Runs the program over a file with a text, which is written as a format of printf: text_tour STATUS TEXT
text_tour() {
    printf "$2" >"$folder/text.txt"
    tour "$1" "$folder/made" "$folder/text.txt"
}

tour 0 "$folder/made" "$samples"/config/*
has_line "Nothing was lost."

# Every entry is counted once for each kind of key that can name it.
text_tour 0 'A = 1 -- b = 2
    "C/D" = [3,4] Drop : 7 : = x drop:7 = "y" 12 = { u, "v w" { } }
    _default = { oil = 2 lit = no } t = { OIL = 3 }'
has_line "3 tables, 1 arrays, 9 texts, 1 of them intervals"
has_line "text found by text 9, by number 1, by path 1, by pieces 1, in a default table 1"
has_line "compiled found by text 9, by number 1, by path 1, by pieces 1, in a default table 1"
has_line "compiled the added table gave 15 right results of 15"
# The edits were saved: two values, and an array without its first element and with a new last one.
tr -d '\r\n\t ' <"$folder/made/text.txt" >"$folder/edited.txt"
for text in 'a="changedonthetour"c\d="[-2.5,7)"drop:7:="x"' '12={"vw"{}"onemore"}'; do
    grep -qF -- "$text" "$folder/edited.txt" || { cat "$folder/edited.txt"; echo "not saved: $text"; exit 1; }
done

# A key with a blank is saved without quotes, so only its last word is read back as the key.
text_tour 1 'a = 1 "two words" = 2 z = 3'
has_line "root.two words: was lost"
has_line "root.words: was never there"
# The compiled form keeps one entry for each key.
text_tour 1 'a = 1 A = 2 z = 3'
has_line "root: had 3 entries, came back with 2"
has_line "Not all of it came back."

text_tour 2 '= 1'
text_tour 2 'tour = { } z = 1'
tour 2 "$folder/made" "$folder/missing.txt"

#!/bin/sh
# table_tour loses nothing of the samples, and it notices losses: it reports a document that JSON can't express.
. "$(dirname "$0")/tour.sh"

tour 0 "$samples/saltmarch.table" "$samples/settings.json" "$folder"
has_line "Nothing was lost."
has_line "origin float3 [-2048, -64, -2048]"           # no blanks after the commas
has_line "build real 2024.3"                           # a comment after the value
has_line "texts table 73 entries"
has_line "anchor string \"C\""                         # the one after a block comment, not the one in it
has_line "hash integer -559038737"                     # more than 32 bits
has_line "crew alone record renaming crew: integer 7"
has_line "the table argument removed speed: no entry"
grep -q '"greeting":"Ahoj — γειά σου — 海へようこそ ⚓"' "$folder/settings.json"

# A save doubles backslashes, and a load leaves them as they are.
printf 'path = data\\ships\n' >"$folder/backslash.table"
tour 1 "$folder/backslash.table" "$samples/settings.json" "$folder"
has_line 'path: was "data\ships", came back as "data\\ships"'
has_line "Not all of it came back."

printf 'key_alone\n' >"$folder/broken.table"
tour 2 "$folder/broken.table" "$samples/settings.json" "$folder"

# What the checks of both tours share. They are run as  sh CHECK PROGRAM SAMPLES FOLDER
set -eu
program=$1
samples=$2
folder=$3
rm -rf "$folder"
mkdir -p "$folder/made"
output=$folder/output.txt

# Runs the program with arguments and compares its exit status: tour STATUS ARGUMENT...
tour() {
    expected=$1
    shift
    status=0
    "$program" "$@" >"$output" 2>&1 || status=$?
    [ $status -eq "$expected" ] || { cat "$output"; echo "$*: exit status $status, not $expected"; exit 1; }
}

# Fails unless a line is in the output. Several blanks count as one.
has_line() {
    sed -E 's/ +/ /g; s/^ //' "$output" | grep -qxF -- "$1" || { cat "$output"; echo "missing: $1"; exit 1; }
}

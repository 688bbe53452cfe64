#!/usr/bin/env bash
# Runs the command on small files that it makes in FOLDER, and compares output, exit status and what is in the files
# afterwards:  check_command.sh COMMAND SAMPLES FOLDER
set -uo pipefail
command=$1
samples=$2
rm -rf "$3"
mkdir -p "$3"
cd "$3" || exit 1
failed=0
fail() { printf '%s\n' "$*"; failed=1; }

# is STATUS OUTPUT ARGUMENT...: checks the exit status, and standard output (standard error of a failure) byte for byte.
# The command reads the file `input`.
is() {
    local status=0 expected_status=$1 expected=$2 output errors
    shift 2
    timeout 60 "$command" "$@" <input >out 2>err || status=$?
    output=$(cat out; echo x) errors=$(cat err; echo x)
    output=${output%x} errors=${errors%x}
    [ "$expected_status" -eq 0 ] && [ -n "$errors" ] && output+="and on standard error: $errors"
    [ -n "$errors" ] && [ -z "$output" ] && output=$errors
    [ $status -eq "$expected_status" ] && [ "$output" = "${expected:+$expected$'\n'}" ] && return
    fail "tessarin $*: status $status, expected $expected_status"$'\n'"$output"$'\n  expected\n'"$expected"
}
# holds FILE TEXT: checks a file's content, without its carriage returns.
holds() { [ "$(tr -d '\r' <"$1")" = "$2" ] || fail "$1 holds: $(cat "$1")"; }
# clean FOLDER WHAT: checks that no temporary file was left in it.
clean() { [ -z "$(find "$1" -name '.tessarin*' -o -name 'tessarin.*')" ] || fail "$2 left a file behind in $1"; }

printf 'Title = Fog\nlist = { a, b }\n_default = { oil = 3  tags = { x } }\nlamp = { "models/Bog.mesh" = 1 }\nnone =\n' >text
printf 'Title = Fog\n' >input

# ---- configuration: reading
is 0 'text  table, 5 entries
├─ title = "Fog"
├─ list  array, 2 elements
│  ├─ [0] = "a"
│  └─ [1] = "b"
├─ _default  table, 2 entries
│  ├─ oil = "3"
│  └─ tags  array, 1 element
│     └─ [0] = "x"
├─ lamp  table, 1 entry
│  └─ models\bog.mesh = "1"
└─ none = null  no value' config show text
is 0 $'text  table, 5 entries\n├─ title = "Fog"\n├─ list  array, 2 elements\n├─ _default  table, 2 entries
├─ lamp  table, 1 entry\n└─ none = null  no value' config show --depth 1 text
is 0 $'\e[1mlist/0\e[0m = \e[32m"a"\e[0m' config show --color always text list/0
is 0 '["a","b"]' config show --json text LIST
is 0 'Fog' config get text title
is 0 '3' config get text lamp/oil
is 0 'x' config get text lamp/tags/0
is 0 '1' config get text 'lamp/"models/bog.mesh"'
is 0 '1' config get text 'lamp/Models\Bog.mesh'
is 0 '["x"]' config get --json text lamp/tags
is 0 '-7' config get --fallback -7 text lamp/rope
is 1 'tessarin: text: has no none' config get text none
is 1 'tessarin: text: has no list/2' config get text list/2
is 1 'tessarin: text: list is not a plain value: array, 2 elements' config get text list
is 1 'tessarin: text: has no lamp/oil' config show text lamp/oil
is 0 'Fog' config get - title
is 1 'tessarin: absent: No such file or directory' config get absent title
is 1 'tessarin: .: is a folder' config show .
is 2 $'tessarin: KEY: a quote is not closed, or text follows its end: "a"b\nTry `tessarin --help`.' config show text '"a"b'
is 2 $'tessarin: unknown argument: shew\nTry `tessarin --help`.' config shew text
is 2 $'tessarin: FILE is required\nTry `tessarin --help`.' config show

# ---- configuration: changing. A failure leaves the file as it was, and no other file beside it.
cp text kept
is 1 "tessarin: kept: is not written: the text form can't hold title" config set kept title 'a"b'
is 1 "tessarin: kept: is not written: the text form can't hold empty" config add kept empty --array
is 1 'tessarin: kept: has Title already' config add kept Title x
is 1 'tessarin: kept: has no deep on the path' config add kept deep/er x
is 1 'tessarin: kept: list is not a plain value' config set kept list x
is 1 'tessarin: kept: has no rope' config remove kept rope
is 1 'tessarin: kept: adds to an array only at its end, which is `-`' config add kept list/0 x
is 2 $'tessarin: KEY: is empty\nTry `tessarin --help`.' config set kept '' x
is 2 $'tessarin: VALUE, --table or --array is required\nTry `tessarin --help`.' config add kept x
cmp -s text kept || fail 'a change that failed was written'
printf 'a = 1 -- one\nlist = { x }\n' >edited
chmod 640 edited
ln -s edited link
is 0 '' config set link A -5
is 0 '' config add edited list/- y
is 0 '' config add edited list/2 --table
is 0 '' config add -p edited one/two/Three ''
is 0 '' config add edited 'one/"maps//Bog"' m
is 0 '' config remove edited list/0
holds edited $'a = "-5"\nlist = {\n\t\t"y"\n\t\t{\n           }\n       }\none = {\n\t\ttwo = {\n\t\t\t\tthree = ""
              }\n\t\tmaps\\bog = "m"\n      }'
[ -L link ] && [ "$(stat -c %a edited)" = 640 ] || fail 'a link or the permissions are gone'
is 0 $'title = "Mist"\r' config set - title Mist
printf 'k = 1\n' >input
is 0 '' config set - k 2 -o elsewhere
holds elsewhere 'k = "2"'

# ---- configuration: forms
is 0 '' config compile text binary
is 0 '' config text binary again
is 0 '' config diff text again
is 1 'tessarin: binary: is compiled; convert it with `tessarin config text` first' config set binary title x
printf '_default = { tags = { x } oil = 3 } oar = 1\nlist = { z b c }\ntitle = Fog\nnone = ""\n' >input
is 1 $'- lamp = table, 1 entry\n- list/0 = "a"\n+ list/0 = "z"\n+ list/2 = "c"\n+ oar = "1"' config diff text -
head -c 100 binary >damaged
is 1 'tessarin: damaged: is a damaged compiled file' config show damaged
printf '= 1\n' >keyless
is 1 'tessarin: keyless: has an `=` without a key, or a key or a text that is too long' config show keyless
printf 'k = 1\nk = 2\n' >twice
"$command" config compile twice twice.bin 2>err
holds err 'tessarin: twice: warning: has k more than once; the last one counts'
"$command" config show text >/dev/full 2>err && fail 'a full disk is no failure'
holds err "tessarin: standard output: can't be written"
is 1 'tessarin: /dev/full: No space left on device' config text text /dev/full

# ---- folders: only changed files are compiled, and a failure doesn't stop the rest
mkdir -p tree/sub tree/.hidden
tee tree/b.txt tree/sub/a.txt tree/other <text >tree/.hidden/c.txt
cp keyless tree/bad.txt
# totals TEXT [OPTION]: checks the totals of a compilation in which one of three files fails.
totals() {
    "$command" config compile --tree --match '*.txt' "${@:2}" tree tree/made >out 2>err
    grep -q "^3 files: $1, 1 failed" out && grep -q '^tessarin: tree/bad.txt: has' err || fail "not $1:" "$(cat out err)"
}
totals '2 compiled, 0 unchanged'
totals '0 compiled, 2 unchanged'
touch -d '2001-01-01' tree/b.txt # an older source has changed, too
totals '1 compiled, 1 unchanged'
totals '2 compiled, 0 unchanged' --force
is 0 '' config diff text tree/made/sub/a.txt

# No source is replaced, whatever path its folder or file is named by; no link leads to a cycle or stops the rest.
mkdir -p same/sub through; printf 'k = 1\nk = 2\n' >$'same/a\e[2J'; cp text same/sub/b
ln -s nowhere same/loop; ln -s loop same/nowhere; ln -s .. same/sub/up; ln -s ../same/sub through/sub
is 1 'tessarin: same/sub/..: holds the sources, which would be replaced' config compile --tree --force same same/sub/..
"$command" config compile --tree same through >out 2>err
grep -q '^2 files: 1 compiled, 0 unchanged, 1 failed' out && cmp -s text same/sub/b || fail "$(cat out)"
grep -qxF 'tessarin: same/sub/b: would be replaced by its own compiled form' err || fail "$(cat err)"
grep -qxF 'tessarin: same/a\x1b[2J: warning: has k more than once; the last one counts' err || fail "$(cat err)"

mkdir many
for i in {1..500}; do printf 'k = 1' >many/$i; done
for signal in TERM HUP PIPE; do
    timeout --foreground -s $signal 0.03 "$command" config compile --tree --force many made >/dev/null
    clean made $signal
done

# ---- files that aren't plain, and writes and reads that end early
mkfifo pipe
printf 'k = 1\n' >pipe & is 0 '1' config get pipe k
wait $! || fail 'a pipe was closed before it was read'
ln -s new dangling
long=$(printf 'x%.0s' {1..255})
is 0 '' config set edited a 1 -o dangling
is 0 '' config set edited a 1 -o "$long"
cmp -s new "$long" && [ -L dangling ] || fail 'a link to a new file is gone'
{ echo before; "$command" config text twice /dev/stdout; echo after; } >out
holds out $'before\nk = "1"\nk = "2"\nafter'
printf 'k = "%02000d"\n' 0 >large; cp large kept
(ulimit -f 1; "$command" config set kept k "$(printf '%02000d' 1)" 2>/dev/null) && fail 'a cut file is no failure'
cmp -s large kept || fail 'a failed write was kept'
mkdir temporary
mkfifo open; exec 3<>open
umask 0 # nothing but the command's own mode protects its files
TMPDIR=$PWD/temporary "$command" config show - <open & waiting=$!
for _ in {1..300}; do [ -n "$(ls temporary)" ] && break; sleep 0.1; done
[ "$(stat -c %a temporary/*)" = 600 ] || fail 'others can read a copy of standard input'
kill $waiting; wait $waiting 2>/dev/null; exec 3>&-
clean temporary 'a signal'

# ---- several commands on one file, files of others, and commands that are killed
# start TARGET: runs a command that has TARGET until what it reads from descriptor 3 ends.
start() {
    "$command" config set - k 2 -o "$1" <open 2>err 3>&- & waiting=$!
    for _ in {1..300}; do [ -e ".tessarin.$1" ] && break; sleep 0.1; done
}
printf 'k = 1\n' >shared
for i in {1..20}; do "$command" config add shared n$i x & done; wait
[ "$(grep -c '"x"' shared)" = 20 ] || fail "of 20 additions at once only these are there: $(cat shared)"
chmod 6754 shared
[ $EUID -ne 0 ] || { chown nobody shared; chmod 6754 shared; }
owner=$(stat -c %U shared)
exec 3<>open
start shared
[ "$(stat -c %a .tessarin.shared)" = 600 ] || fail 'others can open a draft'
timeout 1 "$command" config set shared k 3 && fail 'a file was changed while another command had it'
[ -e .tessarin.shared ] || fail 'a draft was removed that a command still writes'
kill -9 $waiting; wait $waiting 2>/dev/null
is 0 '' config set shared k 3
clean . 'a killed command'
[ "$(stat -c '%a %U' shared)" = "754 $owner" ] || fail "not the owner or the mode: $(stat -c '%a %U' shared)"
start unborn
echo other >unborn; printf 'k = 1\n' >&3; exec 3>&-
wait $waiting && fail 'a new file replaced that of another program'
holds err 'tessarin: unborn: is not written: another program has created it'
holds unborn other
ln -s void empty
is 1 'tessarin: absent: No such file or directory' config text absent empty
[ ! -e void ] || fail 'a command that failed created a file'
umask 22
if [ $EUID -eq 0 ] && grep -qx 1 /proc/sys/fs/protected_symlinks; then
    mkdir -m 1777 sticky; ln -s ../kept sticky/link; chown -h nobody sticky/link
    is 1 'tessarin: sticky/link: Permission denied' config text text sticky/link
fi
is 2 $'tessarin: AFTER: only one of the two files can be standard input\nTry `tessarin --help`.' config diff - -
printf 'a\e[2J = 1\n' >input
is 0 $'standard input  table, 1 entry\n└─ a\\x1b[2j = "1"' config show -
is 1 'tessarin: a\nb: No such file or directory' config show $'a\nb'

# ---- tables
printf 'day 1\nhour = 5.75\nname = "A \xff"\nat [1,2.5,3]\nin { a/b = x }\n' >readable
is 0 'readable  table, 5 entries
├─ day = 1  integer
├─ hour = 5.75  real
├─ name = "A \xff"
├─ at = [1, 2.5, 3]  float3
└─ in  table, 1 entry
   └─ a/b = "x"' table show readable
is 0 '[1, 2.5, 3]' table get readable at
is 0 'x' table get readable 'in/"a/b"'
is 1 'tessarin: readable: has no day/in' table get readable day/in
is 0 '{"a/b":"x"}' table get --json readable in
is 0 $'"A \uFFFD"' table get --json readable name
is 0 '' table json "$samples/saltmarch.table" game.json
is 0 '412.5' table get --fallback 412.5 game.json start/nowhere
is 0 '[412.5, 0, -88.25]' table get game.json start/position
printf '{"a": 1,\n "b": }' >input
is 1 'tessarin: standard input: is broken JSON at line 2, column 7: Invalid value.' table show -
printf '\xef\xbb\xbf{"a": 1}' >input
is 1 'tessarin: standard input: is broken JSON at line 1, column 1: Invalid value.' table show -
printf 'alone' >input
is 1 'tessarin: standard input: has a key without a value, an open quote, or a block under a key in use' table show -

# ---- tab files
printf 'name\tn\tlong one\na\t\t\xc3\x84\tover\r\n\xe6\xbc\xa2\xe6\xbc\xa2\xe6\xbc\xa2\n' >Grid.tab
cp Grid.tab grid.tab; echo >>grid.tab
is 0 $'name    n  long one\na          Ä\n漢漢漢' tab show Grid.tab
is 0 '[["a","","Ä"],["漢漢漢",null,null]]' tab show --skip-first-line --json Grid.tab
is 0 $'Ä' tab get Grid.tab 1 2
is 0 'no' tab get --fallback no Grid.tab 7 0
is 0 'n' tab get --default-row Grid.tab 0 1
is 0 'Ä' tab get --skip-first-line --skip-first-column Grid.tab 0 1
is 1 'tessarin: Grid.tab: has no cell 2 1' tab get Grid.tab 2 1
is 2 $'tessarin: Could not convert: ROW = x\nTry `tessarin --help`.' tab get Grid.tab x 0

# ---- depth costs memory, not stack
deep() { for _ in $(seq 20); do printf 'a={%.0s' $(seq 5000); done; }
deep >deep
"$command" config show --json deep >deep.json &&
    "$command" config show deep | tail -1 | grep -qF '(100000) └─ a  table, 0 entries' || fail 'a hundred thousand levels'
is 0 '' config compile deep deep.bin
is 0 '' config diff deep deep.bin
clean . 'a command'
exit $failed

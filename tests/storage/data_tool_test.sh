#!/bin/sh
# nvk data: the answers, the messages and the exit statuses that scripts rely
# on. Usage: data_tool_test.sh NVK
nvk=$1
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT

fail() {
    echo "FAIL: $*" >&2
    cat "$dir/out" "$dir/err" >&2
    exit 1
}
# run STATUS ARGS...: runs nvk, wants the status, keeps out and err.
run() {
    want=$1
    shift
    "$nvk" "$@" <"$dir/in" >"$dir/out" 2>"$dir/err"
    got=$?
    [ "$got" = "$want" ] || fail "nvk $*: status $got, wanted $want"
    if [ "$want" = 2 ]; then
        [ "$(wc -l <"$dir/err")" = 1 ] || fail "nvk $*: wanted one line on stderr"
    fi
}
# has FILE TEXT: FILE holds TEXT.
has() { grep -qF -- "$2" "$dir/$1" || fail "wanted '$2' in $1"; }
# bytes FILE OCTAL...: writes the bytes.
bytes() {
    f=$1
    shift
    printf "$@" >"$f"
}
: >"$dir/in"

# Sizes that are refused say so, and a missing folder is named.
run 2 data create "$dir/s5.dat" 5
has err "record size 5 refused"
[ ! -e "$dir/s5.dat" ] || fail "a refused size made a file"
run 2 data create "$dir/big.dat" 16777217
has err "record size 16777217 refused"
run 2 data create "$dir/missing/x.dat" 16
has err "folder"
has err "does not exist"
run 0 data create "$dir/r.dat" 12
run 2 data create "$dir/r.dat" 12
has err "exists and is not empty"

# Numbers with no record behind them read as 0, and the current record stays.
printf 'insert 01\ninsert 02\nread 4294967295\nread 3\nupdate FF\ncount\n' >"$dir/in"
run 0 data run "$dir/r.dat"
printf '1\n2\n0\n0\n2\n2\n' | cmp -s - "$dir/out" || fail "run answers"
: >"$dir/in"
run 0 data dump "$dir/r.dat"
has out "records 2,"
has out "#1: 010000000000000000000000"
has out "#2: FF0000000000000000000000"

# A file that is not a record file fails.
printf 'not a record file, but long enough to hold a header\n' >"$dir/text.txt"
run 2 data dump "$dir/text.txt"
has err "is not a record file"
printf 'short' >"$dir/short.txt"
run 2 data dump "$dir/short.txt"

# Records of two bytes, made elsewhere: every one is shown, and a mark is not
# read across neighbours.
z20='\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0'
bytes "$dir/two.dat" "\001\002\0\0\002\0\0\0\003\0\0\0\0\0\0\0$z20\377\377\377\377ab"
run 0 data dump "$dir/two.dat"
has out "#1: FFFF"
has out "#2: FFFF"
has out "#3: 6162"
exit 0

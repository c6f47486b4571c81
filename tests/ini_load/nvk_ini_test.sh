#!/bin/sh
# nvk ini as a script sees it: exit statuses with one line on standard error,
# input the file could not read back refused, a file that keeps its old text
# when it can't be written, and a time-out that holds against another
# program's flock().
nvk="$1"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
fail() {
    echo "FAIL: $*"
    exit 1
}
# expect STATUS ARGS...: the status, and one line on standard error unless 0.
expect() {
    want=$1
    shift
    "$nvk" "$@" >"$dir/out" 2>"$dir/err"
    got=$?
    [ "$got" = "$want" ] || fail "nvk $* exited $got, not $want: $(cat "$dir/err")"
    if [ "$want" != 0 ]; then
        [ "$(wc -l <"$dir/err")" = 1 ] || fail "nvk $*: not one line on stderr: $(cat "$dir/err")"
    fi
}

ini="$dir/c.ini"
expect 0 ini set "$ini" S K v
expect 1 ini get "$ini" S missing
expect 1 ini get "$ini" missing K
expect 0 ini get "$ini" S missing --default d
expect 2 ini set "$ini" S "a=b" v
expect 2 ini set "$ini" S K "$(printf 'a\nb')"
expect 2 ini set "$ini" "$(printf 'S\nT')" K v
expect 2 ini incr "$ini" S "a=b"
printf '[S]\r\nK=v\r\n' | cmp -s - "$ini" || fail "refused input changed the file"
expect 2 ini get "$dir" S K
grep -q "folder" "$dir/err" || fail "a folder is not reported as one: $(cat "$dir/err")"
expect 2 ini get "$dir/none/c.ini" S K --default d
expect 2 ini set "$dir/none/c.ini" S K v

# A file-size limit below the new text: the old text stays, and the status says so.
head -c 300000 /dev/zero | tr '\0' b >"$dir/big"
printf '[S]\r\nK=%s\r\n' "$(cat "$dir/big")" >"$ini"
cp "$ini" "$dir/before"
(
    trap '' XFSZ
    ulimit -f 100
    exec "$nvk" ini set "$ini" S J w
) 2>"$dir/err"
[ $? = 2 ] || fail "a failed write exited $?"
cmp -s "$ini" "$dir/before" || fail "a failed write changed the file"

# Another program's flock(): the reader gives up after its time-out.
flock -o "$ini" sh -c "touch '$dir/held'; exec sleep 4" >/dev/null 2>&1 &
holder=$!
while [ ! -e "$dir/held" ]; do sleep 0.05; done
start=$(date +%s%N)
expect 2 ini get "$ini" S K --timeout 500
elapsed=$((($(date +%s%N) - start) / 1000000))
kill "$holder"
[ "$elapsed" -ge 450 ] && [ "$elapsed" -lt 3000 ] || fail "waited $elapsed ms for a 500 ms time-out"
grep -q "held" "$dir/err" || fail "a held file is not reported as held: $(cat "$dir/err")"
echo ok

#!/bin/sh
# nvk dde as scripts use it, on the private bus of dbus-run-session: a
# server and the clients' answers and statuses. Prints "ok" when all hold.
nvk="$1"
out=$(mktemp -d)
trap 'kill $server $advise 2>/dev/null; rm -rf "$out"' EXIT
fail() { echo "FAIL: $*"; exit 1; }
# Waits up to 5 s for a command to succeed: a loaded machine starts slowly.
wait_for() {
    what=$1; shift
    i=0
    until "$@" 2>/dev/null; do
        i=$((i + 1)); [ $i -lt 50 ] || fail "$what did not come"; sleep 0.1
    done
}

"$nvk" dde serve Compta Dossier --reply Solde=1200 --reply "Nom=Société" >"$out/serve" &
server=$!
wait_for "the server" "$nvk" dde execute Compta Dossier ping

[ "$("$nvk" dde request Compta Dossier Solde)" = 1200 ] || fail "request"
[ "$("$nvk" dde request Compta Dossier Nom)" = "Société" ] || fail "request of 8-bit text"
answer=$("$nvk" dde request Compta Dossier Rien); status=$?
[ $status -eq 1 ] && [ "$answer" = refused ] || fail "request of nothing: $status $answer"
"$nvk" dde advise Compta Dossier Cours >"$out/advise" &
advise=$!
wait_for "the advise loop" grep -q "^advise-start Cours$" "$out/serve"
"$nvk" dde poke Compta Dossier Cours 12,5 || fail "poke"
"$nvk" dde poke Compta Dossier Cours 12,5 || fail "poke of the same value"
"$nvk" dde poke Compta Dossier Cours 13 || fail "second poke"
[ "$("$nvk" dde request Compta Dossier Cours)" = 13 ] || fail "request of a poked value"
message=$("$nvk" dde request Personne Dossier Solde 2>&1); status=$?
[ $status -eq 2 ] || fail "no server: $status"
[ "$message" = "nvk: A client's attempt to establish a conversation has failed." ] ||
    fail "no server: $message"
"$nvk" dde execute Compta Dossier x --timeout nope 2>/dev/null; [ $? -eq 2 ] || fail "bad time-out"

wait_for "the advised data" test "$(wc -l <"$out/advise")" -ge 2
kill $server; wait $server
wait $advise || fail "advise status"
[ "$(cat "$out/advise")" = "$(printf '12,5\n13')" ] || fail "advised: $(cat "$out/advise")"
grep -q "^execute ping$" "$out/serve" || fail "serve's execute line"
grep -q "^poke Cours 13$" "$out/serve" || fail "serve's poke line"
grep -q "^advise-start Cours$" "$out/serve" || fail "serve's advise line"

"$nvk" dde serve Compta Dossier --refuse-advise >/dev/null &
server=$!
wait_for "the second server" "$nvk" dde execute Compta Dossier ping
"$nvk" dde advise Compta Dossier Cours >/dev/null; [ $? -eq 1 ] || fail "refused advise"
echo ok

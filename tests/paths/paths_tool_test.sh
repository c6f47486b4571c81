#!/bin/sh
# nvk app, key, paths and vars: the answers and exit statuses that scripts
# rely on, in an installation of the test's own. Usage: paths_tool_test.sh NVK
nvk=$1
dir=$(mktemp -d) || exit 1
trap 'rm -rf "$dir"' EXIT
mkdir -p "$dir/app/rel" "$dir/reg" "$dir/noskin" && chmod 700 "$dir/reg"
export HOME="$dir" XDG_DATA_HOME="$dir/data" XDG_DOCUMENTS_DIR="$dir/docs"
export NVK_REGISTRY_DIR="$dir/reg" cdSkin="$("$nvk" path windows "$dir/noskin")"
app=$("$nvk" path windows "$dir/app")

fail() {
    printf 'FAIL: %s\n' "$*" >&2
    cat "$dir/out" "$dir/err" >&2
    exit 1
}
# run STATUS ARGS...: runs nvk, wants the status, keeps out and err.
run() {
    want=$1
    shift
    "$nvk" "$@" >"$dir/out" 2>"$dir/err"
    got=$?
    [ "$got" = "$want" ] || fail "nvk $*: status $got, wanted $want"
    if [ "$want" = 2 ]; then
        [ "$(wc -l <"$dir/err")" = 1 ] || fail "nvk $*: wanted one line on stderr"
    fi
}
# has FILE TEXT: FILE holds TEXT.
has() { grep -qF -- "$2" "$dir/$1" || fail "wanted '$2' in $1"; }
tab=$(printf '\t')

# Unknown identifiers and names exit 2 with the names.
run 2 paths get 23 --app-folder "$dir/app"
has err "AppParamsRoot, AppParamsBaseVide"
run 2 paths dbserver Nowhere
has err "SocietyDataShared"
run 2 paths legacy Nowhere
has err "DossiersDocuments"
run 2 app show --dico NoEquals

# A relative folder is stored as written and read against the application.
run 0 paths set Share rel --app-folder "$dir/app"
has out "$app\\rel"
grep -q '^Share=rel' "$dir/app/Paths.ini" || fail "Paths.ini: $(cat "$dir/app/Paths.ini")"
run 0 paths get share --empty-if-missing --app-folder "$dir/app"
has out "$app\\rel"
run 1 paths get Common --empty-if-missing --app-folder "$dir/app"
run 0 paths list --empty-if-missing --app-folder "$dir/app" --dico App.Name=Compta
has out "Share${tab}3${tab}$app\\rel${tab}Paths.ini"
has out "Tools${tab}22${tab}$app${tab}default"
has out "ConfigWatchShared${tab}19${tab}${tab}default"
run 0 paths dbserver '\\files\compta\x'
has out "files"

run 0 app show --dico App.Name=Compta --dico App.SocietyID=ACME --dico App.ShortName=CPT
has out "short name: CPT"
has out "name: Compta"
has out "society id: ACME"

run 0 key show 6d6f643ebf046bd9
has out "bytes 6d 6f 64 3e bf 04 6b d9  created 2026-"
run 1 key show 0000000000000000

# The variable editor: missing, then a stand-in that records its arguments.
run 1 vars run "Z:\\d.dic" --app-folder "$dir/app"
printf '#!/bin/sh\nprintf "%%s\\n" "$@" > "%s/args"\n' "$dir" >"$dir/app/NVKVars"
chmod 700 "$dir/app/NVKVars"
run 0 vars run "Z:\\d.dic" --notepad --country FR --app-folder "$dir/app"
has out "$app\\NVKVars"
for i in 1 2 3 4 5 6 7 8 9 10; do [ -f "$dir/args" ] && break; sleep 0.2; done
[ "$(tr '\n' ' ' <"$dir/args")" = 'Z:\d.dic /Notepad /Country FR ' ] ||
    fail "arguments: $(cat "$dir/args")"
echo "ok"

#!/bin/sh
# nvk link against readers we did not write: lnkinfo reads the link files,
# desktop-file-validate checks the desktop entries made beside the links of
# the desktop and applications folders, and both resolve back to the target.
nvk="$1"
dir=$(mktemp -d)
trap 'rm -rf "$dir"' EXIT
fail() {
    printf 'FAIL: %s\n' "$*"
    exit 1
}
# has FIELD TEXT: lnkinfo's line of FIELD ends with TEXT.
has() {
    grep "^	$1" "$dir/info" | grep -qF -- "$2" || fail "no $1 $2 in: $(cat "$dir/info")"
}
export XDG_DESKTOP_DIR="$dir/Bureau" XDG_DATA_HOME="$dir/data"
mkdir -p "$XDG_DESKTOP_DIR" "$XDG_DATA_HOME/applications" "$dir/partage"
target="$dir/compta.sh"
printf '#!/bin/sh\n' >"$target"
chmod +x "$target"
windows="Z:$(printf '%s' "$target" | tr / '\\')"

# A link on a shared folder: the link file alone, as lnkinfo reads it.
"$nvk" link create "$target" "$dir/partage/compta.lnk" --args '-d "deux mots" 50%' \
    --description 'Grand livre général' --icon "$dir/icone.ico,2" || fail "create on the share"
[ -e "$dir/partage/compta.desktop" ] && fail "a desktop entry beside a link on a share"
lnkinfo "$dir/partage/compta.lnk" >"$dir/info" || fail "lnkinfo refused the link: $(cat "$dir/info")"
has "Local path" ": $windows"
has "Command line arguments" ': -d "deux mots" 50%'
has "Description" ": Grand livre général"
has "Icon location" ": $dir/icone.ico"
has "Icon index" ": 2"
[ "$("$nvk" link resolve "$dir/partage/compta.lnk")" = "$windows" ] || fail "resolve the share's link"

# On the desktop and in the applications folder, entries that validate.
for folder in "$XDG_DESKTOP_DIR" "$XDG_DATA_HOME/applications"; do
    "$nvk" link create "$target" "$folder/Ma compta.lnk" --args '-x "a b" $HOME `c` \d' \
        --description 'Écritures' --icon "$dir/icone.png" || fail "create in $folder"
    entry="$folder/Ma compta.desktop"
    [ -x "$entry" ] || fail "no runnable desktop entry in $folder"
    desktop-file-validate "$entry" >"$dir/valid" 2>&1 || fail "invalid entry: $(cat "$dir/valid")"
    [ -s "$dir/valid" ] && fail "warnings on the entry: $(cat "$dir/valid")"
    lnkinfo "$folder/Ma compta.lnk" >/dev/null || fail "lnkinfo refused the desktop's link"
    [ "$("$nvk" link resolve "$entry")" = "$windows" ] || fail "resolve the desktop entry"
    [ "$("$nvk" link resolve "$folder/Ma compta.lnk")" = "$windows" ] || fail "resolve the link"
    "$nvk" link delete "$folder/Ma compta.lnk" || fail "delete in $folder"
    [ -e "$entry" ] || [ -e "$folder/Ma compta.lnk" ] && fail "left behind in $folder"
done

# Paths are bytes, whatever their characters.
accented="$dir/Écritures.sh"
cp "$target" "$accented"
"$nvk" link create "$accented" "$dir/écritures.lnk" || fail "create to an accented name"
[ "$("$nvk" link resolve "$dir/écritures.lnk")" = "Z:$(printf '%s' "$accented" | tr / '\\')" ] ||
    fail "resolve an accented name"

# A symbolic link resolves too; a missing target is a negative answer.
ln -s "$target" "$dir/lien"
[ "$("$nvk" link resolve "$dir/lien")" = "$windows" ] || fail "resolve a symbolic link"
"$nvk" link create "$dir/absent" "$dir/absent.lnk" || fail "create to a missing target"
"$nvk" link resolve "$dir/absent.lnk" >/dev/null 2>&1
[ $? = 1 ] || fail "a missing target is not a negative answer"
"$nvk" link create "$dir/partage/compta.lnk" "$dir/partage/compta.lnk" 2>/dev/null && fail "a link to itself"
echo ok

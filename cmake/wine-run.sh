#!/bin/sh
# Runs a Windows program of the build under Wine, in the build's own Wine
# prefix (the first argument), made on first use: without a window system
# (Wine's graphics driver "null", so that nothing asks for an X server) and
# without Wine's own messages.
prefix=$1
shift
# Wine takes only an absolute prefix: a relative one would fail the set-up
# below and leave a prefix marked ready without its null driver.
mkdir -p "$prefix" && prefix=$(cd "$prefix" && pwd) || exit 1
export WINEPREFIX="$prefix" WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine=wine64
if [ ! -f "$prefix/.nvk-ready" ]; then
    (
        flock 9
        if [ ! -f "$prefix/.nvk-ready" ]; then
            "$wine" wineboot -i >/dev/null 2>&1
            printf 'REGEDIT4\n\n[HKEY_CURRENT_USER\\Software\\Wine\\Drivers]\n"Graphics"="null"\n' \
                >"$prefix/null-driver.reg"
            # Ready only once the driver is set: without it no window can be
            # made, and DDE among others fails. The desktop that wineboot
            # started knows no driver yet: the server ends with it, and the
            # next program starts both afresh.
            "$wine" regedit /S "$prefix/null-driver.reg" >/dev/null 2>&1 &&
                "${wine%/*}/wineserver" -k 2>/dev/null
            "${wine%/*}/wineserver" -w
            grep -q '^"Graphics"="null"' "$prefix/user.reg" && touch "$prefix/.nvk-ready"
        fi
    ) 9>"$prefix.lock"
fi
case $1 in
    # Detached from the caller's output, which the test runner waits on. A
    # server already running (a run before that stopped short) serves too.
    # Wine's own services start with the first program and live as long as
    # the server: started here, they hold none of a test's output open.
    --start-server)
        "${wine%/*}/wineserver" -p >/dev/null 2>&1 </dev/null
        "$wine" wineboot >/dev/null 2>&1 </dev/null
        exit 0 ;;
    --stop-server) exec "${wine%/*}/wineserver" -k ;;
esac
exec "$wine" "$@"

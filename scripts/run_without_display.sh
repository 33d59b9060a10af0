#!/usr/bin/env bash
# Starts the given program in a virtual display with the project's examples as opened files, waits
# until they are stored, and says what they became. The user's own styles are left alone: the
# program gets a home of its own under build/.
. "$(dirname "$0")/setup.sh"

program=$1
home=$root/build/run
picture=$root/build/run/window.png
examples=("$root"/examples/*)

rm -rf "$home"
mkdir -p "$home/data" "$home/config" "$home/runtime"
chmod 700 "$home/runtime"
export HOME=$home XDG_DATA_HOME=$home/data XDG_CONFIG_HOME=$home/config XDG_RUNTIME_DIR=$home/runtime
document=$XDG_DATA_HOME/7RX2KD84QM.group.com.tessaril.shared/styledb.sdb

# The display's number is free for whoever asks first, so the server picks it.
exec {display_pipe}<> <(:)
Xvfb -displayfd "$display_pipe" -screen 0 1000x760x24 -nolisten tcp >"$home/display.log" 2>&1 &
display_server=$!
application=
stop() {
    [ -z "$application" ] || kill "$application" 2>/dev/null || true
    [ -z "$application" ] || wait "$application" 2>/dev/null || true
    kill "$display_server" 2>/dev/null || true
}
trap stop EXIT
read -r -t 30 -u "$display_pipe" number || fail "the virtual display did not start"
export DISPLAY=:$number

"$program" "${examples[@]}" >"$home/log.txt" 2>&1 &
application=$!

stored() { python3 scripts/describe_document.py "$document" "${#examples[@]}" 2>/dev/null; }
deadline=$((SECONDS + 60))
until stored >/dev/null; do
    kill -0 "$application" 2>/dev/null || { cat "$home/log.txt" >&2; fail "Tessaril ended early"; }
    [ "$SECONDS" -lt "$deadline" ] || break
    sleep 0.2
done
sleep 1 # for the list to show the last row
import -window root "$picture"
convert "$picture" -trim +repage "$picture" # the bare screen around the window

status=0
stored || status=$?
echo "Document: $document"
echo "Picture of the window: $picture"
[ "$status" -eq 0 ] || fail "not every example was compiled; the log is $home/log.txt"

#!/usr/bin/env bash
# Takes the pictures of docs/pictures/ from the built application, on a light and on a dark desktop:
# starts it in a virtual display with the examples, and drives it by keys and mouse.
. "$(dirname "$0")/setup.sh"

pictures=$root/docs/pictures
program=$root/build/release/bin/tessaril

in_session() { # APPEARANCE: within a display and a session bus of its own
    local appearance=$1 home
    home=$(mktemp -d)
    mkdir "$home/data" "$home/config" "$home/runtime"
    chmod 700 "$home/runtime"
    export HOME=$home XDG_DATA_HOME=$home/data XDG_CONFIG_HOME=$home/config
    export XDG_RUNTIME_DIR=$home/runtime QT_QPA_PLATFORM=xcb

    "$program" "$root"/examples/* >"$home/log.txt" 2>&1 &
    application=$!
    trap 'kill "$application"; wait "$application" || true; rm -rf "$HOME"' EXIT

    shown_window Tessaril
    picture "main-window-$appearance"
    xdotool key ctrl+comma
    shown_window Preferences
    picture "preferences-general-$appearance"
    xdotool key ctrl+Tab
    sleep 2 # for the browser engine
    picture "preferences-editor-$appearance"
    preview_click
    xdotool key ctrl+f
    sleep 0.5
    xdotool type --delay 50 example
    picture "preferences-editor-find-$appearance"
    xdotool key Escape
    sleep 0.5
    xdotool windowfocus --sync "$window" key ctrl+shift+Tab ctrl+shift+Tab
    picture "preferences-advanced-$appearance"
}

shown_window() { # TITLE: waits for the window and gives it the keyboard
    window=$(timeout 60 xdotool search --sync --onlyvisible --name "^$1$" | tail -n 1)
    xdotool windowfocus --sync "$window"
    sleep 1
}

picture() { # NAME: of the window
    sleep 0.5
    import -window "$window" "$pictures/$1.png"
}

preview_click() { # into the lower part of the window, where the preview is
    local WIDTH HEIGHT
    eval "$(xdotool getwindowgeometry --shell "$window")"
    xdotool mousemove --window "$window" $((WIDTH / 2)) $((HEIGHT - 60)) click 1
    sleep 0.5
}

if [ $# -gt 0 ]; then
    in_session "$1"
    exit
fi

require_packages "${build_packages[@]}" "${display_packages[@]}" "${desktop_packages[@]}" \
    "${picture_packages[@]}"
require_npm_packages
build release tessaril tessaril_resources
allow_root_engine
mkdir -p "$pictures"
for appearance in light dark; do
    say "Taking pictures ($appearance)"
    desktop=()
    [ "$appearance" = light ] || desktop=(scripts/dark_desktop.py)
    quietly dbus-run-session -- xvfb-run -a -s "-screen 0 1100x900x24" \
        "${desktop[@]}" scripts/take_pictures.sh "$appearance"
done

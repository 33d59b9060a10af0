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

    mkdir "$home/config/tessaril"
    # What the pictures show must not depend on the network.
    printf '[General]\nFetchSiteIcons=false\n' >"$home/config/tessaril/tessaril.conf"

    picture_of_state syncing Tessaril "list-locked-$appearance"
    picture_of_state failed Tessaril "sync-failed-$appearance"
    picture_of_state removed "Recover Removed Styles" "recover-$appearance"

    "$program" >>"$home/log.txt" 2>&1 &
    application=$!
    trap 'kill "$application"; wait "$application" || true; rm -rf "$HOME"' EXIT
    shown_window Tessaril
    main=$window
    picture "list-empty-$appearance"
    local example
    for example in "$root"/examples/*; do # one by one, as they arrive in any order
        "$program" "$example"
        sleep 1
    done
    picture "main-window-$appearance"
    pictures_of_list "$appearance"
    pictures_of_sheets "$appearance"
    pictures_of_restoring "$appearance"
    pictures_of_updates "$appearance"
    pictures_of_properties "$appearance"
    pictures_of_preferences "$appearance"
    pictures_of_editor "$appearance"
}

picture_of_state() { # STATE TITLE NAME: one that the application itself passes through too quickly
    "$root/build/release/bin/tessaril_locked_list" "$1" >>"$HOME/log.txt" 2>&1 &
    application=$!
    shown_window "$2"
    picture "$3"
    kill "$application"
    wait "$application" || true
}

pictures_of_list() { # APPEARANCE
    xdotool key Home F2
    picture "list-rename-$1"
    xdotool key Escape ctrl+f
    xdotool type --delay 50 forum
    picture "list-filtered-$1"
    xdotool key ctrl+a
    xdotool type --delay 50 nothing
    picture "list-no-match-$1"
    xdotool key Escape
    sleep 0.5
    xdotool mousemove --window "$window" 300 180 click 3
    sleep 0.5
    import -window root -crop 820x640+0+0 +repage "$pictures/list-menu-$1.png"
    xdotool key Escape
    sleep 0.5
}

pictures_of_sheets() { # APPEARANCE
    xdotool key ctrl+n
    shown_window "New Style"
    xdotool type --delay 50 "Quiet Evenings"
    picture "new-style-$1"
    xdotool key Escape
    back_to_main
    xdotool key ctrl+shift+v
    shown_window "Paste Style"
    sleep 3 # for the browser engine
    xdotool type --delay 50 "a:hover { color: crimson }"
    picture "paste-style-$1"
    xdotool key ctrl+a Delete
    sleep 0.5
    xdotool key Escape
    back_to_main
    xdotool key Home ctrl+e
    shown_window "Export .*"
    sleep 2
    picture "export-style-$1"
    xdotool key Escape
    back_to_main
}

# Backups of a few days, and a style that is missing since.
pictures_of_restoring() { # APPEARANCE
    local container=$XDG_DATA_HOME/7RX2KD84QM.group.com.tessaril.shared day
    rm -f "$container"/backups/*
    for day in 13 20 21; do
        cp "$container/styledb.sdb" "$container/backups/styledb-2026-11-${day}T184500Z.sdb"
    done
    echo damaged >"$container/backups/styledb-2026-11-20T184500Z.sdb"
    xdotool key Home Delete
    sleep 1
    xdotool key Return
    sleep 1
    back_to_main
    xdotool key alt+f
    sleep 0.5
    xdotool key r
    shown_window "Restore from Backup"
    sleep 1
    xdotool key Home Down
    picture "restore-$1"
    xdotool key Escape
    back_to_main
    xdotool key ctrl+z
    sleep 1
}

# A server on this machine holds its answers back where a picture is to show the waiting.
pictures_of_updates() { # APPEARANCE
    local site=$HOME/site port
    mkdir "$site"
    sed 's/^@name .*/@name Calm Evenings/' "$root/examples/calm-reading.user.css" \
        >"$site/calm-reading.user.css"
    echo hold >"$site/calm-reading.user.css.how"
    coproc server { python3 "$root/tests/support/style_site.py" "$site"; }
    read -r port _ <&"${server[0]}"

    xdotool key ctrl+l
    shown_window "Import from URL"
    xdotool type --delay 50 "http://127.0.0.1:$port/calm-reading.user.css"
    picture "import-url-$1"
    xdotool key Return
    picture "import-url-working-$1"
    touch "$site/release"
    back_to_main
    sleep 1
    rm "$site/release"
    sed -i 's/^@version .*/@version 99/' "$site/calm-reading.user.css"
    xdotool key ctrl+u
    picture "list-checking-$1"
    touch "$site/release"
    sleep 2
    picture "list-updated-$1"
    xdotool key alt+s
    sleep 0.5
    xdotool key s
    shown_window "Update All Styles"
    picture "update-sheet-$1"
    xdotool key Return
    back_to_main
    "$program" "tessaril://usercss/http://127.0.0.1:$port/calm-reading.user.css"
    sleep 2
    import -window root -crop 820x640+0+0 +repage "$pictures/install-question-$1.png"
    xdotool key Escape
    back_to_main
    exec {server[1]}>&- # ends it
}

pictures_of_properties() { # APPEARANCE
    xdotool key Home alt+Return
    shown_window "Properties of Calm Reading"
    xdotool key alt+a
    sleep 0.5
    xdotool type --delay 50 shop.example.com
    xdotool key Return
    picture "properties-$1"
    xdotool key alt+b
    sleep 0.5
    xdotool key space
    shown_window Paper
    picture "properties-color-$1"
    xdotool key Escape
    shown_window "Properties of Calm Reading"
    xdotool key Escape
    back_to_main
}

back_to_main() {
    sleep 0.5
    window=$main
    xdotool windowfocus --sync "$window"
    sleep 0.5
}

pictures_of_preferences() { # APPEARANCE
    local appearance=$1
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

# One start per form of the toolbar, which is a preference.
pictures_of_editor() { # APPEARANCE
    local form
    for form in compact expanded unified; do
        kill "$application"
        wait "$application" || true
        printf '[General]\nFetchSiteIcons=false\nWarnIfDisabled=false\neditorStyle=%s\n' "$form" \
            >"$XDG_CONFIG_HOME/tessaril/tessaril.conf"
        "$program" >>"$HOME/log.txt" 2>&1 &
        application=$!
        shown_window Tessaril
        main=$window
        edit "Night Forum"
        picture "editor-$form-$1"
    done
    pictures_of_editor_sheets "$1"
    edit "Calm Evenings"
    import -window root -crop 920x700+0+0 +repage "$pictures/editor-read-only-notice-$1.png"
    shown_window Tessaril # the notice, which lies above the window of that title
    xdotool key Return
    shown_window "Calm Evenings"
    picture "editor-read-only-$1"
    xdotool key ctrl+i
    shown_window Metadata
    picture "editor-metadata-read-only-$1"
}

pictures_of_editor_sheets() { # APPEARANCE: over the editor
    xdotool key ctrl+r
    shown_window Rules
    picture "editor-rules-$1"
    xdotool key Escape
    shown_window "Night Forum\*?"
    xdotool key ctrl+i
    shown_window Metadata
    picture "editor-metadata-$1"
    xdotool key Escape
    shown_window "Night Forum\*?"
    xdotool key ctrl+shift+n
    shown_window "New Section"
    xdotool type --delay 50 "Wide screens"
    picture "editor-new-section-$1"
    xdotool key Return
    shown_window "Night Forum\*?"
    xdotool type --delay 50 ".board {} "
    sleep 0.5
    xdotool key ctrl+w
    sleep 1
    import -window root -crop 920x700+0+0 +repage "$pictures/editor-close-question-$1.png"
    xdotool key Escape
    shown_window "Night Forum\*?"
    xdotool key ctrl+f
    xdotool type --delay 50 board
    picture "editor-find-$1"
    xdotool key Escape ctrl+s ctrl+w
    back_to_main
}

edit() { # NAME: opens the style by its name, with its window in front
    back_to_main
    xdotool key ctrl+f
    xdotool type --delay 50 "$1"
    xdotool key Return Home Return
    shown_window "$1"
    sleep 3 # for the browser engine
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
build release tessaril tessaril_resources tessaril_locked_list
allow_root_engine
mkdir -p "$pictures"
for appearance in light dark; do
    say "Taking pictures ($appearance)"
    desktop=()
    [ "$appearance" = light ] || desktop=(scripts/dark_desktop.py)
    quietly dbus-run-session -- xvfb-run -a -s "-screen 0 1100x900x24" \
        "${desktop[@]}" scripts/take_pictures.sh "$appearance"
done

# Sourced by run, test and bench: installs what is missing on a Debian 12, then builds.

set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"

build_packages=(
    ca-certificates ccache cmake g++ git ninja-build pkg-config
    libcurl4-openssl-dev libgmock-dev libgtest-dev libicu-dev libpq-dev libsimdjson-dev
    libsqlite3-dev libssl-dev libgl-dev libjavascriptcoregtk-4.1-dev qt6-base-dev qt6-svg-dev
    qt6-webengine-dev qtkeychain-qt6-dev
)
server_packages=(postgresql)
display_packages=(fonts-dejavu-core imagemagick openssl python3 xauth xvfb)
desktop_packages=(desktop-file-utils shared-mime-info xdg-utils)
picture_packages=(dbus python3-dbus python3-gi xdotool)
bench_packages=(libbenchmark-dev libxcb1-dev rapidjson-dev)

say() { printf '==> %s\n' "$*"; }

fail() {
    printf 'error: %s\n' "$*" >&2
    exit 1
}

# Keeps a long command's output out of sight unless it fails, which shows its end.
quietly() {
    local log status=0
    log=$(mktemp)
    "$@" >"$log" 2>&1 || status=$?
    if [ "$status" -ne 0 ]; then
        tail -n 60 "$log" >&2
        rm -f "$log"
        fail "failed (exit $status): $*"
    fi
    rm -f "$log"
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    elif command -v sudo >/dev/null; then
        sudo "$@"
    else
        fail "this needs root: $*"
    fi
}

# PostgreSQL's package makes a server for the system, which starts with the machine from then on. The
# tests need its programs only, so it is told to make none while COMMAND installs it.
without_system_server() {
    local status=0 folder=/etc/postgresql-common/createcluster.d
    as_root mkdir -p "$folder"
    echo 'create_main_cluster = false' | as_root tee "$folder/tessaril.conf" >/dev/null
    "$@" || status=$?
    as_root rm "$folder/tessaril.conf"
    as_root rmdir -p --ignore-fail-on-non-empty "$folder"
    return "$status"
}

require_packages() {
    local package missing=()
    for package in "$@"; do
        [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null || true)" = installed ] ||
            missing+=("$package")
    done
    [ "${#missing[@]}" -gt 0 ] || return 0
    say "Installing Debian packages: ${missing[*]}"
    quietly as_root apt-get update
    local install=(as_root env DEBIAN_FRONTEND=noninteractive apt-get install -y
        --no-install-recommends "${missing[@]}")
    case " ${missing[*]} " in *" postgresql "*) install=(without_system_server "${install[@]}") ;; esac
    quietly "${install[@]}"
}

require_npm_packages() {
    local stamp=node_modules/.package-lock.json
    if [ -e "$stamp" ] && [ ! package-lock.json -nt "$stamp" ]; then return 0; fi
    command -v npm >/dev/null || require_packages nodejs npm
    say "Installing npm packages"
    quietly npm ci
    touch "$stamp"
}

# build PRESET [TARGET...]
build() {
    local preset=$1 target targets=()
    shift
    for target in "$@"; do targets+=(--target "$target"); done
    say "Building ($preset)"
    [ -e "build/$preset/build.ninja" ] || quietly cmake --preset "$preset"
    quietly cmake --build "build/$preset" "${targets[@]}"
}

# The browser engine's sandbox cannot hold root; everybody else keeps it.
allow_root_engine() {
    if [ "$(id -u)" -eq 0 ]; then export QTWEBENGINE_DISABLE_SANDBOX=1; fi
}

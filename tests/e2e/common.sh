# Sourced by the end-to-end scripts.

# Re-runs the calling script on a private X server with two monitors and a
# private session bus, once.
narv_on_xvfb_and_bus() {
    if [[ -z ${NARV_E2E_INSIDE:-} ]]; then
        export NARV_E2E_INSIDE=1
        local here
        here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
        exec "$here/../run-on-xvfb" dbus-run-session -- "$@" 2> >(grep -v "Failed to set fd limit" >&2)
    fi
}

# A scratch home in $home with private settings, cache and runtime folders,
# exported for the programs started from here.
narv_scratch_home() {
    home=$(mktemp -d)
    mkdir -p "$home/config/narv" "$home/runtime"
    chmod 700 "$home/runtime"
    export HOME=$home XDG_CONFIG_HOME=$home/config XDG_CACHE_HOME=$home/cache
    export XDG_RUNTIME_DIR=$home/runtime
}

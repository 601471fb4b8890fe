#!/usr/bin/env bash
# Runs a command with two private buses: a session bus, and a second one that
# stands in for the system bus (DBUS_SYSTEM_BUS_ADDRESS), where a test can
# play logind.
set -euo pipefail
exec dbus-run-session -- bash -c '
    export DBUS_SYSTEM_BUS_ADDRESS=$DBUS_SESSION_BUS_ADDRESS
    exec dbus-run-session -- "$@"' bash "$@"

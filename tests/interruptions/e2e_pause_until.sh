#!/usr/bin/env bash
# A pause for a while that ends by itself, in real time: "Pause until
# tomorrow" taken seconds before midnight (the time zone is set so that
# midnight is near), then a full work period starts on its own.
#
#   tests/interruptions/e2e_pause_until.sh path/to/narv
set -euo pipefail
narv=$(realpath "$1")
here=$(cd "$(dirname "$0")/../e2e" && pwd)
source "$here/common.sh"
narv_on_xvfb_and_bus "$0" "$@"

narv_scratch_home
start_watcher
# A zone east of UTC by whatever puts midnight 30 seconds from now.
offset=$(((86400 - 30 - $(date -u +%s) % 86400) % 86400))
export TZ=$(printf 'NRV-%02d:%02d:%02d' $((offset / 3600)) $((offset / 60 % 60)) $((offset % 60)))
narv_start <<'CONF'
[General]
pref.work.time=25
pref.pause.for.enable=true
auto_check_update=false
CONF
wait_for 10 logged " : status item registered as " || fail "no status item"
menu_click label '"Pause until tomorrow"' || fail "no Pause until tomorrow in the menu"
wait_for 5 logged "paused until $(date -d tomorrow +%Y-%m-%d)T00:00:00" || fail "the pause does not end at midnight"
says_until() { [[ $(item_property XAyatanaLabel) == "until $(LC_ALL=C date -d tomorrow +%a) 00:00" ]]; }
wait_for 5 says_until || fail "the status item says \"$(item_property XAyatanaLabel)\""
ok "paused until midnight, and the status item says so"
wait_for 60 logged "the pause is over" || fail "the pause did not end at midnight"
wait_for 5 logged "ticktack timer start 1500" || fail "no full work period after the pause"
counting() { [[ $(item_property XAyatanaLabel) == 2[45]:[0-9][0-9] ]]; }
wait_for 5 counting || fail "the status item says \"$(item_property XAyatanaLabel)\""
ok "the pause ends by itself at midnight and a full work period starts"
narv_stop
echo "e2e pause until: $passed passed, 0 failed"

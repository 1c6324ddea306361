#!/bin/sh
# Opens a program's window on a virtual display with a window manager and saves a screenshot of it.
# Usage: virtual_display.sh PROGRAM [ARGUMENT...]
set -eu
shot="${TMPDIR:-/tmp}/zan-screenshot-$$.png"
number_file=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$number_file" 2>/dev/null &
server=$!
trap 'kill $server 2>/dev/null || true; rm -f "$number_file"' EXIT INT TERM
for _ in $(seq 100); do [ -s "$number_file" ] && break; sleep 0.1; done
DISPLAY=":$(cat "$number_file")"
export DISPLAY
openbox >/dev/null 2>&1 &
sleep 0.5
"$@" &
program=$!
for _ in $(seq 100); do
  xdotool search --onlyvisible --pid "$program" >/dev/null 2>&1 && break
  kill -0 "$program" 2>/dev/null || { wait "$program"; exit $?; }
  sleep 0.1
done
sleep 1
import -window root "$shot"
echo "No display here: the window stands on the virtual display $DISPLAY. Screenshot: $shot"
if [ -t 0 ]; then
  echo "Press Ctrl+C to end it."
  wait "$program"
else
  kill "$program" 2>/dev/null || true
  wait "$program" 2>/dev/null || true
fi

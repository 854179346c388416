#!/usr/bin/env bash
# Installs what is missing, builds Release into build/ and starts the editor.
# Without a display the editor runs on its own Xvfb, a screenshot of its window is written to
# build/screenshots/run.png, and it is closed the normal way (SIGTERM, as at a logout).
set -euo pipefail
cd "$(dirname "$0")"

./scripts/deps.sh
# No options here: a fresh build/ leaves the tests and benchmarks out, and a build/ that
# test.sh configured keeps them, so neither script makes the other rebuild.
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build -j2 --target quillora quillora-cli quillora-data

if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec ./build/quillora "$@"
fi

mkdir -p build/screenshots
shot=build/screenshots/run.png
# The editor picks the picture format from the suffix, so the partial name ends in .png too.
partial="build/screenshots/.run-$$.png"
work=$(mktemp -d)
xvfb=""
editor=""
cleanup() {
  # Only what this script started: the editor, then its X server.
  if [ -n "$editor" ] && kill -0 "$editor" 2>/dev/null; then
    kill -TERM "$editor" 2>/dev/null || true
    wait "$editor" 2>/dev/null || true
  fi
  if [ -n "$xvfb" ] && kill -0 "$xvfb" 2>/dev/null; then
    kill -TERM "$xvfb" 2>/dev/null || true
    wait "$xvfb" 2>/dev/null || true
  fi
  rm -rf "$work"
  rm -f "$partial"
}
trap cleanup EXIT
trap 'exit 130' INT
trap 'exit 143' TERM

# A display number no other server holds; Xvfb refuses a taken one, so a race only costs a try.
# It writes the number to file descriptor 3 once it accepts connections.
export XAUTHORITY="$work/Xauthority"
display=""
for n in $(seq 99 199); do
  if [ -e "/tmp/.X$n-lock" ] || [ -e "/tmp/.X11-unix/X$n" ]; then continue; fi
  : >"$XAUTHORITY"
  xauth -q add ":$n" . "$(mcookie)"
  rm -f "$work/ready"
  mkfifo "$work/ready"
  Xvfb ":$n" -screen 0 1600x1000x24 -nolisten tcp -auth "$XAUTHORITY" -displayfd 3 \
    3>"$work/ready" 2>"$work/xvfb.log" &
  xvfb=$!
  if read -r -t 30 shown <"$work/ready" && [ "$shown" = "$n" ]; then
    display=":$n"
    break
  fi
  kill -TERM "$xvfb" 2>/dev/null || true
  wait "$xvfb" 2>/dev/null || true
  xvfb=""
done
if [ -z "$display" ]; then
  echo "Could not start Xvfb:" >&2
  cat "$work/xvfb.log" >&2 2>/dev/null || true
  exit 1
fi

export DISPLAY="$display"
export QTWEBENGINE_DISABLE_SANDBOX=1
# Xvfb has no GPU: keep the web engine from trying (and logging its failures).
export QTWEBENGINE_CHROMIUM_FLAGS="--disable-gpu"
QUILLORA_SCREENSHOT="$PWD/$partial" ./build/quillora "$@" &
editor=$!
for _ in $(seq 1 120); do
  if [ -s "$partial" ] || ! kill -0 "$editor" 2>/dev/null; then break; fi
  sleep 0.5
done
# The editor saves the picture in one go before it handles the signal, so once it has ended
# the file is whole.
kill -TERM "$editor" 2>/dev/null || true
wait "$editor" || true
editor=""
if [ -s "$partial" ]; then
  mv -f "$partial" "$shot"
  echo "The editor started and closed; its window is in $shot"
else
  echo "The editor did not show its window" >&2
  exit 1
fi

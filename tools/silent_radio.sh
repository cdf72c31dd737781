#!/bin/sh
# Tries the headless station against an IC-910 on a pseudo-terminal that
# nobody answers, then hangs that line up half-way, and reports what an
# operator would see: status lines, the device messages, and how long SIGTERM
# takes. Usage: tools/silent_radio.sh [BUILD_DIR] (default build-sanitize).
set -eu
build=${1:-build-sanitize}
veloran=$build/cli/veloran
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# A pseudo-terminal whose far end is held open and never read or written:
# no echo, no radio. Its path goes to a file; killing the holder hangs it up.
python3 -c '
import os, pty, sys, time
master, slave = pty.openpty()
open(sys.argv[1], "w").write(os.ttyname(slave) + "\n")
os.close(slave)
time.sleep(int(sys.argv[2]))
' "$work/port" 5 &
holder=$!
sleep 0.5
port=$(cat "$work/port")

"$veloran" --headless --config-dir "$work/config" --data-dir "$work/data" --sat AO-7 \
    --radio 7 --radio-port "$port" >"$work/out" 2>"$work/err" &
station=$!
sleep 10
start=$(date +%s.%N)
kill -TERM $station
wait $station || true
end=$(date +%s.%N)
wait $holder 2>/dev/null || true

echo "port: $port (hung up after 5 s)"
echo "status lines in 10 s: $(grep -c ' UTC' "$work/out")"
echo "quit after SIGTERM: $(awk "BEGIN { printf \"%.2f\", $end - $start }") s"
echo "--- device messages (standard error) ---"
grep 'veloran: radio' "$work/err" || true
echo "--- standard output ---"
cat "$work/out"

#!/usr/bin/env bash
# Times the 24-hour pass table of a whole catalogue two ways in one run on
# this machine: veloran-cli passes (the pass finder, on every core), and
# satellite.js 7.1 (SGP4, from npm) driven by an ordinary predictor that
# steps 60 s and bisects to 0.1 s at each rise, set and maximum. Same file,
# same instant (2018-01-20T22:33:15Z), same site (43.7064 N, 79.2442 W,
# 200 m). Then bench_passes shows how our time splits between reading the
# catalogue and searching, on one thread and on two.
#
#   bench/passes-vs-satellitejs.sh [CATALOGUE]
#
# satellite.js is installed into a scratch folder (VELORAN_PEER_DIR, default
# /tmp/veloran-satellitejs), never into the repository. Not part of CI.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
catalogue="$(realpath "${1:-$root/../shared/data/elements-979-2018-01-21.txt}")"
build="${VELORAN_BENCH_BUILD:-$root/build-rel}"
peer="${VELORAN_PEER_DIR:-/tmp/veloran-satellitejs}"
instant=2018-01-20T22:33:15Z
runs=3

launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release "${launcher[@]}" >/dev/null
cmake --build "$build" -j"$(nproc)" --target veloran-cli bench_passes >/dev/null

mkdir -p "$peer"
if [ ! -d "$peer/node_modules/satellite.js" ]; then
    (cd "$peer" && npm install --no-save --no-audit --no-fund --silent satellite.js@7.1)
fi
cat >"$peer/predict.mjs" <<'EOF'
// An ordinary pass predictor on satellite.js: 60 s steps, 0.1 s bisection.
import { readFileSync } from 'node:fs';
import { performance } from 'node:perf_hooks';
import * as satellite from 'satellite.js';

const [file, instant, latDeg, lonDeg, heightKm] = process.argv.slice(2);
const lines = readFileSync(file, 'utf8').split('\n');
const sets = [];
for (let i = 0; i + 2 < lines.length; i++) {
  if (lines[i + 1].startsWith('1 ') && lines[i + 2].startsWith('2 ')) {
    sets.push({ name: lines[i].trim(), satrec: satellite.twoline2satrec(lines[i + 1], lines[i + 2]) });
    i += 2;
  }
}
const observer = {
  latitude: satellite.degreesToRadians(Number(latDeg)),
  longitude: satellite.degreesToRadians(Number(lonDeg)),
  height: Number(heightKm),
};
const start = Date.parse(instant);
const span = 86400;

function look(satrec, t) {
  const date = new Date(start + t * 1000);
  const pv = satellite.propagate(satrec, date);
  if (!pv || !pv.position) return null;
  const ecf = satellite.eciToEcf(pv.position, satellite.gstime(date));
  return satellite.ecfToLookAngles(observer, ecf);
}
const elevation = (satrec, t) => {
  const l = look(satrec, t);
  return l ? l.elevation : NaN;
};
function crossing(satrec, a, b) {
  const upAtA = elevation(satrec, a) >= 0;
  while (b - a > 0.1) {
    const m = 0.5 * (a + b);
    if ((elevation(satrec, m) >= 0) === upAtA) a = m; else b = m;
  }
  return 0.5 * (a + b);
}
function culmination(satrec, lo, hi) {
  while (hi - lo > 0.1) {
    const m = 0.5 * (lo + hi);
    if (elevation(satrec, m + 0.05) > elevation(satrec, m - 0.05)) lo = m; else hi = m;
  }
  return 0.5 * (lo + hi);
}

const began = performance.now();
const passes = [];
for (const { name, satrec } of sets) {
  let previous = 0;
  let up = elevation(satrec, 0) >= 0;
  let aos = 0, best = 0, bestEl = up ? elevation(satrec, 0) : -1;
  const finish = (los) => {
    const max = culmination(satrec, Math.max(aos, best - 60), Math.min(los, best + 60));
    const [a, m, l] = [look(satrec, aos), look(satrec, max), look(satrec, los)];
    passes.push({ name, aos, max, los, el: m.elevation, az: [a.azimuth, m.azimuth, l.azimuth] });
  };
  for (let t = 60; previous < span; t += 60) {
    const now = Math.min(t, span);
    const el = elevation(satrec, now);
    if (Number.isNaN(el)) { up = false; break; }  // decayed
    if (!up && el >= 0) {
      aos = crossing(satrec, previous, now);
      up = true; best = now; bestEl = el;
    } else if (up && el < 0) {
      finish(crossing(satrec, previous, now));
      up = false;
    } else if (up && el > bestEl) {
      best = now; bestEl = el;
    }
    previous = now;
  }
  if (up) finish(span);
}
const took = performance.now() - began;
console.log(`satellite.js: ${sets.length} sets, ${passes.length} passes, predictor ${took.toFixed(0)} ms`);
EOF

best() { sort -n | head -1; }
echo "Catalogue $catalogue, $instant, 24 hours, $(nproc) cores"

peer_total=$(for _ in $(seq $runs); do
    s=$(date +%s.%N)
    node "$peer/predict.mjs" "$catalogue" "$instant" 43.7064 -79.2442 0.2 >"$peer/last.txt"
    e=$(date +%s.%N)
    echo "$e - $s" | bc
done | best)
cat "$peer/last.txt"
echo "satellite.js whole run (node start, reading, predicting): ${peer_total} s"

ours_total=$(for _ in $(seq $runs); do
    s=$(date +%s.%N)
    "$build/cli/veloran-cli" passes "$catalogue" --time "$instant" --site 43.7064,-79.2442,200 \
        --hours 24 >"$peer/ours.txt"
    e=$(date +%s.%N)
    echo "$e - $s" | bc
done | best)
echo "veloran-cli passes: $(($(wc -l <"$peer/ours.txt") - 2)) passes"
echo "veloran-cli passes whole run (start, reading, searching, printing): ${ours_total} s"
echo "ratio satellite.js / veloran-cli: $(echo "scale=1; $peer_total / $ours_total" | bc)"

echo "How our time splits:"
VELORAN_CATALOGUE="$catalogue" "$build/bench/bench_passes" \
    --benchmark_filter='Catalogue' --benchmark_repetitions=3 --benchmark_report_aggregates_only=true

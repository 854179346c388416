#!/usr/bin/env bash
# Save then open a message carrying 100 MB of embedded files, next to cp of the result.
# Usage: bench/message_roundtrip.sh [build-folder] [rounds]
#
# Each round times, in this order: save (pack), open (extract), cp of the message file, and cp
# followed by fdatasync of the copy (what the save's own fdatasync costs on top of writing).
# Every step starts after a sync, so no step pays for the previous one's write-back. Medians of
# the rounds are printed, wall time and CPU time (user + system) side by side: on a shared
# machine the CPU times are the steadier comparison.
set -euo pipefail
build=$(realpath "${1:-build}")
rounds=${2:-3}
cli="$build/quillora-cli"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mkdir -p "$work/page/img"
html="$work/page/index.html"
{
  echo "<html><body>"
  for i in $(seq 1 10); do
    head -c $((10 * 1024 * 1024)) /dev/urandom > "$work/page/img/photo$i.jpg"
    echo "<p>Photo $i</p><img src=\"img/photo$i.jpg\">"
  done
  echo "</body></html>"
} > "$html"
sync

/usr/bin/python3 - "$cli" "$work" "$rounds" <<'PY'
import os, resource, shutil, subprocess, sys, time, filecmp
cli, work, rounds = sys.argv[1], sys.argv[2], int(sys.argv[3])
msg, out, copy = f"{work}/news.mssx", f"{work}/out", f"{work}/copy.mssx"

def run(cmd):
    """Wall seconds, CPU seconds and peak resident KiB of one child."""
    os.sync()
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    t = time.perf_counter()
    p = subprocess.Popen(cmd, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(p.pid, 0)
    wall = time.perf_counter() - t
    if status != 0:
        sys.exit(f"{cmd[0]} failed")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss

steps = {"save (pack)": [], "open (extract)": [], "cp": [], "cp + fdatasync": []}
for _ in range(rounds):
    for f in (msg, copy):
        if os.path.exists(f):
            os.remove(f)
    shutil.rmtree(out, ignore_errors=True)
    steps["save (pack)"].append(run([cli, "pack", f"{work}/page/index.html", "-o", msg]))
    steps["open (extract)"].append(run([cli, "extract", msg, out]))
    steps["cp"].append(run(["cp", msg, copy]))
    os.remove(copy)
    steps["cp + fdatasync"].append(
        run(["dd", f"if={msg}", f"of={copy}", "bs=4M", "conv=fdatasync", "status=none"]))
for i in range(1, 11):
    if not filecmp.cmp(f"{work}/page/img/photo{i}.jpg", f"{out}/photo{i}.jpg", shallow=False):
        sys.exit(f"photo{i} differs")

def median(values):
    return sorted(values)[len(values) // 2]

size = os.path.getsize(msg)
med = {k: (median([w for w, _, _ in v]), median([c for _, c, _ in v]), max(m for _, _, m in v))
       for k, v in steps.items()}
print(f"message file: {size / 1e6:.1f} MB (100 MiB of embedded files), median of {rounds} rounds")
for name, (wall, cpu, peak) in med.items():
    print(f"{name:16s} {wall:6.3f} s wall  {cpu:6.3f} s CPU  peak {peak / 1024:6.1f} MiB "
          f"= {peak * 1024 / size:.2f}x file")
so_wall = med["save (pack)"][0] + med["open (extract)"][0]
so_cpu = med["save (pack)"][1] + med["open (extract)"][1]
for ref in ("cp", "cp + fdatasync"):
    print(f"save+open / {ref:14s} = {so_wall / med[ref][0]:.2f}x wall, "
          f"{so_cpu / med[ref][1]:.2f}x CPU")
print(f"fdatasync of the file costs about {med['cp + fdatasync'][0] - med['cp'][0]:.3f} s "
      f"wall here")
PY

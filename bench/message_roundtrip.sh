#!/usr/bin/env bash
# Save then open a message carrying 100 MB of embedded files, next to cp of the result.
# Usage: bench/message_roundtrip.sh [build-folder]   (prints times, ratios and peak memory)
set -euo pipefail
build=$(realpath "${1:-build}")
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

now() { date +%s.%N; }
peak() { grep 'Maximum resident' "$1" | awk '{print $NF}'; }

t0=$(now); /usr/bin/time -v "$cli" pack "$html" -o "$work/news.mssx" 2> "$work/pack.time"; t1=$(now)
t2=$(now); /usr/bin/time -v "$cli" extract "$work/news.mssx" "$work/out" 2> "$work/extract.time"; t3=$(now)
t4=$(now); cp "$work/news.mssx" "$work/copy.mssx"; t5=$(now)

size=$(stat -c %s "$work/news.mssx")
for i in $(seq 1 10); do cmp -s "$work/page/img/photo$i.jpg" "$work/out/photo$i.jpg" || { echo "photo$i differs" >&2; exit 1; }; done
python3 - "$t0" "$t1" "$t2" "$t3" "$t4" "$t5" "$size" "$(peak "$work/pack.time")" "$(peak "$work/extract.time")" <<'PY'
import sys
t0, t1, t2, t3, t4, t5 = map(float, sys.argv[1:7])
size, pack_kb, extract_kb = int(sys.argv[7]), int(sys.argv[8]), int(sys.argv[9])
save, open_, cp = t1 - t0, t3 - t2, t5 - t4
mb = size / 1e6
print(f"message file: {mb:.1f} MB (100 MiB of embedded files)")
print(f"save (pack):    {save:6.3f} s  peak {pack_kb/1024:6.1f} MiB = {pack_kb*1024/size:.2f}x file")
print(f"open (extract): {open_:6.3f} s  peak {extract_kb/1024:6.1f} MiB = {extract_kb*1024/size:.2f}x file")
print(f"cp of the file: {cp:6.3f} s")
print(f"save+open / cp = {(save + open_) / cp:.2f}x")
PY

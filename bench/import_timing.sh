#!/usr/bin/env bash
# Time quillora-cli import of each document, mail and Outlook file of tests/data next to the
# outside converter alone on the same file (soffice --convert-to html; msgconvert), both with a
# warm LibreOffice profile, plus one import with a cold profile.
# Usage: bench/import_timing.sh [build-folder]
set -euo pipefail
build=$(realpath "${1:-build}")
source_dir=$(realpath "$(dirname "$0")/..")
cli="$build/quillora-cli"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export XDG_CACHE_HOME="$work/cache" # the CLI keeps LibreOffice's profile there
profile="file://$work/cache/quillora/office-profile"

now() { date +%s.%N; }
span() { python3 -c "import sys; print(f'{float(sys.argv[2]) - float(sys.argv[1]):6.2f}')" "$1" "$2"; }

first="$source_dir/tests/data/docs/simplepng.rtf"
t0=$(now); "$cli" import "$first" -o "$work/cold.mssx" >/dev/null 2>&1; t1=$(now)
echo "cold LibreOffice profile: import of simplepng.rtf $(span "$t0" "$t1") s"
printf '%-48s %10s %12s\n' "file" "import (s)" "converter (s)"
for f in "$source_dir"/tests/data/docs/* "$source_dir"/tests/data/msg/*.msg \
         "$source_dir"/tests/data/eml/attachments-docx-pdf-odt-png-eml.eml; do
  name=$(basename "$f")
  t0=$(now); "$cli" import "$f" -o "$work/$name.mssx" >/dev/null 2>&1; t1=$(now)
  rm -rf "$work/alone"; mkdir -p "$work/alone"
  t2=$(now)
  case "$f" in
    *.msg) msgconvert --outfile "$work/alone/x.eml" "$f" >/dev/null 2>&1 ;;
    *.eml) cp "$f" "$work/alone/x.eml" ;; # no outside program: the copy is the reference
    *) soffice "-env:UserInstallation=$profile" --headless --norestore \
         --convert-to 'html:HTML (StarWriter)' --outdir "$work/alone" "$f" >/dev/null 2>&1 ;;
  esac
  t3=$(now)
  printf '%-48s %10s %12s\n' "$name" "$(span "$t0" "$t1")" "$(span "$t2" "$t3")"
done

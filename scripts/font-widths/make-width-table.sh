#!/usr/bin/env bash
# Regenerates src/host/viz/XTextMetricsTable.cpp from the DejaVu Sans fonts
# (Debian: fonts-dejavu-core, libfreetype-dev). Only needed when the table's
# ranges change; the build never runs it.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
root="$here/../.."
fonts=/usr/share/fonts/truetype/dejavu
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
g++ -std=c++17 -O1 -o "$work/make-width-table" "$here/make-width-table.cpp" $(pkg-config --cflags --libs freetype2)
"$work/make-width-table" "$fonts/DejaVuSans.ttf" "$fonts/DejaVuSans-Bold.ttf" > "$root/src/host/viz/XTextMetricsTable.cpp"

#!/bin/sh
# Draws docs/sampling-errors.svg: error of the samplers against their number of samples. Needs
# gnuplot, a release build, and the networks that it was configured with (KVN_NETWORKS).
#
# usage: plotSamplingErrors.sh [BUILD-FOLDER]
set -eu

root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build/release}
networks="alarm insurance hailfinder win95pts"
data=$(mktemp)
trap 'rm -f "$data"' EXIT

# shellcheck disable=SC2086  # one argument for each network
"$build/bench/samplingErrors" $networks > "$data"

gnuplot <<PLOT
set terminal svg size 900,760 font "Helvetica,13" background "#ffffff"
set output "$root/docs/sampling-errors.svg"
set multiplot layout 2,2 title "Root mean square error of the posteriors"
set logscale xy
set xrange [80:130000]
set yrange [0.0002:0.6]
set format xy "%g"
set grid lc rgb "#dddddd"
set key bottom left font ",10" samplen 2 spacing 1.0
set xlabel "samples" offset 0,0.4
shown = "logic-sampling likelihood-weighting self-importance backward-sampling ais epis loopy"
set style line 1 pt 7 ps 0.45 lw 1.6 lc rgb "#888888"
set style line 2 pt 7 ps 0.45 lw 1.6 lc rgb "#1f77b4"
set style line 3 pt 7 ps 0.45 lw 1.6 lc rgb "#9467bd"
set style line 4 pt 7 ps 0.45 lw 1.6 lc rgb "#8c564b"
set style line 5 pt 7 ps 0.45 lw 1.6 lc rgb "#ff7f0e"
set style line 6 pt 7 ps 0.45 lw 1.6 lc rgb "#2ca02c"
set style line 7 pt 0 ps 0.45 lw 0.8 lc rgb "#d62728"
networks = "$networks"
do for [n = 0:3] {
  set title word(networks, n + 1) offset 0,-0.6
  if (n > 0) { unset key }
  plot for [i = 0:6] "$data" index (7 * n + i) using 1:2 with linespoints ls (i + 1) \
    title word(shown, i + 1)
}
unset multiplot
PLOT

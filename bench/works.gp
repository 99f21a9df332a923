# SPDX-License-Identifier: MIT
#
# Bars for each work: time beside hand-written code. Variables: data, columns (of the data), picture.
height = 420
load "bench/style.gp"
set title "CPU time per record beside hand-written code (1.0); in memory, autocommit; shorter is faster"
set style data histogram
set style histogram clustered gap 1.5
set style fill solid 1.0 noborder
set boxwidth 1.0
set ytics 0.2 nomirror
set grid ytics lc rgb "#dddddd"
set xtics scale 0
set arrow from graph 0, first 1 to graph 1, first 1 nohead lc rgb "#444444" dt 2
plot for [i = 2:columns] data using i:xtic(1) title columnheader(i) lt i - 1

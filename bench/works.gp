# SPDX-License-Identifier: MIT
#
# Bars for each work: what it costs beside hand-written code. Variables: data, columns (of the data), colours (numbers of
# line types), what is shown, rival (which hand-written code), picture.
height = 420
load "bench/style.gp"
set title what . " per record beside hand-written code with " . rival . " (1.0); in memory; shorter is better"
set style data histogram
set style histogram clustered gap 1.5
set style fill solid 1.0 noborder
set boxwidth 1.0
set ytics nomirror
set key below horizontal
set grid ytics lc rgb "#dddddd"
set xtics scale 0
set arrow from graph 0, first 1 to graph 1, first 1 nohead lc rgb "#444444" dt 2
plot for [i = 2:columns] data using i:xtic(1) title columnheader(i) lt int(word(colours, i - 1))

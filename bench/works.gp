# SPDX-License-Identifier: MIT
#
# Bars for each work: time beside hand-written code. Variables: data, columns (of the data), picture.
set terminal svg size 1000,420 dynamic noenhanced font "sans-serif,13" background "white"
set output picture
set datafile separator "\t"
set title "CPU time per record beside hand-written code (1.0); in memory, autocommit; shorter is faster"
set style data histogram
set style histogram clustered gap 1.5
set style fill solid 1.0 noborder
set boxwidth 1.0
set yrange [0:*]
set ytics 0.2 nomirror
set grid ytics lc rgb "#dddddd"
set key outside right top Left reverse samplen 1
set xtics scale 0
set arrow from graph 0, first 1 to graph 1, first 1 nohead lc rgb "#444444" dt 2
set border 3 lc rgb "#444444"
set linetype 1 lc rgb "#d1495b"
set linetype 2 lc rgb "#1f4e79"
set linetype 3 lc rgb "#4f86b8"
set linetype 4 lc rgb "#9dbfdd"
set linetype 5 lc rgb "#5b8c5a"
set linetype 6 lc rgb "#9cbf8b"
set linetype 7 lc rgb "#c9a227"
set linetype 8 lc rgb "#bbbbbb"
plot for [i = 2:columns] data using i:xtic(1) title columnheader(i) lt i - 1

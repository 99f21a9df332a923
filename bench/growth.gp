# SPDX-License-Identifier: MIT
#
# Curves: listing by rows, creating and listing by members. Variables: folder, columns (of growth-rows.tsv), picture.
set terminal svg size 1000,640 dynamic noenhanced font "sans-serif,13" background "white"
set output picture
set datafile separator "\t"
set grid lc rgb "#dddddd"
set border 3 lc rgb "#444444"
set xtics nomirror (1000, 10000, 100000)
set xrange [700:140000]
set ytics nomirror
set logscale x
set yrange [0:*]
set style data linespoints
set linetype 1 lc rgb "#d1495b" lw 2.5 pt 7
set linetype 2 lc rgb "#1f4e79" lw 1.5 pt 7
set linetype 3 lc rgb "#4f86b8" lw 1.5 pt 7
set linetype 4 lc rgb "#9dbfdd" lw 1.5 pt 7
set linetype 5 lc rgb "#5b8c5a" lw 1.5 pt 7
set linetype 6 lc rgb "#9cbf8b" lw 1.5 pt 7
set linetype 7 lc rgb "#c9a227" lw 1.5 pt 7
set linetype 8 lc rgb "#bbbbbb" lw 1.5 pt 7
set key outside right top Left reverse samplen 1

set multiplot
set origin 0, 0.5
set size 1, 0.5
set title "List all: microseconds per record, by rows of the table"
rows = folder . "/growth-rows.tsv"
plot for [i = 2:columns] rows using 1:(column(i) / 1000) title columnheader(i) lt i - 1

set key inside bottom left
set logscale x 2
set xtics (4, 16, 64, 256)
set xrange [3:340]
set origin 0, 0
set size 0.5, 0.5
set title "Create and get back: microseconds per member, by members"
creates = folder . "/growth-members-create.tsv"
plot for [i = 2:3] creates using 1:(column(i) / 1000) title columnheader(i) lt i - 1

set origin 0.5, 0
set title "List all: microseconds per member, by members"
lists = folder . "/growth-members-list.tsv"
plot for [i = 2:3] lists using 1:(column(i) / 1000) title columnheader(i) lt i - 1
unset multiplot

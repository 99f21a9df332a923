# SPDX-License-Identifier: MIT
#
# Curves: listing by rows, creating and listing by members. Variables: folder, columns (of growth-rows.tsv), picture.
height = 640
load "bench/style.gp"
set grid lc rgb "#dddddd"
set xtics nomirror (1000, 10000, 100000)
set xrange [700:140000]
set ytics nomirror
set logscale x
set style data linespoints

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
plot for [i = 2:4] creates using 1:(column(i) / 1000) title columnheader(i) lt i - 1

set origin 0.5, 0
set title "List all: microseconds per member, by members"
lists = folder . "/growth-members-list.tsv"
plot for [i = 2:4] lists using 1:(column(i) / 1000) title columnheader(i) lt i - 1
unset multiplot

# SPDX-License-Identifier: MIT
#
# What the pictures have in common. Variables: height, picture.
set terminal svg size 1000,height dynamic noenhanced font "sans-serif,13" background "white"
set output picture
set datafile separator "\t"
set border 3 lc rgb "#444444"
set key outside right top Left reverse samplen 1
set yrange [0:*]
array colour[12] = ["#d1495b", "#e8963e", "#1f4e79", "#4f86b8", "#9dbfdd", "#5b8c5a", "#9cbf8b", "#c9a227", "#bbbbbb", \
    "#3c5f3b", "#6f9160", "#96781a"]
do for [i = 1:12] { set linetype i lc rgb colour[i] lw i <= 2 ? 2.5 : 1.5 pt 7 }

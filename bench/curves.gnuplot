# SPDX-License-Identifier: MIT
# Growth curves from the .dat files of the current folder: size, nanoseconds, nanoseconds of the floor.
set terminal svg size 640,400 font "sans-serif,12" background "white"
set logscale xy
set format x "10^{%T}"
set format y "10^{%T}"
set key left top
set grid
set xlabel "variables"
set ylabel "milliseconds"
set output "rebuild.svg"
plot "rebuild-1.dat" using 1:($2/1e6) with linespoints title "rebuild, 1 station", \
     "rebuild-32.dat" using 1:($2/1e6) with linespoints title "rebuild, 32 stations", \
     "rebuild-1.dat" using 1:($3/1e6) with lines dashtype 2 title "floor, 1 station", \
     "rebuild-32.dat" using 1:($3/1e6) with lines dashtype 2 title "floor, 32 stations"
unset logscale y
set yrange [0:*]
set format y "%g"
set xlabel "records"
set ylabel "nanoseconds"
set output "look-up.svg"
plot "look-up.dat" using 1:2 with linespoints title "look-up", \
     "look-up.dat" using 1:3 with lines dashtype 2 title "floor: a hash look-up"

# plot.gp: the error of one function along its ordinary domain; single precision above, double below.
# SPDX-License-Identifier: MIT
# gnuplot -e "name='Exp'; folder='build/profiles'; out='docs/plots/Exp.png'" tools/accuracy/plot.gp
set terminal png size 720,420 font "sans,9"
set output out
set multiplot layout 2,1 margins 0.11,0.98,0.10,0.93 spacing 0.10,0.12
set logscale y
set ylabel "worst error, ulp"
set format y "10^{%T}"
set ytics 100
set grid ytics lc rgb "#dddddd"
do for [type in "s d"] {
  set title "v".type.name offset 0,-0.6
  set key horizontal right samplen 1.5
  plot folder."/v".type.name.".dat" using 1:4 with lines lc rgb "#c05020" title "EP", \
       "" using 1:2 with lines lc rgb "#2060a0" title "LA", \
       "" using 1:3 with lines lc rgb "#208040" title "HA"
}

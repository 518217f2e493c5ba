# Usage: gnuplot -c bench/ratios.gnuplot ROWS SVG     rows of bench/report plot
set terminal svg size 860,380 font "sans-serif,13" background "white"
set output ARG2
set title "Time per message, as a multiple of sipcode's"
set style data histograms
set style histogram clustered gap 1
set style fill solid border rgb "white"
set boxwidth 0.9
set yrange [0:*]
set ytics nomirror format "%gx"
set grid ytics linecolor rgb "#dddddd"
set xtics nomirror scale 0
set border 3
set key outside top center horizontal
set datafile separator "\t"
plot 1 with lines linecolor rgb "#222222" dashtype 2 title "sipcode", \
     for [i=2:4] ARG1 using i:xtic(1) title columnheader(i) linecolor rgb word("#4878a8 #e49444 #6a9f58", i - 1), \
     for [i=2:4] ARG1 using ($0 + (i - 3) * 0.25):i:(sprintf("%.1f", column(i))) every ::1 \
         with labels offset 0,0.5 font ",9" notitle

load plots."/common.gp"
set output docs."/time-to-provision.svg"
set xlabel "frames lost, %"
set ylabel "time to provision, s"
set logscale y
set yrange [0.1:110]
set key outside right top
set multiplot layout 1,2 title "9-byte SSID, 12-byte pass phrase, losses one by one, module starts to listen at a random time"
own = 'strcol("packet") eq "9 + 12 bytes" && strcol("air") eq "one by one" && strcol("sent") eq "both"'
from = 'strcol("air") eq "one by one" && strcol("listens") eq "any time" && strcol("sender") eq'
do for [kind in "median p95"] {
  set title (kind eq "median" ? "median" : "95th percentile")
  if (kind eq "median") { unset key } else { set key outside right top }
  plot "provision.csv" using (column("loss %")):(pick(@own, column(kind." s"))) pt 7 lc rgb blue lw 2 title "default", \
    "" using (column("loss %")):(pick(@own, column("bound ".kind." s"))) pt 7 lc rgb grey dt 2 title "bound", \
    for [i=1:3] "peers.csv" using (column("loss %")):(pick(@from word("P1 P2 P3", i), column(kind." s"))) \
      pt 7 lc rgb word(orange." ".green." ".purple, i) title word("P1 P2 P3", i), \
    for [i=1:3] "" using (column("loss %")):(pick(@from (word("P1 P2 P3", i)." best"), column(kind." s"))) \
      pt 6 lc rgb word(orange." ".green." ".purple, i) dt 2 title word("P1 P2 P3", i)." best"
}
unset multiplot

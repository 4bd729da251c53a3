load plots."/common.gp"
set output docs."/time-to-provision.svg"
set xlabel "frames lost, %"
set ylabel "time to provision, s"
set logscale y
set yrange [0.1:110]
set key outside right top
set multiplot layout 1,2 title "9-byte SSID, 12-byte pass phrase, losses one by one, module starts to listen at a random time"
own = 'strcol("packet") eq "9 + 12 bytes" && strcol("air") eq "one by one" && strcol("sent") eq "both"'
peer = 'strcol("air") eq "one by one" && strcol("listens") eq "any time"'
do for [kind in "median p95"] {
  set title (kind eq "median" ? "median" : "95th percentile")
  suffix = kind eq "median" ? "" : " p95"
  if (kind eq "median") { unset key } else { set key outside right top }
  plot "provision.csv" using (column("loss %")):(pick(@own, column(kind." s"))) pt 7 lc rgb blue lw 2 title "default", \
    "" using (column("loss %")):(pick(@own, column("bound ".kind." s"))) pt 7 lc rgb grey dt 2 title "bound", \
    "peers.csv" using (column("loss %")):(pick(@peer, column("P1".suffix))) pt 7 lc rgb orange title "P1", \
    "" using (column("loss %")):(pick(@peer, column("P2".suffix))) pt 7 lc rgb green title "P2", \
    "" using (column("loss %")):(pick(@peer, column("P3".suffix))) pt 7 lc rgb purple title "P3"
}
unset multiplot

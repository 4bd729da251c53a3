load plots."/common.gp"
set output docs."/paces.svg"
set xlabel "frames lost, %"
set ylabel "time to provision, s"
set logscale y
set yrange [0.1:110]
set multiplot layout 1,2 title "Paces, both channels, losses one by one: median (solid) and 95th percentile (dashed)"
case = 'strcol("packet") eq packet && strcol("air") eq "one by one" && strcol("sent") eq "both" && strcol("pace") eq'
do for [packet in '"9 + 12 bytes" "32 + 64 bytes"'] {
  set title packet
  if (packet eq "9 + 12 bytes") { unset key } else { set key outside right top }
  plot for [i=1:4] "paces.csv" \
      using (column("loss %")):(pick(@case word("default fast robust brief", i), column("median s"))) \
      pt 7 lc rgb word(blue." ".orange." ".green." ".purple, i) lw 2 title word("default fast robust brief", i), \
    for [i=1:4] "" using (column("loss %")):(pick(@case word("default fast robust brief", i), column("p95 s"))) \
      pt 7 lc rgb word(blue." ".orange." ".green." ".purple, i) dt 2 notitle
}
unset multiplot

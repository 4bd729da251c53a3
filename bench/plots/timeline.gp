load plots."/common.gp"
set output docs."/frame-timeline.svg"
set title "Version 5, default pacing: the frames of the first second"
set xlabel "time, ms"
set ylabel "datagram length, bytes"
set xrange [-10:1010]
set yrange [0:440]
set key outside right top
on(channel) = strcol("channel") eq channel
sync(bytes) = bytes == 30 || bytes == 31 || bytes == 388
isGroupSync(x) = strcol("destination") eq "239.122.111.114"
plot "timeline.csv" \
  using (column("ms")):(pick(on("broadcast") && !sync(column("bytes")) && column("bytes") >= 132, column("bytes"))) \
    with impulses lc rgb blue lw 2 title "broadcast: value", \
  "" using (column("ms")):(pick(on("broadcast") && !sync(column("bytes")) && column("bytes") < 132, column("bytes"))) \
    with impulses lc rgb green lw 2 title "broadcast: position", \
  "" using (column("ms")):(pick(on("broadcast") && sync(column("bytes")), column("bytes"))) \
    with impulses lc rgb grey lw 2 title "broadcast: sync", \
  "" using (column("ms")):(pick(on("multicast") && !isGroupSync(0), column("bytes"))) \
    with points pt 7 lc rgb orange title "multicast: data", \
  "" using (column("ms")):(pick(on("multicast") && isGroupSync(0), column("bytes"))) \
    with points pt 5 ps 0.9 lc rgb red title "multicast: sync"

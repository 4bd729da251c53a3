# Common settings of the plots. Run them in the folder that holds the benchmarks' .csv files, with the
# variable `docs` set to the folder of the pictures and `plots` to this one.
set terminal svg size 900,420 dynamic enhanced font "sans-serif,12" background "#ffffff"
set datafile separator ","
set datafile columnheaders
set datafile missing NaN
set grid lc "#dddddd"
set border 3 lc "#666666"
set tics nomirror
set style data linespoints
set pointsize 0.5

# Takes the values of the wanted rows for a curve; other rows are left out.
pick(wanted, value) = wanted ? value : NaN

blue = "#1f5fa8"; orange = "#d8731a"; green = "#2c8a57"; grey = "#8a8a8a"; purple = "#7a4fa3"; red = "#b03a3a"

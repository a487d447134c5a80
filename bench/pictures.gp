# Draws the benchmarks' pictures. Given: `results`, the file that scripts/bench writes, and
# `pictures`, the folder to draw into.

# read(filter): the table that a jq filter makes of the results, to plot from.
read(filter) = sprintf("< jq --raw-output '%s | @tsv' %s", filter, results)
# rows(run, prefix, fields): the rows of the benchmarks that `prefix` begins, by their argument.
rows(run, prefix, fields) = read(sprintf(\
    ".%s[] | select(.name | startswith(\"%s\")) | [(.name | split(\"/\")[-1]), %s]", \
    run, prefix, fields))

set terminal svg size 900,480 font "sans-serif,13" background "white"
set bmargin 6
set rmargin 27
set grid ytics linecolor rgb "#dddddd"
set border 3
set tics nomirror
set key outside right top
set label 1 system(sprintf("jq --raw-output '.machine + \"; \" + .compiler + \"; commit \" + .commit + \"; \" + .date + \"; load average before \" + .load' %s", results)) \
    at screen 0.01,0.02 font ",10" textcolor rgb "#666666" noenhanced
blue = "#1f77b4"; orange = "#ff7f0e"; green = "#2ca02c"; red = "#d62728"
set linetype 1 linecolor rgb blue linewidth 2 pointtype 7 pointsize 0.6
set linetype 2 linecolor rgb orange linewidth 2 pointtype 5 pointsize 0.6
set linetype 3 linecolor rgb green linewidth 2 pointtype 9 pointsize 0.8
set linetype 4 linecolor rgb red linewidth 2 pointtype 11 pointsize 0.8
set linetype 5 linecolor rgb "#888888" linewidth 1 dashtype 2

# Each operation against the direct client.
operations(run, fields) = read(sprintf(".%s[] | select(.ratio) | [.name, %s]", run, fields))
set style data histograms
set style histogram clustered gap 1
set style fill solid 0.85 noborder
set xtics rotate by -30 noenhanced font ",10"
set bmargin 10
set yrange [0:*]

set output pictures."/operations-null.svg"
set title "What the library adds: each operation on a service that costs nothing"
set ylabel "nanoseconds a call (median)"
plot operations("null", ".library_ns, .direct_ns") using 2:xtic(1) title "through the library", \
     "" using 3 title "direct client"

set output pictures."/operations-embedded.svg"
set title "Each operation on the embedded service, writing to a file"
set ylabel "microseconds a call (median)"
plot operations("embedded", ".library_ns / 1000, .direct_ns / 1000, (.ratio * 1000 | round / 1000)") \
         using 2:xtic(1) title "through the library", \
     "" using 3 title "direct client", \
     "" using 0:2:4 with labels offset 0,0.7 font ",10" title "(ratio above)"

set output pictures."/tracing.svg"
set title "What tracing costs: each operation on a service that costs nothing, trace to a file"
set ylabel "times the direct client's time (median)"
set logscale y
set yrange [1:*]
plot operations("null", ".ratio") using 2:xtic(1) title "off", \
     operations("traced_failures", ".ratio") using 2 title "group 0 (default)", \
     operations("traced_all", ".ratio") using 2 title "groups 0, 4, 8"

# By the size of something.
set style data linespoints
set xtics norotate enhanced font ",13"
set bmargin 6
set logscale xy
set format xy "%.0f"
set yrange [*:*]

set output pictures."/lookup.svg"
set title "Looking a fault up: the walk goes from the first entry to the match, or to the table's end"
set xlabel "entries in the table"
set ylabel "nanoseconds"
plot rows("mapping", "lookUp/miss", ".cpu_time") using 1:2 title "miss", \
     rows("mapping", "lookUp/last", ".cpu_time") using 1:2 title "last entry", \
     rows("mapping", "lookUp/middle", ".cpu_time") using 1:2 title "middle entry", \
     rows("mapping", "lookUp/first", ".cpu_time") using 1:2 title "first entry", \
     [10:100000] 5 * x with lines linetype 5 title "goal: 5 ns an entry"

set output pictures."/loading.svg"
set title "Reading a mapping file, against a bare TinyXML parse of it"
set xlabel "entries in the file"
set ylabel "times the bare parse"
unset logscale y
set format y "%.1f"
set yrange [0:1.7]
plot rows("mapping", "loadFile", ".time_ratio") using 1:2 title "time (median)", \
     rows("mapping", "loadFile", ".memory_ratio") using 1:2 title "most heap in use", \
     [10:100000] 1.5 with lines linetype 5 linecolor rgb blue title "goal for the time: 1.5", \
     [10:100000] 1.1 with lines linetype 5 linecolor rgb orange title "goal for the heap: 1.1"

set logscale x 2
set format y "%.0f"
set yrange [0:*]
set output pictures."/start-up.svg"
set title "Threads that start at once and get a factory of their own each (50 entries)"
set xlabel "threads"
set ylabel "microseconds until the last has it"
plot rows("mapping", "startUp", ".real_time") using 1:2 notitle

set output pictures."/threads.svg"
set title "Threads raising primary alarms at once: alarms a second"
set ylabel "alarms a second"
set logscale y
set format y "%.0s%c"
set yrange [*:*]
threads(run, client, field) = rows(run, "threads/".client, field)
plot threads("null", "direct", ".alarms_per_s") using 1:2 title "direct, null service", \
     threads("null", "library", ".alarms_per_s") using 1:2 title "library, null service", \
     threads("embedded", "direct", ".alarms_per_s") using 1:2 title "direct, embedded", \
     threads("embedded", "library", ".alarms_per_s") using 1:2 title "library, embedded"

set output pictures."/threads-slowest.svg"
set title "Threads raising primary alarms at once: the slowest call"
set ylabel "milliseconds"
set format y "%.0f"
plot threads("null", "direct", ".slowest_us / 1000") using 1:2 title "direct, null service", \
     threads("null", "library", ".slowest_us / 1000") using 1:2 title "library, null service", \
     threads("embedded", "direct", ".slowest_us / 1000") using 1:2 title "direct, embedded", \
     threads("embedded", "library", ".slowest_us / 1000") using 1:2 title "library, embedded"

#!/usr/bin/env bash
# Goal: calls of many threads give what one thread gets, threads leave nothing, and the thread sanitizer is silent.
source "$(dirname "$0")/common.sh"
in_session "$@"
build native checks
build win32 checks make_printer
build tsan checks
each=$(by_mode 1000 10000) threads=$(by_mode 2000 10000) in_sanitizer=$(by_mode 300 3000) windows_each=$(by_mode 100 10000) windows_threads=$(by_mode 200 10000)
native rows
native threads 64 "$each"
native many-threads "$threads"
windows threads 64 "$windows_each"
windows many-threads "$windows_threads"
# Modules come and go under the loader's own lock, which the thread sanitizer does not see: what the loader itself frees is no report.
printf -- '-- thread sanitizer\n'
count_faults < <(TSAN_OPTIONS=halt_on_error=0:ignore_noninstrumented_modules=1 watched build/tsan/bin/checks threads 16 "$in_sanitizer" | tee build/check/thread-sanitizer.txt)
reports=$(grep -c 'WARNING: ThreadSanitizer' build/check/thread-sanitizer.txt)
faults=$((faults + reports))
conclude "64 threads x $each calls (Windows: $windows_each) equal one thread's; $threads threads (Windows: $windows_threads) leave nothing; 16 x $in_sanitizer calls without a report of the thread sanitizer" \
  "$calls calls and threads, $faults faults, $reports reports"

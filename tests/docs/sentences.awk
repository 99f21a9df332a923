# SPDX-License-Identifier: MIT
#
# Compares the numbered sentences of a page with the tests that carry their numbers: 1, 2, ... in order, and for each
# one test Snn_Name. Call: awk -f sentences.awk PAGE TESTS

BEGIN { delete tests }

FNR == NR {
    if (/^```/) code = !code
    if (!code && /^[0-9]+\. /) {
        count++
        if ($1 + 0 != count) { printf "%s:%d: %s after %d\n", FILENAME, FNR, $1, count - 1; failed = 1 }
    }
    next
}

/^TEST(_F)?\(/ && match($0, / S[0-9]+_/) { tests[substr($0, RSTART + 2, RLENGTH - 3) + 0]++ }

END {
    for (i = 1; i <= count; i++)
        if (tests[i] != 1) { printf "sentence %d has %d tests\n", i, tests[i]; failed = 1 }
    for (i in tests)
        if (i + 0 > count) { printf "test %d has no sentence\n", i; failed = 1 }
    if (!count) print "no sentences were found"
    exit failed || !count
}

# SPDX-License-Identifier: MIT
#
# Applies the replacements of a page to a source file: each line after "-" stands in it exactly once, and the lines
# after "+" that follow take its place. Call: awk -f replace.awk REPLACEMENTS SOURCE > RESULT

BEGIN { split("", known) }

FNR == NR && /^-/ { old = substr($0, 2); known[old] = 1; next }
FNR == NR && /^\+/ { text[old] = text[old] substr($0, 2) "\n"; next }
FNR == NR { next }

$0 in known { found[$0]++; printf "%s", text[$0]; next }
{ print }

END {
    for (old in known)
        if (found[old] != 1) { print "not once in the source: " old > "/dev/stderr"; failed = 1 }
    exit failed
}

# SPDX-License-Identifier: MIT
#
# Turns a page's examples into a shell script that runs them one after the other: what a block of sh writes must be what
# the block of text behind it shows. Carriage returns are left out.
/^```/ {
    if (block == "sh") print "} >written 2>&1"
    if (block == "text") print "END_OF_TEXT\ntr -d '\\r' <written | diff shown - || { echo 'behind line " line "'; exit 1; }"
    block = block == "" ? substr($0, 4) : ""
    if (block == "sh") { line = NR; print "{" }
    if (block == "text") print "cat >shown <<'END_OF_TEXT'"
    next
}
block == "sh" || block == "text"
END { if (!line) print "exit 1" }

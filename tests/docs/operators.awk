# SPDX-License-Identifier: MIT
#
# Prints the examples of a table of conditions as items of a C++ array: the third and fourth column of the rows that
# have a filter in the third.

BEGIN { FS = " *\\| *" }
$4 ~ /^`\{.*\}`$/ {
    filter = substr($4, 2, length($4) - 2)
    print "{R\"~(" filter ")~\", \"" $5 "\"},"
}

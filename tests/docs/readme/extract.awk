# SPDX-License-Identifier: MIT
#
# Prints the first block of one kind of a Markdown page: awk -v kind=cpp -f extract.awk README.md

/^```/ && inside { exit }
inside
$0 == "```" kind { inside = 1 }

# SPDX-License-Identifier: MIT
#
# Looks up every relative link of Markdown pages: the file must exist, and the page that it names must have the heading
# after "#". Call in the project's folder: awk -f links.awk PAGE... PAGE... (the same pages twice: headings first)

FNR == 1 { seen[FILENAME]++; code = 0 }
/^```/   { code = !code }
code     { next }

seen[FILENAME] == 1 {
    if (!/^#+ /) next
    heading = tolower($0)
    sub(/^#+ /, "", heading)
    gsub(/[^a-z0-9 _-]/, "", heading)
    gsub(/ /, "-", heading)
    known[FILENAME "#" heading] = 1
    next
}

{
    folder = FILENAME
    if (!sub(/\/[^\/]*$/, "/", folder)) folder = ""
    rest = $0
    while (match(rest, /\]\([^)]*\)/)) {
        target = substr(rest, RSTART + 2, RLENGTH - 3)
        rest = substr(rest, RSTART + RLENGTH)
        if (target ~ /^[a-z]+:/) continue
        links++
        path = target
        sub(/#.*/, "", path)
        path = path == "" ? FILENAME : folder path
        while (sub(/[^\/]+\/\.\.\//, "", path)) continue
        if (system("test -e '" path "'") != 0) bad("there is no " path)
        else if (target ~ /#/ && !known[path "#" substr(target, index(target, "#") + 1)]) bad("no heading is " target)
    }
}

function bad(why) { printf "%s:%d: %s\n", FILENAME, FNR, why; failed = 1 }
END { if (!links) print "no links were found"; exit failed || !links }

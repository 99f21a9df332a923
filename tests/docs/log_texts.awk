# SPDX-License-Identifier: MIT
#
# Looks up the texts of failure lines that the code does not quote from itself: each constant of log_texts.h must stand
# in the reference as `Failed [TEXT]`. Call: awk -f log_texts.awk reference.md log_texts.h

FNR == NR { gsub(/\\\|/, "|"); page = page $0 "\n"; next }

/^constexpr const char\*/ {
    text = $0
    sub(/^[^"]*"/, "", text)
    sub(/"[^"]*$/, "", text)
    if ($0 ~ / = R"\(/) text = substr(text, 2, length(text) - 2)
    texts++
    if (!index(page, "`Failed [" text "]`")) { printf "%s:%d: the reference lacks Failed [%s]\n", FILENAME, FNR, text; failed = 1 }
}

END { if (!texts) print "no texts were found"; exit failed || !texts }

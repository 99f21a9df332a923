# SPDX-License-Identifier: MIT
#
# Turns the examples of a Markdown page into tests. Call: awk -v suite=NAME -f extract.awk PAGE > FILE.cpp
#
#   ```cpp helpers    functions for all examples of the page
#   ```cpp setup      statements that every later example starts with; `sqlite3* db` is an open database
#   ```sql existing   before an example: what another program has put into the database file before this one starts
#   ```cpp            one example; `path` names the database file, for a second connection
#   ```sql            after an example: the SQL text that it makes SQLite run
#   ```text           after an example: what it writes to std::cout
#
# Each example becomes one test, named after the heading above it and its line. It runs in a process of its own, so that
# it meets the library as a program does that has just been started.
#
# With -v only=KIND it prints the page's first block of that kind instead, as it stands.

function emit()
{
    if (example == "") return
    printf "TEST(%s, %s_line%d)\n{\n", suite, heading, exampleLine
    printf "    DocExample::run(R\"~(%s)~\", {%s, R\"~(%s)~\", R\"~(%s)~\"}, [](DocExample& example) {\n", existing, \
        hasSql ? "true" : "false", sql, text
    printf "        [[maybe_unused]] sqlite3* db = example.database();\n"
    printf "        [[maybe_unused]] const std::string& path = example.path();\n"
    printf "#line %d \"%s\"\n%s", setupLine, FILENAME, setup
    printf "        example.start();\n        {\n#line %d \"%s\"\n%s        }\n    });\n}\n\n", exampleLine, FILENAME, example
    example = sql = text = existing = ""
    hasSql = 0
}

BEGIN { if (!only) print "#include \"doc_example.h\"\n" }

only && inside && /^```$/ { exit }
only && inside
only { if ($0 == "```" only) inside = 1; next }

!block && /^#+ / {
    emit()
    heading = $0
    sub(/^#+ /, "", heading)
    gsub(/[^A-Za-z0-9]+/, "_", heading)
    gsub(/^_+|_+$/, "", heading)
}

block && /^```$/ {
    if (block == "helpers") printf "%s\n", helpers
    block = ""
    next
}

!block && /^```/ {
    block = substr($0, 4)
    if (block == "cpp helpers") { block = "helpers"; helpers = sprintf("#line %d \"%s\"\n", NR + 1, FILENAME) }
    else if (block == "cpp setup") { block = "setup"; setup = ""; setupLine = NR + 1 }
    else if (block == "sql existing") { emit(); block = "existing" }
    else if (block == "cpp") { emit(); exampleLine = NR + 1 }
    else if (block == "sql") hasSql = 1
    next
}

block == "helpers"  { helpers = helpers $0 "\n" }
block == "setup"    { setup = setup "        " $0 "\n" }
block == "existing" { existing = existing $0 "\n" }
block == "cpp"      { example = example "            " $0 "\n" }
block == "sql"      { sql = sql $0 "\n" }
block == "text"     { text = text $0 "\n" }

END { if (!only) emit() }

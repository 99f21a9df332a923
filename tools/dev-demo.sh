#!/bin/bash
# SPDX-License-Identifier: MIT
# builds an example and runs it on the countries of ISO 3166-1: [table, for that of vorn::Table] [arguments of it]
. "$(dirname "$0")/common.sh"

example=countries/countries
if [ "${1:-}" = table ]; then
    example=table/countries_table
    shift
fi

need "${packages_demo[@]}"
build demo
database=build/demo/${example##*/}.db
rm -f "$database"
"build/demo/examples/$example" "$database" /usr/share/iso-codes/json/iso_3166-1.json "$@"
say "The database is $database."

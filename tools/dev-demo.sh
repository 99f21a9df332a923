#!/bin/bash
# SPDX-License-Identifier: MIT
# builds examples/countries and runs it on the countries of ISO 3166-1: [arguments of countries]
. "$(dirname "$0")/common.sh"

need "${packages_demo[@]}"
build demo
rm -f build/demo/countries.db
build/demo/examples/countries/countries build/demo/countries.db /usr/share/iso-codes/json/iso_3166-1.json "$@"
say "The database is build/demo/countries.db."

SUMMARY = "One SQLite table, worked with as JSON records"
DESCRIPTION = "A C++ library that keeps one table of an SQLite database and lets a program work with its records as \
JSON objects."
SECTION = "libs"
LICENSE = "MIT"
LIC_FILES_CHKSUM = "file://LICENSE;md5=1538c6d9d685d465a04e87dfa06e548a"

DEPENDS = "jsoncpp sqlite3"

# A placeholder: where the archive of "./dev package" is kept.
VORNJSONDB_SITE ?= "https://vornjsondb.example.org"
SRC_URI = "${VORNJSONDB_SITE}/${BP}.tar.gz"
# "./dev package" writes the checksum of the archive that it makes.
SRC_URI[sha256sum] = "@sha256@"

inherit cmake

EXTRA_OECMAKE = "-DBUILD_TESTING=OFF -DVORNJSONDB_EXAMPLES=OFF"

BBCLASSEXTEND = "native nativesdk"

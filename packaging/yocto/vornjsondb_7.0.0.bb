SUMMARY = "One SQLite table, worked with as JSON records"
DESCRIPTION = "Two C++ libraries that keep one table of an SQLite database and let a program work with its records \
as JSON objects."
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

# The class VornJsonDbApi, and the class vorn::Table, which has a package of its own.
PACKAGECONFIG ??= "contract table"
PACKAGECONFIG[contract] = "-DVORNJSONDB_CONTRACT=ON,-DVORNJSONDB_CONTRACT=OFF"
PACKAGECONFIG[table] = "-DVORNJSONDB_TABLE=ON,-DVORNJSONDB_TABLE=OFF"
PACKAGES =+ "libvorntable"
FILES:libvorntable = "${libdir}/libvorntable.so.*"

BBCLASSEXTEND = "native nativesdk"

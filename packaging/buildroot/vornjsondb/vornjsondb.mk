################################################################################
#
# vornjsondb
#
################################################################################

VORNJSONDB_VERSION = 7.0.0
# A placeholder: where the archive of "./dev package" is kept.
VORNJSONDB_SITE = https://vornjsondb.example.org
VORNJSONDB_LICENSE = MIT
VORNJSONDB_LICENSE_FILES = LICENSE
VORNJSONDB_INSTALL_STAGING = YES
VORNJSONDB_DEPENDENCIES = jsoncpp sqlite
VORNJSONDB_CONF_OPTS = \
	-DBUILD_TESTING=OFF \
	-DVORNJSONDB_CONTRACT=$(if $(BR2_PACKAGE_VORNJSONDB_CONTRACT),ON,OFF) \
	-DVORNJSONDB_EXAMPLES=OFF \
	-DVORNJSONDB_TABLE=$(if $(BR2_PACKAGE_VORNJSONDB_TABLE),ON,OFF)

$(eval $(cmake-package))

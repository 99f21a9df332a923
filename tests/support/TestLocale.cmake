# SPDX-License-Identifier: MIT
#
# A locale with names and a decimal mark of its own, kept in the build folder, for tests of what follows the locale. It
# is made from the sources in Debian's package "locales"; where those are missing, these tests are skipped.
find_program(LOCALEDEF localedef)
find_path(LOCALE_SOURCES locales/de_DE PATHS /usr/share/i18n NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH)

set(test_environment "")
if(LOCALEDEF AND LOCALE_SOURCES)
  set(locale_folder ${CMAKE_CURRENT_BINARY_DIR}/locale)
  add_custom_command(OUTPUT ${locale_folder}/de_DE.UTF-8/LC_TIME
    COMMAND ${CMAKE_COMMAND} -E make_directory ${locale_folder}
    COMMAND ${LOCALEDEF} -i ${LOCALE_SOURCES}/locales/de_DE -f UTF-8 ${locale_folder}/de_DE.UTF-8)
  add_custom_target(test_locale ALL DEPENDS ${locale_folder}/de_DE.UTF-8/LC_TIME)
  set(test_environment ENVIRONMENT LOCPATH=${locale_folder})
endif()

# SPDX-License-Identifier: MIT
#
# Runs ${command}, which must succeed and write exactly what the file ${expected} holds.
execute_process(COMMAND ${command} OUTPUT_VARIABLE written RESULT_VARIABLE status)
file(READ ${expected} shown)
if(NOT status EQUAL 0 OR shown STREQUAL "" OR NOT written STREQUAL shown)
  message(FATAL_ERROR "status ${status}; the page shows:\n${shown}\nthe program wrote:\n${written}")
endif()

// SPDX-License-Identifier: MIT
//
// libvornjsondb-quiet: the two flags for a host that has no use for them. Errors go to syslog, debug lines nowhere.

__attribute__((visibility("default"))) bool blLogToStdout = false;
__attribute__((visibility("default"))) bool blDebugOutput = false;

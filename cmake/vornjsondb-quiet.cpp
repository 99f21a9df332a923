// SPDX-License-Identifier: MIT
//
// The two flags for a host that has no use for them: errors go to syslog, debug lines nowhere. CMake compiles this file
// into the programs that link with vornjsondb::quiet.

__attribute__((visibility("default"))) bool blLogToStdout = false;
__attribute__((visibility("default"))) bool blDebugOutput = false;

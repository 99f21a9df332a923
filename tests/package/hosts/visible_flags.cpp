// SPDX-License-Identifier: MIT
//
// The two flags as a host defines them that hides its symbols.

__attribute__((visibility("default"))) bool blLogToStdout = false;
__attribute__((visibility("default"))) bool blDebugOutput = false;

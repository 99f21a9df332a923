// SPDX-License-Identifier: MIT
//
// The two flags as most hosts define them.

bool blLogToStdout = false;
bool blDebugOutput = false;

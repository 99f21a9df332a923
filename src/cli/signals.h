// SPDX-License-Identifier: MIT

#ifndef VORN_CLI_SIGNALS_H
#define VORN_CLI_SIGNALS_H

struct sqlite3;

namespace cli
{

// From now on SIGINT, SIGTERM and SIGHUP interrupt what the program does, so that it can roll back; a pipe that nobody
// reads and a file that may not grow make writing fail.
void catchSignals();

// What was to be done is done: from now on a signal ends the program, which has nothing left to undo.
void releaseSignals();

// The connection on which such a signal ends what runs; null for none.
void interruptOn(sqlite3* pDb);

bool isInterrupted();

}  // namespace cli

#endif  // VORN_CLI_SIGNALS_H

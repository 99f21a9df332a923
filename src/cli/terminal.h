// SPDX-License-Identifier: MIT
//
// Whether a person sits in front of the program, and what they see.

#ifndef VORN_CLI_TERMINAL_H
#define VORN_CLI_TERMINAL_H

#include <cstddef>
#include <string>

namespace cli
{

// For STDIN_FILENO, STDOUT_FILENO or STDERR_FILENO.
bool isTerminal(int fd);

// Of the terminal behind this output; 80 where it does not say.
std::size_t terminalWidth(int fd);

// Colours only on a terminal, and never with NO_COLOR or on a dumb terminal.
bool hasColours(int fd);

// Asks on standard error and reads the answer from standard input: true for "y" and "yes".
bool ask(const std::string& strQuestion);

}  // namespace cli

#endif  // VORN_CLI_TERMINAL_H

// SPDX-License-Identifier: MIT

#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

namespace cli
{

bool isTerminal(int fd)
{
    return isatty(fd) == 1;
}

std::size_t terminalWidth(int fd)
{
    constexpr std::size_t kUsual = 80;
    winsize size{};
    return ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

bool hasColours(int fd)
{
    const char* const szNoColour = std::getenv("NO_COLOR");
    const char* const szTerm = std::getenv("TERM");
    return isTerminal(fd) && (szNoColour == nullptr || szNoColour[0] == '\0') && szTerm != nullptr &&
           std::string(szTerm) != "dumb";
}

bool ask(const std::string& strQuestion)
{
    std::cerr << strQuestion << " [y/N] " << std::flush;
    std::string strAnswer;
    std::getline(std::cin, strAnswer);
    return strAnswer == "y" || strAnswer == "Y" || strAnswer == "yes";
}

}  // namespace cli

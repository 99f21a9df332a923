// SPDX-License-Identifier: MIT

#include "signals.h"

#include <sqlite3.h>

#include <csignal>
#include <initializer_list>

namespace cli
{

namespace
{

sqlite3* volatile g_pInterruptible = nullptr;
volatile std::sig_atomic_t g_blInterrupted = 0;

void interrupt(int /*signal*/)
{
    g_blInterrupted = 1;
    if (g_pInterruptible != nullptr)
        sqlite3_interrupt(g_pInterruptible);  // only sets a flag
}

void handle(std::initializer_list<int> signals, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;  // without SA_RESTART: reading ends, too
    for (const int signal : signals)
        sigaction(signal, &action, nullptr);
}

}  // namespace

void catchSignals()
{
    handle({SIGINT, SIGTERM, SIGHUP}, interrupt);
    handle({SIGPIPE, SIGXFSZ}, SIG_IGN);
}

void releaseSignals()
{
    handle({SIGINT, SIGTERM, SIGHUP}, SIG_DFL);
    g_blInterrupted = 0;
}

void interruptOn(sqlite3* pDb)
{
    g_pInterruptible = pDb;
}

bool isInterrupted()
{
    return g_blInterrupted != 0;
}

}  // namespace cli

// SPDX-License-Identifier: MIT
//
// vornjsondb: one table of an SQLite database at the shell.

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <clocale>
#include <iostream>
#include <map>
#include <new>

#include "commands.h"
#include "error.h"
#include "options.h"
#include "record_sink.h"
#include "signals.h"
#include "utf8.h"

namespace
{

using Command = int (*)(const cli::Options&);

int run(const std::string& strCommand, const cli::Options& options)
{
    static const std::map<std::string, Command> commands{{"list", cli::list},
                                                         {"get", cli::get},
                                                         {"count", cli::count},
                                                         {"create", cli::create},
                                                         {"set", cli::set},
                                                         {"delete", cli::erase},
                                                         {"check", cli::check},
                                                         {"upgrade", cli::upgrade},
                                                         {"explain", cli::explain},
                                                         {"init", cli::init},
                                                         {"import", cli::importRecords},
                                                         {"export", cli::exportRecords}};
    return commands.at(strCommand)(options);
}

// In place of what C++ programs call.
void replace(std::string& strText, const std::string& strOld, const std::string& strNew)
{
    const std::size_t place = strText.find(strOld);
    if (place != std::string::npos)
        strText.replace(place, strOld.size(), strNew);
}

// One line on standard error.
void tell(vorn::Status status, bool blJson)
{
    replace(status.text, "tableUpgrade()", "vornjsondb upgrade");
    replace(status.text, "allowed expressly", "allowed with --all");
    status.text = cli::harmless(status.text, false);
    std::string strLine = std::string("vornjsondb: ") + vorn::codeName(status.code) + ": " + status.text;
    if (blJson)
    {
        Json::Value jStatus;
        jStatus["code"] = vorn::codeName(status.code);
        jStatus["member"] = cli::asUtf8(status.member);
        jStatus["text"] = status.text;
        jStatus["sqlite"] = status.sqlite;
        jStatus["index"] = static_cast<Json::Int64>(status.index);
        strLine = cli::compact(jStatus);
    }
    std::cerr << strLine + '\n';
}

// Whatever a signal made fail, only the signal is of interest.
void tellInterrupted(const cli::Options& options)
{
    const bool blReads = options.strCommand == "list" || options.strCommand == "get" || options.strCommand == "count" ||
                         options.strCommand == "export" || options.strCommand == "check" ||
                         options.strCommand == "explain" || options.strCommand == "init";
    vorn::Status status;
    status.code = vorn::Code::Interrupted;
    status.text = blReads ? "interrupted" : "interrupted: everything was rolled back, nothing has changed";
    tell(status, options.blJsonErrors);
}

// With a closed standard descriptor the next file to be opened would take its place. Writing to it must fail.
void occupyStandardDescriptors()
{
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(fd, F_GETFD) == -1)
            open("/dev/null", fd == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

}  // namespace

int main(int argc, char** argv)
{
    occupyStandardDescriptors();
    cli::catchSignals();
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);       // there is one thread, which need not lock anything
    static_cast<void>(std::setlocale(LC_CTYPE, ""));  // widths of characters; numbers stay as JSON writes them
    cli::Options options;
    try
    {
        const int iExit = cli::parse(argc, argv, options);
        return iExit >= 0 ? iExit : run(options.strCommand, options);
    }
    catch (const cli::Error& error)
    {
        if (cli::isInterrupted())
            tellInterrupted(options);
        else
            tell(error.status(), options.blJsonErrors);
        return cli::isInterrupted() ? cli::kFailure : error.exitStatus();
    }
    catch (const std::bad_alloc&)
    {
        std::cerr << "vornjsondb: there is not enough memory\n";
        return cli::kFailure;
    }
}

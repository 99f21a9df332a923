// SPDX-License-Identifier: MIT
//
// vornjsondb: one table of an SQLite database at the shell.

#include <clocale>
#include <cstdio>
#include <functional>
#include <map>
#include <new>

#include "commands.h"
#include "error.h"
#include "options.h"
#include "record_sink.h"

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

// One line on standard error.
void tell(const vorn::Status& status, bool blJson)
{
    std::string strLine;
    if (blJson)
    {
        Json::Value jStatus;
        jStatus["code"] = vorn::codeName(status.code);
        jStatus["member"] = status.member;
        jStatus["text"] = status.text;
        jStatus["sqlite"] = status.sqlite;
        jStatus["index"] = static_cast<Json::Int64>(status.index);
        strLine = cli::compact(jStatus);
    }
    else
    {
        strLine = std::string("vornjsondb: ") + vorn::codeName(status.code) + ": ";
        for (const char c : status.text)
            strLine += c == '\n' || c == '\r' ? ' ' : c;
    }
    std::fprintf(stderr, "%s\n", strLine.c_str());
}

}  // namespace

int main(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, "");  // widths of characters; numbers stay as JSON writes them
    cli::Options options;
    try
    {
        const int iExit = cli::parse(argc, argv, options);
        return iExit >= 0 ? iExit : run(options.strCommand, options);
    }
    catch (const cli::Error& error)
    {
        tell(error.status(), options.blJsonErrors);
        return error.exitStatus();
    }
    catch (const std::bad_alloc&)
    {
        std::fputs("vornjsondb: there is not enough memory\n", stderr);
        return cli::kFailure;
    }
}

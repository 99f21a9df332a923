// SPDX-License-Identifier: MIT

#include "contestant.h"

#include <stdexcept>

namespace bench
{

const std::vector<ContestantKind>& contestantKinds()
{
    static const std::vector<ContestantKind> kinds{
        {"library", "vornjsondb", [](const std::string& strPath) { return openLibrary(strPath, deviceShape()); },
         false},
        {"table", "vorn::Table", [](const std::string& strPath) { return openTable(strPath, deviceShape()); }},
        {"percall", "hand-written, prepared per call", openHandWrittenPerCall},
        {"kept", "hand-written, statement kept", openHandWrittenKept},
        {"exec", "hand-written, sqlite3_exec", openHandWrittenExec, false},
#ifdef VORN_BENCH_PEERS
        {"sqlitecpp", "SQLiteCpp + JsonCpp", openSqliteCpp},
        {"soci", "SOCI + JsonCpp", openSoci},
        {"poco", "POCO Data + Poco::JSON", openPoco},
#endif
        {"raw", "sqlite3_exec alone", openRaw, false, false},
    };
    return kinds;
}

const ContestantKind& contestantKind(const std::string& strId)
{
    for (const ContestantKind& kind : contestantKinds())
    {
        if (kind.strId == strId)
            return kind;
    }
    throw std::invalid_argument("no contestant '" + strId + "'");
}

}  // namespace bench

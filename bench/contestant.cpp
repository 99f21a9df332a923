// SPDX-License-Identifier: MIT

#include "contestant.h"

#include <stdexcept>

namespace bench
{

const std::vector<ContestantKind>& contestantKinds()
{
    static const std::vector<ContestantKind> kinds{
        {"library", "vornjsondb", [](const std::string& strPath) { return openLibrary(strPath, deviceShape()); },
         WorkKind::Delete},
        {"table", "vorn::Table", [](const std::string& strPath) { return openTable(strPath, deviceShape()); }},
        {"percall", "hand-written, prepared per call", openHandWrittenPerCall},
        {"kept", "hand-written, statement kept", openHandWrittenKept},
        {"exec", "hand-written, sqlite3_exec", openHandWrittenExec, WorkKind::Delete},
#ifdef VORN_BENCH_PEERS
        {"sqlitecpp", "SQLiteCpp + JsonCpp", [](const std::string& strPath) { return openSqliteCpp(strPath, false); }},
        {"soci", "SOCI + JsonCpp", [](const std::string& strPath) { return openSoci(strPath, false); }},
        {"poco", "POCO Data + Poco::JSON", [](const std::string& strPath) { return openPoco(strPath, false); },
         WorkKind::Bulk},
#endif
        {"raw", "sqlite3_exec alone", openRaw, WorkKind::Delete, false},
    };
    return kinds;
}

const std::vector<ContestantKind>& keptPeers()
{
    static const std::vector<ContestantKind> kinds{
#ifdef VORN_BENCH_PEERS
        {"sqlitecpp-kept", "SQLiteCpp, statement kept",
         [](const std::string& strPath) { return openSqliteCpp(strPath, true); }},
        {"soci-kept", "SOCI, statement kept", [](const std::string& strPath) { return openSoci(strPath, true); }},
        {"poco-kept", "POCO Data, statement kept", [](const std::string& strPath) { return openPoco(strPath, true); },
         WorkKind::Bulk},
#endif
    };
    return kinds;
}

const ContestantKind& contestantKind(const std::string& strId)
{
    for (const auto* pKinds : {&contestantKinds(), &keptPeers()})
    {
        for (const ContestantKind& kind : *pKinds)
        {
            if (kind.strId == strId)
                return kind;
        }
    }
    throw std::invalid_argument("no contestant '" + strId + "'");
}

}  // namespace bench

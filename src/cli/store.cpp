// SPDX-License-Identifier: MIT

#include "store.h"

#include <csignal>
#include <fstream>
#include <iostream>
#include <iterator>

#include "error.h"
#include "json_argument.h"

namespace cli
{

namespace
{

sqlite3* g_pInterruptible = nullptr;
volatile std::sig_atomic_t g_blInterrupted = 0;

void interrupt(int /*signal*/)
{
    g_blInterrupted = 1;
    if (g_pInterruptible != nullptr)
        sqlite3_interrupt(g_pInterruptible);  // only sets a flag
}

// The table that --table names, or the only one.
std::string tableOf(const Options& options, const Json::Value& jDefinition)
{
    if (!options.strTable.empty())
        return options.strTable;
    if (jDefinition.isObject() && jDefinition.size() == 1)
        return jDefinition.begin().name();
    throw badUsage("the definition has " + std::string(jDefinition.empty() ? "no table" : "several tables") +
                   ": name one with --table");
}

}  // namespace

bool isInterrupted()
{
    return g_blInterrupted != 0;
}

std::string readText(const std::string& strFile)
{
    if (strFile == "-")
        return {std::istreambuf_iterator<char>(std::cin), {}};
    std::ifstream file(strFile, std::ios::binary);
    std::string strText{std::istreambuf_iterator<char>(file), {}};
    if (!file.is_open() || file.bad())
        throw failure(vorn::Code::Missing, "the file " + strFile + " cannot be read");
    return strText;
}

sqlite3* openDatabase(const Options& options, Access access)
{
    if (options.strDatabase.empty())
        throw badUsage("name the database file with --db or VORNJSONDB_DB");
    int flags = SQLITE_OPEN_URI | (access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    if (access == Access::Create)
        flags |= SQLITE_OPEN_CREATE;
    sqlite3* pDb = nullptr;
    const int result = sqlite3_open_v2(options.strDatabase.c_str(), &pDb, flags, nullptr);
    if (result != SQLITE_OK)
    {
        sqlite3_close(pDb);
        throw failure(result == SQLITE_NOMEM ? vorn::Code::Sqlite : vorn::Code::Missing,
                      "the database " + options.strDatabase + " cannot be opened: " + sqlite3_errstr(result));
    }
    g_pInterruptible = pDb;
    struct sigaction action = {};
    action.sa_handler = interrupt;
    sigaction(SIGINT, &action, nullptr);
    return pDb;
}

Store::Store(const Options& options, Access access) : m_pConnection(nullptr, &sqlite3_close)
{
    if (options.strDefinition.empty())
        throw badUsage("name the file with the table's definition with --def or VORNJSONDB_DEF");
    const Json::Value jDefinition =
        parseJson(readText(options.strDefinition), "the definition " + options.strDefinition);
    const std::string strTable = tableOf(options, jDefinition);
    m_pConnection.reset(openDatabase(options, access));

    constexpr double kMilliseconds = 1000.0;
    m_pTable = std::make_unique<vorn::Table>(m_pConnection.get(), strTable, jDefinition);
    m_pTable->setLockTimeout(static_cast<int>(options.dWaitSeconds * kMilliseconds));
    const vorn::Status& status = m_pTable->status();
    // A table that is not there and cannot be made is told by the command that needs it.
    if (status.code == vorn::Code::BadDefinition)
        throw failed(status);
    m_jMembers = jDefinition[strTable]["member"];
}

Store::~Store()
{
    m_pTable.reset();
    g_pInterruptible = nullptr;
}

}  // namespace cli

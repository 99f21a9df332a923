// SPDX-License-Identifier: MIT

#include "store.h"

#include <chrono>
#include <fstream>
#include <iostream>
#include <iterator>
#include <thread>

#include "error.h"
#include "json_argument.h"
#include "sql.h"

namespace cli
{

namespace
{

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

// SQLite's question whether to try once more: the library's own waiting could not be interrupted.
int waitForLock(void* pOptions, int tries)
{
    using Clock = std::chrono::steady_clock;
    static Clock::time_point start;
    if (tries == 0)
        start = Clock::now();
    const std::chrono::duration<double> waited = Clock::now() - start;
    if (isInterrupted() || waited.count() >= static_cast<const Options*>(pOptions)->dWaitSeconds)
        return 0;
    constexpr int kLongest = 50;
    std::this_thread::sleep_for(std::chrono::milliseconds(std::min(tries + 1, kLongest)));
    return 1;
}

}  // namespace

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

Connection openDatabase(const Options& options, Access access)
{
    if (options.strDatabase.empty())
        throw badUsage("name the database file with --db or VORNJSONDB_DB");
    int flags = SQLITE_OPEN_URI | (access == Access::Read ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE);
    if (access == Access::Create)
        flags |= SQLITE_OPEN_CREATE;
    sqlite3* pDb = nullptr;
    const int result = sqlite3_open_v2(options.strDatabase.c_str(), &pDb, flags, nullptr);
    Connection connection(pDb, &sqlite3_close);
    if (result != SQLITE_OK)
        throw failure(result == SQLITE_NOMEM ? vorn::Code::Sqlite : vorn::Code::Missing,
                      "the database " + options.strDatabase + " cannot be opened: " + sqlite3_errstr(result));
    sqlite3_busy_handler(pDb, waitForLock, const_cast<Options*>(&options));
    interruptOn(pDb);
    return connection;
}

Store::Store(const Options& options, Access access, bool blTransaction) : m_connection(nullptr, &sqlite3_close)
{
    if (options.strDefinition.empty())
        throw badUsage("name the file with the table's definition with --def or VORNJSONDB_DEF");
    const Json::Value jDefinition =
        parseJson(readText(options.strDefinition), "the definition " + options.strDefinition);
    m_strName = tableOf(options, jDefinition);
    m_connection = openDatabase(options, access);

    if (blTransaction)
    {
        m_transaction = std::make_unique<vorn::Transaction>(m_connection.get(), 0);
        if (!m_transaction->isOpen())
            throw failed(m_transaction->status());
    }
    // The table's constructor would wait for a time of its own.
    Query(m_connection.get(), "SELECT 1 FROM sqlite_master LIMIT 1", "").step();
    m_table = std::make_unique<vorn::Table>(m_connection.get(), m_strName, jDefinition);
    m_table->setLockTimeout(0);
    const vorn::Status& status = m_table->status();
    // A table that is not there and cannot be made is told by the command that needs it.
    if (status.code == vorn::Code::BadDefinition || (access == Access::Create && status.code != vorn::Code::Ok))
        throw Error(kFailure, status);
    m_jMembers = jDefinition[m_strName]["member"];
}

Store::~Store()
{
    m_table.reset();
    m_transaction.reset();
    interruptOn(nullptr);
}

}  // namespace cli

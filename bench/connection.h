// SPDX-License-Identifier: MIT
//
// A connection that closes itself.

#ifndef VORN_BENCH_CONNECTION_H
#define VORN_BENCH_CONNECTION_H

#include <sqlite3.h>

#include <stdexcept>
#include <string>

namespace bench
{

class Connection
{
public:
    explicit Connection(const std::string& strPath)
    {
        if (sqlite3_open(strPath.c_str(), &m_pDb) != SQLITE_OK)
        {
            sqlite3_close(m_pDb);
            throw std::runtime_error("cannot open " + strPath);
        }
    }
    ~Connection() { sqlite3_close(m_pDb); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    operator sqlite3*() const { return m_pDb; }

    void check(int err, int wanted = SQLITE_OK) const
    {
        if (err != wanted)
            throw std::runtime_error(sqlite3_errmsg(m_pDb));
    }

private:
    sqlite3* m_pDb = nullptr;
};

}  // namespace bench

#endif  // VORN_BENCH_CONNECTION_H

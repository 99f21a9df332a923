// SPDX-License-Identifier: MIT
//
// Runs one example of the documents in a process of its own, on a database file, and compares the SQL text that SQLite
// ran and what the example wrote to std::cout with what the page shows.

#ifndef VORNJSONDB_TESTS_DOC_EXAMPLE_H
#define VORNJSONDB_TESTS_DOC_EXAMPLE_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>

#include "VornJsonDbApi.h"
#include "child_process.h"
#include "log_capture.h"
#include "sleep_watch.h"
#include "store.h"

class DocExample
{
public:
    // What the page shows. A page that shows no SQL text says nothing about it.
    struct Shown
    {
        bool hasSql;
        std::string sql;
        std::string text;
    };

    // existing: SQL text that has made the database file what it is before the example's process starts.
    static void run(const std::string& existing, const Shown& shown, void (*body)(DocExample&))
    {
        const support::TempFile file;
        {
            const support::Database database(file.path());
            ASSERT_EQ(SQLITE_OK, database.run(existing)) << sqlite3_errmsg(database.handle());
        }
        faults::ChildProcess child(
            [&](int) noexcept -> int
            {
                {
                    DocExample example(file.path());
                    body(example);
                    example.finish(shown);
                }
                std::exit(::testing::Test::HasFailure() ? 1 : 0);  // looks for leaks, as _exit() would not
            });
        EXPECT_EQ(0, child.wait()) << "the example failed";
    }

    sqlite3* database() const { return m_database.handle(); }
    const std::string& path() const { return m_path; }

    // The example's own statements begin.
    void start()
    {
        m_statements = std::make_unique<support::StatementLog>(m_database);
        std::cout.rdbuf(m_written.rdbuf());
    }

private:
    explicit DocExample(const std::string& path) : m_path(path), m_database(path)
    {
        blLogToStdout = false;
        m_database.run("PRAGMA synchronous = OFF");
    }

    // The example is over.
    void finish(const Shown& shown)
    {
        std::cout.rdbuf(m_console);
        if (shown.hasSql)
        {
            std::string ran;
            for (const std::string& statement : m_statements->statements())
            {
                ran += statement;
            }
            EXPECT_EQ(shown.sql, ran + "\n") << "the SQL text that the page shows, and the one that ran";
        }
        EXPECT_EQ(shown.text, m_written.str()) << "the output that the page shows, and the real one";
    }

    const std::string& m_path;
    support::Database m_database;
    support::SleepWatch m_pauses{support::SleepWatch::Pause::Skipped};  // a lock that stays is met 500 times at once
    std::unique_ptr<support::StatementLog> m_statements;
    std::streambuf* m_console = std::cout.rdbuf();
    std::ostringstream m_written;
};

#endif  // VORNJSONDB_TESTS_DOC_EXAMPLE_H

// SPDX-License-Identifier: MIT
//
// Runs one example of the documents: gives it a database in memory and compares the SQL text that SQLite ran and what
// it wrote to std::cout with what the page shows.

#ifndef VORNJSONDB_TESTS_DOC_EXAMPLE_H
#define VORNJSONDB_TESTS_DOC_EXAMPLE_H

#include <gtest/gtest.h>

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "VornJsonDbApi.h"
#include "log_capture.h"
#include "store.h"

class DocExample
{
public:
    DocExample() { blLogToStdout = false; }
    ~DocExample() { std::cout.rdbuf(m_console); }
    DocExample(const DocExample&) = delete;
    DocExample& operator=(const DocExample&) = delete;

    sqlite3* database() const { return m_database.handle(); }

    // The example's own statements begin.
    void start()
    {
        m_statements = std::make_unique<support::StatementLog>(m_database);
        std::cout.rdbuf(m_written.rdbuf());
    }

    // The example is over. A page that shows no SQL text says nothing about it.
    void finish(bool showsSql, const std::string& sql, const std::string& text)
    {
        std::cout.rdbuf(m_console);
        if (showsSql)
        {
            std::string ran;
            for (const std::string& statement : m_statements->statements())
            {
                ran += statement;
            }
            EXPECT_EQ(sql, ran + "\n") << "the SQL text that the page shows, and the one that ran";
        }
        EXPECT_EQ(text, m_written.str()) << "the output that the page shows, and the real one";
    }

private:
    support::Database m_database;
    std::unique_ptr<support::StatementLog> m_statements;
    std::streambuf* m_console = std::cout.rdbuf();
    std::ostringstream m_written;
};

#endif  // VORNJSONDB_TESTS_DOC_EXAMPLE_H

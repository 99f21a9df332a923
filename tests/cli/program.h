// SPDX-License-Identifier: MIT
//
// Runs vornjsondb as a person does: by lines for the shell, in a folder of the test's own, with or without a terminal.

#ifndef VORNJSONDB_TESTS_CLI_PROGRAM_H
#define VORNJSONDB_TESTS_CLI_PROGRAM_H

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace cli_test
{

struct Result
{
    int status = -1;  // the exit status, or minus the signal that ended it
    std::string out;
    std::string err;  // on a terminal everything is in out
};

// The shell runs the line; what it calls vornjsondb is the program.
Result sh(const std::string& line);

// The same on a terminal so many columns wide. At a question ("[y/N]") somebody does something else first, then types.
Result terminal(
    const std::string& line, unsigned short columns, const std::string& typed = "",
    const std::function<void()>& first = [] {});

// Runs SQL on people.db without the program.
void sql(const std::string& text);

struct Case
{
    std::string line;
    int status;
    std::string out;  // all of it
    std::string err;  // part of the one line on standard error; "" where there is none
};

// Runs the lines one after the other in the same folder.
void expectAll(const std::vector<Case>& cases);

void writeFile(const std::string& strName, const std::string& text);
std::string readFile(const std::string& strName);

// A new folder to work in, with def.json, which VORNJSONDB_DEF names; VORNJSONDB_DB names people.db, which is not
// there.
class Cli : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

private:
    std::string m_strFolder;
};

}  // namespace cli_test

#endif  // VORNJSONDB_TESTS_CLI_PROGRAM_H

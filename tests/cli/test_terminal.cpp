// SPDX-License-Identifier: MIT
//
// What a person sees at a terminal, and what is asked there.

#include <algorithm>
#include <vector>

#include "program.h"

namespace
{

using cli_test::Cli;
using cli_test::Result;
using cli_test::sh;
using cli_test::sql;
using cli_test::terminal;
using cli_test::writeFile;

constexpr unsigned short kWide = 120;

class Terminal : public Cli
{
protected:
    void SetUp() override
    {
        Cli::SetUp();
        writeFile("in.jsonl",
                  "{\"id\":1,\"name\":\"Ann\",\"city\":\"a long text that goes on and on and on\"}\n"
                  "{\"id\":22,\"name\":\"日本語\",\"city\":\"x\\u001b[2Jy\\u009bz\\n\"}\n");
        ASSERT_EQ(sh("vornjsondb import in.jsonl").status, 0);
    }
};

bool holds(const std::string& text, const std::string& part)
{
    return text.find(part) != std::string::npos;
}

TEST_F(Terminal, AListIsATableThatFits)
{
    const char* const szLine = "NO_COLOR=1 vornjsondb list --fields id,name,city --sort id";
    EXPECT_EQ(terminal(szLine, kWide).out,
              "id name   city\r\n"
              " 1 Ann    a long text that goes on and on and on\r\n"
              "22 日本語 x�[2Jy�z�\r\n");
    EXPECT_EQ(terminal(szLine, 20).out,
              "id name city\r\n"
              " 1 Ann  a long text \r\n"
              "22 日本 x�[2Jy�z�\r\n");
    EXPECT_EQ(terminal("NO_COLOR=1 vornjsondb list --sort id", 24).out,
              "member value\r\n"
              "city   a long text that \r\n"
              "id     1\r\n"
              "name   Ann\r\n"
              "       \r\n"
              "city   x�[2Jy�z�\r\n"
              "id     22\r\n"
              "name   日本語\r\n");
}

TEST_F(Terminal, ColoursAreForTerminalsAlone)
{
    const char* const szList = "vornjsondb list --fields id,name";
    const std::string strBold = "\033[1m";
    EXPECT_TRUE(holds(terminal(szList, kWide).out, strBold));
    EXPECT_FALSE(holds(terminal(std::string("NO_COLOR=1 ") + szList, kWide).out, "\033"));
    EXPECT_TRUE(holds(terminal(std::string("NO_COLOR= ") + szList, kWide).out, strBold));
    EXPECT_FALSE(holds(terminal(std::string("TERM=dumb ") + szList, kWide).out, "\033"));
    EXPECT_FALSE(holds(terminal(std::string(szList) + " | cat", kWide).out, "\033"));
    EXPECT_FALSE(holds(sh(std::string(szList) + " --format table").out, "\033"));
}

TEST_F(Terminal, NoValueReachesItAsAControlSequence)
{
    for (const char* szFormat : {"table", "json", "jsonl", "csv"})
    {
        const std::string strOut = terminal(std::string("NO_COLOR=1 vornjsondb list --format ") + szFormat, kWide).out;
        EXPECT_FALSE(holds(strOut, "\033")) << szFormat;
        EXPECT_FALSE(holds(strOut, "\xC2\x9B")) << szFormat;
        EXPECT_TRUE(holds(strOut, "日本語")) << szFormat;
    }
}

TEST_F(Terminal, MoreThanOneRecordIsChangedOnlyWhenTheAnswerIsYes)
{
    const char* const szDelete = "vornjsondb delete id.gt=0";
    const Result refused = terminal(szDelete, kWide, "n\n");
    EXPECT_EQ(refused.status, 3);
    EXPECT_TRUE(holds(refused.out, "delete 2 records? [y/N]"));
    EXPECT_TRUE(holds(refused.out, "nothing was changed"));
    EXPECT_EQ(terminal(szDelete, kWide, "\n").status, 3);
    EXPECT_EQ(terminal(szDelete, kWide, "\x04").status, 3);  // the end of what is typed
    EXPECT_TRUE(holds(terminal("vornjsondb set id.gt=0 --to age=1", kWide, "no\n").out, "change 2 records? [y/N]"));
    EXPECT_EQ(sh("vornjsondb count age=1").out, "0\n");
    EXPECT_FALSE(holds(terminal("vornjsondb set id=1 --to age=1", kWide).out, "?"));
    EXPECT_FALSE(holds(terminal("vornjsondb set id.gt=0 --to age=1 --yes", kWide).out, "?"));
    EXPECT_EQ(sh("vornjsondb count age=1").out, "2\n");
    EXPECT_EQ(terminal(szDelete, kWide, "y\n").status, 0);
    EXPECT_EQ(sh("vornjsondb count").out, "0\n");
}

TEST_F(Terminal, WhatWasNotAskedAboutIsNotDeleted)
{
    const Result result =
        terminal("vornjsondb delete id.gt=0", kWide, "y\n", [] { EXPECT_EQ(sh("vornjsondb create id=3").status, 0); });
    EXPECT_EQ(result.status, 3);
    EXPECT_TRUE(holds(result.out, "meanwhile 3 records match: nothing was changed")) << result.out;
    EXPECT_EQ(sh("vornjsondb count").out, "3\n");
}

// The bars that were drawn.
std::vector<std::string> barsOf(const std::string& text)
{
    const std::string strStart = "\r\033[K";
    std::vector<std::string> bars;
    for (std::size_t at = text.find(strStart); at != std::string::npos;)
    {
        const std::size_t next = text.find(strStart, at + 1);
        if (next != std::string::npos)
            bars.push_back(text.substr(at + strStart.size(), next - at - strStart.size()));
        at = next;
    }
    return bars;
}

std::size_t columnsOf(const std::string& text)
{
    return static_cast<std::size_t>(std::count_if(
        text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U; }));
}

void expectBars(const Result& result, const std::string& strWhat, std::size_t columns)
{
    const std::vector<std::string> bars = barsOf(result.out);
    ASSERT_FALSE(bars.empty()) << result.out;
    for (const std::string& strBar : bars)
    {
        EXPECT_TRUE(holds(strBar, strWhat)) << strBar;
        EXPECT_LT(columnsOf(strBar), columns) << strBar;
    }
}

TEST_F(Terminal, AnImportThatLastsHasABarWithRateAndTimeLeft)
{
    std::string strRecords;
    for (int i = 100; i < 2100; ++i)
        strRecords += "{\"id\":" + std::to_string(i) + "}\n{\"id\":\"no number\"}\n";
    writeFile("many.jsonl", strRecords);
    ASSERT_EQ(sh("mkfifo bad").status, 0);
    // Who reads the bad records begins late and keeps the import waiting: a pipe holds less than there are.
    const auto import = [](const std::string& strSettings, unsigned short columns)
    {
        sql("DELETE FROM people");
        return terminal(
            "(sleep 1.5; cat >/dev/null) <bad & " + strSettings + " vornjsondb import many.jsonl --skip-bad bad; wait",
            columns);
    };
    const Result result = import("", 100);
    expectBars(result, "importing ", 100);
    EXPECT_TRUE(holds(result.out, "█")) << result.out;
    EXPECT_TRUE(holds(result.out, "/s, "));
    EXPECT_TRUE(holds(result.out, " left"));
    EXPECT_TRUE(holds(result.out, "\r\033[Kbad records, in bad: 2000\r\n2000\r\n"))
        << result.out;  // nothing of it stays
    expectBars(import("", 30), "importing ", 30);
    const Result plain = import("LC_ALL=C", 100);
    expectBars(plain, "importing ", 100);
    EXPECT_TRUE(holds(plain.out, "#"));
    EXPECT_FALSE(holds(plain.out, "█"));
}

TEST_F(Terminal, AnExportThatLastsHasABar)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i + 1 FROM n WHERE i < 9000) INSERT INTO people(id) "
        "SELECT "
        "i FROM n");
    // A reader that begins late keeps the export waiting: a pipe holds less than it writes.
    expectBars(terminal("vornjsondb export | (sleep 1.5; wc -l)", 90), "exporting ", 90);
}

TEST_F(Terminal, AnUpgradeThatLastsHasABar)
{
    sql("WITH RECURSIVE n(i) AS (SELECT 100 UNION ALL SELECT i + 1 FROM n WHERE i < 300000) INSERT INTO people(id, "
        "name) SELECT i, 'n' || i FROM n");
    writeFile("more.json", R"({"people": {"member": {"id": {"cpptype": "int", "key": true},
        "name": {"cpptype": "string", "index": true}, "score": {"cpptype": "double", "index": true}}}})");
    // It is halted while it works, so that it lasts.
    const Result result = terminal(
        "vornjsondb --def more.json upgrade & for i in 1 2 3 4 5 6 7 8 9 10; do [ -e people.db-journal ] || sleep "
        "0.02; "
        "done; kill -STOP $!; sleep 1.5; kill -CONT $!; wait $!",
        90);
    EXPECT_EQ(result.status, 0);
    expectBars(result, "upgrading ", 90);
}

TEST_F(Terminal, WhatIsDoneAtOnceHasNoBar)
{
    EXPECT_FALSE(holds(terminal("vornjsondb export >/dev/null", kWide).out, "export"));
}

}  // namespace

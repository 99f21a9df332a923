// SPDX-License-Identifier: MIT
//
// init: definitions from tables and files, which the other commands then work with.

#include "program.h"

namespace
{

using cli_test::Cli;
using cli_test::expectAll;
using cli_test::sh;
using cli_test::writeFile;

class Init : public Cli
{
};

// What was written to standard error about one member.
std::string noteOf(const std::string& notes, const std::string& strMember)
{
    const std::size_t start = ("\n" + notes).find("\n" + strMember + ": ");
    return start == std::string::npos ? "" : notes.substr(start, notes.find('\n', start) - start);
}

TEST_F(Init, AFileIsJudgedByItsValuesAndItIsSaidHowSureThatIs)
{
    std::string strJson = "[";
    std::string strCsv = "id,big,real,yes,text,some,code\n";
    for (int i = 1; i <= 30; ++i)
    {
        const std::string strId = std::to_string(i);
        strJson += std::string(i > 1 ? "," : "") + "{\"id\":" + strId + ",\"big\":" + strId +
                   "000000000,\"real\":" + strId +
                   ".5,\"yes\":true,\"text\":\"t\",\"some\":" + (i < 3 ? strId : "null") +
                   ",\"object\":{},\"array\":[],\"mixed\":" + (i < 9 ? "1" : "\"x\"") + "}";
        strCsv +=
            strId + "," + strId + "000000000," + strId + ".5,true,t," + (i < 3 ? strId : "") + ",00" + strId + "\n";
    }
    writeFile("in.json", strJson + "]");
    writeFile("in.csv", strCsv);
    for (const char* szFile : {"in.json", "in.csv"})
    {
        const std::string strNotes = sh(std::string("vornjsondb init --output new.json ") + szFile).err;
        EXPECT_EQ(noteOf(strNotes, "id"), "id: int (sure: 30 of 30 records have a value)");
        EXPECT_EQ(noteOf(strNotes, "big"),
                  "big: long long (a wider type for values of several kinds: 30 of 30 records have a value)");
        EXPECT_EQ(noteOf(strNotes, "real"), "real: double (sure: 30 of 30 records have a value)");
        EXPECT_EQ(noteOf(strNotes, "yes"), "yes: bool (sure: 30 of 30 records have a value)");
        EXPECT_EQ(noteOf(strNotes, "text"), "text: string (sure: 30 of 30 records have a value)");
        EXPECT_EQ(noteOf(strNotes, "some"), "some: int (hardly sure: only 2 of 30 records have a value)");
        EXPECT_NE(
            strNotes.find("another value in each of the 30 records, so one of these may get \"key\": true: big, "),
            std::string::npos)
            << strNotes;
        expectAll({{std::string("vornjsondb --def new.json --db ") + szFile + ".db import " + szFile, 0, "30\n", ""}});
    }
    EXPECT_EQ(noteOf(sh("vornjsondb init in.csv").err, "code").substr(0, 12), "code: string");
    const std::string strNotes = sh("vornjsondb init in.json").err;
    EXPECT_EQ(noteOf(strNotes, "object").substr(0, 25), "object: Json::objectValue");
    EXPECT_EQ(noteOf(strNotes, "array").substr(0, 23), "array: Json::arrayValue");
    EXPECT_EQ(noteOf(strNotes, "mixed").substr(0, 18), "mixed: Json::Value");
}

TEST_F(Init, ATableIsReadAsItWasDeclared)
{
    ASSERT_EQ(
        sh("echo '{\"id\":1,\"active\":true,\"about\":{\"a\":1},\"tags\":[1],\"score\":1}' | vornjsondb import -").out,
        "1\n");
    const cli_test::Result result = sh("vornjsondb init --table people --output new.json");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(noteOf(result.err, "active"),
              "active: long long (hardly sure: it holds 0 and 1 alone, so it may be \"bool\")");
    EXPECT_EQ(noteOf(result.err, "age"), "age: long long (sure: the column is declared INTEGER)");
    EXPECT_EQ(noteOf(result.err, "score"), "score: double (sure: the column is declared REAL)");
    EXPECT_EQ(noteOf(result.err, "about"),
              "about: Json::objectValue (judged by 1 values, hardly sure: only 1 of 1 records have a value)");
    expectAll({{"grep -c '\"key\" : true' new.json", 0, "1\n", ""},
               {"grep -c '\"index\" : true' new.json", 0, "1\n", ""},
               {"vornjsondb --def new.json check >/dev/null", 0, "", ""},
               {"vornjsondb --def new.json get id=1 --fields id,tags", 0, "{\"id\":1,\"tags\":[1]}\n", ""}});
}

TEST_F(Init, WhatCannotBeJudgedIsAnError)
{
    writeFile("bad.json", "[{\"a\":1},");
    writeFile("none.json", "[]");
    writeFile("items.json", "[1]");
    expectAll({{"vornjsondb init bad.json --output new.json", 3, "", "the file ends before the array does"},
               {"test ! -e new.json && test ! -e new.json.part", 0, "", ""},
               {"vornjsondb init none.json", 3, "", "holds no record"},
               {"vornjsondb init items.json", 3, "", "no JSON object"},
               {"vornjsondb init", 2, "", "name the table with --table, or give a file"},
               {"vornjsondb --db none init --table people", 3, "", "none cannot be opened"}});
}

}  // namespace

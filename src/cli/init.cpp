// SPDX-License-Identifier: MIT
//
// init: a definition from an existing table, or from the values of a file.

#include <algorithm>
#include <fstream>
#include <iostream>
#include <map>

#include "commands.h"
#include "csv_source.h"
#include "error.h"
#include "json_argument.h"
#include "record_source.h"
#include "type_guess.h"

namespace cli
{

namespace
{

using Connection = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;
using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

Statement prepare(sqlite3* pDb, const std::string& strSql, const std::string& strName)
{
    sqlite3_stmt* pStatement = nullptr;
    if (sqlite3_prepare_v2(pDb, strSql.c_str(), -1, &pStatement, nullptr) != SQLITE_OK)
        throw failure(vorn::Code::Sqlite, std::string("the database cannot be read: ") + sqlite3_errmsg(pDb));
    Statement statement(pStatement, &sqlite3_finalize);
    if (sqlite3_bind_parameter_count(pStatement) > 0)
        sqlite3_bind_text(pStatement, 1, strName.data(), static_cast<int>(strName.size()), SQLITE_TRANSIENT);
    return statement;
}

std::string textOf(sqlite3_stmt* pStatement, int column)
{
    const unsigned char* const szText = sqlite3_column_text(pStatement, column);
    return szText != nullptr ? reinterpret_cast<const char*>(szText) : "";
}

// The column's type by what was declared, and by the values where texts may be JSON.
std::string columnType(sqlite3* pDb, const std::string& strTable, const std::string& strColumn, std::string strDeclared,
                       std::string& strSure)
{
    std::transform(strDeclared.begin(), strDeclared.end(), strDeclared.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    const auto declares = [&](const char* szPart) { return strDeclared.find(szPart) != std::string::npos; };
    strSure = "sure: the column is declared " + (strDeclared.empty() ? "without a type" : strDeclared);
    if (declares("BOOL"))
        return "bool";
    if (declares("INT"))
        return "long long";
    if (declares("REAL") || declares("FLOA") || declares("DOUB"))
        return "double";

    // Texts that are all JSON objects or arrays are most likely JSON members.
    char* const szSql = sqlite3_mprintf("SELECT \"%w\" FROM \"%w\" WHERE \"%w\" IS NOT NULL LIMIT 1000",
                                        strColumn.c_str(), strTable.c_str(), strColumn.c_str());
    const std::string strSql = szSql != nullptr ? szSql : "";
    sqlite3_free(szSql);
    const Statement statement = prepare(pDb, strSql, "");
    TypeGuess guess;
    unsigned long long values = 0;
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
    {
        const Json::Value jRead = valueOf("", textOf(statement.get(), 0));
        guess.look(jRead.isObject() || jRead.isArray() ? jRead : Json::Value(""));
        ++values;
    }
    const std::string strType = guess.typeName(false);
    if (values == 0 || strType == "Json::Value")
        return "string";
    if (strType != "string")
        strSure = "judged by " + std::to_string(values) + " values, " + guess.sureness(values);
    return strType;
}

void note(const std::string& strName, const std::string& strType, const std::string& strSure)
{
    std::cerr << strName << ": " << strType << " (" << strSure << ")\n";
}

// Key, unique and index flags by the indexes of one column.
void addIndexes(sqlite3* pDb, const std::string& strTable, Json::Value& jMembers)
{
    const Statement statement =
        prepare(pDb,
                "SELECT l.\"unique\", (SELECT name FROM pragma_index_info(l.name)) FROM pragma_index_list(?1) AS l "
                "WHERE l.origin <> 'pk' AND (SELECT count(*) FROM pragma_index_info(l.name)) = 1 AND NOT l.partial",
                strTable);
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
    {
        const std::string strColumn = textOf(statement.get(), 1);
        if (jMembers.isMember(strColumn))
            jMembers[strColumn][sqlite3_column_int(statement.get(), 0) != 0 ? "unique" : "index"] = true;
    }
}

Json::Value fromTable(const Options& options)
{
    if (options.strTable.empty())
        throw badUsage("name the table with --table, or give a file to look at");
    const Connection connection(openDatabase(options, Access::Read), &sqlite3_close);
    const Statement statement =
        prepare(connection.get(), "SELECT name, type, \"notnull\", pk FROM pragma_table_info(?1)", options.strTable);
    Json::Value jMembers;
    while (sqlite3_step(statement.get()) == SQLITE_ROW)
    {
        const std::string strName = textOf(statement.get(), 0);
        std::string strSure;
        Json::Value& jMember = jMembers[strName];
        jMember["cpptype"] =
            columnType(connection.get(), options.strTable, strName, textOf(statement.get(), 1), strSure);
        if (sqlite3_column_int(statement.get(), 3) > 0)
            jMember["key"] = true;
        else if (sqlite3_column_int(statement.get(), 2) != 0)
            jMember["required"] = true;
        note(strName, jMember["cpptype"].asString(), strSure);
    }
    if (jMembers.isNull())
        throw failure(vorn::Code::Missing, "the database has no table " + options.strTable);
    addIndexes(connection.get(), options.strTable, jMembers);
    return jMembers;
}

Json::Value fromFile(const Options& options)
{
    Input input(options.strFile);
    const auto source = openSource(input, options.strFormat, Json::Value());
    const bool blTexts = options.strFormat == "csv" || dynamic_cast<Csv*>(source.get()) != nullptr;
    std::map<std::string, TypeGuess> guesses;
    unsigned long long records = 0;
    Json::Value jRec;
    std::string strText;
    std::string strProblem;
    while (source->next(jRec, strText, strProblem))
    {
        if (!strProblem.empty() || !jRec.isObject())
            throw failure(vorn::Code::BadType, strProblem.empty() ? "an item is no JSON object" : strProblem);
        for (auto it = jRec.begin(); it != jRec.end(); ++it)
            guesses[it.name()].look(*it);
        ++records;
    }
    Json::Value jMembers;
    std::string strKeys;
    for (const auto& [strName, guess] : guesses)
    {
        jMembers[strName]["cpptype"] = guess.typeName(blTexts);
        note(strName, guess.typeName(blTexts), guess.sureness(records));
        if (guess.mayBeKey(records))
            strKeys += (strKeys.empty() ? "" : ", ") + strName;
    }
    if (jMembers.isNull())
        throw failure(vorn::Code::Missing, "the file holds no record");
    std::cerr << (strKeys.empty() ? "no member differs in every record, so none could be the key"
                                  : "in every record another value, so one of these may get \"key\": true: " + strKeys)
              << '\n';
    return jMembers;
}

}  // namespace

int init(const Options& options)
{
    Json::Value jDefinition;
    const std::string strTable = options.strTable.empty() ? "records" : options.strTable;
    jDefinition[strTable]["member"] = options.strFile.empty() ? fromTable(options) : fromFile(options);
    const std::string strText = jDefinition.toStyledString();
    if (options.strOutput.empty())
    {
        std::cout << strText << std::flush;
    }
    else
    {
        std::ofstream file(options.strOutput, std::ios::binary | std::ios::trunc);
        file << strText << std::flush;
        if (!file.good())
            throw failure(vorn::Code::ReadOnly, "the file " + options.strOutput + " cannot be written");
    }
    return kDone;
}

}  // namespace cli

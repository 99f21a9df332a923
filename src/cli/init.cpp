// SPDX-License-Identifier: MIT
//
// init: a definition from an existing table, or from the values of a file.

#include <algorithm>
#include <iostream>
#include <map>

#include "commands.h"
#include "csv_source.h"
#include "error.h"
#include "json_argument.h"
#include "output.h"
#include "record_source.h"
#include "sql.h"
#include "type_guess.h"
#include "utf8.h"

namespace cli
{

namespace
{

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
    {
        Query others(
            pDb, "SELECT 1 FROM " + quoted(strTable) + " WHERE " + quoted(strColumn) + " NOT IN (0, 1) LIMIT 1", "");
        Query any(pDb, "SELECT 1 FROM " + quoted(strTable) + " WHERE " + quoted(strColumn) + " IN (0, 1) LIMIT 1", "");
        if (!others.step() && any.step())
            strSure = "hardly sure: it holds 0 and 1 alone, so it may be \"bool\"";
        return "long long";
    }
    if (declares("REAL") || declares("FLOA") || declares("DOUB"))
        return "double";

    // Texts that are all JSON objects or arrays are most likely JSON members.
    Query query(pDb,
                "SELECT " + quoted(strColumn) + " FROM " + quoted(strTable) + " WHERE " + quoted(strColumn) +
                    " IS NOT NULL LIMIT 1000",
                "");
    TypeGuess guess;
    unsigned long long values = 0;
    while (query.step())
    {
        const Json::Value jRead = valueOf("", query.text(0));
        guess.look(jRead.isObject() || jRead.isArray() ? jRead : Json::Value(""));
        ++values;
    }
    std::string strType = guess.typeName(false);
    if (values == 0 || strType == "Json::Value")
        return "string";
    if (strType != "string")
        strSure = "judged by " + std::to_string(values) + " values, " + guess.sureness(values);
    return strType;
}

void note(const std::string& strName, const std::string& strType, const std::string& strSure)
{
    std::cerr << harmless(strName, false) << ": " << strType << " (" << harmless(strSure, false) << ")\n";
}

// Key, unique and index flags by the indexes of one column.
void addIndexes(sqlite3* pDb, const std::string& strTable, Json::Value& jMembers)
{
    Query query(pDb,
                "SELECT l.\"unique\", (SELECT name FROM pragma_index_info(l.name)) FROM pragma_index_list(?1) AS l "
                "WHERE l.origin <> 'pk' AND (SELECT count(*) FROM pragma_index_info(l.name)) = 1 AND NOT l.partial",
                strTable);
    while (query.step())
        if (jMembers.isMember(query.text(1)))
            jMembers[query.text(1)][query.number(0) != 0 ? "unique" : "index"] = true;
}

Json::Value fromTable(const Options& options)
{
    if (options.strTable.empty())
        throw badUsage("name the table with --table, or give a file to look at");
    const Connection connection = openDatabase(options, Access::Read);
    Query query(connection.get(), "SELECT name, type, \"notnull\", pk FROM pragma_table_info(?1)", options.strTable);
    Json::Value jMembers;
    while (query.step())
    {
        const std::string strName = query.text(0);
        std::string strSure;
        Json::Value& jMember = jMembers[strName];
        jMember["cpptype"] = columnType(connection.get(), options.strTable, strName, query.text(1), strSure);
        if (query.number(3) > 0)
            jMember["key"] = true;
        else if (query.number(2) != 0)
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
    while (!isInterrupted() && source->next(jRec, strText, strProblem))
    {
        if (!strProblem.empty() || !jRec.isObject())
            throw failure(vorn::Code::BadType, strProblem.empty() ? "an item is no JSON object" : strProblem);
        for (auto it = jRec.begin(); it != jRec.end(); ++it)
            guesses[it.name()].look(*it);
        ++records;
    }
    if (isInterrupted())
        throw failure(vorn::Code::Interrupted, "");
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
    if (strKeys.empty())
        std::cerr << "no member differs in every record, so none could be the key\n";
    else
        std::cerr << "another value in each of the " << std::min<unsigned long long>(records, TypeGuess::kRemembered)
                  << (records > TypeGuess::kRemembered ? " first" : "")
                  << " records, so one of these may get \"key\": true: " << harmless(strKeys, false) << '\n';
    return jMembers;
}

}  // namespace

int init(const Options& options)
{
    Json::Value jDefinition;
    const std::string strTable = options.strTable.empty() ? "records" : options.strTable;
    jDefinition[strTable]["member"] = options.strFile.empty() ? fromTable(options) : fromFile(options);
    Output output(options.strOutput);
    output.write(escaped(jDefinition.toStyledString()));
    output.finish();
    return kDone;
}

}  // namespace cli

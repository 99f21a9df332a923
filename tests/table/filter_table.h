// SPDX-License-Identifier: MIT
//
// A table in memory to ask: records go in as JSON text, and a request gives the "id" of each record that it finds.

#ifndef VORN_TESTS_FILTER_TABLE_H
#define VORN_TESTS_FILTER_TABLE_H

#include <gtest/gtest.h>
#include <json/json.h>
#include <vorn/table.h>

#include <memory>
#include <sstream>
#include <string>

#include "database.h"
#include "json_value.h"

namespace table_tests
{

using support::json;

class FilterTable
{
public:
    // members: "name:type name:type", where "type+" has an index; a type's blanks are written "_". strCreate: see
    // vorn::Table.
    explicit FilterTable(const std::string& strMembers, const std::string& strName = "t",
                         const std::string& strCreate = "")
    {
        Json::Value jTableDef;
        Json::Value& jMembers = jTableDef[strName]["member"];
        std::istringstream stream("id:int " + strMembers);
        for (std::string strMember; stream >> strMember;)
        {
            const std::size_t colon = strMember.find(':');
            std::string strType = strMember.substr(colon + 1);
            Json::Value& jMember = jMembers[strMember.substr(0, colon)];
            if (strType.back() == '+')
            {
                strType.pop_back();
                jMember["index"] = true;
            }
            for (char& c : strType)
                c = c == '_' ? ' ' : c;
            jMember["cpptype"] = strType;
        }
        jMembers["id"]["key"] = true;
        m_pTable = std::make_unique<vorn::Table>(db(), strName, jTableDef, strCreate);
        EXPECT_EQ(vorn::Code::Ok, m_pTable->status().code) << m_pTable->status().text;
    }

    vorn::Table& operator*() { return *m_pTable; }
    vorn::Table* operator->() { return m_pTable.get(); }
    sqlite3* db() const { return m_database.handle(); }

    void add(const Json::Value& jRecord)
    {
        ASSERT_EQ(0, m_pTable->recCreate(jRecord)) << jRecord << m_pTable->status().text;
    }

    // "1 4 5", or "Code member" for a request that fails.
    std::string ids(Json::Value jRequest)
    {
        jRequest["$fields"].append("id");
        if (!jRequest.isMember("$sort_by") && !jRequest.isMember("sort_by"))
            jRequest["$sort_by"] = "id";
        Json::Value jRecords;
        if (m_pTable->recList(jRequest, jRecords) != 0)
            return failure();
        std::string strIds;
        for (const Json::Value& jRecord : jRecords)
            strIds += (strIds.empty() ? "" : " ") + jRecord["id"].asString();
        return strIds;
    }

    std::string failure() const
    {
        const vorn::Status& status = m_pTable->status();
        return std::string(vorn::codeName(status.code)) + " " + status.member;
    }

    // The lines of the plan, joined by "; ".
    std::string plan(const Json::Value& jRequest)
    {
        Json::Value jOut;
        if (m_pTable->explain(jRequest, jOut) != 0)
            return failure();
        std::string strPlan;
        for (const Json::Value& jLine : jOut["plan"])
            strPlan += (strPlan.empty() ? "" : "; ") + jLine.asString();
        return strPlan;
    }

private:
    support::Database m_database;
    std::unique_ptr<vorn::Table> m_pTable;
};

}  // namespace table_tests

#endif  // VORN_TESTS_FILTER_TABLE_H

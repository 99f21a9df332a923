// SPDX-License-Identifier: MIT
//
// The library, through its public header.

#include <VornJsonDbApi.h>

#include <stdexcept>

#include "connection.h"
#include "contestant.h"

bool blLogToStdout = false;
bool blDebugOutput = false;

namespace bench
{

namespace
{

Json::Value tableDefinition()
{
    Json::Value jTableDef;
    Json::Value& jMembers = jTableDef[kTable]["member"];
    jMembers["address"]["cpptype"] = "string";
    jMembers["comment"]["cpptype"] = "string";
    jMembers["count"]["cpptype"] = "int";
    jMembers["created"]["cpptype"] = "long long";
    jMembers["enabled"]["cpptype"] = "bool";
    jMembers["limits"]["cpptype"] = "Json::objectValue";
    jMembers["ports"]["cpptype"] = "Json::arrayValue";
    jMembers["serial"]["cpptype"] = "string";
    return jTableDef;
}

class Library : public Contestant
{
public:
    explicit Library(const std::string& strPath) : m_db(strPath), m_api(m_db, m_strName, m_jTableDef, m_strCreate) {}

    sqlite3* connection() override { return m_db; }

    std::size_t list() override
    {
        clear();
        Json::Value jParam;
        check(m_api.recList(jParam, m_jResult));
        return m_jResult.size();
    }

    std::size_t page(std::size_t offset) override
    {
        clear();
        Json::Value jParam;
        jParam["limit"] = static_cast<Json::UInt>(kPage);
        jParam["offset"] = static_cast<Json::UInt>(offset);
        check(m_api.recList(jParam, m_jResult));
        return m_jResult.size();
    }

    std::size_t create(std::size_t i) override
    {
        clear();
        check(m_api.recCreate(input().records[i], m_jResult));
        return 1;
    }

    std::size_t fetch(std::size_t i) override
    {
        clear();
        Json::Value jParam;
        jParam[kKey] = input().keys[i];
        return check(m_api.recGetOne(jParam, m_jResult));
    }

    std::size_t update(std::size_t i) override
    {
        Json::Value jFilter;
        jFilter[kKey] = input().keys[i];
        check(m_api.recUpdateByFilter(jFilter, input().changes[i]));
        return static_cast<std::size_t>(sqlite3_changes(m_db));
    }

    std::size_t remove(std::size_t i) override { return check(m_api.recDeleteByName(input().keys[i], kKey)); }

private:
    static std::size_t check(int result)
    {
        if (result < 0)
            throw std::runtime_error("the library reports a failure");
        return static_cast<std::size_t>(result);
    }

    Connection m_db;
    std::string m_strName = kTable;
    Json::Value m_jTableDef = tableDefinition();
    std::string m_strCreate = kCreateTable;
    VornJsonDbApi m_api;
};

}  // namespace

std::unique_ptr<Contestant> openLibrary(const std::string& strPath)
{
    return std::make_unique<Library>(strPath);
}

}  // namespace bench

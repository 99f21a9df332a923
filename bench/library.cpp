// SPDX-License-Identifier: MIT
//
// Both libraries, through their public headers: a program changes from one to the other by changing one word.

#include <VornJsonDbApi.h>
#include <vorn/table.h>

#include <stdexcept>

#include "contestant.h"
#include "statements.h"

bool blLogToStdout = false;
bool blDebugOutput = false;

namespace bench
{

namespace
{

Json::Value tableDefinition(const Shape& shape)
{
    Json::Value jTableDef;
    for (const Shape::Column& column : shape.columns)
        jTableDef[shape.strTable]["member"][column.strName]["cpptype"] = column.strType;
    return jTableDef;
}

template <class Api>
class Library : public Contestant
{
public:
    Library(const std::string& strPath, const Shape& shape)
        : m_db(strPath),
          m_strName(shape.strTable),
          m_jTableDef(tableDefinition(shape)),
          m_strCreate(shape.strCreate),
          m_api(m_db, m_strName, m_jTableDef, m_strCreate)
    {
    }

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

protected:
    static std::size_t check(long long result)
    {
        if (result < 0)
            throw std::runtime_error("the library reports a failure");
        return static_cast<std::size_t>(result);
    }

    Api& api() { return m_api; }

private:
    Connection m_db;
    std::string m_strName;
    Json::Value m_jTableDef;
    std::string m_strCreate;
    Api m_api;
};

// What the contract class has no way to do.
class Table : public Library<vorn::Table>
{
public:
    using Library::Library;

    std::size_t sorted(std::size_t offset) override
    {
        Json::Value jRequest;
        jRequest["sort_by"] = "-created";
        jRequest["limit"] = static_cast<Json::UInt>(kPage);
        jRequest["offset"] = static_cast<Json::UInt>(offset);
        return listed(jRequest);
    }

    std::size_t filter(std::size_t window) override
    {
        const Window& wanted = input().windows[window];
        Json::Value jRequest;
        jRequest[kKey]["$gte"] = wanted.strFrom;
        jRequest[kKey]["$lt"] = wanted.strTo;
        jRequest["created"]["$lt"] = wanted.iBefore;
        jRequest["comment"]["$like"] = kCommentPattern;
        return listed(jRequest);
    }

    std::size_t count(std::size_t window) override
    {
        const Window& wanted = input().windows[window];
        Json::Value jFilter;
        jFilter["enabled"] = true;
        jFilter[kKey]["$gte"] = wanted.strFrom;
        jFilter[kKey]["$lt"] = wanted.strTo;
        return count(jFilter);
    }

    std::size_t count(const Json::Value& jFilter) override { return check(api().recCount(jFilter)); }

    std::size_t createAll(std::size_t i) override { return check(api().recCreateAll(input().arrays[i])); }

    std::size_t forEach(const Visit& visit) override { return check(api().recForEach(Json::Value(), visit)); }

private:
    std::size_t listed(const Json::Value& jRequest)
    {
        clear();
        check(api().recList(jRequest, m_jResult));
        return m_jResult.size();
    }
};

}  // namespace

std::unique_ptr<Contestant> openLibrary(const std::string& strPath, const Shape& shape)
{
    return std::make_unique<Library<VornJsonDbApi>>(strPath, shape);
}

std::unique_ptr<Contestant> openTable(const std::string& strPath, const Shape& shape)
{
    return std::make_unique<Table>(strPath, shape);
}

}  // namespace bench

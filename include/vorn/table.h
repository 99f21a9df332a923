// SPDX-License-Identifier: MIT
//
// libvorntable: one table of an SQLite database, worked with as JSON records.

#ifndef VORN_TABLE_H
#define VORN_TABLE_H

#include <json/json.h>
#include <vorn/status.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;

namespace vorn
{

class Table
{
public:
    VORN_TABLE_EXPORT Table(sqlite3* pDb, const std::string& strName, const Json::Value& jTableDef,
                            const std::string& strSqlCreate = "");
    VORN_TABLE_EXPORT ~Table();
    VORN_TABLE_EXPORT Table(Table&& other) noexcept;
    VORN_TABLE_EXPORT Table& operator=(Table&& other) noexcept;
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    VORN_TABLE_EXPORT const Status& status() const;
    VORN_TABLE_EXPORT std::string getErrMsg() const;
    VORN_TABLE_EXPORT void setErrMsg(const std::string& strErrMsg);

    VORN_TABLE_EXPORT int recCreate(const Json::Value& jRecIn, Json::Value& jRecOut);
    VORN_TABLE_EXPORT int recCreate(const Json::Value& jRecIn);
    VORN_TABLE_EXPORT long long recCreateAll(const Json::Value& jRecArrayIn);
    VORN_TABLE_EXPORT int recSave(Json::Value& jRecInOut, bool blCreate);
    VORN_TABLE_EXPORT int recList(const Json::Value& jRequest, Json::Value& jRecArrayOut);
    VORN_TABLE_EXPORT long long recForEach(const Json::Value& jRequest, const std::function<bool(Json::Value&)>& visit);
    VORN_TABLE_EXPORT int recGetOne(const Json::Value& jRequest, Json::Value& jRecOut);
    VORN_TABLE_EXPORT long long recCount(const Json::Value& jFilter);
    VORN_TABLE_EXPORT long long recUpdateByFilter(const Json::Value& jFilter, const Json::Value& jValues,
                                                  bool blAllowAll = false);
    VORN_TABLE_EXPORT long long recDelete(const Json::Value& jFilter, bool blAllowAll = false);
    VORN_TABLE_EXPORT long long recDeleteAll();
    VORN_TABLE_EXPORT long long recDeleteByArray(const std::vector<std::string>& values, const char* szKey);
    VORN_TABLE_EXPORT long long recDeleteByName(const std::string& value, const char* szKey);
    VORN_TABLE_EXPORT long long runSql(const std::string& strSql, const Json::Value& jParams, Json::Value& jRowsOut);

    VORN_TABLE_EXPORT int checkJsonType(const Json::Value& jRec);
    VORN_TABLE_EXPORT int fillDefaultValue(Json::Value& jRec, bool blRequireAll);
    VORN_TABLE_EXPORT int tableCreate();
    VORN_TABLE_EXPORT int tableCheck(Json::Value& jReportOut, bool blCells = false);
    VORN_TABLE_EXPORT int tableUpgrade();
    VORN_TABLE_EXPORT int explain(const Json::Value& jRequest, Json::Value& jOut);
    VORN_TABLE_EXPORT void setLockTimeout(int milliseconds);
    VORN_TABLE_EXPORT void releaseStatements();

private:
    struct Inside;
    std::unique_ptr<Inside> m_pInside;
};

}  // namespace vorn

#endif  // VORN_TABLE_H

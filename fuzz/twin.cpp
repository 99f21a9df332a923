// SPDX-License-Identifier: MIT

#include "twin.h"

#include <cstdlib>

#include "VornJsonDbApi.h"
#include "reference_json.h"

namespace fuzz
{

namespace
{

struct Rows
{
    const Types* pTypes;
    Json::Value* pjRows;
    bool blStopped = false;
};

int addRow(void* pContext, int n_column, char** column_value, char** column_name)
{
    Rows& rows = *static_cast<Rows*>(pContext);
    std::optional<Json::Value> jRecord = recordOf(*rows.pTypes, n_column, column_value, column_name);
    rows.blStopped = !jRecord;
    if (rows.blStopped)
        return -1;
    rows.pjRows->append(std::move(*jRecord));
    return 0;
}

std::optional<Json::Value> valueOf(const std::string& strType, const char* szText)
{
    constexpr int kDecimal = 10;
    if (strType == "string")
        return Json::Value(szText);
    if (strType == "int" || strType == "unsigned int")
        return Json::Value(static_cast<Json::Int>(std::strtol(szText, nullptr, kDecimal)));
    if (strType == "long long" || strType == "unsigned long long")
        return Json::Value(static_cast<Json::Int64>(std::strtoll(szText, nullptr, kDecimal)));
    if (strType == "bool")
        return Json::Value(std::strtol(szText, nullptr, kDecimal) == 1);
    if (strType == "Json::Value" || strType == "Json::objectValue" || strType == "Json::arrayValue")
        return readReference(szText);
    return std::nullopt;
}

}  // namespace

std::optional<Json::Value> recordOf(const Types& types, int n_column, char** column_value, char** column_name)
{
    Json::Value jRecord(Json::objectValue);
    for (int i = 0; i < n_column; ++i)
    {
        const auto type = column_name[i] != nullptr ? types.find(column_name[i]) : types.end();
        if (type == types.end())
            return std::nullopt;
        if (column_value[i] == nullptr)
            continue;
        std::optional<Json::Value> jValue = valueOf(type->second, column_value[i]);
        if (!jValue)
            return std::nullopt;
        jRecord[column_name[i]] = std::move(*jValue);
    }
    return jRecord;
}

int Twin::run(const std::string& strSql, Json::Value* pjRows)
{
    constexpr int kMaxAttempts = 500;

    m_strError = "Unknow Error!!";
    if (strSql.empty())
        return -1;
    m_database.rewind();
    for (int i = 0; i < kMaxAttempts; ++i)
    {
        Rows rows{&m_types, pjRows};
        char* szError = nullptr;
        const int status =
            sqlite3_exec(m_database.handle(), strSql.c_str(), pjRows != nullptr ? addRow : nullptr, &rows, &szError);
        m_strError = szError != nullptr ? szError : "";
        sqlite3_free(szError);
        if (status == SQLITE_OK)
            return pjRows != nullptr ? 0 : sqlite3_changes(m_database.handle());
        // Hostile SQL can raise an error with this text.
        if (rows.blStopped || m_strError.find("database is locked") == std::string::npos)
            return -1;
    }
    return -1;
}

void giveTypesBack(std::string strName)
{
    Json::Value jNoTableDef;
    VORN_JSON_DB::recType(jNoTableDef, strName) = Json::Value(Json::objectValue);
}

}  // namespace fuzz

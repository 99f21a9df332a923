// SPDX-License-Identifier: MIT
//
// Stores and their definitions.

#include "store.h"

namespace support
{

std::string freshTable()
{
    static int counter = 0;
    return "t" + std::to_string(++counter);
}

Json::Value definitionOf(const std::string& name, const Json::Value& members)
{
    Json::Value definition(Json::objectValue);
    definition[name]["member"] = members;
    return definition;
}

Store::Store(const std::string& members, const std::string& columns, std::shared_ptr<Database> database)
    : m_database(std::move(database)), m_name(freshTable()), m_definition(definitionOf(m_name, json(members)))
{
    std::string columnList = columns;
    if (columnList.empty())
        for (const std::string& member : m_definition[m_name]["member"].getMemberNames())
            columnList += (columnList.empty() ? "" : ",") + member;
    m_createStatement = "CREATE TABLE IF NOT EXISTS " + m_name + " (" + columnList + ")";
    m_api = std::make_unique<VornJsonDbApi>(m_database->handle(), m_name, m_definition, m_createStatement);
}

Json::Value& Store::types()
{
    return VORN_JSON_DB::recType(m_definition, m_name);
}

}  // namespace support

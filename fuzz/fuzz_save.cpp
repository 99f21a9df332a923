// SPDX-License-Identifier: MIT
//
// {"definition": {"T": {"member": ...}}, "columns": TEXT, "steps": [["create", RECORD, OUT], ["save", RECORD, INSERT],
// ["defaults", RECORD, REQUIRE ALL], ["check", RECORD]]}: any definition, usable or not, and records for it. Where the
// definition is usable, every result, every record handed back and every row must be those of the expected statement
// run on a connection of its own.

#include <cstddef>
#include <cstdint>
#include <string>

#include "input.h"
#include "model.h"

namespace
{

// The input's definition with the table's name in place of "T".
Json::Value definitionFor(const Json::Value& jInput, const std::string& strTable)
{
    Json::Value jTableDef = fuzz::part(jInput, "definition");
    Json::Value jTable;
    if (jTableDef.isObject() && jTableDef.removeMember("T", &jTable))
        jTableDef[strTable] = jTable;
    return jTableDef;
}

std::string createStatement(const Json::Value& jInput, const std::string& strTable, const Json::Value& jTableDef)
{
    std::string strColumns = fuzz::textOf(fuzz::part(jInput, "columns"));
    if (strColumns.empty())
        strColumns = model::columnList(model::columnsOf(jTableDef, strTable).value_or(model::Columns()), nullptr);
    return "CREATE TABLE " + strTable + " (" + strColumns + ")";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static unsigned count = 0;

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    const std::string strTable = "t" + std::to_string(++count);
    const Json::Value jTableDef = definitionFor(*jInput, strTable);
    {
        model::Comparison comparison(strTable, jTableDef, createStatement(*jInput, strTable, jTableDef));
        fuzz::compareSteps(comparison, *jInput);
    }
    fuzz::giveTypesBack(strTable);
    return 0;
}

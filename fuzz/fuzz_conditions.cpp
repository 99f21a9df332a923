// SPDX-License-Identifier: MIT
//
// {"rows": [RECORD, ...], "steps": [["match", TEXT, NAME, VALUE], ["in", TEXT, NAME, LIST], ["conditions", TEXT, PARAM,
// JOINER], ["page", TEXT, PARAM], ["vector", OUT, NAME, TEXTS], ["list", PARAM, OUT], ["get", PARAM, OUT],
// ["update", FILTER, VALUES], ["update where", VALUES, TEXT], ["delete", PARAM, ALL], ["delete all"],
// ["delete by array", TEXTS, NAME], ["delete by name", TEXT, NAME]]}: every text that is built, every result and every
// row must be those of the model's text run on a connection of its own.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <iterator>
#include <string>
#include <string_view>

#include "check.h"
#include "input.h"
#include "model.h"

namespace
{

const model::Columns kTypes = {{"age", "int"},
                               {"big", "long long"},
                               {"flag", "bool"},
                               {"list", "Json::arrayValue"},
                               {"meta", "Json::objectValue"},
                               {"name", "string"},
                               {"any", "Json::Value"},
                               {"seen", "time_t"},
                               {"rate", "double"},
                               {"size", "unsigned int"},
                               {"sort_by", "string"},
                               {"sort_direction", "string"},
                               {"zip", "string"}};

// Members whose rows do not come back are left out of a second table, on which listings succeed.
constexpr std::string_view kUnreadable[] = {"seen", "rate"};

struct Table
{
    std::string strName;
    Json::Value jTableDef;
    std::string strCreate;
};

Table makeTable(const std::string& strName, bool blReadable)
{
    Table table{strName, {}, {}};
    std::string strColumns;
    for (const auto& [strMember, strType] : kTypes)
    {
        if (blReadable && std::find(std::begin(kUnreadable), std::end(kUnreadable), strMember) != std::end(kUnreadable))
            continue;
        table.jTableDef[strName]["member"][strMember]["cpptype"] = strType;
        strColumns += (strColumns.empty() ? "" : ",") + strMember + (strMember == "zip" ? " UNIQUE" : "");
    }
    table.strCreate = "CREATE TABLE " + strName + " (" + strColumns + ")";
    return table;
}

// Puts a row into both tables through the text that the library writes; a record without such a text is left out.
void insert(model::Comparison& comparison, const Json::Value& jRecord)
{
    model::Step step;
    step.call = model::Call::Save;
    step.first = jRecord;
    step.flag = true;
    try
    {
        if (!jRecord.isObject() || !model::saveText("t", comparison.table().columns(), jRecord, true))
            return;
    }
    catch (const std::exception&)
    {
        return;
    }
    const std::string strDifference = comparison.differenceIn(step);
    FUZZ_CHECK(strDifference.empty(), strDifference);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const Table readable = makeTable("readable", true);
    static const Table everything = makeTable("everything", false);

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    const Table& table = fuzz::flagOf(fuzz::part(*jInput, "everything")) ? everything : readable;
    model::Comparison comparison(table.strName, table.jTableDef, table.strCreate);
    const Json::Value& jRows = fuzz::part(*jInput, "rows");
    for (Json::ArrayIndex i = 0; jRows.isArray() && i < jRows.size(); ++i)
        insert(comparison, jRows[i]);
    fuzz::compareSteps(comparison, *jInput);
    return 0;
}

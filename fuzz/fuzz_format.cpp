// SPDX-License-Identifier: MIT
//
// {"start": TEXT, "values": [[KIND, VALUE], ...]}: the value list after a text of the caller's, whatever conversions
// that text and the values hold, reads as SQLite's formatter writes it.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "check.h"
#include "input.h"

namespace
{

constexpr const char* kTable = "formatted";
constexpr Json::ArrayIndex kMaxValues = 8;
const char* const kKinds[] = {"string", "long long",        "unsigned long long", "float",
                              "double", "Json::arrayValue", "Json::objectValue",  "bool"};

// One member for each kind at each place: a record takes one of each place, so values stand in the input's order.
std::string memberName(Json::ArrayIndex place, std::size_t kind)
{
    return "v" + std::to_string(place) + "_" + std::to_string(kind);
}

std::size_t kindOf(const std::string& strName)
{
    for (std::size_t kind = 0; kind < std::size(kKinds); ++kind)
        if (strName == kKinds[kind])
            return kind;
    return 0;
}

Json::Value makeDefinition()
{
    Json::Value jTableDef;
    for (Json::ArrayIndex place = 0; place < kMaxValues; ++place)
        for (std::size_t kind = 0; kind < std::size(kKinds); ++kind)
            jTableDef[kTable]["member"][memberName(place, kind)]["cpptype"] = kKinds[kind];
    return jTableDef;
}

Json::Value recordOf(const Json::Value& jValues)
{
    Json::Value jRecord(Json::objectValue);
    for (Json::ArrayIndex i = 0; i < kMaxValues && jValues.isArray() && i < jValues.size(); ++i)
    {
        const std::size_t kind = kindOf(fuzz::textOf(fuzz::part(jValues[i], 0U)));
        jRecord[memberName(i, kind)] = fuzz::part(jValues[i], 1);
    }
    return jRecord;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static model::Comparison comparison(kTable, makeDefinition(), "CREATE TABLE formatted (any)");

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    model::Step step;
    step.call = model::Call::ValueList;
    step.text = fuzz::textOf(fuzz::part(*jInput, "start"));
    step.first = recordOf(fuzz::part(*jInput, "values"));
    const std::string strDifference = comparison.differenceIn(step);
    FUZZ_CHECK(strDifference.empty(), strDifference);
    return 0;
}

// SPDX-License-Identifier: MIT
//
// {"start": TEXT, "values": [[KIND, VALUE], ...]}: the value list after a text of the caller's, whatever conversions
// that text and the values hold, reads as SQLite's formatter writes it.

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <stdexcept>
#include <string>

#include "VornJsonDbApi.h"
#include "check.h"
#include "formatter.h"
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

fuzz::Types makeTypes()
{
    fuzz::Types types;
    for (Json::ArrayIndex place = 0; place < kMaxValues; ++place)
        for (std::size_t kind = 0; kind < std::size(kKinds); ++kind)
            types[memberName(place, kind)] = kKinds[kind];
    return types;
}

Json::Value makeDefinition(const fuzz::Types& types)
{
    Json::Value jTableDef;
    for (const auto& [strName, strType] : types)
        jTableDef[kTable]["member"][strName]["cpptype"] = strType;
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
    static const fuzz::Types types = makeTypes();
    static Json::Value jTableDef = makeDefinition(types);
    static std::string strName = kTable;
    static std::string strSqlCreate = "select 1";
    static VornJsonDbApi store(nullptr, strName, jTableDef, strSqlCreate);

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput || fuzz::hasLargeWidth(std::string(reinterpret_cast<const char*>(data), size)))
        return 0;
    const std::string strStart = fuzz::textOf(fuzz::part(*jInput, "start"));
    Json::Value jRecord = recordOf(fuzz::part(*jInput, "values"));
    const fuzz::ValueList expected = fuzz::expectedValueList(strStart, types, jRecord);

    fuzz::Outcome outcome = fuzz::Outcome::Written;
    std::string strOut = strStart;
    try
    {
        FUZZ_CHECK(store.SqlExpandMemberSymbol(strOut, jRecord) == 0, "every type can be written");
    }
    catch (const Json::Exception&)
    {
        outcome = fuzz::Outcome::WrongKind;
    }
    catch (const std::logic_error&)
    {
        outcome = fuzz::Outcome::NoText;
    }
    FUZZ_CHECK(outcome == fuzz::Outcome::Written || strOut == strStart, "changed by a failure: <" + strOut + ">");
    if (expected.outcome == fuzz::Outcome::NotDefined)
        return 0;
    FUZZ_CHECK(outcome == expected.outcome, "another outcome, text <" + strOut + ">");
    FUZZ_CHECK(outcome != fuzz::Outcome::Written || strOut == expected.strText,
               "expected <" + expected.strText + ">, seen <" + strOut + ">");
    return 0;
}

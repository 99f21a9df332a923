// SPDX-License-Identifier: MIT
//
// Random cases. Values come from small pools, so that conditions meet rows and keys meet each other.

#include "model_case.h"

#include <iterator>
#include <limits>
#include <set>

#include "json_value.h"
#include "model.h"
#include "random.h"

namespace model
{

namespace
{

const char* const memberNames[] = {"a",    "b2",   "name", "Zip",   "_id",    "owner",   "age",
                                   "flag", "meta", "tags", "größe", "offset", "sort_by", "vornSqlWhereFilter"};

const char* const typeNames[] = {"string",
                                 "int",
                                 "unsigned int",
                                 "long long",
                                 "unsigned long long",
                                 "Json::Value",
                                 "Json::objectValue",
                                 "Json::arrayValue",
                                 "bool",
                                 "long",
                                 "unsigned long",
                                 "unsigned",
                                 "float",
                                 "double",
                                 "uid_t",
                                 "time_t",
                                 "text"};
// Those whose rows come back; they are drawn more often, so that most reads succeed.
constexpr std::size_t readableTypes = 9;

const std::string fragments[] = {"a",  "b",    "Bob", "'",    "''",
                                 "\"", "%%",   "%",   "% of", "%k",
                                 "ü",  "日本", "\n",  "\\",   ";",
                                 "--", "1",    "x y", "0",    ",",
                                 "(",  ")",    "\t",  "/",    std::string("\0", 1)};

const char* const conditions[] = {"1", "rowid > 1", "rowid = 2 or rowid = 3", "1 = 0", "nothing = 1", ""};

using support::Random;

std::string randomText(Random& random)
{
    std::string text;
    for (std::size_t count = random.below(4); count > 0; count--)
    {
        const std::string& fragment = random.of(fragments);
        // A '%' ends most texts of a value list early; most cases shall see whole ones.
        if (fragment[0] == '%' && !random.oneIn(3))
            continue;
        text += fragment;
    }
    return text;
}

// A number whose decimal text is short, so that every formatter gives the same six digits.
Json::Value smallReal(Random& random)
{
    return Json::Value((static_cast<double>(random.below(1u << 20)) - (1 << 19)) / 64.0);
}

Json::Value randomInteger(Random& random)
{
    using Int64 = std::numeric_limits<Json::Int64>;
    // Not the very largest: behind a row with that rowid SQLite draws rowids at random.
    constexpr Json::Int64 nearlyMax = Int64::max() - 1000;
    const Json::Value large[] = {Json::Value(nearlyMax),
                                 Json::Value(Int64::min()),
                                 Json::Value(std::numeric_limits<Json::UInt64>::max()),
                                 Json::Value(std::numeric_limits<Json::Int>::max()),
                                 Json::Value(std::numeric_limits<Json::Int>::min()),
                                 Json::Value(std::numeric_limits<Json::UInt>::max()),
                                 Json::Value(Json::Int(-7))};
    return random.oneIn(12) ? random.of(large) : Json::Value(static_cast<Json::Int>(random.below(4)));
}

Json::Value randomValue(Random& random, int depth);

Json::Value randomArray(Random& random, int depth)
{
    Json::Value array(Json::arrayValue);
    for (std::size_t count = random.below(3); count > 0; count--)
        array.append(randomValue(random, depth - 1));
    return array;
}

Json::Value randomObject(Random& random, int depth)
{
    Json::Value object(Json::objectValue);
    for (std::size_t count = random.below(3); count > 0; count--)
        object[randomText(random)] = randomValue(random, depth - 1);
    return object;
}

Json::Value randomValue(Random& random, int depth)
{
    const double reals[] = {0.1, -2.5, 1e300, 3.0, 1e-7};
    switch (random.below(depth > 0 ? 7 : 5))
    {
        case 0:
            return Json::Value();
        case 1:
            return Json::Value(random.oneIn(2));
        case 2:
            return randomInteger(random);
        case 3:
            return Json::Value(random.of(reals));
        case 4:
            return Json::Value(randomText(random));
        case 5:
            return randomArray(random, depth);
        default:
            return randomObject(random, depth);
    }
}

Json::Value randomValueFor(Random& random, const std::string& type)
{
    if (type == "float" || type == "double")
        return random.oneIn(20) ? Json::Value(randomText(random)) : smallReal(random);
    if (random.oneIn(25))
        return randomValue(random, 2);
    if (type == "string")
        return Json::Value(randomText(random));
    if (type == "bool")
        return Json::Value(random.oneIn(2));
    if (type == "Json::objectValue")
        return randomObject(random, 2);
    if (type == "Json::arrayValue")
        return randomArray(random, 2);
    if (type == "Json::Value")
        return randomValue(random, 2);
    return randomInteger(random);
}

Json::Value randomMembers(Random& random)
{
    Json::Value members(Json::objectValue);
    const std::size_t count = 1 + random.below(6);
    while (members.size() < count)
    {
        Json::Value& member = members[random.of(memberNames)];
        if (member.isMember("cpptype"))
            continue;
        const std::size_t end = random.oneIn(8) ? std::size(typeNames) : readableTypes;
        const std::string type = typeNames[random.below(end)];
        member["cpptype"] = type;
        if (random.oneIn(5))
            member["cppDefaultValue"] = randomValueFor(random, type);
    }
    return members;
}

// Columns stand in any order; now and then the table has one that is not declared, or lacks one that is.
std::string randomColumns(Random& random, const Columns& columns)
{
    const char* const affinities[] = {"", "", " TEXT", " INTEGER", " REAL", " BLOB"};
    const char* const constraints[] = {" UNIQUE", " PRIMARY KEY", " NOT NULL", " DEFAULT 7",
                                       " UNIQUE ON CONFLICT IGNORE"};
    std::vector<std::string> written;
    bool hasKey = false;
    for (const auto& [name, type] : columns)
    {
        if (columns.size() > 1 && random.oneIn(60))
            continue;
        std::string column = name + random.of(affinities);
        const std::size_t constraint = random.below(4 * std::size(constraints));
        if (constraint < std::size(constraints) && !(constraint == 1 && hasKey))
        {
            column += constraints[constraint];
            hasKey = hasKey || constraint == 1;
        }
        written.insert(written.begin() + static_cast<std::ptrdiff_t>(random.below(written.size() + 1)), column);
    }
    if (written.empty() || random.oneIn(30))
        written.emplace_back("undeclared");
    std::string out;
    for (const std::string& column : written)
        out += (out.empty() ? "" : ",") + column;
    return out;
}

Json::Value randomRecord(Random& random, const Columns& columns, std::size_t oneLeftOutIn)
{
    Json::Value record(Json::objectValue);
    for (const auto& [name, type] : columns)
        if (!random.oneIn(oneLeftOutIn))
            record[name] = randomValueFor(random, type);
    if (random.oneIn(6))
        record["undeclared"] = randomValue(random, 1);
    return record;
}

// Conditions, list parameters, now and then no object at all.
Json::Value randomParam(Random& random, const Columns& columns)
{
    if (random.oneIn(30))
        return random.oneIn(2) ? Json::Value() : Json::Value(Json::arrayValue);
    Json::Value param(Json::objectValue);
    for (const auto& [name, type] : columns)
    {
        if (!random.oneIn(4))
            continue;
        param[name] = randomValueFor(random, type);
        if (random.oneIn(3))
        {
            Json::Value list(Json::arrayValue);
            for (std::size_t count = random.below(3); count > 0; count--)
                list.append(randomValueFor(random, type));
            param[name] = list;
        }
    }
    if (random.oneIn(5))
        param["vornSqlWhereFilter"] = random.oneIn(12) ? randomValue(random, 1) : Json::Value(random.of(conditions));
    if (random.oneIn(4))
        param["sort_by"] = random.oneIn(20) ? randomValue(random, 1) : Json::Value(randomText(random));
    if (random.oneIn(4))
        param["sort_direction"] = random.oneIn(3) ? Json::Value(randomText(random)) : Json::Value("desc");
    if (random.oneIn(4))
    {
        param["limit"] =
            random.oneIn(10) ? randomValue(random, 1) : Json::Value(static_cast<Json::Int>(random.below(4)));
    }
    if (random.oneIn(4))
    {
        param["offset"] =
            random.oneIn(10) ? randomValue(random, 1) : Json::Value(static_cast<Json::Int>(random.below(3)));
    }
    return param;
}

std::string randomName(Random& random, const Columns& columns)
{
    if (random.oneIn(15))
        return "undeclared";
    auto column = columns.begin();
    std::advance(column, random.below(columns.size()));
    return column->first;
}

// Deleting by values is refused for members of other types.
std::string randomStringName(Random& random, const Columns& columns)
{
    for (const auto& [name, type] : columns)
        if (type == "string" && !random.oneIn(3))
            return name;
    return randomName(random, columns);
}

// A query of some columns in any order, one of them perhaps twice.
std::string randomQuery(Random& random, const std::string& table, const Columns& columns)
{
    std::string out;
    for (std::size_t count = 1 + random.below(columns.size() + 1); count > 0; count--)
        out += (out.empty() ? "" : ",") + randomName(random, columns);
    return "select " + out + " from " + table + (random.oneIn(3) ? "" : ";select " + out + " from " + table);
}

Step randomStep(Random& random, Call call, const Columns& columns)
{
    Step step;
    step.call = call;
    const char* const prefixes[] = {"", "x", "INSERT INTO t (a) VALUES ("};
    step.text = random.of(prefixes);
    step.flag = random.oneIn(2);
    step.name = call == Call::DeleteByArray || call == Call::DeleteByName ? randomStringName(random, columns)
                                                                          : randomName(random, columns);
    const auto column = columns.find(*step.name);
    const std::string type = column == columns.end() ? "string" : column->second;
    switch (call)
    {
        case Call::ColumnList:
        case Call::ValueList:
        case Call::CheckTypes:
        case Call::FillDefaults:
        case Call::Create:
        case Call::Save:
            step.first = randomRecord(random, columns, 8);
            break;
        case Call::Match:
            step.first = randomValueFor(random, type);
            break;
        case Call::ListCondition:
            step.first = Json::Value(Json::arrayValue);
            for (std::size_t count = random.below(4); count > 0; count--)
                step.first.append(randomValueFor(random, type));
            if (random.oneIn(10))
                step.first = randomValue(random, 1);
            break;
        case Call::MemberList:
            step.first = randomParam(random, columns);
            step.number = static_cast<int>(random.below(4));
            break;
        case Call::Vector:
            step.first = randomParam(random, columns);
            step.texts = {randomText(random), randomText(random)};
            break;
        case Call::Query:  // see randomCase()
            break;
        case Call::UpdateByFilter:
            step.first = randomParam(random, columns);
            step.second = randomRecord(random, columns, 2);
            break;
        case Call::UpdateByWhere:
            step.first = randomRecord(random, columns, 2);
            step.text = random.of(conditions);
            break;
        case Call::DeleteByArray:
            for (std::size_t count = random.below(3); count > 0; count--)
                step.texts.push_back(randomText(random));
            break;
        case Call::DeleteByName:
            step.text = randomText(random);
            break;
        case Call::SortAndPage:
        case Call::List:
        case Call::GetOne:
        case Call::Delete:
        case Call::DeleteAll:
            step.first = randomParam(random, columns);
            break;
    }
    if (call == Call::GetOne)
        step.second = random.oneIn(10) ? randomValue(random, 1) : Json::Value();
    return step;
}

}  // namespace

Case randomCase(std::uint64_t seed, std::uint64_t index)
{
    Random random(seed ^ (index * 0x9E3779B97F4A7C15ull));
    Case out;
    out.table = "m" + std::to_string(index) + "_" + std::to_string(seed);
    out.definition[out.table]["member"] = randomMembers(random);
    const Columns columns = columnsOf(out.definition, out.table).value();
    out.columns = randomColumns(random, columns);

    const Call builders[] = {Call::ColumnList,    Call::ValueList,  Call::Match,
                             Call::ListCondition, Call::MemberList, Call::SortAndPage,
                             Call::Vector,        Call::CheckTypes, Call::FillDefaults};
    const Call reads[] = {Call::List, Call::GetOne};
    const Call changes[] = {Call::UpdateByFilter, Call::UpdateByWhere, Call::Delete,
                            Call::DeleteAll,      Call::DeleteByArray, Call::DeleteByName};
    for (const Call call : builders)
        out.steps.push_back(randomStep(random, call, columns));
    for (int i = 0; i < 4; i++)
        out.steps.push_back(randomStep(random, random.oneIn(2) ? Call::Create : Call::Save, columns));
    Step query = randomStep(random, Call::Query, columns);
    query.text = randomQuery(random, out.table, columns);
    out.steps.push_back(query);
    for (int i = 0; i < 2; i++)
    {
        out.steps.push_back(randomStep(random, random.of(reads), columns));
        out.steps.push_back(randomStep(random, random.of(changes), columns));
    }
    return out;
}

std::string asInput(const Case& example)
{
    Json::Value jInput;
    jInput["definition"]["T"] = example.definition[example.table];
    jInput["columns"] = example.columns;
    for (const Step& step : example.steps)
    {
        const CallShape& shape = kCallShapes[static_cast<std::size_t>(step.call)];
        Json::Value jStep;
        jStep.append(shape.szName);
        for (const char* sz = shape.szArguments; *sz != '\0'; ++sz)
        {
            switch (*sz)
            {
                case 'f':
                    jStep.append(step.first);
                    break;
                case 's':
                    jStep.append(step.second);
                    break;
                case 't':
                    jStep.append(step.text);
                    break;
                case 'n':
                    jStep.append(step.name ? Json::Value(*step.name) : Json::Value());
                    break;
                case 'i':
                    jStep.append(step.number);
                    break;
                case 'b':
                    jStep.append(step.flag);
                    break;
                default:
                    jStep.append(Json::Value(Json::arrayValue));
                    for (const std::string& text : step.texts)
                        jStep[jStep.size() - 1].append(text);
            }
        }
        jInput["steps"].append(jStep);
    }
    return support::writeReference(jInput);
}

}  // namespace model

// SPDX-License-Identifier: MIT

#include "filter_case.h"

#include <initializer_list>
#include <random>

#include "json_value.h"

namespace table_tests
{

namespace
{

const std::string kNul("a\0b", 3);

const Json::Value& texts()
{
    static const Json::Value kTexts = []
    {
        Json::Value jTexts = support::json(
            R"json(["", "a", "A", "ab", "aB", "abc", "it's", "100%", "_x", "[a]", "*", "Ü", "ü", "Übung", "😀", "1", "-", "null", "a\\b"])json");
        jTexts.append(kNul);
        jTexts.append(std::string("a\0c", 3));
        return jTexts;
    }();
    return kTexts;
}

const Json::Value& numbersOf(const std::string& strType)
{
    static const Json::Value kNumbers = support::json(R"({
        "int": [0, 1, -1, 7, 2147483647, -2147483648], "unsigned": [0, 1, 7, 4294967295],
        "long": [0, 1, -1, 7, 2147483648, 9007199254740993, 9223372036854775807, -9223372036854775808],
        "unsigned long": [0, 1, 7, 9007199254740993, 9223372036854775807],
        "double": [0, 1, 0.1, 2.5, -7, 1e300, -1e300, 16777217], "float": [0, 1, 0.1, 2.5, -7, 3e38, 16777217]})");
    if (strType == "unsigned int" || strType == "uid_t")
        return kNumbers["unsigned"];
    if (strType == "long long" || strType == "time_t")
        return kNumbers["long"];
    return kNumbers[strType == "unsigned long long" ? "unsigned long" : strType];
}

class Maker
{
public:
    Maker(std::uint64_t nSeed, std::uint64_t nNumber)
    {
        std::seed_seq seeds{static_cast<std::uint32_t>(nSeed), static_cast<std::uint32_t>(nSeed >> 32),
                            static_cast<std::uint32_t>(nNumber), static_cast<std::uint32_t>(nNumber >> 32)};
        m_random.seed(seeds);
    }

    Case make()
    {
        makeMembers();
        const int records = static_cast<int>(below(16));
        for (int id = 1; id <= records; ++id)
            m_case.records.push_back(record(id));
        for (int i = 0; i < 4; ++i)
            m_case.requests.push_back(request());
        for (int i = 0; i < 3; ++i)
            m_case.filters.push_back(filter(0));
        m_case.jValues = Json::Value(Json::objectValue);
        while (m_case.jValues.empty())
            for (const auto& [strName, strType] : m_case.types)
                if (strName != "id" && below(3) == 0)
                    m_case.jValues[strName] = below(5) == 0 ? Json::Value() : value(strType);
        return std::move(m_case);
    }

private:
    unsigned below(unsigned end) { return static_cast<unsigned>(m_random() % end); }
    bool maybe(unsigned outOf) { return below(outOf) == 0; }

    const Json::Value& oneOf(const Json::Value& jArray) { return jArray[below(jArray.size())]; }
    std::string oneOf(std::initializer_list<const char*> names)
    {
        return names.begin()[below(static_cast<unsigned>(names.size()))];
    }

    void makeMembers()
    {
        m_case.types["id"] = "int";
        while (m_case.types.size() < 3 + below(5))
        {
            const std::string strName =
                oneOf({"a", "b", "c", "o", "o.a", "any", "any.b.c", "a name", "limit", "sort_by", "Ü\"'"});
            m_case.types[strName] =
                strName == "o" || strName == "any"
                    ? oneOf({"Json::objectValue", "Json::Value"})
                    : oneOf({"string", "string", "bool", "int", "unsigned int", "unsigned", "uid_t", "long long",
                             "long", "time_t", "unsigned long long", "unsigned long", "float", "double",
                             "Json::objectValue", "Json::arrayValue", "Json::Value"});
        }
        for (const auto& [strName, strType] : m_case.types)
        {
            m_case.jMembers[strName]["cpptype"] = strType;
            if (maybe(4))
                m_case.jMembers[strName]["index"] = true;
        }
        m_case.jMembers["id"]["key"] = true;
    }

    // Numbers inside JSON are written one way only: whether 1 and 1.0 are equal depends on where they stand.
    Json::Value jsonValue(unsigned depth)
    {
        static const Json::Value kNumbers = support::json("[0, 1, -7, 2.5, 9007199254740993, true, false, null]");
        const unsigned kind = below(depth >= 3 ? 4 : 7);
        if (kind < 2)
            return oneOf(kNumbers);
        if (kind < 4)
            return oneOf(texts());
        return kind < 6 ? jsonObject(depth + 1) : jsonArray(depth + 1);
    }

    Json::Value jsonObject(unsigned depth)
    {
        Json::Value jObject(Json::objectValue);
        for (unsigned n = below(4); n > 0; --n)
            jObject[oneOf({"a", "b", "c", "x y", "q\"t", "Ü", "1"})] = jsonValue(depth);
        return jObject;
    }

    Json::Value jsonArray(unsigned depth)
    {
        Json::Value jArray(Json::arrayValue);
        for (unsigned n = below(4); n > 0; --n)
            jArray.append(jsonValue(depth));
        return jArray;
    }

    Json::Value value(const std::string& strType)
    {
        if (strType == "string")
            return oneOf(texts());
        if (strType == "bool")
            return maybe(2);
        if (strType == "Json::objectValue")
            return jsonObject(0);
        if (strType == "Json::arrayValue")
            return jsonArray(0);
        if (strType == "Json::Value")
            return jsonValue(0);
        return oneOf(numbersOf(strType));
    }

    Json::Value record(int id)
    {
        Json::Value jRecord;
        jRecord["id"] = id;
        for (const auto& [strName, strType] : m_case.types)
            if (strName != "id" && !maybe(5))
            {
                const Json::Value jValue = asStored(strType, value(strType));
                if (!jValue.isNull())
                    jRecord[strName] = jValue;
            }
        return jRecord;
    }

    // A member, or a path into one.
    std::string place(std::string& strType)
    {
        auto it = m_case.types.begin();
        std::advance(it, below(static_cast<unsigned>(m_case.types.size())));
        strType = it->second;
        std::string strName = it->first;
        if ((strType == "Json::objectValue" || strType == "Json::Value") && !maybe(4))
        {
            for (unsigned n = 1 + below(3); n > 0; --n)
            {
                const std::string strLonger = strName + "." + oneOf({"a", "b", "c", "x y", "q\"t", "Ü", "1"});
                if (isDeclaredOrBelow(strLonger))
                    break;
                strName = strLonger;
                strType = "";
            }
        }
        return strName;
    }

    // A path that would be a declared member, or lead below one, is not what is meant here.
    bool isDeclaredOrBelow(const std::string& strPath) const { return m_case.types.count(strPath) != 0; }

    Json::Value operand(const std::string& strType)
    {
        if (!strType.empty())
            return value(strType);
        return maybe(6) ? Json::Value(1.0) : jsonValue(1);
    }

    Json::Value operandOrNull(const std::string& strType) { return maybe(8) ? Json::Value() : operand(strType); }

    Json::Value list(const std::string& strType)
    {
        Json::Value jList(Json::arrayValue);
        for (unsigned n = below(5); n > 0; --n)
            jList.append(operandOrNull(strType));
        return jList;
    }

    Json::Value orderedOperand(const std::string& strType)
    {
        static const Json::Value kAnyNumber =
            support::json("[0, 1.0, 1.5, -0.5, 7, 9007199254740993, 9007199254740992.0, 1e19, -1e19, 1e300, -1e300]");
        if (strType == "string")
            return oneOf(texts());
        if (strType.empty())
            return maybe(2) ? oneOf(texts()) : oneOf(kAnyNumber);
        return strType == "float" || maybe(2) ? oneOf(numbersOf(strType)) : oneOf(kAnyNumber);
    }

    Json::Value operators(const std::string& strType, unsigned depth)
    {
        const bool blAny = strType.empty();
        const bool blJson = strType.rfind("Json::", 0) == 0;
        const bool blText = blAny || strType == "string";
        const bool blArray = blAny || strType == "Json::arrayValue" || strType == "Json::Value";
        Json::Value jOperators(Json::objectValue);
        for (unsigned n = 1 + below(2); n > 0; --n)
            switch (below(9))
            {
                case 0:
                    jOperators[oneOf({"$eq", "$ne"})] = operandOrNull(strType);
                    break;
                case 1:
                    jOperators[oneOf({"$in", "$nin"})] = list(strType);
                    break;
                case 2:
                    jOperators["$exists"] = maybe(2);
                    break;
                case 3:
                    if (depth < 3)
                        jOperators["$not"] = operators(strType, depth + 1);
                    break;
                case 4:
                    if (blText)
                        jOperators["$beginsWith"] = oneOf(texts());
                    break;
                case 5:
                    if (blText)
                        jOperators["$like"] =
                            oneOf({"%", "", "a%", "%B", "_", "a_", "%ü%", "100%", "%a%b%", "__%", "[a]"});
                    break;
                case 6:
                    if (blText)
                        jOperators["$glob"] = oneOf({"*", "", "a*", "*B", "?", "a?", "*ü*", "[ab]*", "*[*]*", "??*"});
                    break;
                case 7:
                    if (blArray && maybe(2))
                        jOperators["$size"] = below(4);
                    else if (blArray)
                        for (unsigned items = 1 + below(2); items > 0; --items)
                            jOperators["$all"].append(maybe(6) ? Json::Value(1.0) : jsonValue(2));
                    break;
                default:
                    if (!blJson && strType != "bool")
                        jOperators[oneOf({"$gt", "$gte", "$lt", "$lte"})] = orderedOperand(strType);
            }
        if (jOperators.empty())
            jOperators["$exists"] = true;
        return jOperators;
    }

    Json::Value filter(unsigned depth)
    {
        Json::Value jFilter(Json::objectValue);
        for (unsigned n = maybe(10) ? 0 : 1 + below(2); n > 0; --n)
        {
            if (depth < 4 && maybe(4))
            {
                const std::string strJoiner = oneOf({"$and", "$or", "$nor", "$not"});
                if (strJoiner == "$not")
                {
                    jFilter[strJoiner] = filter(depth + 1);
                    continue;
                }
                jFilter.removeMember(strJoiner);
                for (unsigned parts = 1 + below(3); parts > 0; --parts)
                    jFilter[strJoiner].append(filter(depth + 1));
                continue;
            }
            std::string strType;
            const std::string strName = place(strType);
            switch (below(4))
            {
                case 0:
                    jFilter[strName] = list(strType);
                    break;
                case 1:
                {
                    const Json::Value jValue = operandOrNull(strType);
                    // A bare array would be a list, and a bare object must not look like operators.
                    jFilter[strName] = Json::Value();
                    if (jValue.isArray())
                        jFilter[strName]["$eq"] = jValue;
                    else
                        jFilter[strName] = jValue;
                    break;
                }
                default:
                    jFilter[strName] = operators(strType, 0);
            }
        }
        return jFilter;
    }

    std::string spelled(const std::string& strKey)
    {
        return m_case.types.count(strKey) != 0 || maybe(2) ? "$" + strKey : strKey;
    }

    Json::Value request()
    {
        Json::Value jRequest = filter(0);
        // What SQLite does with an order inside JSON of mixed kinds is its own affair: members only.
        Json::Value jKeys(Json::arrayValue);
        for (const auto& [strName, strType] : m_case.types)
            if (strName != "id" && maybe(4) && strName[0] != '$' && strName[0] != '-')
                jKeys.append((maybe(2) ? "-" : "") + strName);
        jKeys.append("id");
        if (maybe(4))
        {
            jRequest[spelled("sort_by")] = "id";
            jRequest[spelled("sort_direction")] = oneOf({"asc", "desc"});
        }
        else
        {
            jRequest[spelled("sort_by")] = jKeys;
        }
        if (maybe(3))
            jRequest[spelled("limit")] = below(6);
        if (maybe(4))
            jRequest[spelled("offset")] = below(6);
        if (maybe(4))
            for (const auto& entry : m_case.types)
                if (maybe(2) || (entry.first == "id"))
                    m_fields.append(entry.first);
        if (!m_fields.empty())
            jRequest[spelled("fields")] = m_fields;
        m_fields = Json::Value();
        return jRequest;
    }

    std::mt19937_64 m_random;
    Case m_case;
    Json::Value m_fields;
};

std::string literal(const Json::Value& jValue)
{
    return "json(R\"json(" + compactText(jValue) + ")json\")";
}

}  // namespace

Case randomCase(std::uint64_t nSeed, std::uint64_t nNumber)
{
    return Maker(nSeed, nNumber).make();
}

std::string asTest(const Case& example, const Json::Value& jRequest)
{
    Json::Value jRecords(Json::arrayValue);
    for (const Json::Value& jRecord : example.records)
        jRecords.append(jRecord);
    return "\nTEST(TableModel, FoundByChance)\n{\n    Database db;\n    vorn::Table table(db.handle(), \"T\", "
           "definitionOf(\"T\", " +
           literal(example.jMembers) + "));\n    EXPECT_TRUE(done(table, table.recCreateAll(" + literal(jRecords) +
           "), " + std::to_string(example.records.size()) +
           "));\n    Json::Value jRows;\n    EXPECT_TRUE(done(table, table.recList(" + literal(jRequest) +
           ", jRows)));\n    // values of the update: " + compactText(example.jValues) + "\n}\n";
}

}  // namespace table_tests

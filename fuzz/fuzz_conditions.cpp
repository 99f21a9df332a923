// SPDX-License-Identifier: MIT
//
// {"rows": [RECORD, ...], "steps": [["match", TEXT, NAME, VALUE], ["in", TEXT, NAME, LIST], ["conditions", TEXT, PARAM,
// JOINER], ["page", TEXT, PARAM], ["vector", OUT, NAME, TEXTS], ["list", PARAM, OUT], ["get", PARAM, OUT],
// ["update", FILTER, VALUES], ["update where", VALUES, TEXT], ["delete", PARAM, ALL], ["delete all"],
// ["delete by array", TEXTS, NAME], ["delete by name", TEXT, NAME]]}: every text that is built, every result and every
// row must be those of the model's text run on a connection of its own.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "VornJsonDbApi.h"
#include "check.h"
#include "database.h"
#include "formatter.h"
#include "input.h"
#include "model.h"
#include "reference_json.h"
#include "twin.h"

namespace
{

constexpr int kThrew = -2;  // a documented exception

const fuzz::Types kTypes = {{"age", "int"},
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
constexpr const char* kUnreadable[] = {"seen", "rate"};

struct Table
{
    std::string strName;
    fuzz::Types types;
    Json::Value jTableDef;
    std::string strCreate;
};

Table makeTable(std::string strName, bool blReadable)
{
    Table table{std::move(strName), kTypes, {}, {}};
    if (blReadable)
        for (const char* szName : kUnreadable)
            table.types.erase(szName);
    std::string strColumns;
    for (const auto& [strMember, strType] : table.types)
    {
        table.jTableDef[table.strName]["member"][strMember]["cpptype"] = strType;
        strColumns += (strColumns.empty() ? "" : ",") + strMember + (strMember == "zip" ? " UNIQUE" : "");
    }
    table.strCreate = "CREATE TABLE " + table.strName + " (" + strColumns + ")";
    return table;
}

class Case
{
public:
    Case(Table& table, const Json::Value& jRows) : m_table(table), m_twin(table.types)
    {
        m_twin.run(m_table.strCreate, nullptr);
        m_database.rewind();
        m_pStore =
            std::make_unique<VornJsonDbApi>(m_database.handle(), m_table.strName, m_table.jTableDef, m_table.strCreate);
        for (Json::ArrayIndex i = 0; jRows.isArray() && i < jRows.size(); ++i)
            insert(jRows[i]);
    }

    void run(const Json::Value& jStep)
    {
        const std::string strCall = fuzz::textOf(fuzz::part(jStep, 0U));
        const Json::Value& jFirst = fuzz::part(jStep, 1);
        const Json::Value& jSecond = fuzz::part(jStep, 2);
        const Json::Value& jThird = fuzz::part(jStep, 3);
        if (strCall == "match")
            match(fuzz::textOf(jFirst), fuzz::textOf(jSecond), jThird);
        else if (strCall == "in")
            in(fuzz::textOf(jFirst), jSecond, jThird);
        else if (strCall == "conditions")
            conditions(fuzz::textOf(jFirst), jSecond, fuzz::smallNumberOf(jThird));
        else if (strCall == "page")
            page(fuzz::textOf(jFirst), jSecond);
        else if (strCall == "vector")
            vector(jFirst, jSecond, fuzz::textsOf(jThird));
        else if (strCall == "list")
            list(jFirst, jSecond);
        else if (strCall == "get")
            get(jFirst, jSecond);
        else if (strCall == "update")
            update(jFirst, jSecond);
        else if (strCall == "update where")
            updateWhere(jFirst, fuzz::textOf(jSecond));
        else if (strCall == "delete")
            remove(jFirst, fuzz::flagOf(jSecond));
        else if (strCall == "delete all")
            removeAll();
        else if (strCall == "delete by array")
            removeByArray(fuzz::textsOf(jFirst), jSecond);
        else if (strCall == "delete by name")
            removeByName(fuzz::textOf(jFirst), jSecond);
    }

private:
    // ---- Texts: what is expected, or kThrew where JsonCpp would not convert a value.

    template <typename Expected, typename Seen>
    void compareText(const std::string& strBefore, Expected expected, Seen seen)
    {
        std::string strExpected = strBefore;
        const int expectedStatus = statusOf([&] { return expected(strExpected); });
        std::string strSeen = strBefore;
        const int status = statusOf([&] { return seen(strSeen); });
        expect(expectedStatus, status);
        if (expectedStatus == kThrew)
            FUZZ_CHECK(strSeen.compare(0, strBefore.size(), strBefore) == 0, strSeen);
        else
            FUZZ_CHECK(strSeen == strExpected, "expected <" + strExpected + ">, seen <" + strSeen + ">");
    }

    static int append(std::string& strOut, const std::optional<std::string>& text)
    {
        if (!text)
            return -1;
        strOut += *text;
        return 0;
    }

    static int take(std::string& strOut, const model::Fragment& fragment)
    {
        strOut = fragment.text;
        return fragment.result;
    }

    void match(const std::string& strBefore, std::string strName, Json::Value jValue)
    {
        compareText(
            strBefore,
            [&](std::string& strOut) { return append(strOut, model::matchCondition(m_table.types, strName, jValue)); },
            [&](std::string& strOut) { return m_pStore->SqlMakeByMatchField(strName, jValue, strOut); });
    }

    void in(const std::string& strBefore, const Json::Value& jName, Json::Value jList)
    {
        const char* const szName = jName.isString() ? jName.asCString() : nullptr;
        compareText(
            strBefore,
            [&](std::string& strOut) {
                return append(strOut,
                              szName == nullptr ? std::nullopt : model::listCondition(m_table.types, szName, jList));
            },
            [&](std::string& strOut) { return m_pStore->SqlMakeByListField(szName, jList, strOut); });
    }

    void conditions(const std::string& strBefore, Json::Value jParam, int joiner)
    {
        compareText(
            strBefore,
            [&](std::string& strOut) { return take(strOut, model::memberList(strOut, m_table.types, jParam, joiner)); },
            [&](std::string& strOut) { return m_pStore->SqlExpandMemberList(jParam, strOut, joiner); });
    }

    void page(const std::string& strBefore, Json::Value jParam)
    {
        compareText(
            strBefore, [&](std::string& strOut) { return take(strOut, model::sortAndPage(strOut, jParam)); },
            [&](std::string& strOut) { return m_pStore->SqlFilterConditionFromJson(jParam, strOut); });
    }

    void vector(const Json::Value& jBefore, const Json::Value& jName, std::vector<std::string> texts)
    {
        const char* const szName = jName.isString() ? jName.asCString() : nullptr;
        Json::Value jExpected = jBefore;
        int expectedStatus = -1;
        if ((jBefore.isObject() || jBefore.isNull()) && szName != nullptr && szName[0] != '\0')
        {
            Json::Value& jTexts = jExpected[szName] = Json::Value(Json::arrayValue);
            for (const std::string& strText : texts)
                jTexts.append(strText);
            expectedStatus = 0;
        }
        Json::Value jSeen = jBefore;
        expect(expectedStatus, m_pStore->VectorParamToJson(texts, szName, jSeen));
        expectValue(jExpected, jSeen);
    }

    // ---- Statements

    void list(const Json::Value& jParam, const Json::Value& jOutBefore)
    {
        Json::Value jExpected = jOutBefore;
        const int expectedStatus = statusOf([&] { return expectedList(jParam, jExpected); });
        Json::Value jIn = jParam;
        Json::Value jOut = jOutBefore;
        compareRun(expectedStatus, [&] { return m_pStore->recList(jIn, jOut); });
        expectValue(jParam, jIn);
        expectValue(jExpected, jOut);
    }

    void get(const Json::Value& jParam, const Json::Value& jOutBefore)
    {
        Json::Value jRows(Json::arrayValue);
        int expectedStatus = statusOf([&] { return expectedList(jParam, jRows); });
        Json::Value jExpected = jOutBefore;
        if (expectedStatus == 0 && !jRows.empty())
        {
            const bool blRecord = jOutBefore.isObject() || jOutBefore.isNull();
            expectedStatus = blRecord ? 1 : -1;
            if (blRecord)
                for (auto it = jRows[0].begin(); it != jRows[0].end(); ++it)
                    jExpected[it.name()] = *it;
        }
        Json::Value jIn = jParam;
        Json::Value jOut = jOutBefore;
        compareRun(expectedStatus, [&] { return m_pStore->recGetOne(jIn, jOut); });
        expectValue(jParam, jIn);
        expectValue(jExpected, jOut);
    }

    int expectedList(const Json::Value& jParam, Json::Value& jRows)
    {
        if (!jRows.isArray() && !jRows.isNull())
            return -1;
        const model::Fragment condition = model::memberList("", m_table.types, jParam, VORN_SQL_WHERE_TYPE_AND);
        if (condition.result < 0)
            return -1;
        const model::Fragment clause = model::sortAndPage("", jParam);
        return m_twin.run(model::selectText(m_table.strName, m_table.types, condition.text, clause.text), &jRows);
    }

    void update(const Json::Value& jFilter, const Json::Value& jValues)
    {
        const int expectedStatus = statusOf([&] { return expectedUpdate(jFilter, jValues); });
        Json::Value jFilterIn = jFilter;
        Json::Value jParamIn = jValues;
        compareRun(expectedStatus, [&] { return m_pStore->recUpdateByFilter(jFilterIn, jParamIn); });
        expectValue(jFilter, jFilterIn);
        expectValue(jValues, jParamIn);
        if (expectedStatus == -1 && m_twin.error().find("UNIQUE constraint failed") != std::string::npos)
            m_strMessage = "DUPLICATE_PRIMARY_KEY";
        FUZZ_CHECK(m_pStore->getErrMsg() == m_strMessage, m_pStore->getErrMsg());
    }

    int expectedUpdate(const Json::Value& jFilter, const Json::Value& jValues)
    {
        if (!jFilter.isObject() || jFilter.empty() || !jValues.isObject())
            return -1;
        const model::Fragment condition = model::memberList("", m_table.types, jFilter, VORN_SQL_WHERE_TYPE_AND);
        if (condition.result != 0 || !model::typesFit(m_table.types, jValues))
            return -1;
        return expectedUpdateWhere(jValues, condition.text);
    }

    void updateWhere(const Json::Value& jValues, std::string strWhere)
    {
        const int expectedStatus = statusOf([&] { return expectedUpdateWhere(jValues, strWhere); });
        Json::Value jRecIn = jValues;
        compareRun(expectedStatus, [&] { return m_pStore->recUpdateByWhere(jRecIn, strWhere); });
        expectValue(jValues, jRecIn);
    }

    int expectedUpdateWhere(const Json::Value& jValues, const std::string& strWhere)
    {
        if (strWhere.empty() || jValues.empty())
            return -1;
        Json::Value jColumns = jValues;
        if (jColumns.isObject())
            jColumns.removeMember("vornSqlWhereFilter");
        else
            throw model::Refused("members of no object");
        const model::Fragment assignments = model::memberList("", m_table.types, jColumns, VORN_SQL_WHERE_TYPE_COMMA);
        if (assignments.result < 0)
            return -1;
        return m_twin.run(model::updateText(m_table.strName, assignments.text, strWhere), nullptr) < 0 ? -1 : 0;
    }

    void remove(const Json::Value& jParam, bool blAllowAll)
    {
        const int expectedStatus = statusOf([&] { return expectedRemove(jParam, blAllowAll); });
        Json::Value jIn = jParam;
        compareRun(expectedStatus, [&] { return m_pStore->recDelete(jIn, blAllowAll); });
        expectValue(jParam, jIn);
    }

    void removeAll()
    {
        const int expectedStatus = expectedRemove(Json::Value(Json::objectValue), true);
        compareRun(expectedStatus, [&] { return m_pStore->recDeleteAll(); });
    }

    int expectedRemove(const Json::Value& jParam, bool blAllowAll)
    {
        if (!jParam.isObject())
            return -1;
        const model::Fragment condition = model::memberList("", m_table.types, jParam, VORN_SQL_WHERE_TYPE_AND);
        if (condition.result < 0 || (condition.text.empty() && !blAllowAll))
            return -1;
        return m_twin.run(model::deleteText(m_table.strName, condition.text), nullptr);
    }

    void removeByArray(std::vector<std::string> texts, const Json::Value& jName)
    {
        const char* const szName = jName.isString() ? jName.asCString() : nullptr;
        const int expectedStatus = expectedRemoveByArray(texts, szName);
        compareRun(expectedStatus, [&] { return m_pStore->recDeleteByArray(texts, szName); });
    }

    void removeByName(std::string strValue, const Json::Value& jName)
    {
        const char* const szName = jName.isString() ? jName.asCString() : nullptr;
        const int expectedStatus = strValue.empty() ? -1 : expectedRemoveByArray({strValue}, szName);
        compareRun(expectedStatus, [&] { return m_pStore->recDeleteByName(strValue, szName); });
    }

    int expectedRemoveByArray(const std::vector<std::string>& texts, const char* szName)
    {
        const auto column = szName != nullptr ? m_table.types.find(szName) : m_table.types.end();
        if (texts.empty() || column == m_table.types.end() || column->second != "string")
            return -1;
        Json::Value jParam;
        for (const std::string& strText : texts)
            jParam[szName].append(strText);
        return expectedRemove(jParam, false);
    }

    // ---- Comparing

    template <typename Call>
    static int statusOf(Call call)
    {
        try
        {
            return call();
        }
        catch (const Json::Exception&)
        {
            return kThrew;
        }
        catch (const model::Refused&)
        {
            return kThrew;
        }
    }

    template <typename Call>
    void compareRun(int expected, Call call)
    {
        m_database.rewind();
        expect(expected, statusOf(call));
        const std::string strSeen = m_database.dump(m_table.strName);
        const std::string strExpected = m_twin.database().dump(m_table.strName);
        FUZZ_CHECK(strSeen == strExpected, "rows\n" + strSeen + "expected\n" + strExpected);
        FUZZ_CHECK(sqlite3_get_autocommit(m_database.handle()) == sqlite3_get_autocommit(m_twin.database().handle()),
                   "another transaction");
    }

    void expect(int expected, int status)
    {
        FUZZ_CHECK(expected == status, "expected " + std::to_string(expected) + ", seen " + std::to_string(status) +
                                           ", error of the model's text: " + m_twin.error());
    }

    void expectValue(const Json::Value& jExpected, const Json::Value& jSeen)
    {
        FUZZ_CHECK(fuzz::identical(jExpected, jSeen),
                   "expected " + fuzz::writeReference(jExpected) + ", seen " + fuzz::writeReference(jSeen));
    }

    // A row that both tables get through the text that the library writes; a record without such a text is left out.
    void insert(Json::Value jRecord)
    {
        if (!jRecord.isObject())
            return;
        const std::string strStart =
            "INSERT INTO " + m_table.strName + " (" + model::columnList(m_table.types, &jRecord) + ") VALUES (";
        const fuzz::ValueList values = fuzz::expectedValueList(strStart, m_table.types, jRecord);
        if (values.outcome != fuzz::Outcome::Written)
            return;
        const std::string strSql =
            values.strText + ";select * from " + m_table.strName + " where rowid == last_insert_rowid();";
        Json::Value jRows(Json::arrayValue);
        const int expectedStatus = m_twin.run(strSql, &jRows) < 0 || jRows.empty() ? -1 : 0;
        compareRun(expectedStatus, [&] { return m_pStore->recSave(jRecord, true); });
    }

    Table& m_table;
    fuzz::Twin m_twin;
    fuzz::Database m_database;
    std::unique_ptr<VornJsonDbApi> m_pStore;
    std::string m_strMessage;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr Json::ArrayIndex kMaxSteps = 12;
    static Table readable = makeTable("readable", true);
    static Table everything = makeTable("everything", false);

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput || fuzz::hasLargeWidth(std::string(reinterpret_cast<const char*>(data), size)))
        return 0;
    Case fuzzCase(fuzz::flagOf(fuzz::part(*jInput, "everything")) ? everything : readable, fuzz::part(*jInput, "rows"));
    const Json::Value& jSteps = fuzz::part(*jInput, "steps");
    for (Json::ArrayIndex i = 0; jSteps.isArray() && i < jSteps.size() && i < kMaxSteps; ++i)
        fuzzCase.run(jSteps[i]);
    return 0;
}

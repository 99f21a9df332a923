// SPDX-License-Identifier: MIT
//
// {"members": [NAME, ...], "steps": [["row", CONTEXT, COLUMNS], ["record", RECORD, COLUMNS], ["field", RECORD, COLUMNS,
// INDEX],
// ["store", {COLUMN: VALUE}], ["query", CONTEXT, SQL], ["throw", SQL]]} with COLUMNS = [[NAME, TEXT], ...]: rows as
// SQLite gives them, or as it never would, become the expected records, or the query fails and what was there before
// stays as it was.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "VornJsonDbApi.h"
#include "check.h"
#include "input.h"
#include "json_value.h"
#include "model_table.h"
#include "safe_database.h"

namespace
{

const model::Columns kTypes = {{"s", "string"},
                               {"i", "int"},
                               {"ui", "unsigned int"},
                               {"ll", "long long"},
                               {"ull", "unsigned long long"},
                               {"v", "Json::Value"},
                               {"o", "Json::objectValue"},
                               {"a", "Json::arrayValue"},
                               {"b", "bool"},
                               {"l", "long"},
                               {"d", "double"},
                               {"t", "time_t"},
                               {"x", "of no kind"}};

// Those of the members named, or of all.
model::Columns typesOf(const std::vector<std::string>& names)
{
    model::Columns types;
    for (const std::string& strName : names)
    {
        const auto type = kTypes.find(strName);
        if (type != kTypes.end())
            types.insert(*type);
    }
    return types.empty() ? kTypes : types;
}

const std::string kTable = "rows";

// The name under which the library keeps the types: another one for each input, so that no input depends on what the
// library has learnt from the rows of those before.
std::string nextName()
{
    static unsigned count = 0;
    return kTable + std::to_string(++count);
}

Json::Value makeDefinition(const std::string& strStore, const model::Columns& types)
{
    Json::Value jTableDef;
    for (const auto& [strName, strType] : types)
        jTableDef[strStore]["member"][strName]["cpptype"] = strType;
    return jTableDef;
}

std::string createStatement(const model::Columns& types)
{
    std::string strColumns;
    for (const auto& [strName, strType] : types)
        strColumns += (strColumns.empty() ? "" : ",") + strName;
    return "CREATE TABLE " + kTable + " (" + strColumns + ")";
}

// A row in the shape that sqlite3_exec() gives to its callback. A name or text that is no string is a null pointer; no
// array at all gives null arrays.
class Row
{
public:
    explicit Row(const Json::Value& jColumns) : m_blGiven(jColumns.isArray())
    {
        // Reserved, so that a row without columns has arrays too.
        m_names.reserve(1);
        m_texts.reserve(1);
        for (Json::ArrayIndex i = 0; m_blGiven && i < jColumns.size(); ++i)
        {
            m_holders.push_back(fuzz::part(jColumns[i], 0U));
            m_holders.push_back(fuzz::part(jColumns[i], 1));
        }
        for (std::size_t i = 0; i < m_holders.size(); ++i)
            (i % 2 == 0 ? m_names : m_texts)
                .push_back(m_holders[i].isString() ? const_cast<char*>(m_holders[i].asCString()) : nullptr);
    }

    int count() const { return static_cast<int>(m_names.size()); }
    char** names() { return m_blGiven ? m_names.data() : nullptr; }
    char** texts() { return m_blGiven ? m_texts.data() : nullptr; }

    std::optional<Json::Value> expected(const model::Columns& types)
    {
        return m_blGiven ? model::rowRecord(types, count(), texts(), names()) : std::nullopt;
    }

private:
    bool m_blGiven;
    std::vector<Json::Value> m_holders;
    std::vector<char*> m_names;
    std::vector<char*> m_texts;
};

void expectValue(const Json::Value& jExpected, const Json::Value& jSeen)
{
    FUZZ_CHECK(support::identical(jExpected, jSeen),
               "expected " + support::writeReference(jExpected) + ", seen " + support::writeReference(jSeen));
}

void expectStatus(int expected, int status)
{
    FUZZ_CHECK(expected == status, "expected " + std::to_string(expected) + ", seen " + std::to_string(status));
}

bool isRecord(const Json::Value& jValue)
{
    return jValue.isObject() || jValue.isNull();
}

bool isRowArray(const Json::Value& jValue)
{
    return jValue.isArray() || jValue.isNull();
}

int throwAtRow(void*, int, char**, char**)
{
    throw 42;
}

int countRow(void* pCount, int, char**, char**)
{
    ++*static_cast<int*>(pCount);
    return 1;
}

class Case
{
public:
    explicit Case(const model::Columns& types)
        : m_types(types),
          m_strName(nextName()),
          m_jTableDef(makeDefinition(m_strName, types)),
          m_twin(m_expectedDb.handle(), m_strName, m_jTableDef),
          m_strCreate(createStatement(types))
    {
        m_expectedDb.rewind();
        m_twin.run(m_strCreate, nullptr);
        m_pStore = std::make_unique<VornJsonDbApi>(m_database.handle(), m_strName, m_jTableDef, m_strCreate);
        // Fills the process's type map, without which no row can be read.
        Json::Value jNothing(Json::objectValue);
        expectStatus(0, m_pStore->checkJsonType(jNothing));
    }

    ~Case()
    {
        // Records outlive the store and the connection.
        m_pStore.reset();
        expectValue(m_jExpected, m_jKept);
        fuzz::giveTypesBack(m_strName);
    }

    Case(const Case&) = delete;
    Case& operator=(const Case&) = delete;

    void run(const Json::Value& jStep)
    {
        const std::string strCall = fuzz::textOf(fuzz::part(jStep, 0U));
        const Json::Value& jFirst = fuzz::part(jStep, 1);
        const Json::Value& jSecond = fuzz::part(jStep, 2);
        if (strCall == "row")
            row(jFirst, Row(jSecond));
        else if (strCall == "record")
            record(jFirst, Row(jSecond));
        else if (strCall == "field")
            field(jFirst, Row(jSecond), fuzz::smallNumberOf(fuzz::part(jStep, 3)));
        else if (strCall == "store")
            store(jFirst);
        else if (strCall == "query")
            query(jFirst, fuzz::textOf(jSecond));
        else if (strCall == "throw")
            throwFrom(fuzz::textOf(jFirst));
    }

private:
    void row(const Json::Value& jContext, Row row)
    {
        Json::Value jArray = jContext;
        const int status = VornJsonDbApi::DbCallBackFillList(&jArray, row.count(), row.texts(), row.names());
        const std::optional<Json::Value> jRecord = row.expected(m_types);
        Json::Value jExpected = jContext;
        if (isRowArray(jContext) && jRecord)
            jExpected.append(*jRecord);
        expectStatus(isRowArray(jContext) && jRecord ? 0 : -1, status);
        expectValue(jExpected, jArray);
        expectStatus(-1, VornJsonDbApi::DbCallBackFillList(nullptr, row.count(), row.texts(), row.names()));
    }

    void record(const Json::Value& jBefore, Row row)
    {
        Json::Value jSeen = jBefore;
        const int status = VornJsonDbApi::DbCallBackFillRec(&jSeen, row.count(), row.texts(), row.names());
        const std::optional<Json::Value> jRecord = row.expected(m_types);
        if (!jRecord || (!isRecord(jBefore) && row.count() > 0))
        {
            expectStatus(-1, status);
            return;
        }
        expectStatus(0, status);
        Json::Value jExpected = jBefore;
        for (auto it = jRecord->begin(); it != jRecord->end(); ++it)
            jExpected[it.name()] = *it;
        expectValue(jExpected, jSeen);
    }

    void field(const Json::Value& jBefore, Row row, int i)
    {
        if (i < 0 || i >= row.count() || row.names()[i] == nullptr)
            return;
        Json::Value jSeen = jBefore;
        const int status = VornJsonDbApi::DbCallBackFillField(jSeen, row.names(), row.texts(), i);
        const std::optional<Json::Value> jRecord = model::rowRecord(m_types, 1, row.texts() + i, row.names() + i);
        expectStatus(jRecord && isRecord(jBefore) ? 0 : -1, status);
        Json::Value jExpected = jBefore;
        if (status == 0 && !jRecord->empty())
            jExpected[row.names()[i]] = *jRecord->begin();
        expectValue(jExpected, jSeen);
    }

    // Puts a row into both tables, past the library: texts are bound as they are, other values as their JSON text.
    void store(const Json::Value& jRow)
    {
        if (!jRow.isObject())
            return;
        for (sqlite3* const pDb : {m_database.handle(), m_expectedDb.handle()})
        {
            for (const auto& [strName, strType] : m_types)
            {
                sqlite3_stmt* pStatement = nullptr;
                const std::string strSql =
                    strName == m_types.begin()->first
                        ? "insert into " + kTable + " (" + strName + ") values (?1)"
                        : "update " + kTable + " set " + strName + " = ?1 where rowid = last_insert_rowid()";
                // Earlier queries may have dropped the table.
                if (sqlite3_prepare_v2(pDb, strSql.c_str(), -1, &pStatement, nullptr) != SQLITE_OK)
                    continue;
                bind(pStatement, fuzz::part(jRow, strName.c_str()));
                sqlite3_step(pStatement);
                sqlite3_finalize(pStatement);
            }
        }
    }

    static void bind(sqlite3_stmt* pStatement, const Json::Value& jValue)
    {
        if (jValue.isNull())
            return;
        if (jValue.isInt64())
        {
            sqlite3_bind_int64(pStatement, 1, jValue.asInt64());
            return;
        }
        if (jValue.isDouble())
        {
            sqlite3_bind_double(pStatement, 1, jValue.asDouble());
            return;
        }
        const std::string strText = jValue.isString() ? jValue.asString() : support::writeReference(jValue);
        sqlite3_bind_text(pStatement, 1, strText.data(), static_cast<int>(strText.size()), SQLITE_TRANSIENT);
    }

    void query(const Json::Value& jContext, const std::string& strSql)
    {
        Json::Value jSeen = jContext;
        m_database.rewind();
        const int status = m_pStore->runSqlEx(strSql, VornJsonDbApi::DbCallBackFillList, &jSeen);
        if (!isRowArray(jContext))
        {
            FUZZ_CHECK(status == 0 || status == -1, "status " + std::to_string(status));
            expectValue(jContext, jSeen);
            // The statement may have gone further than the twin's would: start anew.
            m_blComparing = false;
        }
        if (!m_blComparing)
            return;
        Json::Value jExpected = jContext;
        m_expectedDb.rewind();
        expectStatus(m_twin.run(strSql, &jExpected), status);
        expectValue(jExpected, jSeen);
        m_jExpected.append(jExpected);
        m_jKept.append(jSeen);
        compareTables();
    }

    // An exception of the caller's own callback arrives, and leaves no statement busy.
    void throwFrom(const std::string& strSql)
    {
        m_database.rewind();
        bool blThrew = false;
        try
        {
            const int status = m_pStore->runSqlEx(strSql, throwAtRow, nullptr);
            FUZZ_CHECK(status == 0 || status == -1, "status " + std::to_string(status));
        }
        catch (int thrown)
        {
            FUZZ_CHECK(thrown == 42, std::to_string(thrown));
            blThrew = true;
        }
        FUZZ_CHECK(sqlite3_next_stmt(m_database.handle(), nullptr) == nullptr, "a statement is left");
        if (!m_blComparing)
            return;
        int nRows = 0;
        m_expectedDb.rewind();
        sqlite3_exec(m_expectedDb.handle(), strSql.c_str(), countRow, &nRows, nullptr);
        FUZZ_CHECK(blThrew == (nRows > 0), std::to_string(nRows) + " rows");
        compareTables();
    }

    void compareTables()
    {
        const std::string strSeen = m_database.dump(kTable);
        const std::string strExpected = m_expectedDb.dump(kTable);
        FUZZ_CHECK(strSeen == strExpected, "rows\n" + strSeen + "expected\n" + strExpected);
    }

    model::Columns m_types;
    support::SafeDatabase m_expectedDb;
    support::SafeDatabase m_database;
    std::string m_strName;
    Json::Value m_jTableDef;
    model::Table m_twin;
    std::string m_strCreate;
    std::unique_ptr<VornJsonDbApi> m_pStore;
    bool m_blComparing = true;
    Json::Value m_jExpected;
    Json::Value m_jKept;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr Json::ArrayIndex kMaxSteps = 40;

    const std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        return 0;
    Case fuzzCase(typesOf(fuzz::textsOf(fuzz::part(*jInput, "members"))));
    const Json::Value& jSteps = fuzz::part(*jInput, "steps");
    for (Json::ArrayIndex i = 0; jSteps.isArray() && i < jSteps.size() && i < kMaxSteps; ++i)
        fuzzCase.run(jSteps[i]);
    return 0;
}

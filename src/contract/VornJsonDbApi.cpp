// SPDX-License-Identifier: MIT
//
// The class in sections, each of which uses those before it: running statements, the object and its table, rows,
// checks, SQL text, and the record operations. The name VornJsonDbApi and line numbers of this file stand in every log
// line that it writes.
//
// An operation that adds lines of its own to a failure has its steps in a local function, which is false at the first
// check that fails, and writes the lines where that ends.

#include <VornJsonDbApi.h>

#include <cstring>
#include <exception>

#include "../core/json_members.h"
#include "../core/json_text.h"
#include "../core/text.h"
#include "log.h"
#include "log_texts.h"
#include "sqlite_text.h"
#include "table_types.h"
#include "value_list.h"

using namespace log_texts;
using VORN_JSON_DB::jsonCopyMember;

namespace
{

constexpr const char* kLogFile = "VornJsonDbApi";

constexpr std::string_view kRawFilter = "vornSqlWhereFilter";
constexpr const char* kDuplicateKey = "DUPLICATE_PRIMARY_KEY";

// The table whose object ran the last statement: row callbacks get only the result array from SQLite and find their
// types by this name. It is there for every static object of the host, before and after main().
std::string& currentTable()
{
    static auto& strName = *new std::string;
    return strName;
}

TableTypes& currentTypes()
{
    Json::Value jNoTableDef;
    return typesOf(jNoTableDef, currentTable());
}

bool isDuplicateKey(const std::string& strSqlErr)
{
    return strSqlErr.find("UNIQUE constraint failed") != std::string::npos;
}

}  // namespace

#define VORN_TRACE_SQL_ERROR(strSql)                                                        \
    do                                                                                      \
    {                                                                                       \
        if (!m_strSqlErr.empty())                                                           \
            VORN_TRACE("sql error, err=%s, sql=%s", m_strSqlErr.c_str(), (strSql).c_str()); \
    } while (false)

// Running statements

namespace
{

using RowCallback = int (*)(void*, int, char**, char**);

// The caller's row callback, kept apart from SQLite's frames: nothing that it throws may unwind them.
struct GuardedCallback
{
    RowCallback callback;
    void* pContext;
    bool blStopped = false;
    std::exception_ptr exception = nullptr;

    static int run(void* pThis, int n_column, char** column_value, char** column_name) noexcept
    {
        auto& self = *static_cast<GuardedCallback*>(pThis);
        try
        {
            self.blStopped = self.callback(self.pContext, n_column, column_value, column_name) != 0;
        }
        catch (...)
        {
            self.blStopped = true;
            self.exception = std::current_exception();
        }
        return self.blStopped ? -1 : 0;
    }
};

bool isLocked(const char* szErr)
{
    return szErr != nullptr && std::strstr(szErr, "database is locked") != nullptr;
}

}  // namespace

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is settled
int VornJsonDbApi::runSqlEx(std::string strSql, RowCallback callback, void* pContext)
{
    return execute(strSql, callback, pContext);
}

int VornJsonDbApi::execute(const std::string& strSql, RowCallback callback, void* pContext)
{
    constexpr int kMaxAttempts = 500;
    constexpr useconds_t kPauseMicroseconds = 10000;

    SqliteText szErr;
    int i = 0;
    const auto ran = [&]
    {
        if (VORN_FAILED(0 >= strSql.length()))
            return false;
        m_strSqlErr.clear();
        while (i < kMaxAttempts)
        {
            if (szErr != nullptr)
                m_strSqlErr = szErr;
            GuardedCallback guarded{callback, pContext};
            errno = 0;
            currentTable() = m_strName;
            const int err = sqlite3_exec(m_pDb, strSql.c_str(), callback != nullptr ? GuardedCallback::run : nullptr,
                                         &guarded, szErr.place());
            if (guarded.exception != nullptr)
                std::rethrow_exception(guarded.exception);
            if (err == SQLITE_OK)
                return true;

            // A query that its callback stopped is over, whatever errno holds.
            if (guarded.blStopped || !(isLocked(szErr) || errno == EAGAIN))
                return false;
            VORN_DEBUG("retry, i=%d, errno=%d, run sql failed, error=%s, sql=%s", i, errno,
                       static_cast<const char*>(szErr), strSql.c_str());
            ++i;
            usleep(kPauseMicroseconds);
        }
        return false;
    };
    if (ran())
    {
        m_strSqlErr.clear();
        return callback != nullptr ? 0 : sqlite3_changes(m_pDb);  // never negative in SQLite
    }

    m_strSqlErr = szErr != nullptr ? szErr : "Unknow Error!!";
    VORN_TRACE("i=%d,errno=%d, run sql failed, error=%s, sql=%s", i, errno, m_strSqlErr.c_str(), strSql.c_str());
    VORN_DEBUG("run sql fail, err=%s", static_cast<const char*>(szErr));
    return -1;
}

// The object and its table

#define VORN_TRACE_IF(condition)                   \
    do                                             \
    {                                              \
        if (condition)                             \
            VORN_TRACE("Failed [%s]", #condition); \
    } while (false)

VornJsonDbApi::VornJsonDbApi(sqlite3* pDb, std::string& strName, Json::Value& jTableDef, std::string& strSqlCreate)
    : m_pDb(pDb), m_strName(strName), m_jTableDef(jTableDef), m_strSqlCreate(strSqlCreate)
{
    VORN_TRACE_IF(!pDb);
    VORN_TRACE_IF(strName.empty());
    VORN_TRACE_IF(jTableDef.empty());
    VORN_TRACE_IF(strSqlCreate.empty());
    static_cast<void>(VORN_FAILED(0 > tableCreate()));
}

VornJsonDbApi::~VornJsonDbApi()
{
    m_pDb = nullptr;
}

std::string VornJsonDbApi::getErrMsg()
{
    return m_strErrMsg;
}

void VornJsonDbApi::setErrMsg(std::string strErrMsg)
{
    m_strErrMsg = std::move(strErrMsg);
}

int VornJsonDbApi::tableCreate()
{
    if (0 <= execute(m_strSqlCreate))
        return 0;

    VORN_ERROR("create table failed, sql=%s", m_strSqlCreate.c_str());
    VORN_TRACE_SQL_ERROR(m_strSqlCreate);
    return -1;
}

// Rows to records

namespace
{

bool isEmptyRecord(const Json::Value& jRec)
{
    return jRec.isNull() || (jRec.isObject() && jRec.empty());
}

// Sets the member for one column. The caller has looked up the types, once for all columns of a row.
int fillField(TableTypes& types, std::size_t& expected, Json::Value& jRec, const char* szName, const char* szValue)
{
    if (VORN_FAILED(jRec.type() != Json::objectValue && jRec.type() != Json::nullValue))
        return -1;
    const Member* pMember = types.schema.find(szName, expected);
    if (VORN_FAILED_AS(pMember == nullptr, kNoMemberName))
        return -1;
    if (szValue == nullptr)
        return 0;

    Json::Value jValue;
    if (!types.rows.readColumn(*pMember, szValue, jValue))
    {
        VORN_ERROR("type error, strType=%s", pMember->strTypeName.c_str());
        return -1;
    }
    // A static key: the schema's names are never freed, so records need no copy of them.
    jRec[Json::StaticString(pMember->name.data())] = std::move(jValue);
    return 0;
}

// One row as a record, an empty one where the row has no columns or NULL only.
bool readRow(Json::Value& jTmp, int n_column, char** column_value, char** column_name)
{
    if (VORN_FAILED_AS(0 > VornJsonDbApi::DbCallBackFillRec(&jTmp, n_column, column_value, column_name), kNoRecord))
        return false;
    if (jTmp.isNull())
        jTmp = Json::Value(Json::objectValue);
    return true;
}

// Keeps the first row of a statement; the others are read for their failures and dropped at once.
struct FirstRow
{
    bool blFound = false;
    Json::Value jRec;

    static int fill(void* pThis, int n_column, char** column_value, char** column_name)
    {
        auto& self = *static_cast<FirstRow*>(pThis);
        Json::Value jOther;
        if (!readRow(self.blFound ? jOther : self.jRec, n_column, column_value, column_name))
            return -1;
        self.blFound = true;
        return 0;
    }
};

// Sets the members of jTo as copying those of jFrom over them would. The names of jFrom, which DbCallBackFillRec()
// filled, are static.
void moveMembers(Json::Value& jFrom, Json::Value& jTo)
{
    if (jTo.empty())
        jTo.swapPayload(jFrom);
    else
        for (auto it = jFrom.begin(); it != jFrom.end(); ++it)
            jTo[Json::StaticString(nameOf(it).data())] = std::move(*it);
}

}  // namespace

int VornJsonDbApi::DbCallBackFillList(void* pContext, int n_column, char** column_value, char** column_name)
{
    auto* const pjRecArray = static_cast<Json::Value*>(pContext);
    if (VORN_FAILED(!pjRecArray) ||
        VORN_FAILED(pjRecArray->type() != Json::arrayValue && pjRecArray->type() != Json::nullValue))
        return -1;

    Json::Value jTmp;
    if (!readRow(jTmp, n_column, column_value, column_name))
        return -1;
    pjRecArray->append(std::move(jTmp));
    return 0;
}

int VornJsonDbApi::DbCallBackFillRec(Json::Value* pjRec, int n_column, char** column_value, char** column_name)
{
    if (VORN_FAILED(NULL == column_name || NULL == column_value))
        return -1;

    int i = 0;
    const auto filled = [&]
    {
        TableTypes* pTypes = nullptr;
        std::size_t expected = 0;
        for (; i < n_column; ++i)
        {
            if (VORN_FAILED(NULL == column_name[i]))
                return false;
            if (pTypes == nullptr)
            {
                pTypes = &currentTypes();
                if (isEmptyRecord(*pjRec) && pTypes->rows.readRow(n_column, column_value, column_name, *pjRec))
                    return true;
            }
            if (VORN_FAILED_AS(0 > fillField(*pTypes, expected, *pjRec, column_name[i], column_value[i]), kNoField))
                return false;
        }
        return true;
    };
    if (filled())
        return 0;

    if (i > 0)
    {
        VORN_TRACE("column_name[%d]=%s", i, column_name[i]);
        VORN_TRACE("column_value[%d]=%s", i, column_value[i]);
    }
    return -1;
}

int VornJsonDbApi::DbCallBackFillField(Json::Value& jRec, char** column_name, char** column_value, int i)
{
    std::size_t expected = 0;
    return fillField(currentTypes(), expected, jRec, column_name[i], column_value[i]);
}

// Defaults and type check

namespace
{

bool lacksDefault(const Schema& schema, const Json::Value& jRec)
{
    for (const Member& member : schema.members())
        if (member.blHasDefault && memberNamed(jRec, member.name) == nullptr)
            return true;
    return false;
}

}  // namespace

int VornJsonDbApi::fillDefaultValue(Json::Value& jParam, bool blRequireAll)
{
    for (const Member& member : typesOf(m_jTableDef, m_strName).schema.members())
    {
        if (jParam.isMember(member.name.data(), member.name.data() + member.name.size()))
            continue;
        if (blRequireAll)
        {
            VORN_ERROR("lost data member=%s", member.name.data());
            VORN_DEBUG("jParam=%s", toString(jParam).c_str());
            return -1;
        }
        if (member.blHasDefault)
            jParam[std::string(member.name)] = member.jDefault;
    }
    return 0;
}

int VornJsonDbApi::checkJsonType(Json::Value& jRecParam)
{
    const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
    if (VORN_FAILED(!jRecParam.isObject()))
        return -1;

    std::size_t expected = 0;
    const auto itEnd = jRecParam.end();
    for (auto it = jRecParam.begin(); it != itEnd; ++it)
    {
        const Member* pMember = schema.find(nameOf(it), expected);
        if (pMember == nullptr)
            continue;

        const auto fits = pMember->pType->fits;
        if (fits == nullptr)
        {
            VORN_ERROR("type not found!!, key=%s", pMember->name.data());
            return -1;
        }
        if (!((*it).*fits)())
        {
            VORN_ERROR("type failed, strKey=%s, jRecParam=%s", pMember->name.data(), toString(jRecParam).c_str());
            return -1;
        }
    }
    return 0;
}

// Column and value lists

namespace
{

// What asString() gives, without a copy where the value holds a text already.
const char* textOf(const Json::Value& jValue, std::string& strConverted)
{
    const char* szText = jValue.isString() ? jValue.asCString() : nullptr;
    if (szText != nullptr)
        return szText;
    strConverted = jValue.asString();
    return strConverted.c_str();
}

// Adds one value in the form of its type. False for types that cannot be written.
bool addValue(ValueList& values, Form form, const Json::Value& jValue)
{
    std::string strConverted;
    switch (form)
    {
        case Form::Text:
            values.addQuoted(textOf(jValue, strConverted));
            return true;
        case Form::Int64:
            values.addInteger(jValue.asInt64());
            return true;
        case Form::Unsigned:
            values.addUnsigned(jValue.asUInt64());
            return true;
        case Form::Float:
            values.addFloat(jValue.asFloat());
            return true;
        case Form::Double:
            values.addDouble(jValue.asDouble());
            return true;
        case Form::Json:
            values.addQuoted(toString(jValue).c_str());
            return true;
        default:
            return false;
    }
}

// The members of a definition in order, each with the record's where that is an object and has it.
struct Column
{
    std::string_view name;
    const Json::Value* pjValue;
};

std::vector<Column> columnsOf(const Json::Value& jMembers, const Json::Value& jRec)
{
    const bool blRecord = jRec.isObject();
    std::vector<Column> columns;
    columns.reserve(jMembers.size());
    const auto itEnd = jMembers.end();
    for (auto it = jMembers.begin(); it != itEnd; ++it)
    {
        const std::string_view name = nameOf(it);
        columns.push_back({name, blRecord ? memberNamed(jRec, name) : nullptr});
    }
    return columns;
}

// Raises what looking for a member of that record raises, unless it can have any.
void requireRecord(const Json::Value& jRec)
{
    if (!jRec.isObject())
        static_cast<void>(jRec.isMember(""));
}

// The column list: of the record's members, or of all where there is no record. Without the definition's last member
// this list and that of the values end in "," and the latter stays open: SQLite rejects the statement, which is how
// a caller learns that the member is missing.
void appendNames(const std::vector<Column>& columns, const Json::Value* pjRec, std::string& strOut)
{
    for (const Column& column : columns)
    {
        if (pjRec != nullptr && column.pjValue == nullptr)
        {
            requireRecord(*pjRec);
            continue;
        }
        strOut += column.name;
        if (&column != &columns.back())
            strOut += ',';
    }
}

int appendValues(const std::vector<Column>& columns, const Schema& schema, const Json::Value& jRec, std::string& strOut)
{
    ValueList values(strOut);
    std::size_t expected = 0;
    for (const Column& column : columns)
    {
        const Member* pMember = schema.find(column.name, expected);
        if (VORN_FAILED_AS(pMember == nullptr, kNoMemberKey))
            return -1;
        if (column.pjValue == nullptr)
        {
            requireRecord(jRec);
            continue;
        }
        if (!addValue(values, pMember->pType->saved, *column.pjValue))
        {
            VORN_ERROR("cannot support this type=%s", pMember->strTypeName.c_str());
            return -1;
        }
        values.addSeparator(&column == &columns.back() ? ") " : ",");
    }
    strOut = values.text();
    return 0;
}

}  // namespace

// The lists follow the object's own definition, which need not be the one that the types were made from. A definition
// of another kind throws.
const Json::Value& VornJsonDbApi::definedMembers()
{
    const Json::Value& jMembers = m_jTableDef[m_strName]["member"];
    if (!jMembers.isObject())
        static_cast<void>(jMembers.getMemberNames());
    return jMembers;
}

int VornJsonDbApi::SqlExpandMemberName(std::string& strOut, Json::Value* pjRec)
{
    const Json::Value& jMembers = definedMembers();
    appendNames(columnsOf(jMembers, pjRec != nullptr ? *pjRec : Json::Value::nullSingleton()), pjRec, strOut);
    return 0;
}

int VornJsonDbApi::SqlExpandMemberSymbol(std::string& strOut, Json::Value& jRec)
{
    const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
    return appendValues(columnsOf(definedMembers(), jRec), schema, jRec, strOut);
}

// Conditions and assignments

namespace
{

int makeMatch(const Member& member, const Json::Value& jParam, std::string& strOut)
{
    std::string strConverted;
    SqliteText szSql;
    const Form form = member.pType->matched;
    if (form == Form::Json)
    {
        if (VORN_FAILED_AS(NULL == (szSql = escaped(toString(jParam).c_str())), kNoJsonText))
            return -1;
    }
    else if (form == Form::Bool)
    {
        if (VORN_FAILED_AS(NULL == (szSql = escaped(std::to_string(jParam.asInt()).c_str())), kNoBoolText))
            return -1;
    }
    else if (VORN_FAILED_AS(NULL == (szSql = escaped(textOf(jParam, strConverted))), kNoText))
    {
        return -1;
    }
    // Bare otherwise: a text given for a number becomes part of the statement.
    if (form == Form::Text || form == Form::Json)
        appendAll(strOut, {member.name, "='", szSql.view(), "'"});
    else
        appendAll(strOut, {member.name, "=", szSql.view()});
    return 0;
}

// Appends NAME in (ITEMS ) with count items, nothing without any. itemText(i, strConverted) gives the text of one,
// which may be in strConverted. They stand one directly after another, without a separator: two quoted items read as
// one literal, two bare ones as one number.
template <typename ItemText>
int makeList(const Member& member, std::size_t count, ItemText itemText, std::string& strOut)
{
    if (count == 0)
        return 0;
    const Form form = member.pType->listed;
    std::string strItems;
    for (std::size_t i = 0; i < count; ++i)
    {
        std::string strConverted;
        const SqliteText szSql(escaped(itemText(i, strConverted)));
        if (VORN_FAILED_AS(!szSql, form == Form::Json ? kNoJsonItemText : kNoItemText))
            return -1;
        if (form == Form::Bare)
            strItems += szSql;
        else
            appendAll(strItems, {"'", szSql.view(), "'"});
    }
    appendAll(strOut, {member.name, " in (", strItems, " )"});
    return 0;
}

}  // namespace

int VornJsonDbApi::SqlMakeByMatchField(std::string& strField, Json::Value& jParam, std::string& strOut)
{
    std::size_t expected = 0;
    const Member* pMember = typesOf(m_jTableDef, m_strName).schema.find(strField, expected);
    if (VORN_FAILED_AS(pMember == nullptr, kNoMemberField))
        return -1;
    return makeMatch(*pMember, jParam, strOut);
}

int VornJsonDbApi::SqlMakeByListField(const char* szField, Json::Value& jList, std::string& strOut)
{
    const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
    if (VORN_FAILED(!szField || !szField[0]))
        return -1;
    std::size_t expected = 0;
    const Member* pMember = schema.find(szField, expected);
    if (VORN_FAILED_AS(pMember == nullptr, kNoMemberListField) || VORN_FAILED(jList.type() != Json::arrayValue))
        return -1;

    const Json::Value& jItems = jList;  // gives null for items that were never set
    const auto itemText = [&](std::size_t i, std::string& strConverted)
    {
        const Json::Value& jItem = jItems[static_cast<Json::ArrayIndex>(i)];
        if (pMember->pType->listed != Form::Json)
            return textOf(jItem, strConverted);
        strConverted = toString(jItem);
        return strConverted.c_str();
    };
    return makeList(*pMember, jItems.size(), itemText, strOut);
}

int VornJsonDbApi::SqlExpandMemberList(Json::Value& jRecParam, std::string& strSqlWhereOut, int andType)
{
    const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
    if (VORN_FAILED(jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue))
        return -1;

    static constexpr const char* kJoiners[] = {" or ", " and ", " , "};  // by the joiner kinds
    if (andType < VORN_SQL_WHERE_TYPE_OR || andType > VORN_SQL_WHERE_TYPE_COMMA)
    {
        VORN_ERROR("error andType=%d", andType);
        return -1;
    }
    const bool blGrouped = andType != VORN_SQL_WHERE_TYPE_COMMA;

    bool blWritten = false;
    std::size_t expected = 0;
    const auto itEnd = jRecParam.end();
    for (auto it = jRecParam.begin(); it != itEnd; ++it)
    {
        const std::string_view field = nameOf(it);
        const bool blRaw = field == kRawFilter;
        const Member* pMember = blRaw ? nullptr : schema.find(field, expected);
        if (!blRaw && pMember == nullptr)
            continue;

        if (blWritten)
            strSqlWhereOut += kJoiners[andType];
        else if (blGrouped)
            strSqlWhereOut += " (";
        blWritten = true;

        if (blRaw)
        {
            if (VORN_FAILED_AS(!it->isString(), kRawFilterIsNoString))
                return -1;
            appendAll(strSqlWhereOut, {" ", it->asString(), " "});
        }
        else if (it->isArray())
        {
            if (VORN_FAILED_AS(0 > SqlMakeByListField(std::string(field).c_str(), *it, strSqlWhereOut),
                               kNoListCondition))
                return -1;
        }
        else if (VORN_FAILED_AS(0 > makeMatch(*pMember, *it, strSqlWhereOut), kNoCondition))
        {
            return -1;
        }
    }
    if (!blWritten)
        return 1;
    if (blGrouped)
        strSqlWhereOut += " )";
    return 0;
}

// The ordering is by a quoted text, which SQL reads as a constant, and the numbers are not checked: both are the clause
// that callers have always got.
int VornJsonDbApi::SqlFilterConditionFromJson(Json::Value& jFilter, std::string& strOut)
{
    if (VORN_FAILED(jFilter.type() != Json::objectValue && jFilter.type() != Json::nullValue))
        return -1;

    if (jFilter.isMember("sort_by"))
    {
        const SqliteText szSql(sqlite3_mprintf(" order by '%q'", jFilter["sort_by"].asCString()));
        if (VORN_FAILED(!szSql))
            return -1;
        strOut += szSql;
        if (jFilter.isMember("sort_direction"))
            strOut += jFilter["sort_direction"].asString() == "desc" ? " DESC" : " ASC";
    }
    if (jFilter.isMember("limit"))
    {
        appendAll(strOut, {" LIMIT ", toString(jFilter["limit"])});
        if (jFilter.isMember("offset"))
            appendAll(strOut, {" OFFSET ", toString(jFilter["offset"])});
    }
    return 0;
}

int VornJsonDbApi::VectorParamToJson(std::vector<std::string>& strVector, const char* szKey, Json::Value& jParamOut)
{
    if (VORN_FAILED(jParamOut.type() != Json::objectValue && jParamOut.type() != Json::nullValue) ||
        VORN_FAILED(!szKey || !szKey[0]))
        return -1;

    Json::Value jArray(Json::arrayValue);
    for (const std::string& strItem : strVector)
        jArray.append(strItem);
    jParamOut[szKey] = std::move(jArray);
    return 0;
}

// Saving and creating

int VornJsonDbApi::recSave(Json::Value& jRecInOut, bool blCreate)
{
    return save(jRecInOut, blCreate, jRecInOut);
}

int VornJsonDbApi::save(Json::Value& jRecInOut, bool blCreate, Json::Value& jStored)
{
    const TableTypes& types = typesOf(m_jTableDef, m_strName);
    std::string strSql;
    const auto saved = [&]
    {
        appendAll(strSql, {blCreate ? "INSERT INTO " : "REPLACE INTO ", m_strName, " ("});
        const std::vector<Column> columns = columnsOf(definedMembers(), jRecInOut);
        appendNames(columns, &jRecInOut, strSql);
        strSql += ") VALUES (";
        const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
        if (VORN_FAILED_AS(0 > appendValues(columns, schema, jRecInOut, strSql), kNoValueList))
            return false;
        appendAll(strSql, {";select * from ", m_strName, " where rowid == last_insert_rowid();"});
        FirstRow stored;
        if (VORN_FAILED_AS(0 > execute(strSql, FirstRow::fill, &stored), kNotSavedAndReadBack))
            return false;
        if (VORN_FAILED_AS(!stored.blFound, kNothingReadBack))
            return false;
        jStored = std::move(stored.jRec);
        return true;
    };
    if (saved())
        return 0;

    VORN_TRACE("blCreate=%d, jRecInOut=%s", blCreate ? 1 : 0, toString(jRecInOut).c_str());
    VORN_TRACE("jType=%s", toString(types.jType).c_str());
    VORN_TRACE_SQL_ERROR(strSql);
    return -1;
}

int VornJsonDbApi::recCreate(Json::Value& jRecIn, Json::Value& jRecOut)
{
    Json::Value jFilled;
    Json::Value* pjParam = &jRecIn;  // a copy only when a default has to be filled in
    const auto created = [&]
    {
        if (VORN_FAILED(jRecIn.empty()))
            return false;
        if (!jRecIn.isObject() || lacksDefault(typesOf(m_jTableDef, m_strName).schema, jRecIn))
        {
            jFilled = jRecIn;
            pjParam = &jFilled;
            static_cast<void>(fillDefaultValue(jFilled, false));  // cannot fail; only requiring all members does
        }
        Json::Value& jParam = *pjParam;
        return !VORN_FAILED(0 > checkJsonType(jParam)) && !VORN_FAILED_AS(0 > save(jParam, true, jRecOut), kNotSaved);
    };
    if (created())
        return 0;

    VORN_TRACE("call create rec, rec=%s", toString(*pjParam).c_str());
    if (isDuplicateKey(m_strSqlErr))
        m_strErrMsg = kDuplicateKey;
    return -1;
}

// Listing and fetching

int VornJsonDbApi::recList(Json::Value& jRecParam, Json::Value& jRecArrayOut)
{
    return select(jRecParam, jRecArrayOut, DbCallBackFillList, &jRecArrayOut);
}

// The callback gets the rows.
int VornJsonDbApi::select(Json::Value& jRecParam, const Json::Value& jRecArrayOut,
                          int (*callback)(void*, int, char**, char**), void* pContext)
{
    std::string strSqlRun;
    const auto listed = [&]
    {
        if (VORN_FAILED(jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue) ||
            VORN_FAILED(jRecArrayOut.type() != Json::nullValue && jRecArrayOut.type() != Json::arrayValue))
            return false;
        std::string strSql;
        std::string strSqlLimit;
        if (VORN_FAILED(0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND)) ||
            VORN_FAILED(0 > SqlFilterConditionFromJson(jRecParam, strSqlLimit)))
            return false;
        std::string strSqlPrefix = "SELECT ";
        static_cast<void>(SqlExpandMemberName(strSqlPrefix));  // cannot fail
        strSqlRun.swap(strSqlPrefix);
        appendAll(strSqlRun, {" FROM ", m_strName, strSql.empty() ? " " : "  WHERE ", strSql, strSqlLimit, ";"});
        return !VORN_FAILED_AS(0 > execute(strSqlRun, callback, pContext), kNotListed);
    };
    if (listed())
        return 0;

    VORN_TRACE("jRecParam=%s", toString(jRecParam).c_str());
    VORN_TRACE_SQL_ERROR(strSqlRun);
    return -1;
}

int VornJsonDbApi::recGetOne(Json::Value& jRecParam, Json::Value& jRecOut)
{
    FirstRow first;
    const Json::Value jRecArray;
    if (VORN_FAILED_AS(0 > select(jRecParam, jRecArray, FirstRow::fill, &first), kNoFetchList))
        return -1;
    if (!first.blFound)
        return 0;
    if (jRecOut.isObject())
        moveMembers(first.jRec, jRecOut);
    else if (jRecOut.isNull() && !first.jRec.empty())
        jRecOut = std::move(first.jRec);
    else if (VORN_FAILED_AS(0 > jsonCopyMember(jRecOut, first.jRec, true), kNotCopied))
        return -1;
    return 1;
}

// Updating

int VornJsonDbApi::recUpdateByWhere(Json::Value& jRecIn, std::string& strSqlWhere)
{
    std::string strSql;
    const auto updated = [&]
    {
        if (VORN_FAILED(strSqlWhere.empty()) || VORN_FAILED(jRecIn.empty()))
            return false;
        appendAll(strSql, {"UPDATE ", m_strName, " SET "});

        // A raw condition that comes with the values must not become an assignment.
        Json::Value jWithoutFilter;
        const bool blCopied = !jRecIn.isObject() || jRecIn.isMember(kRawFilter.data());
        if (blCopied)
        {
            jWithoutFilter = jRecIn;
            jWithoutFilter.removeMember(kRawFilter.data());  // throws for what is not an object
        }
        Json::Value& jColumnList = blCopied ? jWithoutFilter : jRecIn;
        std::string strSql2;
        if (VORN_FAILED(0 > SqlExpandMemberList(jColumnList, strSql2, VORN_SQL_WHERE_TYPE_COMMA)))
            return false;
        appendAll(strSql, {strSql2, " WHERE ", strSqlWhere, ";"});
        return !VORN_FAILED_AS(0 > execute(strSql), kNotUpdated);
    };
    if (updated())
        return 0;

    VORN_TRACE("jRecIn=%s", toString(jRecIn).c_str());
    VORN_TRACE_SQL_ERROR(strSql);
    return -1;
}

int VornJsonDbApi::recUpdateByFilter(Json::Value& jFilterIn, Json::Value& jParamIn)
{
    const auto updated = [&]
    {
        std::string strSql;
        return !VORN_FAILED(jFilterIn.empty()) && !VORN_FAILED(jFilterIn.type() != Json::objectValue) &&
               !VORN_FAILED(jParamIn.type() != Json::objectValue) &&
               !VORN_FAILED(0 > SqlExpandMemberList(jFilterIn, strSql, VORN_SQL_WHERE_TYPE_AND)) &&
               !VORN_FAILED(strSql.empty()) && !VORN_FAILED(0 > checkJsonType(jParamIn)) &&
               !VORN_FAILED(0 > recUpdateByWhere(jParamIn, strSql));
    };
    if (updated())
        return 0;

    VORN_TRACE("recUpdateByFilter failed, jParamIn=%s", toString(jParamIn).c_str());
    if (isDuplicateKey(m_strSqlErr))
        m_strErrMsg = kDuplicateKey;
    return -1;
}

// Deleting

// makeCondition(strSql) appends the condition, or is false after it has written why there is none: that is reported
// with what SQLite refused last.
template <typename MakeCondition>
int VornJsonDbApi::removeWhere(MakeCondition makeCondition, bool blAllowAll)
{
    std::string strSqlRun;
    int err = -1;
    const auto removed = [&]
    {
        std::string strSql;
        if (!makeCondition(strSql) || (!blAllowAll && VORN_FAILED(strSql.empty())))
            return false;
        appendAll(strSqlRun, {"DELETE FROM ", m_strName, strSql.empty() ? " " : "  WHERE ", strSql, ";"});
        return !VORN_FAILED_AS(0 > (err = execute(strSqlRun)), kNotRun);
    };
    if (removed())
    {
        VORN_DEBUG("delete rec number=%d", err);
        return err;
    }

    VORN_TRACE_SQL_ERROR(strSqlRun);
    return -1;
}

int VornJsonDbApi::recDelete(Json::Value& jRecParam, bool blAllowAll)
{
    const auto makeCondition = [&](std::string& strSql)
    {
        return !VORN_FAILED(jRecParam.type() != Json::objectValue) &&
               !VORN_FAILED(0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND));
    };
    return removeWhere(makeCondition, blAllowAll);
}

int VornJsonDbApi::recDeleteAll()
{
    Json::Value jEveryRow(Json::objectValue);
    return recDelete(jEveryRow, true);
}

int VornJsonDbApi::recDeleteByArray(std::vector<std::string>& strVector, const char* szKey)
{
    int err = -1;
    const auto removed = [&]
    {
        const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
        if (VORN_FAILED(0 >= strVector.size()) || VORN_FAILED(!szKey || !szKey[0]))
            return false;
        std::size_t expected = 0;
        const Member* pMember = schema.find(szKey, expected);
        if (VORN_FAILED_AS(pMember == nullptr, kNoMemberDeleteKey) ||
            VORN_FAILED_AS(pMember->strTypeName != "string", kNoStringMember))
            return false;
        // What SqlExpandMemberList() writes for an object with the one member szKey, an array of these texts.
        const auto textOfItem = [&](std::size_t i, std::string&) { return strVector[i].c_str(); };
        const auto makeCondition = [&](std::string& strSql)
        {
            strSql += " (";
            const bool blFailed =
                VORN_FAILED_AS(szKey == kRawFilter, kRawFilterIsNoString) ||
                VORN_FAILED_AS(0 > makeList(*pMember, strVector.size(), textOfItem, strSql), kNoListCondition);
            strSql += " )";
            return !VORN_FAILED_AS(blFailed, kNoDeleteCondition);
        };
        return !VORN_FAILED_AS(0 > (err = removeWhere(makeCondition, false)), kNotDeleted);
    };
    if (removed())
        return err;

    std::string strItems;
    for (const std::string& strItem : strVector)
        appendAll(strItems, {&strItem != &strVector.front() ? "," : "", strItem});
    VORN_TRACE("recDeleteByArray failed, name=%s, strVector=%s", szKey, strItems.c_str());
    return -1;
}

int VornJsonDbApi::recDeleteByName(std::string& strValue, const char* szKey)
{
    int err = -1;
    const auto removed = [&]
    {
        const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
        if (VORN_FAILED(strValue.empty()) || VORN_FAILED(!szKey || !szKey[0]))
            return false;
        std::size_t expected = 0;
        if (VORN_FAILED_AS(schema.find(szKey, expected) == nullptr, kNoMemberDeleteKey))
            return false;
        std::vector<std::string> strVector{strValue};
        return !VORN_FAILED(0 > (err = recDeleteByArray(strVector, szKey)));
    };
    if (removed())
        return err;

    VORN_TRACE("recDeleteByName failed, name=%s, strValue=%s", szKey, strValue.c_str());
    return -1;
}

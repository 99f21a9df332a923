// SPDX-License-Identifier: MIT
//
// The class: its table, the executor, rows, checks, SQL text and the record operations, in the order in which a record
// travels. Line numbers of this file and the name VornJsonDbApi stand in every log line that it writes.

#include <VornJsonDbApi.h>

#include <cstring>
#include <exception>

#include "../core/json_members.h"
#include "../core/json_text.h"
#include "../core/text.h"
#include "log.h"
#include "sqlite_text.h"
#include "table_types.h"
#include "value_list.h"

using VORN_JSON_DB::jsonCopyMember;

namespace
{

constexpr const char* kLogFile = "VornJsonDbApi";

constexpr std::string_view kRawFilter = "vornSqlWhereFilter";
constexpr const char* kDuplicateKey = "DUPLICATE_PRIMARY_KEY";

// The table whose object ran the last statement: row callbacks get only the result array from SQLite and find their
// types by this name.
std::string strCurTableName;

TableTypes& currentTypes()
{
    Json::Value jNoTableDef;
    return typesOf(jNoTableDef, strCurTableName);
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

// ---- The object and its table
// ------------------------------------------------------------------------------------------

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
    if (0 <= execute(m_strSqlCreate, nullptr, nullptr))
        return 0;

    VORN_ERROR("create table failed, sql=%s", m_strSqlCreate.c_str());
    VORN_TRACE_SQL_ERROR(m_strSqlCreate);
    return -1;
}

// ---- Running statements
// ------------------------------------------------------------------------------------------------

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
    const auto run = [&]
    {
        if (VORN_FAILED(0 >= strSql.length()))
            return -1;
        m_strSqlErr.clear();
        while (i < kMaxAttempts)
        {
            if (szErr != nullptr)
                m_strSqlErr = szErr;
            GuardedCallback guarded{callback, pContext};
            errno = 0;
            strCurTableName = m_strName;
            const int err = sqlite3_exec(m_pDb, strSql.c_str(), callback != nullptr ? GuardedCallback::run : nullptr,
                                         &guarded, szErr.place());
            if (guarded.exception != nullptr)
                std::rethrow_exception(guarded.exception);
            if (err == SQLITE_OK)
                return callback != nullptr ? 0 : sqlite3_changes(m_pDb);  // never negative in SQLite

            // A query that its callback stopped is over, whatever errno holds.
            if (guarded.blStopped || !(isLocked(szErr) || errno == EAGAIN))
                return -1;
            VORN_DEBUG("retry, i=%d, errno=%d, run sql failed, error=%s, sql=%s", i, errno,
                       static_cast<const char*>(szErr), strSql.c_str());
            ++i;
            usleep(kPauseMicroseconds);
        }
        return -1;
    };

    const int iResult = run();
    if (0 <= iResult)
    {
        m_strSqlErr.clear();
        return iResult;
    }
    m_strSqlErr = szErr != nullptr ? szErr : "Unknow Error!!";
    VORN_TRACE("i=%d,errno=%d, run sql failed, error=%s, sql=%s", i, errno, m_strSqlErr.c_str(), strSql.c_str());
    VORN_DEBUG("run sql fail, err=%s", static_cast<const char*>(szErr));
    return iResult;
}

// ---- Rows to records
// ---------------------------------------------------------------------------------------------------

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
    if (VORN_FAILED_AS(pMember == nullptr, "!jType.isMember(strName)"))
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
    if (VORN_FAILED_AS(0 > VornJsonDbApi::DbCallBackFillRec(&jTmp, n_column, column_value, column_name),
                       "0 > DbCallBackFillRec(&jTmp, n_column, column_value, column_name)"))
        return false;
    if (jTmp.isNull())
        jTmp = Json::Value(Json::objectValue);
    return true;
}

// Keeps the first row of a statement; the others are read for their failures and dropped at once. Against an array of
// all rows this won 1.4 % of a fetch's instructions, which keeps it ahead of SQLiteCpp (./dev bench), and the memory.
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

}  // namespace

int VornJsonDbApi::DbCallBackFillList(void* pjRecArray, int n_column, char** column_value, char** column_name)
{
    if (VORN_FAILED(!pjRecArray))
        return -1;
    auto* pjArray = static_cast<Json::Value*>(pjRecArray);
    if (VORN_FAILED_AS(pjArray->type() != Json::arrayValue && pjArray->type() != Json::nullValue,
                       "pjRecArray->type() != Json::arrayValue && pjRecArray->type() != Json::nullValue"))
        return -1;

    Json::Value jTmp;
    if (!readRow(jTmp, n_column, column_value, column_name))
        return -1;
    pjArray->append(std::move(jTmp));
    return 0;
}

int VornJsonDbApi::DbCallBackFillRec(Json::Value* pjRec, int n_column, char** column_value, char** column_name)
{
    if (VORN_FAILED(NULL == column_name || NULL == column_value))
        return -1;

    TableTypes* pTypes = nullptr;
    std::size_t expected = 0;
    for (int i = 0; i < n_column; ++i)
    {
        bool blFailed = VORN_FAILED(NULL == column_name[i]);
        if (!blFailed)
        {
            if (pTypes == nullptr)
            {
                pTypes = &currentTypes();
                if (isEmptyRecord(*pjRec) && pTypes->rows.readRow(n_column, column_value, column_name, *pjRec))
                    return 0;
            }
            blFailed = VORN_FAILED_AS(0 > fillField(*pTypes, expected, *pjRec, column_name[i], column_value[i]),
                                      "0 > (iTmp = DbCallBackFillField(*pjRec, column_name, column_value, i))");
        }
        if (!blFailed)
            continue;
        if (i > 0)
        {
            VORN_TRACE("column_name[%d]=%s", i, column_name[i]);
            VORN_TRACE("column_value[%d]=%s", i, column_value[i]);
        }
        return -1;
    }
    return 0;
}

int VornJsonDbApi::DbCallBackFillField(Json::Value& jRec, char** column_name, char** column_value, int i)
{
    std::size_t expected = 0;
    return fillField(currentTypes(), expected, jRec, column_name[i], column_value[i]);
}

// ---- Defaults and type check
// -------------------------------------------------------------------------------------------

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

// ---- Column and value lists
// --------------------------------------------------------------------------------------------

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

}  // namespace

// The members of the definition, or null: the lists follow the object's own definition, which need not be the one that
// the types were made from. A definition of another kind throws.
const Json::Value& VornJsonDbApi::definedMembers()
{
    const Json::Value& jMembers = m_jTableDef[m_strName]["member"];
    if (!jMembers.isObject())
        static_cast<void>(jMembers.getMemberNames());
    return jMembers;
}

// Without the definition's last member both lists end in "," and the value list stays open: SQLite rejects the
// statement, which is how a caller learns that the member is missing.
int VornJsonDbApi::SqlExpandMemberName(std::string& strOut, Json::Value* pjRec)
{
    const Json::Value& jMembers = definedMembers();
    RecordCursor record(pjRec != nullptr ? *pjRec : jMembers);
    const auto itEnd = jMembers.end();
    for (auto it = jMembers.begin(); it != itEnd;)
    {
        const std::string_view name = nameOf(it);
        const bool blLast = ++it == itEnd;
        if (pjRec != nullptr && record.find(name) == nullptr)
            continue;
        strOut += name;
        if (!blLast)
            strOut += ',';
    }
    return 0;
}

int VornJsonDbApi::SqlExpandMemberSymbol(std::string& strOut, Json::Value& jRec)
{
    const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
    ValueList values(strOut);
    RecordCursor record(jRec);
    std::size_t expected = 0;
    const Json::Value& jMembers = definedMembers();
    const auto itEnd = jMembers.end();
    for (auto it = jMembers.begin(); it != itEnd;)
    {
        const std::string_view name = nameOf(it);
        const bool blLast = ++it == itEnd;
        const Member* pMember = schema.find(name, expected);
        if (VORN_FAILED_AS(pMember == nullptr, "!jType.isMember(strKey)"))
            return -1;
        const Json::Value* pjValue = record.find(name);
        if (pjValue == nullptr)
            continue;
        if (!addValue(values, pMember->pType->saved, *pjValue))
        {
            VORN_ERROR("cannot support this type=%s", pMember->strTypeName.c_str());
            return -1;
        }
        values.addSeparator(blLast ? ") " : ",");
    }
    strOut = values.text();
    return 0;
}

// ---- Conditions and assignments
// ----------------------------------------------------------------------------------------

namespace
{

int makeMatch(const Member& member, const Json::Value& jParam, std::string& strOut)
{
    std::string strConverted;
    SqliteText szSql;
    const Form form = member.pType->matched;
    if (form == Form::Json)
    {
        if (VORN_FAILED_AS(NULL == (szSql = escaped(toString(jParam).c_str())),
                           R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.toString().c_str())))"))
            return -1;
    }
    else if (form == Form::Bool)
    {
        if (VORN_FAILED(NULL == (szSql = sqlite3_mprintf("%d", jParam.asInt()))))
            return -1;
    }
    else if (VORN_FAILED_AS(NULL == (szSql = escaped(textOf(jParam, strConverted))),
                            R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.asString().c_str())))"))
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

// Appends one item of a list. szCheck is the check that lack of memory fails.
bool addItem(std::string& strItems, const char* szItem, bool blQuoted, const char* szCheck)
{
    const SqliteText szSql(escaped(szItem));
    if (VORN_FAILED_AS(!szSql, szCheck))
        return false;
    if (blQuoted)
        appendAll(strItems, {"'", szSql.view(), "'"});
    else
        strItems += szSql;
    return true;
}

constexpr const char* kTextItemCheck = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].asString().c_str())))";
constexpr const char* kJsonItemCheck = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].toString().c_str())))";

}  // namespace

int VornJsonDbApi::SqlMakeByMatchField(std::string& strField, Json::Value& jParam, std::string& strOut)
{
    std::size_t expected = 0;
    const Member* pMember = typesOf(m_jTableDef, m_strName).schema.find(strField, expected);
    if (VORN_FAILED_AS(pMember == nullptr, "!jType.isMember(strField)"))
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
    if (VORN_FAILED_AS(pMember == nullptr, "!jType.isMember(szField)") || VORN_FAILED(jList.type() != Json::arrayValue))
        return -1;
    if (jList.empty())
        return 0;

    // The items stand one directly after another, without a separator: two quoted items read as one literal, two bare
    // ones as one number.
    const bool blJson = pMember->pType->listed == Form::Json;
    const bool blQuoted = blJson || pMember->pType->listed == Form::Text;
    std::string strItems;
    for (const Json::Value& jItem : jList)
    {
        std::string strConverted;
        if (blJson)
            strConverted = toString(jItem);
        if (!addItem(strItems, blJson ? strConverted.c_str() : textOf(jItem, strConverted), blQuoted,
                     blJson ? kJsonItemCheck : kTextItemCheck))
            return -1;
    }
    appendAll(strOut, {szField, " in (", strItems, " )"});
    return 0;
}

int VornJsonDbApi::SqlExpandMemberList(Json::Value& jRecParam, std::string& strSqlWhereOut, int andType)
{
    return expandMembers(jRecParam, strSqlWhereOut, andType, true);
}

// Without blRawFilter a raw condition is passed over: one that comes with new values must not become an assignment.
int VornJsonDbApi::expandMembers(Json::Value& jRecParam, std::string& strSqlWhereOut, int andType, bool blRawFilter)
{
    const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
    if (VORN_FAILED(jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue))
        return -1;

    const char* szJoiner = nullptr;
    switch (andType)
    {
        case VORN_SQL_WHERE_TYPE_OR:
            szJoiner = " or ";
            break;
        case VORN_SQL_WHERE_TYPE_AND:
            szJoiner = " and ";
            break;
        case VORN_SQL_WHERE_TYPE_COMMA:
            szJoiner = " , ";
            break;
        default:
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
        if (blRaw ? !blRawFilter : pMember == nullptr)
            continue;

        if (blWritten)
            strSqlWhereOut += szJoiner;
        else if (blGrouped)
            strSqlWhereOut += " (";
        blWritten = true;

        if (blRaw)
        {
            if (VORN_FAILED_AS(!it->isString(), "!jRecParam[jmFieldName[i]].isString()"))
                return -1;
            appendAll(strSqlWhereOut, {" ", it->asString(), " "});
        }
        else if (it->isArray())
        {
            if (VORN_FAILED_AS(0 > SqlMakeByListField(std::string(field).c_str(), *it, strSqlWhereOut),
                               "0 > SqlMakeByListField(jmFieldName[i].c_str(), jTmp, strSqlWhereOut)"))
                return -1;
        }
        else if (VORN_FAILED_AS(0 > makeMatch(*pMember, *it, strSqlWhereOut),
                                "0 > SqlMakeByMatchField(jmFieldName[i], jTmp, strSqlWhereOut)"))
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

// ---- Saving and creating
// -----------------------------------------------------------------------------------------------

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
        if (VORN_FAILED(0 > SqlExpandMemberName(strSql, &jRecInOut)))  // cannot fail: the column list always returns 0
            return false;
        strSql += ") VALUES (";
        if (VORN_FAILED(0 > SqlExpandMemberSymbol(strSql, jRecInOut)))
            return false;
        appendAll(strSql, {";select * from ", m_strName, " where rowid == last_insert_rowid();"});
        FirstRow stored;
        // The text starts with a constant and a successful run has emptied the error text: neither check can fail.
        if (VORN_FAILED(strSql.empty()) || VORN_FAILED_AS(0 > execute(strSql, FirstRow::fill, &stored),
                                                          "0 > runSqlEx(strSql, DbCallBackFillList, &jArrayTmp)"))
            return false;
        if (!m_strSqlErr.empty())
        {
            VORN_ERROR("sql error, sql=%s", strSql.c_str());
            return false;
        }
        if (VORN_FAILED_AS(!stored.blFound, "0 == jArrayTmp.size()"))
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

namespace
{

bool lacksDefault(const Schema& schema, const Json::Value& jRec)
{
    if (!jRec.isObject())
        return true;  // filling reports it
    RecordCursor record(jRec);
    for (const Member& member : schema.members())
        if (member.blHasDefault && record.find(member.name) == nullptr)
            return true;
    return false;
}

}  // namespace

int VornJsonDbApi::recCreate(Json::Value& jRecIn, Json::Value& jRecOut)
{
    Json::Value jFilled;
    // The record is copied only when a default has to be filled in: 6 % of a create's instructions (./dev figures).
    Json::Value* pjParam = &jRecIn;
    const auto created = [&]
    {
        if (VORN_FAILED(jRecIn.empty()))
            return false;
        if (lacksDefault(typesOf(m_jTableDef, m_strName).schema, jRecIn))
        {
            jFilled = jRecIn;
            pjParam = &jFilled;
            // Filling cannot fail; only requiring all members does.
            if (VORN_FAILED_AS(0 > fillDefaultValue(jFilled, false), "0 > fillDefaultValue(jParam, false)"))
                return false;
        }
        return !VORN_FAILED_AS(0 > checkJsonType(*pjParam), "0 > checkJsonType(jParam)") &&
               !VORN_FAILED_AS(0 > save(*pjParam, true, jRecOut), "0 > recSave(jParam, true)");
    };
    if (created())
        return 0;

    VORN_TRACE("call create rec, rec=%s", toString(*pjParam).c_str());
    if (isDuplicateKey(m_strSqlErr))
        m_strErrMsg = kDuplicateKey;
    return -1;
}

// ---- Listing and fetching
// ----------------------------------------------------------------------------------------------

int VornJsonDbApi::recList(Json::Value& jRecParam, Json::Value& jRecArrayOut)
{
    const bool blArray = jRecArrayOut.isNull() || jRecArrayOut.isArray();
    return select(jRecParam, blArray, DbCallBackFillList, &jRecArrayOut);
}

// blArray: whether the caller's array is one, or null. The callback gets the rows.
int VornJsonDbApi::select(Json::Value& jRecParam, bool blArray, int (*callback)(void*, int, char**, char**),
                          void* pContext)
{
    std::string strSqlRun;
    const auto list = [&]
    {
        if (VORN_FAILED(jRecParam.type() != Json::objectValue && jRecParam.type() != Json::nullValue) ||
            VORN_FAILED_AS(!blArray,
                           "jRecArrayOut.type() != Json::nullValue && jRecArrayOut.type() != Json::arrayValue"))
            return false;
        std::string strSql;
        std::string strSqlLimit;
        std::string strSqlPrefix = "SELECT ";
        // The column list always returns 0, so its check cannot fail.
        if (VORN_FAILED(0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND)) ||
            VORN_FAILED(0 > SqlFilterConditionFromJson(jRecParam, strSqlLimit)) ||
            VORN_FAILED(0 > SqlExpandMemberName(strSqlPrefix)))
            return false;
        strSqlRun.swap(strSqlPrefix);
        appendAll(strSqlRun, {" FROM ", m_strName, " "});
        if (!strSql.empty())
            appendAll(strSqlRun, {" WHERE ", strSql});
        appendAll(strSqlRun, {strSqlLimit, ";"});
        return !VORN_FAILED_AS(0 > execute(strSqlRun, callback, pContext),
                               "0 > runSqlEx(strSqlRun, DbCallBackFillList, &jRecArrayOut)");
    };
    if (list())
        return 0;

    VORN_TRACE("jRecParam=%s", toString(jRecParam).c_str());
    VORN_TRACE_SQL_ERROR(strSqlRun);
    return -1;
}

int VornJsonDbApi::recGetOne(Json::Value& jRecParam, Json::Value& jRecOut)
{
    FirstRow first;
    if (VORN_FAILED_AS(0 > select(jRecParam, true, FirstRow::fill, &first), "0 > recList(jRecParam, jRecArray)"))
        return -1;
    if (!first.blFound)
        return 0;
    // A null value takes the record over instead of a copy: 18 % of a fetch's instructions (./dev figures).
    if (jRecOut.isNull() && !first.jRec.empty())
        jRecOut.swapPayload(first.jRec);
    else if (VORN_FAILED_AS(0 > jsonCopyMember(jRecOut, first.jRec, true),
                            "0 > jsonCopyMember(jRecOut, jRecArray[0], true)"))
        return -1;
    return 1;
}

// ---- Updating
// ----------------------------------------------------------------------------------------------------------

int VornJsonDbApi::recUpdateByWhere(Json::Value& jRecIn, std::string& strSqlWhere)
{
    std::string strSql;
    const auto update = [&]
    {
        if (VORN_FAILED(strSqlWhere.empty()) || VORN_FAILED(jRecIn.empty()))
            return false;
        appendAll(strSql, {"UPDATE ", m_strName, " SET "});

        if (!jRecIn.isObject())
            static_cast<void>(jRecIn.isMember(kRawFilter.data()));  // throws: only an object has members to assign

        // Written in place: 0.7 % of an update's instructions, which keeps it, inside a transaction too, within a
        // quarter of hand-written code (./dev bench).
        const std::size_t start = strSql.size();
        if (VORN_FAILED_AS(0 > expandMembers(jRecIn, strSql, VORN_SQL_WHERE_TYPE_COMMA, false),
                           "0 > SqlExpandMemberList(jColumnList, strSql2, VORN_SQL_WHERE_TYPE_COMMA)"))
        {
            strSql.resize(start);
            return false;
        }
        appendAll(strSql, {" WHERE ", strSqlWhere, ";"});
        // The text starts with a constant and a successful run has emptied the error text: neither check can fail.
        if (VORN_FAILED(strSql.empty()) ||
            VORN_FAILED_AS(0 > execute(strSql, nullptr, nullptr), "0 > runSqlEx(strSql, NULL, NULL)"))
            return false;
        if (!m_strSqlErr.empty())
        {
            VORN_ERROR("sql error msg=%s, sql=%s", m_strSqlErr.c_str(), strSql.c_str());
            return false;
        }
        return true;
    };
    if (update())
        return 0;

    VORN_TRACE("jRecIn=%s", toString(jRecIn).c_str());
    VORN_TRACE_SQL_ERROR(strSql);
    return -1;
}

int VornJsonDbApi::recUpdateByFilter(Json::Value& jFilterIn, Json::Value& jParamIn)
{
    std::string strSql;
    if (!VORN_FAILED(jFilterIn.empty()) && !VORN_FAILED(jFilterIn.type() != Json::objectValue) &&
        !VORN_FAILED(jParamIn.type() != Json::objectValue) &&
        !VORN_FAILED(0 > SqlExpandMemberList(jFilterIn, strSql, VORN_SQL_WHERE_TYPE_AND)) &&
        !VORN_FAILED(strSql.empty()) && !VORN_FAILED(0 > checkJsonType(jParamIn)) &&
        !VORN_FAILED(0 > recUpdateByWhere(jParamIn, strSql)))
        return 0;

    VORN_TRACE("recUpdateByFilter failed, jParamIn=%s", toString(jParamIn).c_str());
    if (isDuplicateKey(m_strSqlErr))
        m_strErrMsg = kDuplicateKey;
    return -1;
}

// ---- Deleting
// ----------------------------------------------------------------------------------------------------------

namespace
{

// What SqlExpandMemberList() writes for an object that holds the texts as an array under the name of a string member.
int expandTexts(const std::string* pTexts, std::size_t count, const char* szKey, std::string& strSqlWhereOut)
{
    if (VORN_FAILED_AS(szKey == kRawFilter, "!jRecParam[jmFieldName[i]].isString()"))
        return -1;
    std::string strItems;
    for (const std::string* pText = pTexts; pText != pTexts + count; ++pText)
        if (VORN_FAILED_AS(!addItem(strItems, pText->c_str(), true, kTextItemCheck),
                           "0 > SqlMakeByListField(jmFieldName[i].c_str(), jTmp, strSqlWhereOut)"))
            return -1;
    appendAll(strSqlWhereOut, {" (", szKey, " in (", strItems, " ) )"});
    return 0;
}

}  // namespace

int VornJsonDbApi::recDelete(Json::Value& jRecParam, bool blAllowAll)
{
    std::string strSql;
    const bool blFailed = VORN_FAILED(jRecParam.type() != Json::objectValue) ||
                          VORN_FAILED(0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND));
    return removeWhere(blFailed, strSql, blAllowAll);
}

// blFailed: whether no condition could be made, which is reported with what SQLite refused last.
int VornJsonDbApi::removeWhere(bool blFailed, const std::string& strSqlWhere, bool blAllowAll)
{
    std::string strSqlRun;
    int err = -1;
    const auto remove = [&]
    {
        if (blFailed || (!blAllowAll && VORN_FAILED_AS(strSqlWhere.empty(), "strSql.empty()")))
            return false;
        if (strSqlWhere.empty())
            appendAll(strSqlRun, {"DELETE FROM ", m_strName, " ;"});
        else
            appendAll(strSqlRun, {"DELETE FROM ", m_strName, "  WHERE ", strSqlWhere, ";"});
        if (VORN_FAILED_AS(0 > (err = execute(strSqlRun, nullptr, nullptr)), "0 > (err = runSqlEx(strSqlRun))"))
            return false;
        if (!m_strSqlErr.empty())  // cannot be: a successful run has emptied it
        {
            VORN_ERROR("sql error, sql=%s", strSqlRun.c_str());
            return false;
        }
        return true;
    };
    if (remove())
    {
        VORN_DEBUG("delete rec number=%d", err);
        return err;
    }

    VORN_TRACE_SQL_ERROR(strSqlRun);
    return -1;
}

int VornJsonDbApi::recDeleteAll()
{
    Json::Value jEveryRow(Json::objectValue);
    return recDelete(jEveryRow, true);
}

int VornJsonDbApi::recDeleteByArray(std::vector<std::string>& strVector, const char* szKey)
{
    return removeTexts(strVector.data(), strVector.size(), szKey);
}

int VornJsonDbApi::removeTexts(const std::string* pTexts, std::size_t count, const char* szKey)
{
    int err = -1;
    const auto deleted = [&]
    {
        const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
        if (VORN_FAILED_AS(0 >= count, "0 >= strVector.size()") || VORN_FAILED(!szKey || !szKey[0]))
            return false;
        std::size_t expected = 0;
        const Member* pMember = schema.find(szKey, expected);
        if (VORN_FAILED_AS(pMember == nullptr, "!jType.isMember(szKey)") ||
            VORN_FAILED_AS(pMember->strTypeName != "string", R"(jType[szKey]["cpptype"].asString() != "string")"))
            return false;
        std::string strSqlWhere;
        const bool blFailed = VORN_FAILED_AS(0 > expandTexts(pTexts, count, szKey, strSqlWhere),
                                             "0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND)");
        return !VORN_FAILED_AS(0 > (err = removeWhere(blFailed, strSqlWhere, false)), "0 > (err = recDelete(jParam))");
    };
    if (deleted())
        return err;

    std::string strItems;
    for (const std::string* pText = pTexts; pText != pTexts + count; ++pText)
    {
        if (pText != pTexts)
            strItems += ',';
        strItems += *pText;
    }
    VORN_TRACE("recDeleteByArray failed, name=%s, strVector=%s", szKey, strItems.c_str());
    return -1;
}

int VornJsonDbApi::recDeleteByName(std::string& strValue, const char* szKey)
{
    int err = -1;
    const auto deleted = [&]
    {
        const Schema& schema = typesOf(m_jTableDef, m_strName).schema;
        if (VORN_FAILED(strValue.empty()) || VORN_FAILED(!szKey || !szKey[0]))
            return false;
        std::size_t expected = 0;
        return !VORN_FAILED_AS(schema.find(szKey, expected) == nullptr, "!jType.isMember(szKey)") &&
               !VORN_FAILED_AS(0 > (err = removeTexts(&strValue, 1, szKey)),
                               "0 > (err = recDeleteByArray(strVector, szKey))");
    };
    if (deleted())
        return err;

    VORN_TRACE("recDeleteByName failed, name=%s, strValue=%s", szKey, strValue.c_str());
    return -1;
}

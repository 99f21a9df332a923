// SPDX-License-Identifier: MIT
//
// The class itself: what every operation begins and ends with.

#include <vorn/table.h>

#include "cell_value.h"
#include "failure.h"
#include "function_ref.h"
#include "operations.h"
#include "record.h"

namespace vorn
{

namespace
{

constexpr bool kNeedsConnection = true;
constexpr bool kNeedsNone = false;
constexpr int kFailure = -1;

}  // namespace

struct Table::Inside
{
    Store store;
    Status definitionStatus;  // BadDefinition, or Ok
    Status status;            // of the last operation
    std::string strErrMsg;    // what the host has set since
    bool blErrMsg = false;

    // Runs operation(store, status), which gives a negative result where it fails; so does this where it cannot run.
    static long long run(Inside* pInside, bool blNeedsConnection, FunctionRef<long long(Store&, Status&)> operation)
    {
        if (pInside == nullptr)
            return kFailure;
        Status now;
        long long iResult = kFailure;
        if (pInside->definitionStatus.code != Code::Ok)
            now = pInside->definitionStatus;
        else if (blNeedsConnection && pInside->store.pDb == nullptr)
            fail(now, Code::Misuse, "", "There is no connection.");
        else
            iResult = operation(pInside->store, now);
        if (now.code != Code::Ok || pInside->status.code != Code::Ok)
            pInside->status = std::move(now);
        pInside->blErrMsg = false;
        return iResult;
    }
};

namespace
{

int zeroIf(bool blSuccess)
{
    return blSuccess ? 0 : kFailure;
}

const Status& movedFrom()
{
    static const Status status = []
    {
        Status misuse;
        fail(misuse, Code::Misuse, "", "The object has been moved from.");
        return misuse;
    }();
    return status;
}

bool fillDefaults(const Definition& definition, Json::Value& jRec, bool blRequireAll, Status& status)
{
    if (!jRec.isObject())
        return fail(status, Code::BadRequest, "", "A record must be an object.");
    for (const Member& member : definition.members())
    {
        const char* const szName = member.name.data();
        if (jRec.find(szName, szName + member.name.size()) != nullptr)
            continue;
        if (blRequireAll)
            return fail(status, Code::Constraint, member.name, "% is absent.");
        if (member.blHasDefault)
            jRec[szName] = member.jDefault;
    }
    return true;
}

}  // namespace

Table::Table(sqlite3* pDb, const std::string& strName, const Json::Value& jTableDef, const std::string& strSqlCreate)
    : m_pInside(new Inside)
{
    Store& store = m_pInside->store;
    store.pDb = pDb;
    store.strSqlCreate = strSqlCreate;
    Definition::read(strName, jTableDef, store.definition, m_pInside->definitionStatus);
    if (tableCreate() != 0)
        return;
    Waiter waiter(0);
    Status unused;
    store.look(waiter, unused);  // now, because it would be a first read within a transaction of the caller's
}

Table::~Table() = default;
Table::Table(Table&& other) noexcept = default;
Table& Table::operator=(Table&& other) noexcept = default;

const Status& Table::status() const
{
    return m_pInside != nullptr ? m_pInside->status : movedFrom();
}

std::string Table::getErrMsg() const
{
    if (m_pInside != nullptr && m_pInside->blErrMsg)
        return m_pInside->strErrMsg;
    if (status().code == Code::Duplicate)
        return "DUPLICATE_PRIMARY_KEY";
    return status().text;
}

void Table::setErrMsg(const std::string& strErrMsg)
{
    if (m_pInside == nullptr)
        return;
    m_pInside->strErrMsg = strErrMsg;
    m_pInside->blErrMsg = true;
}

int Table::recCreate(const Json::Value& jRecIn, Json::Value& jRecOut)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(createRecord(store, jRecIn, true, &jRecOut, now)); }));
}

int Table::recCreate(const Json::Value& jRecIn)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(createRecord(store, jRecIn, true, nullptr, now)); }));
}

long long Table::recCreateAll(const Json::Value& jRecArrayIn)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long { return createAll(store, jRecArrayIn, now); });
}

int Table::recSave(Json::Value& jRecInOut, bool blCreate)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        {
                                            return zeroIf(blCreate
                                                              ? createRecord(store, jRecInOut, false, &jRecInOut, now)
                                                              : saveRecord(store, jRecInOut, now));
                                        }));
}

int Table::recList(const Json::Value& jRequest, Json::Value& jRecArrayOut)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(listRecords(store, jRequest, jRecArrayOut, now)); }));
}

long long Table::recForEach(const Json::Value& jRequest, const std::function<bool(Json::Value&)>& visit)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long
                       { return visitRecords(store, jRequest, visit, now); });
}

int Table::recGetOne(const Json::Value& jRequest, Json::Value& jRecOut)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return getRecord(store, jRequest, jRecOut, now); }));
}

long long Table::recCount(const Json::Value& jFilter)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long { return countRecords(store, jFilter, now); });
}

long long Table::recUpdateByFilter(const Json::Value& jFilter, const Json::Value& jValues, bool blAllowAll)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long
                       { return updateRecords(store, jFilter, jValues, blAllowAll, now); });
}

long long Table::recDelete(const Json::Value& jFilter, bool blAllowAll)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long
                       { return deleteRecords(store, jFilter, blAllowAll, now); });
}

long long Table::recDeleteAll()
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long
                       { return deleteRecords(store, Json::Value(), true, now); });
}

long long Table::recDeleteByArray(const std::vector<std::string>& values, const char* szKey)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long
                       { return deleteByTexts(store, values, szKey, now); });
}

long long Table::recDeleteByName(const std::string& value, const char* szKey)
{
    return recDeleteByArray(std::vector<std::string>(1, value), szKey);
}

long long Table::runSql(const std::string& strSql, const Json::Value& jParams, Json::Value& jRowsOut)
{
    return Inside::run(m_pInside.get(), kNeedsConnection,
                       [&](Store& store, Status& now) -> long long
                       { return runRawSql(store, strSql, jParams, jRowsOut, now); });
}

int Table::checkJsonType(const Json::Value& jRec)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsNone,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(checkRecord(store.definition, jRec, now)); }));
}

int Table::fillDefaultValue(Json::Value& jRec, bool blRequireAll)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsNone,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(fillDefaults(store.definition, jRec, blRequireAll, now)); }));
}

int Table::tableCreate()
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(createTable(store, now)); }));
}

int Table::tableCheck(Json::Value& jReportOut, bool blCells)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(checkTable(store, jReportOut, blCells, now)); }));
}

int Table::tableUpgrade()
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(upgradeTable(store, now)); }));
}

int Table::explain(const Json::Value& jRequest, Json::Value& jOut)
{
    return static_cast<int>(Inside::run(m_pInside.get(), kNeedsConnection,
                                        [&](Store& store, Status& now) -> long long
                                        { return zeroIf(explainRequest(store, jRequest, jOut, now)); }));
}

void Table::setLockTimeout(int milliseconds)
{
    if (m_pInside != nullptr)
        m_pInside->store.iLockTimeout = milliseconds;
}

void Table::releaseStatements()
{
    if (m_pInside != nullptr)
        m_pInside->store.release();
}

}  // namespace vorn

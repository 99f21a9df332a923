// SPDX-License-Identifier: MIT

#include "device_model.h"

#include <algorithm>

#include "table_fixture.h"

namespace table_tests
{

namespace
{

constexpr std::size_t kMostRecords = 300;
constexpr long kReopenEvery = 1000;

std::string nameOf(int iId)
{
    return "the record's name " + std::to_string(iId);
}

std::string textOf(int iRevision)
{
    return "revision " + std::to_string(iRevision) + std::string(static_cast<std::size_t>(iRevision * 37 % 300), 'x');
}

Json::Value dataOf(int iRevision)
{
    Json::Value jData;
    jData["list"].append(0.5);
    jData["list"].append("it's");
    jData["revision"] = iRevision;
    return jData;
}

Json::Value one(const char* szMember, const Json::Value& jValue)
{
    Json::Value jFilter;
    jFilter[szMember] = jValue;
    return jFilter;
}

std::string addedName(int iVersion)
{
    return "v" + std::to_string(iVersion);
}

}  // namespace

void Device::open(int iVersion)
{
    close();
    Json::Value jMembers = json(R"({"amount": {"cpptype": "long long", "cppDefaultValue": 0},
        "data": {"cpptype": "Json::objectValue"}, "id": {"cpptype": "int", "key": true},
        "name": {"cpptype": "string", "unique": true, "required": true}, "text": {"cpptype": "string"}})");
    for (int i = 1; i <= iVersion; ++i)
    {
        Json::Value& jMember = jMembers[addedName(i)];
        jMember["cpptype"] = "int";
        jMember["cppDefaultValue"] = i;
        jMember["index"] = i % 4 == 0;
    }
    m_pDb = std::make_unique<Database>(m_strPath);
    m_pTable = std::make_unique<vorn::Table>(m_pDb->handle(), "device", definitionOf("device", jMembers));
    m_pTable->setLockTimeout(60000);
}

void Device::close()
{
    m_pTable.reset();
    m_pDb.reset();
}

long DeviceModel::step(Device* pDevice)
{
    const long n = m_nDone + 1;
    m_random = support::Random(m_seed * 1000003 + static_cast<std::uint64_t>(n));
    m_pDevice = pDevice;
    if (n % m_nEmptyEvery == 0)
        empty();
    else if (n % m_nUpgradeEvery == 0)
        upgrade();
    else if (n % kReopenEvery == 0)
        reopen();
    else if (m_records.size() > kMostRecords)
        remove(kMostRecords / 2);
    else if (m_records.size() < 3)
        createSeveral();
    else
    {
        using Operation = void (DeviceModel::*)();
        static constexpr Operation kOperations[] = {
            &DeviceModel::create,   &DeviceModel::createSeveral,  &DeviceModel::save,  &DeviceModel::update,
            &DeviceModel::transfer, &DeviceModel::startAndGiveUp, &DeviceModel::read,  &DeviceModel::visit,
            &DeviceModel::runSql,   &DeviceModel::fail,           &DeviceModel::look,  &DeviceModel::create,
            &DeviceModel::save,     &DeviceModel::transfer,       &DeviceModel::update};
        if (m_random.oneIn(16))
            remove(m_random.below(3) + 1);
        else
            (this->*m_random.of(kOperations))();
    }
    return m_nDone = n;
}

Json::Value DeviceModel::toJson(int iId) const
{
    const Record& record = m_records.at(iId);
    Json::Value jRecord;
    jRecord["amount"] = static_cast<Json::Int64>(record.nAmount);
    jRecord["data"] = dataOf(record.iRevision);
    jRecord["id"] = iId;
    jRecord["name"] = nameOf(iId);
    jRecord["text"] = textOf(record.iRevision);
    for (int i = 1; i <= m_iVersion; ++i)
        jRecord[addedName(i)] = record.added[static_cast<std::size_t>(i - 1)];
    return jRecord;
}

bool DeviceModel::isWhole(const Json::Value& jRecord)
{
    const int iRevision = jRecord["data"]["revision"].asInt();
    return jRecord["data"] == dataOf(iRevision) && jRecord["text"] == textOf(iRevision) &&
           jRecord["name"] == nameOf(jRecord["id"].asInt());
}

std::vector<std::string> DeviceModel::rows() const
{
    std::vector<std::string> rows;
    for (const auto& [iId, record] : m_records)
    {
        rows.push_back(std::to_string(record.nAmount) + '|' + compact(dataOf(record.iRevision)) + '|' +
                       std::to_string(iId) + '|' + nameOf(iId) + '|' + textOf(record.iRevision));
        for (const int iAdded : record.added)
            rows.back() += '|' + std::to_string(iAdded);
    }
    return rows;
}

DeviceModel::Records::iterator DeviceModel::any()
{
    return std::next(m_records.begin(), static_cast<std::ptrdiff_t>(m_random.below(m_records.size())));
}

void DeviceModel::create()
{
    const int iId = m_iNextId++;
    m_records[iId] = {revision(), 0, m_added};
    const bool blSave = m_random.oneIn(3), blReadBack = m_random.oneIn(2);
    if (m_pDevice == nullptr)
        return;
    Json::Value jRecord = toJson(iId), jOut;
    if (!blSave)
        jRecord.removeMember("amount");  // which gets its default
    if (blSave)
        EXPECT_TRUE(done(table(), table().recSave(jOut = jRecord, true)));
    else if (blReadBack)
        EXPECT_TRUE(done(table(), table().recCreate(jRecord, jOut)));
    else
        EXPECT_TRUE(done(table(), table().recCreate(jRecord)));
    if (blSave || blReadBack)
    {
        EXPECT_EQ(toJson(iId), jOut);
    }
}

void DeviceModel::createSeveral()
{
    Json::Value jRecords(Json::arrayValue);
    for (std::size_t i = m_random.below(6); i <= 6; ++i)
    {
        m_records[m_iNextId] = {revision(), 0, m_added};
        jRecords.append(toJson(m_iNextId++));
    }
    if (m_pDevice != nullptr)
    {
        EXPECT_TRUE(done(table(), table().recCreateAll(jRecords), jRecords.size()));
    }
}

void DeviceModel::save()
{
    const bool blNew = m_random.oneIn(3);
    const int iId = blNew ? m_iNextId++ : any()->first;
    if (blNew)
        m_records[iId] = {0, 0, m_added};
    m_records[iId].iRevision = revision();
    if (m_pDevice == nullptr)
        return;
    Json::Value jRecord = toJson(iId);
    if (!blNew)
        for (const char* szKept : {"amount", "name"})
            jRecord.removeMember(szKept);
    EXPECT_TRUE(done(table(), table().recSave(jRecord, false)));
    EXPECT_EQ(toJson(iId), jRecord);
}

void DeviceModel::update()
{
    const auto from = any();
    const auto until = std::next(from, std::min<std::ptrdiff_t>(20, std::distance(from, m_records.end())));
    const int iRevision = revision();
    const bool blAdded = m_iVersion > 0 && m_random.oneIn(2);
    for (auto it = from; it != until; ++it)
        (blAdded ? it->second.added[static_cast<std::size_t>(m_iVersion - 1)] : it->second.iRevision) = iRevision;
    if (m_pDevice == nullptr)
        return;
    Json::Value jFilter, jValues;
    jFilter["id"]["$gte"] = from->first;
    jFilter["id"]["$lte"] = std::prev(until)->first;
    if (blAdded)
    {
        jValues[addedName(m_iVersion)] = iRevision;
    }
    else
    {
        jValues["text"] = textOf(iRevision);
        jValues["data"] = dataOf(iRevision);
    }
    EXPECT_TRUE(done(table(), table().recUpdateByFilter(jFilter, jValues), std::distance(from, until)));
}

void DeviceModel::transfer()
{
    const auto from = any(), to = any();
    if (from == to)
        return;
    const auto nMoved = static_cast<long long>(m_random.below(1000000));
    from->second.nAmount -= nMoved;
    to->second.nAmount += nMoved;
    if (m_pDevice == nullptr)
        return;
    vorn::Transaction transaction(m_pDevice->handle(), 60000);
    for (const auto& it : {from, to})
        EXPECT_TRUE(done(table(),
                         table().recUpdateByFilter(one("name", nameOf(it->first)),
                                                   one("amount", static_cast<Json::Int64>(it->second.nAmount))),
                         1));
    EXPECT_EQ(0, transaction.commit()) << describe(transaction.status());
}

void DeviceModel::startAndGiveUp()
{
    if (m_pDevice == nullptr)
        return;
    const vorn::Transaction transaction(m_pDevice->handle(), 60000);
    EXPECT_TRUE(done(table(), table().recUpdateByFilter(json(R"({"id": {"$gt": 0}})"), json(R"({"text": "lost"})")),
                     static_cast<long long>(m_records.size())));
    EXPECT_TRUE(done(table(), table().recCreate(json(R"({"id": 0, "name": "lost", "amount": 1})"))));
}

void DeviceModel::remove(std::size_t count)
{
    auto it = any();
    std::vector<int> ids;
    long long nSum = 0;
    for (; it != m_records.end() && ids.size() < count; it = m_records.erase(it))
    {
        ids.push_back(it->first);
        nSum += it->second.nAmount;
    }
    // Who is left has what the others had.
    if (!m_records.empty())
        m_records.begin()->second.nAmount += nSum;
    const std::size_t way = m_random.below(4);
    if (m_pDevice == nullptr)
        return;
    std::vector<std::string> texts;
    Json::Value jIds(Json::arrayValue), jRows;
    for (const int iId : ids)
    {
        texts.push_back(std::to_string(iId));
        jIds.append(iId);
    }
    const auto nRemoved = static_cast<long long>(ids.size());
    vorn::Transaction transaction(m_pDevice->handle(), 60000);
    if (way == 0)
        EXPECT_TRUE(done(table(), table().recDeleteByArray(texts, "id"), nRemoved));
    else if (way == 1)
        EXPECT_TRUE(done(table(), table().recDelete(one("id", jIds)), nRemoved));
    else if (way == 2)
        for (const int iId : ids)
            EXPECT_TRUE(done(table(), table().recDeleteByName(nameOf(iId), "name"), 1));
    else
        for (const Json::Value& jId : jIds)
            EXPECT_TRUE(done(table(), table().runSql("DELETE FROM device WHERE id = :id", one("id", jId), jRows), 1));
    if (!m_records.empty())
    {
        EXPECT_TRUE(
            done(table(),
                 table().recUpdateByFilter(one("id", m_records.begin()->first),
                                           one("amount", static_cast<Json::Int64>(m_records.begin()->second.nAmount))),
                 1));
    }
    EXPECT_EQ(0, transaction.commit()) << describe(transaction.status());
}

void DeviceModel::read()
{
    if (m_pDevice == nullptr)
        return;
    const auto known = any();
    Json::Value jOut, jRows;
    EXPECT_TRUE(done(table(), table().recGetOne(one("name", nameOf(known->first)), jOut), 1));
    EXPECT_EQ(toJson(known->first), jOut);
    const auto sameRevision = [&](const auto& other) { return other.second.iRevision == known->second.iRevision; };
    EXPECT_TRUE(done(table(), table().recCount(one("data.revision", known->second.iRevision)),
                     std::count_if(m_records.begin(), m_records.end(), sameRevision)));
    EXPECT_TRUE(done(table(), table().recList(json(R"({"sort_by": "-id", "limit": 10, "offset": 1})"), jRows)));
    auto it = m_records.rbegin();
    for (const Json::Value& jRow : jRows)
        EXPECT_EQ(toJson((++it)->first), jRow);
    EXPECT_EQ(std::min<std::size_t>(10, m_records.size() - 1), jRows.size());
}

void DeviceModel::visit()
{
    const int iRevision = revision();
    const auto from = any();
    const int iFrom = from->first;
    std::vector<int> ids;
    for (auto it = from; it != m_records.end() && ids.size() < 5; ++it)
    {
        ids.push_back(it->first);
        it->second.iRevision = iRevision;
    }
    if (m_pDevice == nullptr)
        return;
    Json::Value jRequest = one("id", one("$gte", iFrom));
    jRequest["sort_by"] = "id";
    std::size_t seen = 0;
    vorn::Transaction transaction(m_pDevice->handle(), 60000);
    const auto renew = [&](Json::Value& jRecord)
    {
        jRecord["text"] = textOf(iRevision);
        jRecord["data"] = dataOf(iRevision);
        EXPECT_EQ(0, table().recSave(jRecord, false));
        EXPECT_EQ(toJson(ids[seen]), jRecord);
        return ++seen < ids.size();
    };
    EXPECT_TRUE(done(table(), table().recForEach(jRequest, renew), static_cast<long long>(ids.size())));
    EXPECT_EQ(0, transaction.commit()) << describe(transaction.status());
}

void DeviceModel::runSql()
{
    const auto known = any();
    known->second.iRevision = revision();
    if (m_pDevice == nullptr)
        return;
    Json::Value jParams, jRows;
    jParams["id"] = known->first;
    jParams["text"] = textOf(known->second.iRevision);
    jParams["data"] = dataOf(known->second.iRevision);
    EXPECT_TRUE(done(table(),
                     table().runSql("UPDATE device SET text = :text, data = :data WHERE id = :id", jParams, jRows), 1));
    EXPECT_TRUE(
        done(table(), table().runSql("SELECT sum(amount) AS s, count(*) AS n FROM device", Json::Value(), jRows), 1));
    EXPECT_EQ(0, jRows[0]["s"].asInt());
    EXPECT_EQ(m_records.size(), jRows[0]["n"].asUInt());
}

void DeviceModel::fail()
{
    if (m_pDevice == nullptr)
        return;
    const Json::Value jTaken = toJson(any()->first);
    Json::Value jOut;
    EXPECT_TRUE(failed(table(), table().recCreate(jTaken, jOut), Code::Duplicate, table().status().member));
    EXPECT_TRUE(failed(table(), table().recCreate(json(R"({"name": 5})")), Code::BadType, "name"));
    EXPECT_TRUE(failed(table(), table().recCreate(json("{}")), Code::Constraint, "name"));
    EXPECT_TRUE(failed(table(), table().recCount(json(R"({"nome": 5})")), Code::UnknownMember, "nome"));
    EXPECT_TRUE(failed(table(), table().recDelete(json("{}")), Code::BadRequest));
    EXPECT_TRUE(failed(table(), table().runSql("SELECT nothing", Json::Value(), jOut), Code::Sqlite));
    Json::Value jRecords(Json::arrayValue);
    jRecords.append(json(R"({"name": "lost"})"));
    jRecords.append(jTaken);
    EXPECT_EQ(-1, table().recCreateAll(jRecords));
    EXPECT_EQ(1, table().status().index);
}

void DeviceModel::look()
{
    if (m_pDevice == nullptr)
        return;
    Json::Value jReport, jPlan, jRecord = toJson(any()->first);
    EXPECT_TRUE(done(table(), table().tableCheck(jReport, m_random.oneIn(4))));
    EXPECT_EQ(static_cast<Json::ArrayIndex>(level() - m_iVersion), jReport["undeclared"].size());
    EXPECT_TRUE(done(table(), table().explain(one("name", "a"), jPlan)));
    EXPECT_TRUE(done(table(), table().checkJsonType(jRecord)));
    EXPECT_TRUE(done(table(), table().fillDefaultValue(jRecord, false)));
    EXPECT_TRUE(done(table(), table().tableCreate()));
    table().releaseStatements();
}

void DeviceModel::reopen()
{
    // Sometimes an older firmware.
    m_iVersion = std::max(0, level() - (m_random.oneIn(4) ? 1 : 0));
    if (m_pDevice == nullptr)
        return;
    m_pDevice->open(m_iVersion);
    Json::Value jRows;
    EXPECT_TRUE(done(table(), table().recList(json(R"({"sort_by": "id"})"), jRows)));
    ASSERT_EQ(m_records.size(), jRows.size());
    auto it = m_records.begin();
    for (const Json::Value& jRow : jRows)
        EXPECT_EQ(toJson((it++)->first), jRow);
}

void DeviceModel::upgrade()
{
    m_added.push_back(level() + 1);
    m_iVersion = level();
    for (auto& [iId, record] : m_records)
        record.added.push_back(m_added.back());
    if (m_pDevice == nullptr)
        return;
    m_pDevice->open(m_iVersion);
    Json::Value jReport;
    EXPECT_TRUE(failed(table(), table().tableCheck(jReport), Code::Missing, addedName(m_iVersion)));
    EXPECT_TRUE(failed(table(), table().recCount(Json::Value()), Code::Missing, addedName(m_iVersion)));
    EXPECT_TRUE(done(table(), table().tableUpgrade()));
    EXPECT_TRUE(done(table(), table().tableUpgrade()));
    EXPECT_TRUE(done(table(), table().recCount(one(addedName(m_iVersion).c_str(), m_iVersion)),
                     static_cast<long long>(m_records.size())));
}

void DeviceModel::empty()
{
    const auto nRecords = static_cast<long long>(m_records.size());
    m_records.clear();
    if (m_pDevice != nullptr)
    {
        EXPECT_TRUE(done(table(), table().recDeleteAll(), nRecords));
    }
}

}  // namespace table_tests

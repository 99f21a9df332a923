// SPDX-License-Identifier: MIT

#include "model_comparison.h"

#include <stdexcept>
#include <utility>

#include "json_value.h"
#include "model_format.h"

namespace model
{

// What a caller can see of one call.
struct Comparison::Outcome
{
    std::string strThrown;  // the kind of exception
    int status = 0;
    std::string strText;
    Json::Value jFirst;
    Json::Value jSecond;

    bool operator==(const Outcome& other) const
    {
        return strThrown == other.strThrown && status == other.status && strText == other.strText &&
               support::identical(jFirst, other.jFirst) && support::identical(jSecond, other.jSecond);
    }

    std::string describe() const
    {
        return (strThrown.empty() ? "status " + std::to_string(status) : strThrown) + ", text <" + strText +
               ">, first " + support::writeReference(jFirst) + ", second " + support::writeReference(jSecond);
    }
};

namespace
{

template <class Call>
void callInto(int& status, std::string& strThrown, Call call)
{
    try
    {
        status = call();
    }
    catch (const Json::Exception&)
    {
        strThrown = "Json::Exception";
    }
    catch (const std::logic_error&)
    {
        strThrown = "std::logic_error";
    }
}

// A builder's text replaces the caller's only when there is one.
int take(const std::optional<std::string>& text, std::string& strOut)
{
    if (text)
        strOut = *text;
    return text ? 0 : -1;
}

int append(const std::optional<std::string>& text, std::string& strOut)
{
    return text ? take(strOut + *text, strOut) : -1;
}

int take(const Fragment& fragment, std::string& strOut)
{
    strOut = fragment.text;
    return fragment.result;
}

int takeTexts(const Step& step, Json::Value& jOut)
{
    if (!(jOut.isObject() || jOut.isNull()) || !step.name || step.name->empty())
        return -1;
    Json::Value& jTexts = jOut[*step.name] = Json::Value(Json::arrayValue);
    for (const std::string& strText : step.texts)
        jTexts.append(strText);
    return 0;
}

bool changesRows(Call call)
{
    return call >= Call::Query && call != Call::List && call != Call::GetOne;
}

}  // namespace

Comparison::Comparison(std::string strTable, Json::Value jDefinition, std::string strCreate)
    : m_table(m_expectedDb.handle(), strTable, jDefinition),
      m_strTable(std::move(strTable)),
      m_jDefinition(std::move(jDefinition)),
      m_strCreate(std::move(strCreate))
{
    m_blKnown = !m_table.columns().empty();
    m_expectedDb.rewind();
    m_table.run(m_strCreate, nullptr);
    m_seenDb.rewind();
    m_pApi = std::make_unique<VornJsonDbApi>(m_seenDb.handle(), m_strTable, m_jDefinition, m_strCreate);
    m_pExpectedStatements = std::make_unique<support::StatementLog>(m_expectedDb);
    m_pSeenStatements = std::make_unique<support::StatementLog>(m_seenDb);
}

int Comparison::expectedStatus(const Step& step, Outcome& out)
{
    const Columns& columns = m_table.columns();
    const std::string strName = step.name.value_or("");
    switch (step.call)
    {
        case Call::ColumnList:
            out.strText += columnList(columns, step.flag ? &out.jFirst : nullptr);
            return 0;
        case Call::ValueList:
            return take(valueList(out.strText, columns, out.jFirst), out.strText);
        case Call::Match:
            return append(matchCondition(columns, strName, out.jFirst), out.strText);
        case Call::ListCondition:
            return step.name ? append(listCondition(columns, strName, out.jFirst), out.strText) : -1;
        case Call::MemberList:
            return take(memberList(out.strText, columns, out.jFirst, step.number), out.strText);
        case Call::SortAndPage:
            return take(sortAndPage(out.strText, out.jFirst), out.strText);
        case Call::Vector:
            return takeTexts(step, out.jFirst);
        case Call::CheckTypes:
            return typesFit(columns, out.jFirst) ? 0 : -1;
        case Call::FillDefaults:
            return m_table.fillDefaults(out.jFirst, step.flag);
        case Call::Query:
            return m_table.run(out.strText, &out.jSecond);
        case Call::Create:
            return m_table.create(out.jFirst, out.jSecond);
        case Call::Save:
            return m_table.save(out.jFirst, step.flag);
        case Call::List:
            return m_table.list(out.jFirst, out.jSecond);
        case Call::GetOne:
            return m_table.getOne(out.jFirst, out.jSecond);
        case Call::UpdateByFilter:
            return m_table.updateByFilter(out.jFirst, out.jSecond);
        case Call::UpdateByWhere:
            return m_table.updateByWhere(out.jFirst, out.strText);
        case Call::Delete:
            return m_table.remove(out.jFirst, step.flag);
        case Call::DeleteAll:
            return m_table.remove(Json::Value(Json::objectValue), true);
        case Call::DeleteByArray:
            return m_table.removeByArray(step.texts, step.name);
        case Call::DeleteByName:
            return out.strText.empty() ? -1 : m_table.removeByArray({out.strText}, step.name);
    }
    throw std::runtime_error("no such call");
}

int Comparison::seenStatus(VornJsonDbApi& api, const Step& step, Outcome& out)
{
    std::string strName = step.name.value_or("");
    const char* const szName = step.name ? strName.c_str() : nullptr;
    std::vector<std::string> texts = step.texts;
    switch (step.call)
    {
        case Call::ColumnList:
            return api.SqlExpandMemberName(out.strText, step.flag ? &out.jFirst : nullptr);
        case Call::ValueList:
            return api.SqlExpandMemberSymbol(out.strText, out.jFirst);
        case Call::Match:
            return api.SqlMakeByMatchField(strName, out.jFirst, out.strText);
        case Call::ListCondition:
            return api.SqlMakeByListField(szName, out.jFirst, out.strText);
        case Call::MemberList:
            return api.SqlExpandMemberList(out.jFirst, out.strText, step.number);
        case Call::SortAndPage:
            return api.SqlFilterConditionFromJson(out.jFirst, out.strText);
        case Call::Vector:
            return api.VectorParamToJson(texts, szName, out.jFirst);
        case Call::CheckTypes:
            return api.checkJsonType(out.jFirst);
        case Call::FillDefaults:
            return api.fillDefaultValue(out.jFirst, step.flag);
        case Call::Query:
            return api.runSqlEx(out.strText, VornJsonDbApi::DbCallBackFillList, &out.jSecond);
        case Call::Create:
            return api.recCreate(out.jFirst, out.jSecond);
        case Call::Save:
            return api.recSave(out.jFirst, step.flag);
        case Call::List:
            return api.recList(out.jFirst, out.jSecond);
        case Call::GetOne:
            return api.recGetOne(out.jFirst, out.jSecond);
        case Call::UpdateByFilter:
            return api.recUpdateByFilter(out.jFirst, out.jSecond);
        case Call::UpdateByWhere:
            return api.recUpdateByWhere(out.jFirst, out.strText);
        case Call::Delete:
            return api.recDelete(out.jFirst, step.flag);
        case Call::DeleteAll:
            return api.recDeleteAll();
        case Call::DeleteByArray:
            return api.recDeleteByArray(texts, szName);
        case Call::DeleteByName:
            return api.recDeleteByName(out.strText, szName);
    }
    throw std::runtime_error("no such call");
}

std::string Comparison::differenceIn(const Step& step)
{
    // What is built of the types alone does not depend on rows.
    bool blKnown = m_blKnown || (!m_table.columns().empty() && step.call < Call::Query);
    const Outcome before{{}, 0, step.text, step.first, step.second};
    Outcome expected = before;
    Outcome seen = before;
    try
    {
        m_expectedDb.rewind();
        if (blKnown)
            callInto(expected.status, expected.strThrown, [&] { return expectedStatus(step, expected); });
    }
    catch (const Undefined&)
    {
        blKnown = false;
        m_blKnown = m_blKnown && step.call < Call::Query;
    }
    const std::string strRows = m_blKnown ? std::string() : m_seenDb.dump(m_strTable);
    m_seenDb.rewind();
    callInto(seen.status, seen.strThrown, [&] { return seenStatus(*m_pApi, step, seen); });
    m_lastKind = !blKnown ? Kind::Unknown : expected.strThrown.empty() ? Kind::Result : Kind::Exception;
    m_lastStatus = expected.status;
    if (!blKnown)
        return differenceInUnknown(step, seen, strRows);

    // After an exception arguments are as they were, but for clauses that are begun.
    if (!expected.strThrown.empty())
    {
        expected = Outcome{expected.strThrown, 0, step.text, step.first, step.second};
        const bool blGrows = step.call == Call::MemberList || step.call == Call::SortAndPage;
        if (blGrows && seen.strText.compare(0, step.text.size(), step.text) == 0)
            seen.strText = step.text;
    }
    std::string strOut;
    if (!(expected == seen))
        strOut += "expected " + expected.describe() + "\nseen " + seen.describe() + "\n";
    if (m_table.message() != m_pApi->getErrMsg())
        strOut += "expected message <" + m_table.message() + ">, seen <" + m_pApi->getErrMsg() + ">\n";
    if (m_blKnown && m_pExpectedStatements->statements() != m_pSeenStatements->statements())
        strOut += "other statements were run\n";
    return strOut + (changesRows(step.call) ? differenceInTables() : "");
}

std::string Comparison::differenceInTables()
{
    const std::string strExpected = m_expectedDb.dump(m_strTable);
    const std::string strSeen = m_seenDb.dump(m_strTable);
    std::string strOut;
    if (strSeen != strExpected)
        strOut += "expected rows\n" + strExpected + "seen\n" + strSeen;
    if (sqlite3_get_autocommit(m_expectedDb.handle()) != sqlite3_get_autocommit(m_seenDb.handle()))
        strOut += "another transaction\n";
    return strOut;
}

std::string Comparison::differenceInUnknown(const Step& step, const Outcome& seen, const std::string& strBefore)
{
    std::string strOut;
    const bool blCounts = step.call == Call::MemberList || step.call == Call::GetOne || step.call >= Call::Delete;
    if (seen.status < -1 || (seen.status > 0 && !blCounts))
        strOut += "status " + std::to_string(seen.status) + "\n";
    if (!seen.strThrown.empty() && step.call >= Call::Query && m_seenDb.dump(m_strTable) != strBefore)
        strOut += "rows changed before an exception\n";
    if (!seen.strThrown.empty() && step.call == Call::ValueList && seen.strText != step.text)
        strOut += "changed by a failure: <" + seen.strText + ">\n";
    const bool blFailed = seen.status < 0 || !seen.strThrown.empty();
    const bool blInOut = step.call == Call::Save || (step.call == Call::FillDefaults && !step.flag);
    if (!support::identical(step.first, seen.jFirst) && (blFailed || !blInOut))
        strOut += "another first argument: " + support::writeReference(seen.jFirst) + "\n";
    if (blFailed && step.call == Call::Create && !support::identical(step.second, seen.jSecond))
        strOut += "another second argument: " + support::writeReference(seen.jSecond) + "\n";
    return strOut;
}

}  // namespace model

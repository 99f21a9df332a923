// SPDX-License-Identifier: MIT

#include "conditions.h"

#include <sqlite3.h>

#include <limits>

#include "../core/json_members.h"
#include "cell_value.h"
#include "condition_parts.h"
#include "condition_tree.h"
#include "equal_filters.h"
#include "failure.h"
#include "join.h"
#include "request_keys.h"
#include "suggestion.h"

namespace vorn
{

namespace
{

constexpr int kMaxLevel = 32;
constexpr std::size_t kMostKept = 100;  // values of a statement that is worth keeping
constexpr std::string_view kRawFilter = "vornSqlWhereFilter";
constexpr std::string_view kRawParams = "vornSqlWhereParams";

// An object with a name that begins with "$" is operators.
bool hasOperators(const Json::Value& jValue)
{
    if (!jValue.isObject())
        return false;
    for (auto it = jValue.begin(); it != jValue.end(); ++it)
        if (nameOf(it).substr(0, 1) == "$")
            return true;
    return false;
}

class Compiler
{
public:
    Compiler(const Definition& definition, sqlite3* pDb, FilterKind kind, std::size_t listMax, Compiled& compiled,
             Status& status)
        : m_definition(definition),
          m_kind(kind),
          m_compiled(compiled),
          m_status(status),
          m_parts{pDb, status, m_tree.text(), m_tree.values(), listMax}
    {
    }

    bool run(const Json::Value& jFilter)
    {
        if (!jFilter.isNull() && !jFilter.isObject())
            return fail(m_status, Code::BadRequest, "", "A filter or request must be an object.");
        if (!readFilter(jFilter, false, 1, ConditionTree::kRoot))
            return false;
        if (!m_tree.isEmpty())
        {
            m_compiled.strSql = " WHERE ";
            m_tree.write(m_compiled.strSql, m_compiled.values);
        }
        m_compiled.blKeep = m_given <= kMostKept;
        ConditionParts parts{m_parts.pDb, m_status, m_compiled.strSql, m_compiled.values, m_parts.listMax};
        return m_kind == FilterKind::Filter || m_keys.write(m_definition, parts, m_kind == FilterKind::One, m_compiled);
    }

private:
    // All entries must hold. Negated: not all of them.
    bool readFilter(const Json::Value& jFilter, bool blNegated, int level,  // NOLINT(misc-no-recursion): kMaxLevel
                    ConditionTree::Node parent)
    {
        const ConditionTree::Node group = m_tree.group(parent, kindOf(!blNegated));
        for (auto it = jFilter.begin(); it != jFilter.end(); ++it)
            if (!readEntry(jFilter, nameOf(it), *it, blNegated, level, group))
                return false;
        return true;
    }

    bool readEntry(const Json::Value& jFilter, std::string_view name,  // NOLINT(misc-no-recursion): kMaxLevel
                   const Json::Value& jValue, bool blNegated, int level, ConditionTree::Node group)
    {
        if (name.substr(0, 1) == "$")
            return readDollar(name, jValue, blNegated, level, group);
        Subject subject;
        subject.pMember = m_definition.find(name);
        if (subject.pMember == nullptr)
        {
            if (name == kRawFilter || name == kRawParams)
                return readRaw(jFilter, name, jValue, blNegated, group);
            if (RequestKeys::keyOf(name) != RequestKeys::None)
                return takeKey(name, jValue, level);
        }
        if (subject.pMember != nullptr)
            subject.name = name;
        else if (!readSubject(m_definition, name, subject, m_status))
            return false;
        return readCondition(subject, jValue, blNegated, level, group);
    }

    bool readDollar(std::string_view name, const Json::Value& jValue,  // NOLINT(misc-no-recursion): kMaxLevel
                    bool blNegated, int level, ConditionTree::Node group)
    {
        if (const LogicName* pLogic = logicOf(name))
            return readLogic(*pLogic, jValue, blNegated, level, group);
        if (RequestKeys::keyOf(name) != RequestKeys::None)
            return takeKey(name, jValue, level);
        if (operatorOf(name) != nullptr)
            return fail(m_status, Code::BadRequest, name, "% belongs to a member: {\"member\": {%: ...}}.");
        std::string strNearest(nearestLogic(name));
        if (strNearest.empty() && *RequestKeys::nearest(name) != '\0')
            strNearest = join({"$", RequestKeys::nearest(name)});
        return fail(m_status, Code::BadRequest, name, "% means nothing in a filter^", didYouMean(strNearest));
    }

    bool takeKey(std::string_view name, const Json::Value& jValue, int level)
    {
        if (m_kind == FilterKind::Filter)
            return fail(m_status, Code::BadRequest, name,
                        "% belongs to requests: recList(), recForEach(), recGetOne() and explain().");
        if (level > 1)
            return fail(m_status, Code::BadRequest, name,
                        "% belongs to the request itself, not to a filter inside it.");
        return m_keys.take(RequestKeys::keyOf(name), name, jValue, m_status);
    }

    bool checkLevel(std::string_view name, int level)
    {
        return level <= kMaxLevel ||
               fail(m_status, Code::BadRequest, name, "Filters nest at most ^ levels deep.", std::to_string(kMaxLevel));
    }

    bool readLogic(const LogicName& logicName, const Json::Value& jValue,  // NOLINT(misc-no-recursion): kMaxLevel
                   bool blNegated, int level, ConditionTree::Node parent)
    {
        const std::string_view name = logicName.name;
        if (!checkLevel(name, level + 1))
            return false;
        if (logicName.logic == Logic::Not)
            return jValue.isObject() ? readFilter(jValue, !blNegated, level + 1, parent)
                                     : fail(m_status, Code::BadRequest, name, "\"$not\" wants a filter, an object.");
        if (!jValue.isArray() || jValue.empty())
            return failLogic(name);
        const bool blEach = blNegated != (logicName.logic == Logic::Nor);
        const bool blAnd = logicName.logic == Logic::And;
        const bool blAll = blAnd != blEach;
        const ConditionTree::Node group = m_tree.group(parent, kindOf(blAll));
        for (Json::ArrayIndex i = 0; i < jValue.size();)
        {
            EqualFilters equal = equalFiltersAt(jValue, i, blAnd);
            if (!equal.jList.empty() && !isKey(equal.name))
            {
                i += equal.jList.size();
                if (!readEqual(std::move(equal), blAll, group))
                    return false;
                continue;
            }
            if (!jValue[i].isObject())
                return failLogic(name);
            if (!readFilter(jValue[i++], blEach, level + 1, group))
                return false;
        }
        return true;
    }

    bool isKey(std::string_view name) const
    {
        return m_definition.find(name) == nullptr &&
               (name == kRawFilter || name == kRawParams || RequestKeys::keyOf(name) != RequestKeys::None);
    }

    bool readEqual(EqualFilters equal, bool blNegated, ConditionTree::Node group)
    {
        Subject subject;
        m_compiled.lists.push_back(std::move(equal.jList));
        return readSubject(m_definition, equal.name, subject, m_status) &&
               write(subject, Operator::In, m_compiled.lists.back(), blNegated, group);
    }

    bool failLogic(std::string_view name)
    {
        return fail(m_status, Code::BadRequest, name, "% wants an array of filters that is not empty.");
    }

    bool readRaw(const Json::Value& jFilter, std::string_view name, const Json::Value& jValue, bool blNegated,
                 ConditionTree::Node group)
    {
        if (name == kRawParams)
            return jFilter.isMember(kRawFilter.data()) ||
                   fail(m_status, Code::BadRequest, name, "There is no \"vornSqlWhereFilter\" for these values.");
        if (!jValue.isString())
            return fail(m_status, Code::BadRequest, name, "An SQL condition must be a text.");
        begin();
        const Json::Value* pParams = jFilter.find(kRawParams.data(), kRawParams.data() + kRawParams.size());
        std::string& strSql = m_parts.strSql;
        const std::size_t values = m_parts.values.size();
        strSql += blNegated ? "(NOT (" : "(";
        std::string strRaw;
        if (!compileRaw(RawKind::Condition, jValue.asString(),
                        pParams != nullptr ? *pParams : Json::Value::nullSingleton(), strRaw, m_parts.values, m_status))
            return false;
        m_given += m_parts.values.size() - values;
        strSql += strRaw;
        strSql += blNegated ? "\n)) IS NOT 0" : "\n)";  // a comment at its end must not reach the parenthesis
        m_tree.end(group, kPathWeight);
        return true;
    }

    bool readCondition(const Subject& subject, const Json::Value& jValue, bool blNegated, int level,
                       ConditionTree::Node group)
    {
        if (hasOperators(jValue))
            return readOperators(subject, jValue, blNegated, level, group);
        return write(subject, jValue.isArray() ? Operator::In : Operator::Eq, jValue, blNegated, group);
    }

    bool readOperators(const Subject& subject, const Json::Value& jValue,  // NOLINT(misc-no-recursion): kMaxLevel
                       bool blNegated, int level, ConditionTree::Node parent)
    {
        const ConditionTree::Node group = m_tree.group(parent, kindOf(!blNegated));
        for (auto it = jValue.begin(); it != jValue.end(); ++it)
        {
            const OperatorName* pOperator = operatorOf(nameOf(it));
            if (pOperator == nullptr)
                return failOperator(nameOf(it));
            if (pOperator->op != Operator::Not)
            {
                if (!write(subject, pOperator->op, *it, blNegated != pOperator->blNegated, group))
                    return false;
                continue;
            }
            if (!checkLevel("$not", level + 1))
                return false;
            if (!it->isObject() || it->empty())
                return fail(m_status, Code::BadRequest, "$not", "\"$not\" wants operators, an object.");
            if (!readOperators(subject, *it, !blNegated, level + 1, group))
                return false;
        }
        return true;
    }

    bool failOperator(std::string_view name)
    {
        if (name.substr(0, 1) != "$")
            return fail(m_status, Code::BadRequest, name,
                        "% is no operator and cannot stand beside operators; an object that is a value needs $eq.");
        if (logicOf(name) != nullptr)
            return fail(m_status, Code::BadRequest, name, "% joins filters and stands beside members, not inside one.");
        return fail(m_status, Code::BadRequest, name, "% is no operator^", didYouMean(nearestOperator(name)));
    }

    bool write(const Subject& subject, Operator op, const Json::Value& jOperand, bool blNegated,
               ConditionTree::Node group)
    {
        begin();
        m_given += op == Operator::In || op == Operator::All ? jOperand.size() : 1;
        const bool blArray = op == Operator::All || op == Operator::Size;
        const bool blWritten = blArray          ? writeArrayCondition(m_parts, subject, op, jOperand, blNegated)
                               : subject.blPath ? writePathCondition(m_parts, subject, op, jOperand, blNegated)
                                                : writeColumnCondition(m_parts, subject, op, jOperand, blNegated);
        m_tree.end(group, blArray || subject.blPath ? kPathWeight : kColumnWeight);
        return blWritten;
    }

    void begin()
    {
        m_compiled.blCondition = true;
        m_tree.begin();
    }

    static ConditionTree::Kind kindOf(bool blAll)
    {
        return blAll ? ConditionTree::Kind::All : ConditionTree::Kind::Any;
    }

    const Definition& m_definition;
    FilterKind m_kind;
    Compiled& m_compiled;
    Status& m_status;
    ConditionTree m_tree;
    ConditionParts m_parts;
    std::size_t m_given = 0;  // how many values the filter gives
    RequestKeys m_keys;
};

// Most filters are one member and its value, and the other way costs a tenth of an update.
const Member* soleEqual(const Definition& definition, const Json::Value& jFilter, const Json::Value*& pValue)
{
    if (!jFilter.isObject() || jFilter.size() != 1)
        return nullptr;
    const auto it = jFilter.begin();
    pValue = &*it;
    switch (pValue->type())
    {
        case Json::nullValue:
        case Json::arrayValue:
        case Json::objectValue:
            return nullptr;
        default:
            return definition.find(nameOf(it));
    }
}

}  // namespace

bool compileEqual(const Member& member, const Json::Value& jValue, Compiled& compiled, Status& status)
{
    if (!toBound(member, jValue, member.name, compiled.values.emplace_back(), status))
        return false;
    compiled.pEqual = &member;
    return compiled.blCondition = true;
}

bool compile(const Definition& definition, sqlite3* pDb, const Json::Value& jFilter, FilterKind kind,
             Compiled& compiled, Status& status)
{
    const Json::Value* pValue = nullptr;
    if (const Member* pMember = soleEqual(definition, jFilter, pValue))
        return compileEqual(*pMember, *pValue, compiled, status);

    const std::size_t iBefore = compiled.values.size();
    // Lists become one parameter each only where there would be too many parameters: an index serves both, but
    // parameters of their own are faster and do not need SQLite's JSON functions.
    const auto iMaxValues = static_cast<std::size_t>(sqlite3_limit(pDb, SQLITE_LIMIT_VARIABLE_NUMBER, -1));
    for (const std::size_t listMax : {std::numeric_limits<std::size_t>::max(), std::size_t{1}})
    {
        std::vector<BoundValue> before = std::move(compiled.values);
        before.resize(iBefore);
        compiled = Compiled();
        compiled.values = std::move(before);
        if (!Compiler(definition, pDb, kind, listMax, compiled, status).run(jFilter))
            return false;
        if (compiled.values.size() <= iMaxValues)
            return true;
    }
    return fail(status, Code::BadRequest, "", "The filter has more values than SQLite's limit of ^ parameters.",
                std::to_string(iMaxValues));
}

}  // namespace vorn

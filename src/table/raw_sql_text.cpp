// SPDX-License-Identifier: MIT
//
// SQL text of the host's own and the values for its parameters.

#include <json/json.h>

#include <algorithm>
#include <cmath>

#include "cell_value.h"
#include "conditions.h"
#include "failure.h"
#include "plain_members.h"

namespace vorn
{

namespace
{

constexpr const char* kFilterKey = "vornSqlWhereFilter";
constexpr const char* kParamsKey = "vornSqlWhereParams";

// What SQLite takes for a part of a name or a number.
bool isNameCharacter(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '$' ||
           static_cast<unsigned char>(c) >= 0x80;
}

// Walks over the text in SQLite's tokens.
class RawText
{
public:
    RawText(RawKind kind, std::string_view sql, const Json::Value& jParams, Status& status)
        : m_kind(kind), m_sql(sql), m_jParams(jParams), m_status(status)
    {
    }

    bool read(std::string& strSqlOut, std::vector<BoundValue>& values)
    {
        m_blText = false;
        if (m_sql.find('\0') != std::string_view::npos)
            return failText("SQL text must not hold a NUL.");
        std::size_t at = 0;
        while (at < m_sql.size())
        {
            const std::size_t begin = at;
            if (!readToken(at, values))
                return false;
            if (m_blReplace)
                strSqlOut += '?';
            else
                strSqlOut.append(m_sql, begin, at - begin);
            m_blReplace = false;
        }
        if (m_kind == RawKind::Condition && m_depth != 0)
            return failText("The parentheses of the condition are not balanced.");
        if (m_kind == RawKind::Condition && !m_blText)
            return failText("The condition is blank.");
        return checkAllUsed();
    }

private:
    bool failText(const char* szText)
    {
        return fail(m_status, Code::BadRequest, m_kind == RawKind::Condition ? kFilterKey : "", szText);
    }

    bool failParams(Code code, const char* szText, std::string_view detail = {})
    {
        return fail(m_status, code, m_kind == RawKind::Condition ? kParamsKey : "", szText, detail);
    }

    // Moves behind the token that begins at that place.
    bool readToken(std::size_t& at, std::vector<BoundValue>& values)
    {
        const char c = m_sql[at];
        const char cNext = at + 1 < m_sql.size() ? m_sql[at + 1] : '\0';
        if (c == ' ' || (c >= '\t' && c <= '\r'))
        {
            ++at;
            return true;
        }
        if (c == '-' && cNext == '-')
        {
            at = std::min(m_sql.find('\n', at), m_sql.size());
            return true;
        }
        if (c == '/' && cNext == '*')
            return skipTo("*/", at + 2, at);
        m_blText = true;
        switch (c)
        {
            case '\'':
            case '"':
            case '`':
                return skipQuoted(c, at);
            case '[':
                return skipTo("]", at + 1, at);
            case '?':
                ++at;
                return cNext >= '0' && cNext <= '9' ? failParameter() : bindNext(values);
            case ':':
                return readName(at, values);
            case '@':
            case '$':
            case '#':
                return failParameter();
            case '(':
            case ')':
                ++at;
                m_depth += c == '(' ? 1 : -1;
                return m_depth >= 0 || m_kind == RawKind::Statement ||
                       failText("The parentheses of the condition are not balanced.");
            case ';':
                ++at;
                return m_kind == RawKind::Statement || failText("The condition must not hold \";\".");
            default:
                break;
        }
        ++at;
        if (isNameCharacter(c))
            skipName(at);
        return true;
    }

    bool failParameter()
    {
        return failText("Parameters are written \"?\" or \":name\", not with a number, \"@\", \"$\" or \"#\".");
    }

    void skipName(std::size_t& at) const
    {
        while (at < m_sql.size() && isNameCharacter(m_sql[at]))
            ++at;
    }

    // A quote inside is written twice, which is the end of one text and the beginning of the next.
    bool skipQuoted(char quote, std::size_t& at) { return skipTo({&quote, 1}, at + 1, at); }

    bool skipTo(std::string_view end, std::size_t from, std::size_t& at)
    {
        const std::size_t found = m_sql.find(end, from);
        if (found == std::string_view::npos)
            return failText("A quote or a comment in the SQL text does not end.");
        at = found + end.size();
        return true;
    }

    bool readName(std::size_t& at, std::vector<BoundValue>& values)
    {
        const std::size_t begin = ++at;
        skipName(at);
        const std::string_view name = m_sql.substr(begin, at - begin);
        const std::string_view next = m_sql.substr(at, 2);
        if (name.empty() || next.substr(0, 1) == "(" || next == "::")
            return failText("A parameter's name is made of letters, digits and \"_\".");
        const Json::Value* pValue =
            m_jParams.isObject() ? m_jParams.find(name.data(), name.data() + name.size()) : nullptr;
        if (pValue == nullptr)
            return failParams(Code::BadRequest, "There is no value for the parameter \":^\".", name);
        m_blReplace = m_kind == RawKind::Condition;
        const bool blNew = std::find(m_used.begin(), m_used.end(), name) == m_used.end();
        if (blNew)
            m_used.push_back(name);
        // In a statement, which keeps its names, SQLite gives each one number.
        return (!blNew && m_kind == RawKind::Statement) || bind(*pValue, values);
    }

    bool bindNext(std::vector<BoundValue>& values)
    {
        if (!m_jParams.isArray() || m_next >= m_jParams.size())
            return failParams(Code::BadRequest, "There are fewer values than parameters \"?\".");
        return bind(m_jParams[m_next++], values);
    }

    bool bind(const Json::Value& jValue, std::vector<BoundValue>& values)
    {
        values.emplace_back();
        BoundValue& value = values.back();
        const char* szKey = m_kind == RawKind::Condition ? kParamsKey : "";
        switch (jValue.type())
        {
            case Json::stringValue:
                value = BoundValue::borrowed(textOf(jValue));
                return true;
            case Json::booleanValue:
                value = BoundValue::integer(jValue.asBool() ? 1 : 0);
                return true;
            case Json::realValue:
                value = BoundValue::real(jValue.asDouble());
                return std::isfinite(jValue.asDouble()) ||
                       failParams(Code::OutOfRange, "A parameter must be a finite number.");
            case Json::intValue:
            case Json::uintValue:
                return toBound(wholeNumberMember(), jValue, szKey, value, m_status);
            default:
                return toBound(anyJsonMember(), jValue, szKey, value, m_status);
        }
    }

    bool checkAllUsed()
    {
        if (m_jParams.isNull())
            return true;
        if (!m_jParams.isArray() && !m_jParams.isObject())
            return failParams(Code::BadRequest, "Parameters are an array for \"?\" or an object for \":name\".");
        const std::size_t used = m_jParams.isArray() ? m_next : m_used.size();
        return used == m_jParams.size() || failParams(Code::BadRequest, "There are more values than parameters.");
    }

    RawKind m_kind;
    std::string_view m_sql;
    const Json::Value& m_jParams;
    Status& m_status;
    std::vector<std::string_view> m_used;  // names
    Json::ArrayIndex m_next = 0;
    int m_depth = 0;
    bool m_blText = false;
    bool m_blReplace = false;
};

}  // namespace

bool compileRaw(RawKind kind, const std::string& strSql, const Json::Value& jParams, std::string& strSqlOut,
                std::vector<BoundValue>& values, Status& status)
{
    return RawText(kind, strSql, jParams, status).read(strSqlOut, values);
}

}  // namespace vorn

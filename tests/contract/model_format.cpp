// SPDX-License-Identifier: MIT

#include "model_format.h"

#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "database.h"
#include "json_value.h"

namespace model
{

namespace
{

// A value as the list passes it to the formatter.
struct Operand
{
    enum class Kind
    {
        Integer,
        Real,
        Text
    };

    const char* szConversion;
    Kind kind;
    sqlite3_int64 iValue = 0;
    double dValue = 0.0;
    std::string strValue = {};
};

Operand integer(const char* szConversion, sqlite3_int64 iValue)
{
    return {szConversion, Operand::Kind::Integer, iValue};
}

Operand real(const char* szConversion, double dValue)
{
    return {szConversion, Operand::Kind::Real, 0, dValue};
}

Operand text(std::string strValue)
{
    return {"%Q", Operand::Kind::Text, 0, 0.0, std::move(strValue)};
}

// Nothing for types that cannot be written. The accessors throw for values of the wrong kind.
std::optional<Operand> operandOf(const std::string& strType, const Json::Value& jValue)
{
    if (strType == "string")
        return text(jValue.asString());
    if (strType == "Json::objectValue" || strType == "Json::arrayValue")
        return text(support::writeReference(jValue));
    if (strType == "long long" || strType == "int" || strType == "long" || strType == "bool")
        return integer("%lld", jValue.asInt64());
    if (strType == "unsigned long long" || strType == "unsigned int" || strType == "unsigned long" ||
        strType == "unsigned")
        return integer("%llu", static_cast<sqlite3_int64>(jValue.asUInt64()));
    if (strType == "float")
        return real("%f", static_cast<double>(jValue.asFloat()));
    if (strType == "double")
        return real("%lf", jValue.asDouble());
    return std::nullopt;
}

// One use of an argument by a format.
struct Use
{
    Operand::Kind kind;
    bool blWide;   // takes 64 bits where it is an integer
    bool blPlain;  // the plain call takes an argument of this kind and does nothing else with it
    bool blSql;    // the SQL function means the same by it
};

class Format
{
public:
    explicit Format(const char* sz)
    {
        while ((sz = std::strchr(sz, '%')) != nullptr && *++sz != '\0' && readConversion(sz))
        {
        }
    }

    const std::vector<Use>& uses() const { return m_uses; }

private:
    static const char* skip(const char* sz, const char* szCharacters) { return sz + std::strspn(sz, szCharacters); }

    const char* skipNumber(const char* sz)
    {
        if (*sz != '*')
            return skip(sz, "0123456789");
        m_uses.push_back({Operand::Kind::Integer, false, true, true});
        return sz + 1;
    }

    // Moves behind the conversion; false where it ends the output.
    bool readConversion(const char*& sz)
    {
        sz = skipNumber(skip(sz, "-+ #!0,"));
        if (*sz == '.')
            sz = skipNumber(sz + 1);
        int nLongs = 0;
        for (; *sz == 'l' && nLongs < 2; ++sz)
            ++nLongs;
        const char type = *sz;
        if (type == '\0')
            return false;
        ++sz;
        if (type == '%')
            return true;
        if (std::strchr("diuxXor", type) != nullptr)
            m_uses.push_back({Operand::Kind::Integer, nLongs == 2, true, true});
        else if (std::strchr("cp", type) != nullptr)
            m_uses.push_back({Operand::Kind::Integer, false, false, false});
        else if (type == 'n')
            m_blStores = true;
        else if (std::strchr("feEgG", type) != nullptr)
            m_uses.push_back({Operand::Kind::Real, true, true, true});
        else if (std::strchr("sqQw", type) != nullptr)
            m_uses.push_back({Operand::Kind::Text, true, true, true});
        else if (type == 'z')
            m_uses.push_back({Operand::Kind::Text, true, false, true});
        else
            return false;
        return true;
    }

    std::vector<Use> m_uses;
    bool m_blStores = false;

public:
    // Whether sqlite3_mprintf() with this one argument touches no other.
    bool isDefinedFor(const Operand& operand) const
    {
        if (m_blStores || m_uses.size() > 1)
            return false;
        return m_uses.empty() || (m_uses[0].blPlain && m_uses[0].blWide && m_uses[0].kind == operand.kind);
    }

    // Whether format() with this argument, and no other, means what the list means: its integers all have 64 bits.
    bool isSqlFor(const Operand& operand) const
    {
        constexpr sqlite3_int64 kMaxInt = std::numeric_limits<int>::max();
        for (const Use& use : m_uses)
            if (!use.blSql)
                return false;
        const bool blCut = !m_uses.empty() && m_uses[0].kind == Operand::Kind::Integer && !m_uses[0].blWide &&
                           operand.kind == Operand::Kind::Integer && (operand.iValue < 0 || operand.iValue > kMaxInt);
        return !blCut;
    }

    bool takes(const Operand& operand) const { return !m_uses.empty() && m_uses[0].kind == operand.kind; }
};

std::string taken(char* szText)
{
    const std::unique_ptr<char, decltype(&sqlite3_free)> released(szText, sqlite3_free);
    if (szText == nullptr)
        throw std::logic_error("no text");
    return szText;
}

std::string plainCall(const char* szFormat, const Operand& operand)
{
    switch (operand.kind)
    {
        case Operand::Kind::Integer:
            return taken(sqlite3_mprintf(szFormat, operand.iValue));
        case Operand::Kind::Real:
            return taken(sqlite3_mprintf(szFormat, operand.dValue));
        case Operand::Kind::Text:
            return taken(sqlite3_mprintf(szFormat, operand.strValue.c_str()));
    }
    throw Undefined("no kind");
}

// One statement, kept for the whole run.
sqlite3_stmt* formatStatement()
{
    static sqlite3_stmt* const pStatement = []
    {
        static const support::Database* const pDatabase = new support::Database;
        sqlite3_stmt* pPrepared = nullptr;
        sqlite3_prepare_v2(pDatabase->handle(), "select printf(?1, ?2)", -1, &pPrepared, nullptr);
        return pPrepared;
    }();
    return pStatement;
}

std::string sqlCall(const char* szFormat, const Operand& operand, bool blTakes)
{
    sqlite3_stmt* const pStatement = formatStatement();
    sqlite3_reset(pStatement);
    sqlite3_clear_bindings(pStatement);
    sqlite3_bind_text(pStatement, 1, szFormat, -1, SQLITE_TRANSIENT);
    if (blTakes && operand.kind == Operand::Kind::Integer)
        sqlite3_bind_int64(pStatement, 2, operand.iValue);
    else if (blTakes && operand.kind == Operand::Kind::Real)
        sqlite3_bind_double(pStatement, 2, operand.dValue);
    else if (blTakes)
        sqlite3_bind_text(pStatement, 2, operand.strValue.c_str(), -1, SQLITE_TRANSIENT);
    if (sqlite3_step(pStatement) != SQLITE_ROW || sqlite3_column_text(pStatement, 0) == nullptr)
        throw Undefined("the SQL function gives no text");
    return reinterpret_cast<const char*>(sqlite3_column_text(pStatement, 0));
}

}  // namespace

std::optional<std::string> formatted(const std::string& strSoFar, const std::string& strType, const Json::Value& jValue)
{
    const std::optional<Operand> operand = operandOf(strType, jValue);
    if (!operand)
        return std::nullopt;
    const std::string strFormat = strSoFar + operand->szConversion;
    const Format format(strFormat.c_str());
    if (format.isDefinedFor(*operand))
        return plainCall(strFormat.c_str(), *operand);
    if (format.isSqlFor(*operand))
        return sqlCall(strFormat.c_str(), *operand, format.takes(*operand));
    throw Undefined("a conversion that reaches for another value");
}

}  // namespace model

// SPDX-License-Identifier: MIT

#include "json_reader.h"

#include <charconv>
#include <cstring>
#include <string>

namespace
{

constexpr int kMaxDepth = 32;

class Reader
{
public:
    explicit Reader(const char* szText) : m_sz(szText) {}

    bool readAll(Json::Value& jValue)
    {
        if (!readValue(jValue, kMaxDepth))
            return false;
        skipSpace();
        return *m_sz == '\0';
    }

private:
    void skipSpace()
    {
        while (*m_sz == ' ' || *m_sz == '\t' || *m_sz == '\n' || *m_sz == '\r')
            ++m_sz;
    }

    bool take(char c)
    {
        skipSpace();
        if (*m_sz != c)
            return false;
        ++m_sz;
        return true;
    }

    bool takeWord(const char* szWord, std::size_t length)
    {
        if (std::strncmp(m_sz, szWord, length) != 0)
            return false;
        m_sz += length;
        return true;
    }

    bool readValue(Json::Value& jValue, int depth)
    {
        skipSpace();
        switch (*m_sz)
        {
            case '{':
                return depth > 0 && readObject(jValue, depth - 1);
            case '[':
                return depth > 0 && readArray(jValue, depth - 1);
            case '"':
                if (!readString())
                    return false;
                jValue = Json::Value(m_szBegin, m_szEnd);
                return true;
            case 't':
                jValue = true;
                return takeWord("true", 4);
            case 'f':
                jValue = false;
                return takeWord("false", 5);
            case 'n':
                jValue = Json::Value();
                return takeWord("null", 4);
            default:
                return readNumber(jValue);
        }
    }

    bool readObject(Json::Value& jValue, int depth)
    {
        ++m_sz;
        jValue = Json::Value(Json::objectValue);
        if (take('}'))
            return true;
        do
        {
            skipSpace();
            if (*m_sz != '"' || !readString())
                return false;
            Json::Value* pjMember = jValue.demand(m_szBegin, m_szEnd);
            if (!take(':') || !readValue(*pjMember, depth))
                return false;
        } while (take(','));
        return take('}');
    }

    bool readArray(Json::Value& jValue, int depth)
    {
        ++m_sz;
        jValue = Json::Value(Json::arrayValue);
        if (take(']'))
            return true;
        do
        {
            if (!readValue(jValue.append(Json::Value()), depth))
                return false;
        } while (take(','));
        return take(']');
    }

    // Reads the string at '"'; its characters are then from m_szBegin to m_szEnd, until the next string is read.
    bool readString()
    {
        m_szBegin = ++m_sz;
        m_sz += std::strcspn(m_sz, "\"\\");
        if (*m_sz == '"')
        {
            m_szEnd = m_sz++;
            return true;
        }
        m_strUnescaped.assign(m_szBegin, m_sz);
        while (*m_sz == '\\')
        {
            static constexpr char kEscapes[] = "\"\\/bfnrt";
            static constexpr char kCharacters[] = "\"\\/\b\f\n\r\t";
            const char* szEscape = m_sz[1] != '\0' ? std::strchr(kEscapes, m_sz[1]) : nullptr;
            if (szEscape == nullptr)
                return false;
            m_strUnescaped += kCharacters[szEscape - kEscapes];
            m_sz += 2;
            const std::size_t length = std::strcspn(m_sz, "\"\\");
            m_strUnescaped.append(m_sz, length);
            m_sz += length;
        }
        if (*m_sz != '"')
            return false;
        ++m_sz;
        m_szBegin = m_strUnescaped.data();
        m_szEnd = m_szBegin + m_strUnescaped.size();
        return true;
    }

    bool readNumber(Json::Value& jValue)
    {
        constexpr std::ptrdiff_t kMaxDigits = 18;

        const char* szStart = m_sz;
        const bool blNegative = *m_sz == '-';
        if (blNegative)
            ++m_sz;
        const char* szDigits = m_sz;
        Json::Int64 iValue = 0;
        while (isDigit(*m_sz) && m_sz - szDigits < kMaxDigits)
            iValue = iValue * 10 + (*m_sz++ - '0');
        if (m_sz == szDigits || (*szDigits == '0' && m_sz - szDigits > 1))
            return false;
        if (*m_sz != '.')
        {
            jValue = blNegative ? -iValue : iValue;
            return !isDigit(*m_sz) && *m_sz != 'e' && *m_sz != 'E';
        }

        const char* szFraction = ++m_sz;
        while (isDigit(*m_sz))
            ++m_sz;
        double dValue = 0.0;
        if (m_sz == szFraction || *m_sz == 'e' || *m_sz == 'E' ||
            std::from_chars(szStart, m_sz, dValue).ec != std::errc())
            return false;
        jValue = dValue;
        return true;
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    const char* m_sz;
    const char* m_szBegin = nullptr;
    const char* m_szEnd = nullptr;
    std::string m_strUnescaped;
};

}  // namespace

bool readPlainJson(const char* szText, Json::Value& jValue)
{
    return Reader(szText).readAll(jValue);
}

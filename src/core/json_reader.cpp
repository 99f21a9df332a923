// SPDX-License-Identifier: MIT

#include "json_reader.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <string>
#include <string_view>

#include "json_members.h"

namespace
{

constexpr int kMaxDepth = 32;

class Reader
{
public:
    explicit Reader(std::string_view text) : m_sz(text.data()), m_szTextEnd(text.data() + text.size()) {}

    bool readAll(Json::Value& jValue)
    {
        if (!readValue(jValue, kMaxDepth))
            return false;
        skipSpace();
        return m_sz == m_szTextEnd;
    }

    // Whether the value had the shape of the text before it was read.
    bool fits() const { return m_blFits; }

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

    bool readValue(Json::Value& jValue, int depth)  // NOLINT(misc-no-recursion): kMaxDepth bounds it
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
                setPayload(jValue, Json::Value(m_szBegin, m_szEnd));
                return true;
            case 't':
                setPayload(jValue, Json::Value(true));
                return takeWord("true", 4);
            case 'f':
                setPayload(jValue, Json::Value(false));
                return takeWord("false", 5);
            case 'n':
                setPayload(jValue, Json::Value());
                return takeWord("null", 4);
            default:
                return readNumber(jValue);
        }
    }

    // Sets the members in place as long as they come in the order of those that jValue has already.
    bool readObject(Json::Value& jValue, int depth)  // NOLINT(misc-no-recursion): kMaxDepth bounds it
    {
        ++m_sz;
        if (!jValue.isObject())
            setShape(jValue, Json::objectValue);
        auto it = jValue.begin();
        auto itEnd = jValue.end();
        if (!take('}'))
        {
            do
            {
                skipSpace();
                if (*m_sz != '"' || !readString())
                    return false;
                if (it != itEnd && !isName(it))
                {
                    keepUpTo(jValue, it);
                    it = itEnd = jValue.end();
                }
                Json::Value& jMember = it != itEnd ? *it++ : newMember(jValue);
                if (!take(':') || !readValue(jMember, depth))
                    return false;
            } while (take(','));
            if (!take('}'))
                return false;
        }
        if (it != itEnd)
            keepUpTo(jValue, it);
        return true;
    }

    // Sets the items in place as far as jValue has them already.
    bool readArray(Json::Value& jValue, int depth)  // NOLINT(misc-no-recursion): kMaxDepth bounds it
    {
        ++m_sz;
        if (!jValue.isArray())
            setShape(jValue, Json::arrayValue);
        auto it = jValue.begin();
        const auto itEnd = jValue.end();
        Json::ArrayIndex size = 0;
        if (!take(']'))
        {
            do
            {
                Json::Value& jItem = it != itEnd ? *it++ : newItem(jValue);
                ++size;
                if (!readValue(jItem, depth))
                    return false;
            } while (take(','));
            if (!take(']'))
                return false;
        }
        if (it != itEnd)
        {
            m_blFits = false;
            jValue.resize(size);
        }
        return true;
    }

    bool isName(const Json::ValueIterator& it) const
    {
        return nameOf(it) == std::string_view(m_szBegin, static_cast<std::size_t>(m_szEnd - m_szBegin));
    }

    void setShape(Json::Value& jValue, Json::ValueType type)
    {
        m_blFits = false;
        setPayload(jValue, Json::Value(type));
    }

    Json::Value& newMember(Json::Value& jObject)
    {
        m_blFits = false;
        return *jObject.demand(m_szBegin, m_szEnd);
    }

    Json::Value& newItem(Json::Value& jArray)
    {
        m_blFits = false;
        return jArray.append(Json::Value());
    }

    // Drops the members from itEnd on, which the text does not have.
    void keepUpTo(Json::Value& jObject, const Json::ValueIterator& itEnd)
    {
        m_blFits = false;
        Json::Value jKept(Json::objectValue);
        for (auto it = jObject.begin(); it != itEnd; ++it)
        {
            const std::string_view name = nameOf(it);
            jKept.demand(name.data(), name.data() + name.size())->swapPayload(*it);
        }
        jObject.swapPayload(jKept);
    }

    // Reads the string at '"'; its characters are then from m_szBegin to m_szEnd, until the next string is read.
    bool readString()
    {
        m_szBegin = ++m_sz;
        skipCharacters();
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
            const char* szNext = m_sz;
            skipCharacters();
            m_strUnescaped.append(szNext, m_sz);
        }
        if (*m_sz != '"')
            return false;
        ++m_sz;
        m_szBegin = m_strUnescaped.data();
        m_szEnd = m_szBegin + m_strUnescaped.size();
        return true;
    }

    void skipCharacters()
    {
        while (*m_sz != '"' && *m_sz != '\\' && *m_sz != '\0')
            ++m_sz;
    }

    bool readNumber(Json::Value& jValue)
    {
        constexpr std::ptrdiff_t kMaxDigits = 18;

        const char* szStart = m_sz;
        const bool blNegative = *m_sz == '-';
        if (blNegative)
            ++m_sz;
        const char* szDigits = m_sz;
        if (*m_sz == '0' && isDigit(m_sz[1]))
            return false;
        Json::Int64 iValue = 0;
        while (isDigit(*m_sz) && m_sz - szDigits < kMaxDigits)
            iValue = iValue * 10 + (*m_sz++ - '0');
        if (m_sz == szDigits)
            return false;
        if (*m_sz != '.')
        {
            setPayload(jValue, Json::Value(blNegative ? -iValue : iValue));
            return !isDigit(*m_sz) && *m_sz != 'e' && *m_sz != 'E';
        }

        const char* szFraction = ++m_sz;
        while (isDigit(*m_sz))
            ++m_sz;
        double dValue = 0.0;
        if (m_sz == szFraction || *m_sz == 'e' || *m_sz == 'E' ||
            std::from_chars(szStart, m_sz, dValue).ec != std::errc())
            return false;
        setPayload(jValue, Json::Value(dValue));
        return true;
    }

    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    const char* m_sz;
    const char* m_szTextEnd;
    const char* m_szBegin = nullptr;
    const char* m_szEnd = nullptr;
    std::string m_strUnescaped;
    bool m_blFits = true;
};

// Replaces everything but objects and arrays by null. False, early, where the shape takes more than room bytes,
// roughly.
bool reduceToShape(Json::Value& jValue, std::ptrdiff_t& room)  // NOLINT(misc-no-recursion): kMaxDepth bounds it
{
    constexpr std::ptrdiff_t kNode = sizeof(Json::Value) + 16 * sizeof(void*);
    if (!jValue.isObject() && !jValue.isArray())
        setPayload(jValue, Json::Value());
    else
        for (auto it = jValue.begin(); it != jValue.end(); ++it)
        {
            room -= kNode + (jValue.isObject() ? static_cast<std::ptrdiff_t>(nameOf(it).size()) : 0);
            if (room < 0 || !reduceToShape(*it, room))
                return false;
        }
    return true;
}

}  // namespace

bool JsonReader::read(std::string_view text, Json::Value& jValue)
{
    constexpr int kMaxTrust = 16;
    constexpr std::ptrdiff_t kMaxKept = 4096;

    const bool blTryShape = m_iTrust > -kMaxTrust;
    setPayload(jValue, blTryShape ? m_jShape : Json::Value());
    Reader reader(text);
    if (!reader.readAll(jValue))
        return false;
    if (blTryShape && reader.fits())
    {
        m_iTrust = std::min(m_iTrust + 1, kMaxTrust);
    }
    else if (blTryShape)
    {
        m_iTrust -= 2;
        std::ptrdiff_t room = kMaxKept;
        m_jShape = jValue;
        if (!reduceToShape(m_jShape, room))
            m_jShape = Json::Value();
    }
    return true;
}

// SPDX-License-Identifier: MIT

#include "value_list.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>

#include "sqlite_text.h"

namespace
{

bool isPlain(std::string_view text)
{
    return text.find('%') == std::string_view::npos && text.find('\0') == std::string_view::npos;
}

// A text from SQLite. Without one it raises what constructing a std::string from a null pointer does.
const char* checked(const char* szText)
{
    if (szText == nullptr)
        throw std::logic_error("basic_string: construction from null is not valid");
    return szText;
}

// One conversion of a format, found by SQLite's own grammar: flags, width, precision, length, type.
struct Conversion
{
    std::string strText;  // from '%' to the type
    int nStars = 0;       // widths and precisions that are taken from the arguments
    int nLongs = 0;       // 'l' modifiers
    char type = '\0';     // NUL when the format ends first
};

// Reads the width or the precision at sz.
const char* readNumber(const char* sz, int& nStars)
{
    if (*sz != '*')
        return sz + std::strspn(sz, "0123456789");
    ++nStars;
    return sz + 1;
}

// Reads the conversion at szFormat, which points to a '%', and moves szFormat behind it.
Conversion readConversion(const char*& szFormat)
{
    Conversion conversion;
    const char* sz = szFormat + 1;
    sz = readNumber(sz + std::strspn(sz, "-+ #!0,"), conversion.nStars);
    if (*sz == '.')
        sz = readNumber(sz + 1, conversion.nStars);
    while (*sz == 'l' && conversion.nLongs < 2)
    {
        ++conversion.nLongs;
        ++sz;
    }
    conversion.type = *sz;
    if (*sz != '\0')
        ++sz;
    conversion.strText.assign(szFormat, sz);
    szFormat = sz;
    return conversion;
}

// Hands out the value of one pass: to the first conversion that asks, if its kind fits. Whoever asks later, or for
// another kind, gets 0, 0.0 or null, as in SQLite's SQL function format().
class Argument
{
public:
    explicit Argument(sqlite3_int64 iValue) : m_kind('i'), m_iValue(iValue) {}
    explicit Argument(sqlite3_uint64 uValue) : Argument(static_cast<sqlite3_int64>(uValue)) {}
    explicit Argument(double dValue) : m_kind('r'), m_dValue(dValue) {}
    explicit Argument(const char* szValue) : m_kind('t'), m_szValue(szValue) {}

    sqlite3_int64 integer() { return takes('i') ? m_iValue : 0; }
    double real() { return takes('r') ? m_dValue : 0.0; }
    const char* text() { return takes('t') ? m_szValue : nullptr; }

private:
    bool takes(char kind)
    {
        const bool blFirst = !m_blTaken;
        m_blTaken = true;
        return blFirst && m_kind == kind;
    }

    char m_kind;  // integer, real or text
    sqlite3_int64 m_iValue = 0;
    double m_dValue = 0.0;
    const char* m_szValue = nullptr;
    bool m_blTaken = false;
};

template <typename Arg>
void appendFormatted(std::string& strOut, const Conversion& conversion, const int (&stars)[2], Arg arg)
{
    const char* szFormat = conversion.strText.c_str();
    SqliteText szResult;
    if (conversion.nStars == 0)
        szResult = sqlite3_mprintf(szFormat, arg);
    else if (conversion.nStars == 1)
        szResult = sqlite3_mprintf(szFormat, stars[0], arg);
    else
        szResult = sqlite3_mprintf(szFormat, stars[0], stars[1], arg);
    strOut += checked(szResult);
}

// Appends what one conversion writes. False when the output ends there: at a conversion that SQLite does not know, and
// at a NUL character, which ends every text.
bool appendConversion(std::string& strOut, Conversion conversion, Argument& argument)
{
    int stars[2] = {0, 0};
    for (int i = 0; i < conversion.nStars; ++i)
        stars[i] = static_cast<int>(argument.integer());

    const char type = conversion.type;
    const auto isOneOf = [type](const char* szTypes) { return type != '\0' && std::strchr(szTypes, type) != nullptr; };
    if (type == '%')
    {
        appendFormatted(strOut, conversion, stars, 0);
    }
    else if (isOneOf("diuxXor"))
    {
        const sqlite3_int64 iValue = argument.integer();
        if (conversion.nLongs == 2)
            appendFormatted(strOut, conversion, stars, iValue);
        else if (conversion.nLongs == 1)
            appendFormatted(strOut, conversion, stars, static_cast<long>(iValue));
        else
            appendFormatted(strOut, conversion, stars, static_cast<int>(iValue));
    }
    else if (type == 'p')
    {
        appendFormatted(strOut, conversion, stars, static_cast<std::uintptr_t>(argument.integer()));
    }
    else if (type == 'c')
    {
        const int iCharacter = static_cast<int>(argument.integer());
        appendFormatted(strOut, conversion, stars, iCharacter);
        return iCharacter != 0;
    }
    else if (isOneOf("feEgG"))
    {
        appendFormatted(strOut, conversion, stars, argument.real());
    }
    else if (isOneOf("szqQw"))
    {
        if (type == 'z')  // would free the value: it is written like %s
            conversion.strText.back() = 's';
        appendFormatted(strOut, conversion, stars, argument.text());
    }
    else if (type != 'n')  // that would store the length: it stores nothing, writes nothing and takes no value
    {
        if (conversion.strText == "%")  // a lone one at the end stays
            strOut += '%';
        return false;
    }
    return true;
}

// What sqlite3_mprintf(szFormat, value) gives, without reaching for arguments that are not there.
std::string formatWhole(const char* szFormat, Argument argument)
{
    std::string strOut;
    for (;;)
    {
        const char* szConversion = szFormat + std::strcspn(szFormat, "%");
        strOut.append(szFormat, szConversion);
        if (*szConversion == '\0')
            return strOut;
        szFormat = szConversion;
        if (!appendConversion(strOut, readConversion(szFormat), argument))
            return strOut;
    }
}

}  // namespace

ValueList::ValueList(std::string_view start)
    : m_start(start), m_length(start.size()), m_fits(kFitsFormatter), m_blPlain(isPlain(start))
{
}

ValueList::~ValueList()
{
    sqlite3_free(m_szText);
}

void ValueList::append(std::string_view piece)
{
    constexpr std::size_t kRoom = 400;  // most lists fit at once

    if (m_szText == nullptr || m_capacity - m_length <= piece.size())  // one more for the NUL
    {
        const std::size_t capacity = 2 * (m_length + piece.size()) + kRoom;
        auto* szText = static_cast<char*>(sqlite3_realloc64(m_szText, capacity));
        static_cast<void>(checked(szText));
        if (m_szText == nullptr)
            std::memcpy(szText, m_start.data(), m_length);
        m_szText = szText;
        m_capacity = capacity;
    }
    std::memcpy(m_szText + m_length, piece.data(), piece.size());
    m_length += piece.size();
    m_szText[m_length] = '\0';
}

// Fails where the formatter would not make a text of this length. Asks for twice of it first, so that a list which
// grows by many values is not formatted again for each of them.
void ValueList::checkLength()
{
    if (m_length <= m_fits)
        return;
    const auto twice = static_cast<int>(std::min<std::size_t>(2 * m_length, std::numeric_limits<int>::max()));
    if (SqliteText(sqlite3_mprintf("%*s", twice, "")) != nullptr)
        m_fits = static_cast<std::size_t>(twice);
    else
        static_cast<void>(checked(SqliteText(sqlite3_mprintf("%s", m_szText))));
}

template <typename Value>
void ValueList::reformat(const char* szConversion, Value value)
{
    append(szConversion);
    const std::string strText = formatWhole(m_szText, Argument(value));
    m_length = 0;
    append(strText);
    checkLength();
    m_blPlain = isPlain(strText);
}

template <typename Integer>
void ValueList::addDecimal(const char* szConversion, Integer value)
{
    constexpr std::size_t kMaxLength = 20;

    if (!m_blPlain)
        return reformat(szConversion, value);
    char szDigits[kMaxLength];
    const char* const szEnd = std::to_chars(szDigits, szDigits + kMaxLength, value).ptr;
    append({szDigits, static_cast<std::size_t>(szEnd - szDigits)});
    checkLength();
}

void ValueList::addInteger(sqlite3_int64 iValue)
{
    addDecimal("%lld", iValue);
}

void ValueList::addUnsigned(sqlite3_uint64 uValue)
{
    addDecimal("%llu", uValue);
}

template <typename Value>
void ValueList::addFormatted(const char* szConversion, Value value)
{
    if (!m_blPlain)
        return reformat(szConversion, value);
    const SqliteText szValue(sqlite3_mprintf(szConversion, value));
    append(checked(szValue));
    checkLength();
    m_blPlain = std::strchr(szValue, '%') == nullptr;
}

void ValueList::addFloat(float fValue)
{
    addFormatted("%f", static_cast<double>(fValue));
}

void ValueList::addDouble(double dValue)
{
    addFormatted("%lf", dValue);
}

void ValueList::addQuoted(const char* szValue)
{
    const std::string_view value(szValue);
    if (!m_blPlain || value.size() > kFitsFormatter)
        return addFormatted("%Q", szValue);
    append("'");
    escape(value, [this](std::string_view piece) { append(piece); });
    append("'");
    checkLength();
    m_blPlain = value.find('%') == std::string_view::npos;
}

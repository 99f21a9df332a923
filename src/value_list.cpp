// SPDX-License-Identifier: MIT

#include "value_list.h"

#include <cstdint>
#include <cstring>
#include <stdexcept>

#include "sqlite_text.h"

namespace
{

bool isPlain(const std::string& strText)
{
    return strText.find('%') == std::string::npos && strText.find('\0') == std::string::npos;
}

// A result of SQLite's formatter as text; the error is the one that constructing a std::string from null raises.
const char* checked(const char* szFormatted)
{
    if (szFormatted == nullptr)
        throw std::logic_error("basic_string: construction from null is not valid");
    return szFormatted;
}

// One conversion of a format, found by SQLite's own grammar: flags, width, precision, length, type.
struct Conversion
{
    std::string strText;  // from '%' to the type
    int nStars = 0;       // widths and precisions that are taken from the arguments
    int nLongs = 0;       // 'l' modifiers
    char type = '\0';     // NUL when the format ends first
};

const char* skipDigits(const char* sz)
{
    while (*sz >= '0' && *sz <= '9')
        ++sz;
    return sz;
}

// Reads the conversion at szFormat, which points to a '%', and moves szFormat behind it.
Conversion readConversion(const char*& szFormat)
{
    Conversion conversion;
    const char* sz = szFormat + 1;
    sz += std::strspn(sz, "-+ #!0,");
    if (*sz == '*')
    {
        ++conversion.nStars;
        ++sz;
    }
    else
    {
        sz = skipDigits(sz);
    }
    if (*sz == '.')
    {
        ++sz;
        if (*sz == '*')
        {
            ++conversion.nStars;
            ++sz;
        }
        else
        {
            sz = skipDigits(sz);
        }
    }
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
    explicit Argument(sqlite3_int64 iValue) : m_kind(Kind::Integer), m_iValue(iValue) {}
    explicit Argument(sqlite3_uint64 uValue) : Argument(static_cast<sqlite3_int64>(uValue)) {}
    explicit Argument(double dValue) : m_kind(Kind::Real), m_dValue(dValue) {}
    explicit Argument(const char* szValue) : m_kind(Kind::Text), m_szValue(szValue) {}

    sqlite3_int64 integer() { return takes(Kind::Integer) ? m_iValue : 0; }
    double real() { return takes(Kind::Real) ? m_dValue : 0.0; }
    const char* text() { return takes(Kind::Text) ? m_szValue : nullptr; }

private:
    enum class Kind
    {
        Integer,
        Real,
        Text
    };

    bool takes(Kind kind)
    {
        const bool blFirst = !m_blTaken;
        m_blTaken = true;
        return blFirst && m_kind == kind;
    }

    Kind m_kind;
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

    switch (conversion.type)
    {
        case '%':
            appendFormatted(strOut, conversion, stars, 0);
            return true;
        case 'n':  // would store the length through a pointer: it stores nothing, writes nothing and takes no value
            return true;
        case 'd':
        case 'i':
        case 'u':
        case 'x':
        case 'X':
        case 'o':
        case 'r':
        {
            const sqlite3_int64 iValue = argument.integer();
            if (conversion.nLongs == 2)
                appendFormatted(strOut, conversion, stars, iValue);
            else if (conversion.nLongs == 1)
                appendFormatted(strOut, conversion, stars, static_cast<long>(iValue));
            else
                appendFormatted(strOut, conversion, stars, static_cast<int>(iValue));
            return true;
        }
        case 'p':
            appendFormatted(strOut, conversion, stars, static_cast<std::uintptr_t>(argument.integer()));
            return true;
        case 'c':
        {
            const int iCharacter = static_cast<int>(argument.integer());
            appendFormatted(strOut, conversion, stars, iCharacter);
            return iCharacter != 0;
        }
        case 'f':
        case 'e':
        case 'E':
        case 'g':
        case 'G':
            appendFormatted(strOut, conversion, stars, argument.real());
            return true;
        case 'z':  // would free the value: it is written like %s
            conversion.strText.back() = 's';
            [[fallthrough]];
        case 's':
        case 'q':
        case 'Q':
        case 'w':
            appendFormatted(strOut, conversion, stars, argument.text());
            return true;
        case '\0':  // a lone '%' at the end stays
            if (conversion.strText == "%")
                strOut += '%';
            return false;
        default:
            return false;
    }
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

ValueList::ValueList(std::string strStart) : m_strText(std::move(strStart)), m_blPlain(isPlain(m_strText)) {}

template <typename Value>
void ValueList::add(const char* szConversion, Value value)
{
    if (m_blPlain)
    {
        const SqliteText szValue(sqlite3_mprintf(szConversion, value));
        m_strText += checked(szValue);
        m_blPlain = std::strchr(szValue, '%') == nullptr;
    }
    else
    {
        m_strText += szConversion;
        m_strText = formatWhole(m_strText.c_str(), Argument(value));
        m_blPlain = isPlain(m_strText);
    }
}

void ValueList::addInteger(sqlite3_int64 iValue)
{
    add("%lld", iValue);
}

void ValueList::addUnsigned(sqlite3_uint64 uValue)
{
    add("%llu", uValue);
}

void ValueList::addFloat(float fValue)
{
    add("%f", static_cast<double>(fValue));
}

void ValueList::addDouble(double dValue)
{
    add("%lf", dValue);
}

void ValueList::addQuoted(const char* szValue)
{
    add("%Q", szValue);
}

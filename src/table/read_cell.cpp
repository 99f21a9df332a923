// SPDX-License-Identifier: MIT

#include "read_cell.h"

#include <sqlite3.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <new>

#include "../core/json_text.h"
#include "cell_value.h"

namespace vorn
{

namespace
{

// Sets the value alone; assigning it would also move the comments that JsonCpp keeps beside every value.
Cell set(Json::Value& jValue, Json::Value jNew)
{
    jValue.swapPayload(jNew);
    return Cell::Value;
}

Cell setWhole(ValueClass valueClass, std::int64_t iValue, Json::Value& jValue)
{
    switch (valueClass)
    {
        case ValueClass::Int32:
            if (iValue < std::numeric_limits<Json::Int>::min() || iValue > std::numeric_limits<Json::Int>::max())
                return Cell::Bad;
            return set(jValue, Json::Value(static_cast<Json::Int>(iValue)));
        case ValueClass::UInt32:
            if (iValue < 0 || iValue > std::numeric_limits<Json::UInt>::max())
                return Cell::Bad;
            return set(jValue, Json::Value(static_cast<Json::UInt>(iValue)));
        case ValueClass::UInt63:
            if (iValue < 0)
                return Cell::Bad;
            return set(jValue, Json::Value(static_cast<Json::UInt64>(iValue)));
        case ValueClass::Bool:
            if (iValue < 0 || iValue > 1)
                return Cell::Bad;
            return set(jValue, Json::Value(iValue == 1));
        default:
            return set(jValue, Json::Value(static_cast<Json::Int64>(iValue)));
    }
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

// Canonical decimal: what a whole number is written as, and nothing else.
bool wholeOfText(std::string_view text, std::int64_t& iValue)
{
    const std::string_view digits = text.substr(!text.empty() && text[0] == '-' ? 1 : 0);
    if (digits.empty() || !isDigit(digits[0]) || (digits[0] == '0' && text.size() > 1))
        return false;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), iValue);
    return result.ec == std::errc() && result.ptr == text.data() + text.size();
}

// A number as JSON's grammar writes it.
bool realOfText(std::string_view text, double& dValue)
{
    const char* sz = text.data();
    const char* const szEnd = sz + text.size();
    const auto digits = [&sz, szEnd]()
    {
        const char* const szStart = sz;
        while (sz != szEnd && isDigit(*sz))
            ++sz;
        return sz - szStart;
    };
    if (sz != szEnd && *sz == '-')
        ++sz;
    const bool blZero = sz != szEnd && *sz == '0';
    const std::ptrdiff_t whole = digits();
    if (whole == 0 || (blZero && whole > 1))
        return false;
    if (sz != szEnd && *sz == '.' && (++sz, digits()) == 0)
        return false;
    if (sz != szEnd && (*sz == 'e' || *sz == 'E'))
    {
        ++sz;
        if (sz != szEnd && (*sz == '+' || *sz == '-'))
            ++sz;
        if (digits() == 0)
            return false;
    }
    return sz == szEnd && std::from_chars(text.data(), szEnd, dValue).ec == std::errc();
}

Cell readReal(ValueClass valueClass, double dValue, Json::Value& jValue)
{
    constexpr double kTwoTo63 = 9223372036854775808.0;
    if (valueClass == ValueClass::Float || valueClass == ValueClass::Double || valueClass == ValueClass::AnyJson)
    {
        if (!std::isfinite(dValue))
            return Cell::Bad;
        return set(jValue, Json::Value(dValue));
    }
    if (!(dValue >= -kTwoTo63 && dValue < kTwoTo63) || dValue != std::trunc(dValue))
        return Cell::Bad;
    return setWhole(valueClass, static_cast<std::int64_t>(dValue), jValue);
}

Cell readJsonText(ValueClass valueClass, std::string_view text, JsonReader& reader, StrictReader& strictReader,
                  Json::Value& jValue)
{
    if (!strictReader.read(text, reader, jValue))
        return Cell::Bad;
    const Json::ValueType type = jValue.type();
    if ((valueClass == ValueClass::Object && type != Json::objectValue) ||
        (valueClass == ValueClass::Array && type != Json::arrayValue))
        return Cell::Bad;
    return type == Json::nullValue ? Cell::Absent : Cell::Value;
}

// The characters of a text or BLOB, or of a number as text.
std::string_view cellText(sqlite3_value* pCell, bool blBlob)
{
    const void* pText = blBlob ? sqlite3_value_blob(pCell) : sqlite3_value_text(pCell);
    const int iBytes = sqlite3_value_bytes(pCell);
    if (pText == nullptr && (!blBlob || iBytes > 0))  // it needed memory
        throw std::bad_alloc();
    return {pText != nullptr ? static_cast<const char*>(pText) : "", static_cast<std::size_t>(iBytes)};
}

Cell setText(std::string_view text, Json::Value& jValue)
{
    return set(jValue, Json::Value(text.data(), text.data() + text.size()));
}

}  // namespace

bool StrictReader::read(std::string_view text, JsonReader& reader, Json::Value& jValue)
{
    if (reader.read(text, jValue))
        return true;
    if (m_pReader == nullptr)
    {
        constexpr int kLevels = 1001;  // JsonCpp counts what stands in the innermost level too
        Json::CharReaderBuilder builder;
        Json::CharReaderBuilder::strictMode(&builder.settings_);
        builder["strictRoot"] = false;
        builder["rejectDupKeys"] = false;
        builder["skipBom"] = false;
        builder["stackLimit"] = kLevels;
        m_pReader.reset(builder.newCharReader());
    }
    // Some releases of JsonCpp read a number that is too large as infinite.
    return readByJsonCpp(text, *m_pReader, jValue) && isJsonValue(jValue);
}

Cell readText(const Member& member, std::string_view text, JsonReader& reader, StrictReader& strictReader,
              Json::Value& jValue)
{
    const ValueClass valueClass = member.pType->valueClass;
    switch (valueClass)
    {
        case ValueClass::String:
            return setText(text, jValue);
        case ValueClass::Float:
        case ValueClass::Double:
        {
            double dValue = 0;
            if (!realOfText(text, dValue))
                return Cell::Bad;
            return set(jValue, Json::Value(dValue));
        }
        case ValueClass::Object:
        case ValueClass::Array:
        case ValueClass::AnyJson:
            return readJsonText(valueClass, text, reader, strictReader, jValue);
        default:
        {
            std::int64_t iValue = 0;
            return wholeOfText(text, iValue) ? setWhole(valueClass, iValue, jValue) : Cell::Bad;
        }
    }
}

Cell readCell(const Member& member, sqlite3_value* pCell, JsonReader& reader, StrictReader& strictReader,
              Json::Value& jValue)
{
    const ValueClass valueClass = member.pType->valueClass;
    const int iType = sqlite3_value_type(pCell);
    if (iType == SQLITE_NULL)
        return Cell::Absent;
    if (iType == SQLITE_TEXT && valueClass != ValueClass::String)
        return readText(member, cellText(pCell, false), reader, strictReader, jValue);
    if (valueClass == ValueClass::String)
        return setText(cellText(pCell, iType == SQLITE_BLOB), jValue);
    if (iType == SQLITE_BLOB || valueClass == ValueClass::Object || valueClass == ValueClass::Array)
        return Cell::Bad;
    if (iType == SQLITE_INTEGER && valueClass != ValueClass::Float && valueClass != ValueClass::Double)
        return setWhole(valueClass, sqlite3_value_int64(pCell), jValue);
    return readReal(valueClass, sqlite3_value_double(pCell), jValue);
}

void readAny(sqlite3_value* pCell, Json::Value& jValue)
{
    switch (const int iType = sqlite3_value_type(pCell))
    {
        case SQLITE_NULL:
            break;
        case SQLITE_INTEGER:
            set(jValue, Json::Value(static_cast<Json::Int64>(sqlite3_value_int64(pCell))));
            break;
        case SQLITE_FLOAT:
            set(jValue, Json::Value(sqlite3_value_double(pCell)));
            break;
        default:
            setText(cellText(pCell, iType == SQLITE_BLOB), jValue);
            break;
    }
}

}  // namespace vorn

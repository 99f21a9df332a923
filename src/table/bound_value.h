// SPDX-License-Identifier: MIT
//
// A value on its way into a statement.

#ifndef VORN_BOUND_VALUE_H
#define VORN_BOUND_VALUE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

struct sqlite3_value;

namespace vorn
{

class BoundValue
{
public:
    enum class Kind : unsigned char
    {
        Null,
        Integer,
        Real,
        Text,
        Value
    };

    BoundValue() = default;
    static BoundValue integer(std::int64_t iValue)
    {
        BoundValue value;
        value.setInteger(iValue);
        return value;
    }
    static BoundValue real(double dValue)
    {
        BoundValue value;
        value.setReal(dValue);
        return value;
    }
    static BoundValue borrowed(std::string_view text)
    {
        BoundValue value;
        value.setBorrowed(text);
        return value;
    }
    static BoundValue owned(std::string strText)
    {
        std::unique_ptr<const std::string> pText(new std::string(std::move(strText)));
        BoundValue value = borrowed(*pText);
        value.m_pOwned = std::move(pText);
        return value;
    }

    // The same value, borrowed from this one.
    BoundValue alias() const
    {
        BoundValue value(m_kind);
        value.m_content = m_content;
        value.m_length = m_length;
        return value;
    }

    // What another statement gave; it must live until the statement has been reset.
    static BoundValue sqlite(sqlite3_value* pValue)
    {
        BoundValue value(Kind::Value);
        value.m_content.pValue = pValue;
        return value;
    }

    void setInteger(std::int64_t iValue)
    {
        m_kind = Kind::Integer;
        m_content.iValue = iValue;
    }
    void setReal(double dValue)
    {
        m_kind = Kind::Real;
        m_content.dValue = dValue;
    }
    // The characters belong to the caller, who keeps them until the statement has been reset.
    void setBorrowed(std::string_view text)
    {
        m_kind = Kind::Text;
        m_content.szText = text.data();
        m_length = text.size();
    }

    Kind kind() const { return m_kind; }
    std::int64_t integer() const { return m_content.iValue; }
    double real() const { return m_content.dValue; }
    sqlite3_value* sqlite() const { return m_content.pValue; }
    std::string_view text() const { return {m_content.szText, m_length}; }

private:
    explicit BoundValue(Kind kind) : m_kind(kind) {}

    Kind m_kind = Kind::Null;
    union
    {
        std::int64_t iValue = 0;
        double dValue;
        sqlite3_value* pValue;
        const char* szText;
    } m_content;
    std::size_t m_length = 0;
    std::unique_ptr<const std::string> m_pOwned;  // the text, where nobody else keeps it
};

}  // namespace vorn

#endif  // VORN_BOUND_VALUE_H

// SPDX-License-Identifier: MIT
//
// The text of a statement whose values are added one by one, each formatted by SQLite together with everything that
// stands before it: the whole text so far is the format, the value its only argument. So a '%' that has come into the
// text is read as a conversion by every later value.
//
// While there is no '%' in the text, formatting it again would not change it, and the value is only appended.

#ifndef VORN_VALUE_LIST_H
#define VORN_VALUE_LIST_H

#include <sqlite3.h>

#include <cstddef>
#include <string_view>

class ValueList
{
public:
    // Refers to the start, and takes no memory until the first value.
    explicit ValueList(std::string_view start);
    ~ValueList();
    ValueList(const ValueList&) = delete;
    ValueList& operator=(const ValueList&) = delete;

    // Each add formats the text so far followed by the value's conversion. std::logic_error where SQLite cannot make
    // the text: it has no memory for it, or the text is longer than its formatter's limit.
    void addInteger(sqlite3_int64 iValue);    // %lld
    void addUnsigned(sqlite3_uint64 uValue);  // %llu
    void addFloat(float fValue);              // %f
    void addDouble(double dValue);            // %lf
    void addQuoted(const char* szValue);      // %Q

    // Appends a separator, which holds no '%'.
    void addSeparator(std::string_view separator) { append(separator); }

    std::string_view text() const { return {m_szText != nullptr ? m_szText : m_start.data(), m_length}; }

private:
    void append(std::string_view piece);
    void checkLength();
    template <typename Value>
    void reformat(const char* szConversion, Value value);
    template <typename Integer>
    void addDecimal(const char* szConversion, Integer value);
    template <typename Value>
    void addFormatted(const char* szConversion, Value value);

    std::string_view m_start;
    char* m_szText = nullptr;  // in SQLite's memory, as what its formatter gives; null until the first value
    std::size_t m_length;
    std::size_t m_capacity = 0;
    std::size_t m_fits;  // the formatter makes texts of this length
    bool m_blPlain;      // no '%' and no NUL in the text
};

#endif  // VORN_VALUE_LIST_H

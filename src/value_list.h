// SPDX-License-Identifier: MIT
//
// The text of a statement whose values are added one by one, each formatted by SQLite together with everything that
// stands before it: the whole text so far is the format, the value its only argument. So a '%' that has come into the
// text is read as a conversion by every later value.

#ifndef VORN_VALUE_LIST_H
#define VORN_VALUE_LIST_H

#include <sqlite3.h>

#include <string>

class ValueList
{
public:
    explicit ValueList(std::string strStart);

    // Each add formats the text so far followed by the value's conversion. std::logic_error when SQLite's formatter
    // gives nothing.
    void addInteger(sqlite3_int64 iValue);    // %lld
    void addUnsigned(sqlite3_uint64 uValue);  // %llu
    void addFloat(float fValue);              // %f
    void addDouble(double dValue);            // %lf
    void addQuoted(const char* szValue);      // %Q

    // Appends a separator, which holds no '%'.
    void addSeparator(const char* szSeparator) { m_strText += szSeparator; }

    std::string& text() { return m_strText; }

private:
    template <typename Value>
    void add(const char* szConversion, Value value);

    std::string m_strText;
    bool m_blPlain;  // no '%' and no NUL in the text: formatting it once more would not change it
};

#endif  // VORN_VALUE_LIST_H

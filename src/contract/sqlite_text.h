// SPDX-License-Identifier: MIT
//
// Texts that SQLite allocated, and texts as SQL writes them.

#ifndef VORN_SQLITE_TEXT_H
#define VORN_SQLITE_TEXT_H

#include <sqlite3.h>

#include <string_view>

// Released with sqlite3_free().
class SqliteText
{
public:
    SqliteText() = default;
    explicit SqliteText(char* szText) : m_szText(szText) {}
    ~SqliteText() { sqlite3_free(m_szText); }
    SqliteText(const SqliteText&) = delete;
    SqliteText& operator=(const SqliteText&) = delete;

    // Takes over a text from SQLite, so that a check can read NULL == (szText = sqlite3_mprintf(...)).
    SqliteText& operator=(char* szText)
    {
        sqlite3_free(m_szText);
        m_szText = szText;
        return *this;
    }

    operator const char*() const { return m_szText; }
    std::string_view view() const { return m_szText; }  // not while it is null

    // Releases the text and gives SQLite the place for the next one.
    char** place()
    {
        sqlite3_free(m_szText);
        m_szText = nullptr;
        return &m_szText;
    }

private:
    char* m_szText = nullptr;
};

// Hands the pieces of the text to append() that together are the text with each of its single quotes twice.
template <typename Append>
void escape(std::string_view text, Append append)
{
    for (std::size_t quote = text.find('\''); quote != std::string_view::npos; quote = text.find('\'', 1))
    {
        append(text.substr(0, quote + 1));
        text.remove_prefix(quote);  // the next piece begins with the quote again
    }
    append(text);
}

// SQLite's formatter gives null for what is longer than its limit, which is the builder's of SQLite to choose; texts up
// to this length need not ask.
constexpr std::size_t kFitsFormatter = 1000000;

// What sqlite3_mprintf("%q", szText) gives; null without memory, and for what is too long.
char* escaped(const char* szText);

#endif  // VORN_SQLITE_TEXT_H

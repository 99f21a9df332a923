// SPDX-License-Identifier: MIT

#include "json_source.h"

#include "error.h"
#include "json_argument.h"
#include "utf8.h"

namespace cli
{

namespace
{

void append(std::string& strText, int byte, const std::string& strWhere)
{
    if (strText.size() == kLongestRecord)
        throw failure(vorn::Code::OutOfRange, strWhere + " is longer than 64 MiB");
    strText += static_cast<char>(byte);
}

// Reads the text as a record, or says why it is none.
void readRecord(const std::string& strText, const std::string& strWhere, Json::Value& jRec, std::string& strProblem)
{
    if (!isUtf8(strText))
    {
        strProblem = strWhere + " is not UTF-8";
        return;
    }
    try
    {
        jRec = parseJson(strText, strWhere);
    }
    catch (const Error& error)
    {
        strProblem = error.what();
    }
}

bool isSpace(int byte)
{
    return byte == ' ' || byte == '\t' || byte == '\n' || byte == '\r';
}

}  // namespace

bool JsonLines::next(Json::Value& jRec, std::string& strText, std::string& strProblem)
{
    strProblem.clear();
    for (;;)
    {
        strText.clear();
        ++m_line;
        const std::string strWhere = m_input.name() + ", line " + std::to_string(m_line);
        int byte = m_input.get();
        const bool blAny = byte != EOF;
        bool blBlank = true;
        for (; byte != EOF && byte != '\n'; byte = m_input.get())
        {
            append(strText, byte, strWhere);
            blBlank = blBlank && isSpace(byte);
        }
        if (!blAny)
            return false;
        if (blBlank)
            continue;
        readRecord(strText, strWhere, jRec, strProblem);
        return true;
    }
}

JsonArray::JsonArray(Input& input) : m_input(input)
{
    m_blWrapped = skipSpace() == '{';
    if (m_blWrapped)
    {
        m_input.get();
        if (skipSpace() == '"')
            skipName();
        if (skipSpace() == ':')
            m_input.get();
    }
    if (skipSpace() != '[')
        throw failure(vorn::Code::BadType,
                      input.name() + " is neither a JSON array of records nor an object with nothing but one");
    m_input.get();
}

int JsonArray::skipSpace()
{
    while (isSpace(m_input.peek()))
        m_input.get();
    return m_input.peek();
}

void JsonArray::skipName()
{
    m_input.get();
    for (int byte = m_input.get(); byte != EOF && byte != '"'; byte = m_input.get())
        if (byte == '\\')
            m_input.get();
}

// Up to the comma or the bracket that ends the item.
void JsonArray::readItem(std::string& strText)
{
    const std::string strWhere = m_input.name() + ", item " + std::to_string(m_item);
    long depth = 0;
    bool blString = false;
    for (;;)
    {
        const int byte = m_input.peek();
        if (byte == EOF)
            throw failure(vorn::Code::BadType, strWhere + ": the file ends before the array does");
        if (!blString && depth == 0 && (byte == ',' || byte == ']'))
            return;
        append(strText, m_input.get(), strWhere);
        if (byte == '"')
            blString = !blString;
        else if (blString && byte == '\\' && m_input.peek() != EOF)
            append(strText, m_input.get(), strWhere);
        else if (!blString && (byte == '{' || byte == '['))
            ++depth;
        else if (!blString && (byte == '}' || byte == ']'))
            --depth;
    }
}

bool JsonArray::next(Json::Value& jRec, std::string& strText, std::string& strProblem)
{
    strProblem.clear();
    strText.clear();
    if (m_blEnded)
        return false;
    int byte = skipSpace();
    if (byte != ']' || m_item > 0)
    {
        if (m_item > 0 && byte == ',')
        {
            m_input.get();
            skipSpace();
        }
        byte = m_item > 0 && byte == ']' ? ']' : 0;
    }
    if (byte == ']')
    {
        m_input.get();
        m_blEnded = true;
        if (m_blWrapped && skipSpace() == EOF)
            throw failure(vorn::Code::BadType,
                          m_input.name() + ": the file ends before the object around the array does");
        if (m_blWrapped && skipSpace() == '}')
            m_input.get();
        if (skipSpace() != EOF)
            throw failure(vorn::Code::BadType, m_input.name() + ": something stands behind the array");
        return false;
    }
    ++m_item;
    readItem(strText);
    readRecord(strText, m_input.name() + ", item " + std::to_string(m_item), jRec, strProblem);
    return true;
}

}  // namespace cli

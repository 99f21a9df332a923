// SPDX-License-Identifier: MIT

#include "nul_free.h"

#include "../core/text.h"
#include "join.h"

namespace vorn
{

namespace
{

// What replace() does, in SQL and here. The pair of backslashes goes first: after that every backslash begins an
// escape.
constexpr std::string_view kReplacements[][2] = {{"\\\\", "\\u005c"}, {"\\u0001", "\\u00011"}, {"\\u0000", "\\u00010"}};

void replaceAll(std::string& strText, std::string_view from, std::string_view to)
{
    for (std::size_t at = strText.find(from); at != std::string::npos; at = strText.find(from, at + to.size()))
        strText.replace(at, from.size(), to);
}

}  // namespace

std::string nulFree(std::string_view text)
{
    std::string strText;
    strText.reserve(text.size() + 8);
    for (const char c : text)
    {
        if (c == '\0' || c == '\1')
        {
            strText += '\1';
            strText += c == '\0' ? '0' : '1';
            continue;
        }
        strText += c;
    }
    return strText;
}

std::string nulFreeJson(std::string_view json)
{
    std::string strJson(json);
    if (strJson.find('\\') != std::string::npos)
        for (const auto& replacement : kReplacements)
            replaceAll(strJson, replacement[0], replacement[1]);
    return strJson;
}

std::string nulFreeSql(std::string_view column)
{
    std::string strReplaced = join({"replace(replace(replace(", column});
    for (const auto& replacement : kReplacements)
        appendAll(strReplaced, {",'", replacement[0], "','", replacement[1], "')"});
    return join({"CASE WHEN NOT json_valid(", column, ") THEN NULL WHEN instr(", column, ",'\\')=0 THEN ", column,
                 " ELSE ", strReplaced, " END"});
}

std::string withNulSql(const std::string& strExpression)
{
    return join({"replace(replace(", strExpression, ",char(1)||'0',char(0)),char(1)||'1',char(1))"});
}

}  // namespace vorn

// SPDX-License-Identifier: MIT

#include "failure.h"

#include <string>

#include "cell_value.h"

namespace vorn
{

bool fail(Status& status, Code code, std::string_view member, const char* szText)
{
    return fail(status, code, member, szText, {});
}

bool fail(Status& status, Code code, std::string_view member, const char* szText, std::string_view detail)
{
    std::string strText;
    for (; *szText != '\0'; ++szText)
    {
        if (*szText == '%')
            strText += shown(member);
        else if (*szText == '^')
            strText += detail;
        else
            strText += *szText;
    }
    Status failed;
    failed.code = code;
    failed.member = member;
    failed.text = std::move(strText);
    status = std::move(failed);
    return false;
}

}  // namespace vorn

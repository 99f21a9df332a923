// SPDX-License-Identifier: MIT

#include "plain_members.h"

namespace vorn
{

namespace
{

Member memberOf(const char* szType)
{
    Member member;
    member.pType = columnTypeOf(szType);
    return member;
}

}  // namespace

const Member& anyJsonMember()
{
    static const Member member = memberOf("Json::Value");
    return member;
}

const Member& wholeNumberMember()
{
    static const Member member = memberOf("long long");
    return member;
}

}  // namespace vorn

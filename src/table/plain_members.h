// SPDX-License-Identifier: MIT
//
// Members without a column, for values that belong to none but are checked and converted like a member's.

#ifndef VORN_PLAIN_MEMBERS_H
#define VORN_PLAIN_MEMBERS_H

#include "definition.h"

namespace vorn
{

const Member& anyJsonMember();
const Member& wholeNumberMember();

}  // namespace vorn

#endif  // VORN_PLAIN_MEMBERS_H

// SPDX-License-Identifier: MIT
//
// A host of both classes.

#include <VornJsonDbApi.h>
#include <vorn/table.h>

int main()
{
    std::string strTime;
    return VORN_JSON_DB::convert2ReadableTime(1, strTime, 4) == 0 && vorn::codeName(vorn::Code::Ok) != nullptr ? 0 : 1;
}

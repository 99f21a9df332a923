// SPDX-License-Identifier: MIT
//
// Lists of values in conditions: as many parameters as there are values, or one that holds them all.

#ifndef VORN_VALUE_LISTS_H
#define VORN_VALUE_LISTS_H

#include <string>
#include <vector>

#include "bound_value.h"

namespace vorn
{

// A number of JSON text, to be read by SQLite in the way in which it reads the same number in a cell. Its own
// conversion is off by the last bit for some reals on processors without wide ones.
struct ListValue
{
    BoundValue value;
    bool blJsonReal = false;  // value is the text of a real number in JSON
};

inline const char* parameterOf(bool blJsonReal)
{
    return blJsonReal ? "CAST(? AS REAL)" : "?";
}

// Appends "(...)", what IN wants on its right, for values that are all the same kind of a member; they are taken from
// values[begin] on, which is not the end, and replaced by those of the parameters.
void writeList(std::vector<BoundValue>& values, std::size_t begin, std::size_t listMax, std::string& strSql);

// The same for values of JSON, whose kinds may differ.
void writeJsonList(std::vector<ListValue>& list, std::size_t listMax, std::string& strSql,
                   std::vector<BoundValue>& values);

}  // namespace vorn

#endif  // VORN_VALUE_LISTS_H

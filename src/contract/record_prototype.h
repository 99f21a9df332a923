// SPDX-License-Identifier: MIT
//
// A record with every member of a table, copied for each row that holds them all: JsonCpp copies an object far faster
// than it enters members one by one, which won 23 % of a list's instructions (./dev figures).

#ifndef VORN_RECORD_PROTOTYPE_H
#define VORN_RECORD_PROTOTYPE_H

#include <json/json.h>

#include <vector>

struct TypeMember;

class RecordPrototype
{
public:
    explicit RecordPrototype(std::vector<TypeMember>& members);

    // Makes jRec, which is null or an empty object, the record of the row. False, with jRec as it was, where the row's
    // columns are not exactly the members, one of them is NULL, or one has a type that cannot be read back.
    bool fill(std::vector<TypeMember>& members, int n_column, char** column_value, char** column_name,
              Json::Value& jRec);

private:
    bool matches(const std::vector<TypeMember>& members, char** column_name) const;
    bool learnColumns(const std::vector<TypeMember>& members, char** column_name);

    Json::Value m_jRecord;               // null where no record of the table can be filled at once
    std::vector<std::size_t> m_columns;  // the column of each member, as in the last row
};

#endif  // VORN_RECORD_PROTOTYPE_H

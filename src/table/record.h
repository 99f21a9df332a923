// SPDX-License-Identifier: MIT
//
// From a record to the values of a statement.

#ifndef VORN_RECORD_H
#define VORN_RECORD_H

#include <json/json.h>
#include <vorn/status.h>

#include <vector>

#include "bound_value.h"
#include "store.h"

namespace vorn
{

// The members that are given, and their values in the order of the members.
struct RecordValues
{
    explicit RecordValues(const Definition& definition) : members(definition.members().size()) {}

    MemberSet members;
    std::vector<BoundValue> values;  // they borrow from the record and from the definition
};

// Whether each member is declared and its value fits. False with BadRequest, UnknownMember, BadType or OutOfRange.
bool checkRecord(const Definition& definition, const Json::Value& jRec, Status& status);

// The same, and the values. Where blDefaults says so, members that are absent take the definition's default.
bool bindRecord(const Definition& definition, const Json::Value& jRec, bool blDefaults, RecordValues& record,
                Status& status);

// The same, with defaults, for a record that checkRecord() has found to be good.
void bindChecked(const Definition& definition, const Json::Value& jRec, RecordValues& record);

// Whether every member that must be there is: for a new record, or, where blNew is false, among those that are given.
// False with Constraint.
bool checkRequired(const Definition& definition, const Facts& facts, const Json::Value& jRec, bool blNew,
                   bool blDefaults, Status& status);

}  // namespace vorn

#endif  // VORN_RECORD_H

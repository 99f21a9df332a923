// SPDX-License-Identifier: MIT
//
// The steps of which writes are made.

#ifndef VORN_INSERT_H
#define VORN_INSERT_H

#include <sqlite3.h>

#include "failure.h"
#include "function_ref.h"
#include "record.h"
#include "run.h"

namespace vorn
{

// Inserts the record. False with Duplicate or Constraint also where SQLite has ignored it.
bool insert(Store& store, Waiter& waiter, const RecordValues& record, Status& status);

// The same by a run that may have inserted others before.
bool insert(Store& store, Waiter& waiter, Run& run, const RecordValues& record, Status& status);

// The same as the first, and reads it as it is stored then. Within a savepoint.
bool insertAndRead(Store& store, const Facts& facts, Waiter& waiter, const RecordValues& record, Json::Value& jRec,
                   Status& status);

// Runs once more what SQLite has ignored, as a statement that fails instead, to learn why. True where it succeeds now.
bool runIgnored(Store& store, Waiter& waiter, const Shape& shape, const std::vector<BoundValue>& values,
                Status& status);

// The one record that the tail finds; Constraint where a trigger has taken it away.
bool readBack(Store& store, Waiter& waiter, std::string_view tail, const std::vector<BoundValue>& values,
              Json::Value& jRec, Status& status);

// Tries to write with what is known of the table, and anew where it fails and the schema has changed. attempt(facts)
// leaves nothing behind where it fails.
bool withFacts(Store& store, Waiter& waiter, Status& status, FunctionRef<bool(const Facts&)> attempt);

}  // namespace vorn

#endif  // VORN_INSERT_H

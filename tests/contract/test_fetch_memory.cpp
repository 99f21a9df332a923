// SPDX-License-Identifier: MIT
//
// What recGetOne() holds while it reads the rows of a query that matches many.

#include <gtest/gtest.h>

#include <algorithm>

#include "failing_allocators.h"
#include "store.h"

using namespace support;

namespace
{

using faults::Allocator;

// The most allocations that were outstanding while SQLite looked for a row.
long mostHeld = 0;

void noteHeld(sqlite3_context* context, int, sqlite3_value**)
{
    mostHeld = std::max(mostHeld, faults::outstanding(Allocator::OperatorNew));
    sqlite3_result_int(context, 1);
}

// The most that a fetch holds while it reads a table of that many rows.
long heldByFetching(int rows)
{
    Store store(R"({"id": {"cpptype": "int"}, "name": {"cpptype": "string"}})");
    store.db().run("with recursive number(i) as (select 1 union all select i + 1 from number where i < " +
                   std::to_string(rows) + ") insert into " + store.name() + " select i, 'name' from number");
    EXPECT_EQ(SQLITE_OK, sqlite3_create_function(store.db().handle(), "note_held", 0, SQLITE_UTF8, nullptr, noteHeld,
                                                 nullptr, nullptr));
    Json::Value filter;
    filter["vornSqlWhereFilter"] = "note_held()";
    Json::Value out;
    const long before = faults::outstanding(Allocator::OperatorNew);
    mostHeld = before;
    EXPECT_EQ(1, store->recGetOne(filter, out));
    EXPECT_EQ(json(R"({"id": 1, "name": "name"})"), out);
    return mostHeld - before;
}

}  // namespace

TEST(FetchMemory, ManyMatchesTakeNoMoreThanAFew)
{
    const long few = heldByFetching(3);
    EXPECT_LT(0, few);
    EXPECT_GE(few, heldByFetching(3000));
}

// SPDX-License-Identifier: MIT
//
// Stores in static objects of the host: made before main() begins, and used while the host's static objects end.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

const char* const members = R"({"id": {"cpptype": "int"}, "list": {"cpptype": "Json::arrayValue"}})";

// What needs everything that the library keeps: types, the current table, JsonCpp's reader, and lines that quote the
// type maps.
bool works(Store& store)
{
    Json::Value all;
    Json::Value rows;
    Json::Value incomplete = json(R"({"id": 1})");
    const LogCapture quiet;
    return store->runSqlEx("delete from " + store.name()) >= 0 &&
           store->runSqlEx("insert into " + store.name() + " values (1, '[1e5]')") == 1 &&
           store->recList(all, rows) == 0 && rows == json(R"([{"id": 1, "list": [100000.0]}])") &&
           store->recSave(incomplete, true) == -1;
}

class StaticStore
{
public:
    ~StaticStore()
    {
        if (works(m_store))
            return;
        std::fputs("a store in a static object does not work at the end\n", stderr);
        _exit(1);
    }

    Store& store() { return m_store; }

private:
    Store m_store{members};
};

StaticStore g_store;  // its end comes after that of whatever is made in main()

}  // namespace

TEST(StaticOrder, AStoreMadeBeforeMainWorksUntilTheHostsStaticObjectsEnd)
{
    EXPECT_TRUE(works(g_store.store()));
    Store later(members);
    EXPECT_TRUE(works(later));
}

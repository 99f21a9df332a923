// SPDX-License-Identifier: MIT
//
// The first look-up of a process, while no type map is known at all. One case only: every further one would not be the
// first.

#include <gtest/gtest.h>

#include "log_capture.h"
#include "store.h"

using namespace support;

TEST(FirstLookup, DefinitionWithoutMembersLeavesNoTypeMap)
{
    std::string name = freshTable();
    Json::Value definition = definitionOf(name, Json::Value(Json::objectValue));
    const ExpectedLines first = {inUtil(failed("jType == Json::nullValue || !jType.isMember(strJsonName)")),
                                 inUtil(trace("strJsonName=" + name)),
                                 inUtil(trace("jTableDef={\"" + name + "\":{\"member\":{}}}")),
                                 inUtil(trace("jType=null"))};
    EXPECT_EQ(Json::Value(), *logged(first, [&] { return &VORN_JSON_DB::recType(definition, name); }));

    // The name is known as null from now on.
    const ExpectedLines later = {
        inUtil(failed("jType[strJsonName].type() != Json::objectValue")), inUtil(trace("strJsonName=" + name)),
        inUtil(trace("jTableDef={\"" + name + "\":{\"member\":{}}}")), inUtil(trace("jType={\"" + name + "\":null}"))};
    EXPECT_EQ(Json::Value(), *logged(later, [&] { return &VORN_JSON_DB::recType(definition, name); }));
}

// SPDX-License-Identifier: MIT
//
// What a status is before anything has happened, and the names of its codes.

#include <gtest/gtest.h>
#include <vorn/status.h>

TEST(Status, ANewOneIsOkAndNamesNothing)
{
    const vorn::Status status;
    EXPECT_EQ(status.code, vorn::Code::Ok);
    EXPECT_EQ(status.member, "");
    EXPECT_EQ(status.text, "");
    EXPECT_EQ(status.sqlite, 0);
    EXPECT_EQ(status.index, -1);
}

TEST(Status, EveryCodeHasItsName)
{
#define VORN_EXPECT_NAME(name) EXPECT_STREQ(vorn::codeName(vorn::Code::name), #name)
    VORN_EXPECT_NAME(Ok);
    VORN_EXPECT_NAME(BadDefinition);
    VORN_EXPECT_NAME(BadRequest);
    VORN_EXPECT_NAME(UnknownMember);
    VORN_EXPECT_NAME(BadType);
    VORN_EXPECT_NAME(OutOfRange);
    VORN_EXPECT_NAME(Missing);
    VORN_EXPECT_NAME(Duplicate);
    VORN_EXPECT_NAME(Constraint);
    VORN_EXPECT_NAME(Locked);
    VORN_EXPECT_NAME(Full);
    VORN_EXPECT_NAME(ReadOnly);
    VORN_EXPECT_NAME(BadCell);
    VORN_EXPECT_NAME(Corrupt);
    VORN_EXPECT_NAME(Interrupted);
    VORN_EXPECT_NAME(Misuse);
    VORN_EXPECT_NAME(Sqlite);
#undef VORN_EXPECT_NAME
}

TEST(Status, ACodeOfANewerReleaseIsNoCrash)
{
    EXPECT_STREQ(vorn::codeName(static_cast<vorn::Code>(1000)), "Sqlite");
    EXPECT_STREQ(vorn::codeName(static_cast<vorn::Code>(-1)), "Sqlite");
}

// SPDX-License-Identifier: MIT
//
// Records in a database that is encrypted: its file tells nothing, and without the key there is nothing to be had.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

constexpr const char* kTexts[] = {"Ann O'Neil", "a very private remark", "private_remark", "CREATE TABLE",
                                  "SQLite format"};
constexpr const char* kMembers =
    R"({"name": {"cpptype": "string"}, "private_remark": {"cpptype": "Json::objectValue"}})";

std::shared_ptr<Database> opened(const std::string& path, const std::string& key)
{
    auto database = std::make_shared<Database>(path);
    if (!key.empty())
        EXPECT_EQ(SQLITE_OK, database->run("PRAGMA key = '" + key + "'"));
    return database;
}

Json::Value record()
{
    return json(R"({"name": "Ann O'Neil", "private_remark": {"text": "a very private remark"}})");
}

// Stores a record in a new file, in a table of the name that it returns, and closes it.
std::string store(const std::string& path, const std::string& key)
{
    Store people(kMembers, "", opened(path, key));
    Json::Value given = record();
    Json::Value stored;
    EXPECT_EQ(0, people->recCreate(given, stored));
    EXPECT_EQ(record(), stored);
    return people.name();
}

// Which of the texts the file holds.
std::vector<std::string> textsIn(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string content{std::istreambuf_iterator<char>(file), {}};
    EXPECT_LT(1000U, content.size());
    std::vector<std::string> found;
    for (const char* const text : kTexts)
        if (content.find(text) != std::string::npos)
            found.emplace_back(text);
    return found;
}

}  // namespace

TEST(Cipher, TheFileHoldsNoneOfTheTexts)
{
    const TempFile encrypted;
    store(encrypted.path(), "correct horse");
    EXPECT_EQ(std::vector<std::string>(), textsIn(encrypted.path()));
}

TEST(Cipher, WithoutAKeyTheFileHoldsAllOfThem)
{
    const TempFile plain;
    store(plain.path(), "");
    EXPECT_EQ(std::size(kTexts), textsIn(plain.path()).size());
}

TEST(Cipher, TheKeyGivesTheRecordsBack)
{
    const TempFile file;
    const std::string name = store(file.path(), "correct horse");
    std::string table = name;
    Json::Value definition = definitionOf(name, json(kMembers));
    std::string create = "CREATE TABLE IF NOT EXISTS " + name + " (name, private_remark)";
    const auto database = opened(file.path(), "correct horse");
    VornJsonDbApi people(database->handle(), table, definition, create);
    Json::Value everyone;
    Json::Value found;
    EXPECT_EQ(0, people.recList(everyone, found));
    ASSERT_EQ(1U, found.size());
    EXPECT_EQ(record(), found[0]);
}

TEST(Cipher, AnotherKeyOrNoneIsToldAsAFileThatIsNoDatabase)
{
    const TempFile file;
    std::string name = store(file.path(), "correct horse");
    for (const char* const key : {"battery staple", ""})
    {
        SCOPED_TRACE(key);
        const auto database = opened(file.path(), key);
        Json::Value definition = definitionOf(name, json(kMembers));
        std::string create = "CREATE TABLE IF NOT EXISTS " + name + " (name, private_remark)";
        LogCapture capture;
        VornJsonDbApi people(database->handle(), name, definition, create);
        Json::Value everyone;
        Json::Value found;
        EXPECT_EQ(-1, people.recList(everyone, found));
        capture.stop();
        ASSERT_FALSE(capture.syslogCalls().empty());
        EXPECT_NE(std::string::npos, capture.syslogCalls().front().text.find("file is encrypted or is not a database"));
        EXPECT_TRUE(found.isNull());
    }
}

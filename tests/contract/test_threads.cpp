// SPDX-License-Identifier: MIT
//
// What is promised about threads, to be run under the thread sanitizer too: objects that one thread at a time uses,
// handed over from thread to thread, and the functions that any number of threads may call at once. The test that is
// switched off does what is not promised; the sanitizer must object to it.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "log_capture.h"
#include "store.h"

using namespace support;

namespace
{

constexpr int threadCount = 4;
constexpr int rounds = 200;

constexpr const char* members = R"({
    "data": {"cpptype": "Json::objectValue", "cppDefaultValue": {"a": [1, 2]}},
    "id":   {"cpptype": "int"},
    "name": {"cpptype": "string"}})";
constexpr const char* columns = "data TEXT, id INTEGER PRIMARY KEY, name TEXT";

// Runs the body in several threads, which start together.
void inThreads(const std::function<void(int thread)>& body)
{
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    threads.reserve(threadCount);
    for (int i = 0; i < threadCount; ++i)
    {
        threads.emplace_back(
            [&, i]
            {
                ++ready;
                while (ready < threadCount)
                    std::this_thread::yield();
                body(i);
            });
    }
    for (std::thread& thread : threads)
        thread.join();
}

void runInThread(const std::function<void()>& body)
{
    std::thread(body).join();
}

// A record's whole life. Identities must not repeat.
void useStore(Store& store, int id)
{
    Json::Value in;
    in["id"] = id;
    in["name"] = "name " + std::to_string(id);
    Json::Value out;
    EXPECT_EQ(0, store->recCreate(in, out));
    EXPECT_EQ(json(R"({"a": [1, 2]})"), out["data"]);

    Json::Value filter;
    filter["name"] = in["name"];
    Json::Value values = json(R"({"data": {"b": "new"}})");
    EXPECT_EQ(0, store->recUpdateByFilter(filter, values));
    Json::Value found;
    EXPECT_EQ(1, store->recGetOne(filter, found));
    EXPECT_EQ(values["data"], found["data"]);
    EXPECT_EQ(1, store->recDelete(filter));
}

}  // namespace

TEST(Threads, UseOneStoreInTurn)
{
    Store store(members, columns);
    std::mutex mutex;
    inThreads(
        [&](int thread)
        {
            for (int i = 0; i < rounds; ++i)
            {
                const std::lock_guard<std::mutex> lock(mutex);
                useStore(store, thread * rounds + i);
            }
        });
    EXPECT_TRUE(store.rows().empty());
}

// All objects of a process count as one: they share the current table's name and the type maps.
TEST(Threads, UseAStoreOfTheirOwnInTurn)
{
    std::mutex mutex;
    inThreads(
        [&](int thread)
        {
            std::optional<Store> store;
            for (int i = 0; i < rounds; ++i)
            {
                const std::lock_guard<std::mutex> lock(mutex);
                if (i % 50 == 0)
                    store.emplace(members, columns);  // a new table: its types are looked up for the first time
                useStore(*store, thread * rounds + i);
            }
            const std::lock_guard<std::mutex> lock(mutex);
            store.reset();
        });
}

TEST(Threads, HandAStoreOverWithItsConnection)
{
    std::optional<Store> store;
    runInThread([&] { store.emplace(members, columns); });
    for (int i = 0; i < 10; ++i)
        runInThread([&] { useStore(*store, i); });
    LogCapture capture;
    runInThread([&] { EXPECT_EQ(-1, store->operator->()->runSqlEx("no statement")); });
    runInThread([&] { store->operator->()->setErrMsg("from another thread"); });
    capture.stop();
    EXPECT_EQ("from another thread", store->operator->()->getErrMsg());
    runInThread([&] { store.reset(); });
}

TEST(Threads, CopyMembersAtOnce)
{
    const Json::Value from =
        json(R"({"a": [1, 2.5, "three"], "b": {"c": null}, "d": "a text of more than a few bytes"})");
    LogCapture capture;
    inThreads(
        [&](int)
        {
            for (int i = 0; i < rounds; ++i)
            {
                Json::Value to = json(R"({"a": "old", "z": 1})");
                Json::Value subset = from;
                EXPECT_EQ(0, VORN_JSON_DB::jsonCopyMember(to, subset, i % 2 == 0));
                EXPECT_EQ(i % 2 == 0 ? from["a"] : Json::Value("old"), to["a"]);
                EXPECT_EQ(from["b"], to["b"]);
                Json::Value wrong = 5;
                EXPECT_EQ(-1, VORN_JSON_DB::jsonCopyMember(wrong, subset, true));
            }
        });
    capture.stop();
    EXPECT_EQ(static_cast<size_t>(threadCount * rounds), capture.lines().size());
}

TEST(Threads, TellTimesAtOnce)
{
    LogCapture capture;
    inThreads(
        [&](int thread)
        {
            for (int i = 0; i < rounds; ++i)
            {
                long now = 0;
                EXPECT_EQ(0, VORN_JSON_DB::getTimeAfterNow(thread, now));
                EXPECT_LT(1000000000, now);
                std::string text;
                EXPECT_EQ(0, VORN_JSON_DB::getTimeAfterNow(i, text, 4));
                EXPECT_EQ(19U, text.size());
                EXPECT_EQ(0, VORN_JSON_DB::convert2ReadableTime(1000000000 + thread, text, 3));
                EXPECT_EQ("Sun, 09 Sep 2001 01:46:4" + std::to_string(thread) + " GMT", text);
                EXPECT_EQ(-1, VORN_JSON_DB::convert2ReadableTime(0, text, 0));
            }
        });
    capture.stop();
    EXPECT_EQ(static_cast<size_t>(threadCount * rounds), capture.lines().size());
}

TEST(Threads, DISABLED_UseStoresAtOnce)
{
    Store first(members, columns);
    Store second(members, columns);
    LogCapture capture;
    std::thread other(
        [&]
        {
            for (int i = 0; i < rounds; ++i)
                static_cast<void>(second->runSqlEx("select 1"));
        });
    for (int i = 0; i < rounds; ++i)
        static_cast<void>(first->runSqlEx("select 1"));
    other.join();
}

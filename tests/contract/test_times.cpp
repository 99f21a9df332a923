// SPDX-License-Identifier: MIT
//
// Times as stamps and as text. The C library's clock, conversions and strftime() are replaced so that a test can set
// the clock and let each of them fail.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <ctime>
#include <limits>
#include <optional>

#include "log_capture.h"
#include "store.h"

using namespace support;
using VORN_JSON_DB::convert2ReadableTime;
using VORN_JSON_DB::getTimeAfterNow;

namespace
{

std::optional<time_t> g_clock;  // what time() returns instead of the real time
bool g_conversionFails = false;
bool g_strftimeFails = false;
std::string g_strftimeText;  // what strftime() writes instead, if it fits
int g_conversions = 0;

// The functions' names in the C library. With a 64-bit time_t on a 32-bit system its headers rename them.
constexpr bool kRenamed = sizeof(time_t) > sizeof(long);
constexpr const char* timeName = kRenamed ? "__time64" : "time";
constexpr const char* gmtimeName = kRenamed ? "__gmtime64_r" : "gmtime_r";
constexpr const char* localtimeName = kRenamed ? "__localtime64_r" : "localtime_r";

template <class Function>
Function* original(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

tm* convert(const char* name, const time_t* stamp, tm* out)
{
    g_conversions++;
    if (g_conversionFails)
    {
        errno = EOVERFLOW;
        return nullptr;
    }
    return original<tm*(const time_t*, tm*)>(name)(stamp, out);
}

}  // namespace

// The library must find these, however the program is linked.
#define REPLACES_C_LIBRARY extern "C" __attribute__((visibility("default")))

REPLACES_C_LIBRARY time_t time(time_t* out) noexcept
{
    const time_t now = g_clock ? *g_clock : original<time_t(time_t*)>(timeName)(nullptr);
    if (out != nullptr)
        *out = now;
    return now;
}

REPLACES_C_LIBRARY tm* gmtime_r(const time_t* stamp, tm* out) noexcept
{
    return convert(gmtimeName, stamp, out);
}
REPLACES_C_LIBRARY tm* localtime_r(const time_t* stamp, tm* out) noexcept
{
    return convert(localtimeName, stamp, out);
}

REPLACES_C_LIBRARY size_t strftime(char* out, size_t size, const char* format, const tm* time) noexcept
{
    if (g_strftimeFails)
        return 0;
    if (!g_strftimeText.empty())
    {
        if (g_strftimeText.size() >= size)
            return 0;
        return g_strftimeText.copy(out, size);
    }
    return original<size_t(char*, size_t, const char*, const tm*)>("strftime")(out, size, format, time);
}

namespace
{

class Times : public testing::Test
{
protected:
    std::string out = "before";

    void SetUp() override { setZone("UTC0"); }

    void TearDown() override
    {
        g_clock.reset();
        g_conversionFails = false;
        g_strftimeFails = false;
        g_strftimeText.clear();
        setlocale(LC_ALL, "C");
    }

    static void setZone(const char* zone)
    {
        setenv("TZ", zone, 1);
        tzset();
    }
};

struct Row
{
    long stamp;
    int type;
    const char* text;
};

constexpr long summer = 1720000000;  // 2024-07-03 09:46:40 UTC

}  // namespace

TEST_F(Times, EveryCombinationOfBitsGivesItsTextInItsZone)
{
    setZone("XYZ-3");
    const Row rows[] = {
        {0, 2, "Thu, 01 Jan 1970 03:00:00 GMT"},
        {0, 3, "Thu, 01 Jan 1970 00:00:00 GMT"},
        {0, 4, "1970-01-01 03:00:00"},
        {0, 5, "1970-01-01 00:00:00"},
        {0, 6, "Thu, 01 Jan 1970 03:00:00 GMT"},
        {0, 7, "Thu, 01 Jan 1970 00:00:00 GMT"},
        {summer, 2, "Wed, 03 Jul 2024 12:46:40 GMT"},
        {summer, 3, "Wed, 03 Jul 2024 09:46:40 GMT"},
        {summer, 4, "2024-07-03 12:46:40"},
        {summer, 5, "2024-07-03 09:46:40"},
        {-1, 3, "Wed, 31 Dec 1969 23:59:59 GMT"},
        {-1, 4, "1970-01-01 02:59:59"},
        {951782400, 5, "2000-02-29 00:00:00"},
        {2147483647, 5, "2038-01-19 03:14:07"},
        {-2147483647L - 1, 5, "1901-12-13 20:45:52"},
    };
    for (const Row& row : rows)
    {
        // Further bits are ignored, the sign included.
        for (const int further : {0, 8, 0x7ffffff0, -8, std::numeric_limits<int>::min()})
        {
            out = "before";
            EXPECT_SILENT(0, convert2ReadableTime(row.stamp, out, row.type | further));
            EXPECT_EQ(row.text, out) << row.type << " " << further;
        }
    }
}

TEST_F(Times, StampsBeyond2038NeedA64BitLong)
{
    if constexpr (sizeof(long) == 8)
    {
        EXPECT_EQ(0, convert2ReadableTime(static_cast<long>(253402300799LL), out, 5));
        EXPECT_EQ("9999-12-31 23:59:59", out);
        EXPECT_EQ(0, convert2ReadableTime(static_cast<long>(253402300800LL), out, 5));
        EXPECT_EQ("10000-01-01 00:00:00", out);
    }
    else
    {
        EXPECT_EQ(0, convert2ReadableTime(std::numeric_limits<long>::max(), out, 5));
        EXPECT_EQ("2038-01-19 03:14:07", out);
    }
}

TEST_F(Times, LocalTimeFollowsTheZoneThatTzsetHasRead)
{
    setZone("ABC5");
    EXPECT_EQ(0, convert2ReadableTime(0, out, 4));
    EXPECT_EQ("1969-12-31 19:00:00", out);
    setZone("DEF-5:30");
    EXPECT_EQ(0, convert2ReadableTime(0, out, 4));
    EXPECT_EQ("1970-01-01 05:30:00", out);
    setenv("TZ", "ABC5", 1);
    EXPECT_EQ(0, convert2ReadableTime(0, out, 4));
    EXPECT_EQ("1970-01-01 05:30:00", out);
}

TEST_F(Times, LocalTimeFollowsDaylightSaving)
{
    setZone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(0, convert2ReadableTime(summer, out, 4));
    EXPECT_EQ("2024-07-03 11:46:40", out);
    EXPECT_EQ(0, convert2ReadableTime(0, out, 4));
    EXPECT_EQ("1970-01-01 01:00:00", out);
}

TEST_F(Times, NamesOfDaysAndMonthsFollowTheLocaleOfTheProcess)
{
    const char* const locales[] = {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "fr_FR.utf8", "es_ES.utf8"};
    bool found = false;
    for (const char* const locale : locales)
        found = found || setlocale(LC_TIME, locale) != nullptr;
    // The installed locale must have names of its own.
    char expected[100] = "";
    const time_t stamp = summer;
    tm parts{};
    std::strftime(expected, sizeof expected, "%a, %d %b %Y %T GMT", gmtime_r(&stamp, &parts));
    if (!found || expected == std::string("Wed, 03 Jul 2024 09:46:40 GMT"))
        GTEST_SKIP() << "no locale with other names is installed";
    EXPECT_EQ(0, convert2ReadableTime(summer, out, 3));
    EXPECT_EQ(expected, out);
}

TEST_F(Times, LocaleIsNeverSetByTheLibrary)
{
    const std::string before = setlocale(LC_ALL, nullptr);
    EXPECT_EQ(0, convert2ReadableTime(0, out, 2));
    EXPECT_EQ(before, setlocale(LC_ALL, nullptr));
}

LOGGED_TEST_F(Times, TypeWithoutAFormatIsRefusedAfterTheConversion)
{
    for (const int type : {0, 1, 8, 9, 16, -8, std::numeric_limits<int>::min()})
    {
        g_conversions = 0;
        EXPECT_LOGS(-1, convert2ReadableTime(0, out, type), inUtil(error("bad iType value=" + std::to_string(type))));
        EXPECT_EQ(1, g_conversions);
    }

    EXPECT_EQ("before", out);
}

TEST_F(Times, StampThatCannotBeConvertedIsRefused)
{
    g_conversionFails = true;
    const ExpectedLine utc = inUtil(failed("NULL == gmtime_r(&ullTimeStamp, &sTime)"));
    const ExpectedLine local = inUtil(failed("NULL == localtime_r(&ullTimeStamp, &sTime)"));
    forEachLogMode(
        [&]
        {
            for (const int type : {1, 3, 5, 7, 9})
                EXPECT_LOGS(-1, convert2ReadableTime(0, out, type), utc);
            for (const int type : {0, 2, 4, 6, 8})
                EXPECT_LOGS(-1, convert2ReadableTime(0, out, type), local);
        });
    EXPECT_EQ("before", out);
}

TEST_F(Times, YearBeyondTheRangeOfIntIsRefusedWhereLongCanHoldIt)
{
    if constexpr (sizeof(long) == 8)
    {
        for (const long stamp : {std::numeric_limits<long>::max(), std::numeric_limits<long>::min()})
        {
            EXPECT_LOGS(-1, convert2ReadableTime(stamp, out, 3),
                        inUtil(failed("NULL == gmtime_r(&ullTimeStamp, &sTime)")));
            EXPECT_LOGS(-1, convert2ReadableTime(stamp, out, 4),
                        inUtil(failed("NULL == localtime_r(&ullTimeStamp, &sTime)")));
        }
        EXPECT_EQ("before", out);
    }
    else
    {
        EXPECT_EQ(0, convert2ReadableTime(std::numeric_limits<long>::max(), out, 3));
        EXPECT_EQ("Tue, 19 Jan 2038 03:14:07 GMT", out);
    }
}

TEST_F(Times, FormatThatGivesNoTextIsRefused)
{
    g_strftimeFails = true;
    const ExpectedLine gmt = inUtil(failed(R"(0 == strftime(szTime, sizeof(szTime), "%a, %d %b %Y %T GMT", &sTime))"));
    const ExpectedLine plain = inUtil(failed(R"(0 == strftime(szTime, sizeof(szTime), "%Y-%m-%d %H:%M:%S", &sTime))"));
    forEachLogMode(
        [&]
        {
            for (const int type : {2, 3, 6, 7})
                EXPECT_LOGS(-1, convert2ReadableTime(0, out, type), gmt);
            for (const int type : {4, 5})
                EXPECT_LOGS(-1, convert2ReadableTime(0, out, type), plain);
        });
    EXPECT_EQ("before", out);
}

TEST_F(Times, TextMayHaveUpTo1023Bytes)
{
    for (const int type : {2, 3, 4, 5})
    {
        out = "before";
        g_strftimeText = std::string(1023, 'n');
        EXPECT_EQ(0, convert2ReadableTime(0, out, type));
        EXPECT_EQ(g_strftimeText, out);

        g_strftimeText = std::string(1024, 'n');
        const LogCapture quiet;
        EXPECT_EQ(-1, convert2ReadableTime(0, out, type));
        EXPECT_EQ(std::string(1023, 'n'), out);
    }
}

TEST_F(Times, StampAfterNowIsTheClockPlusTheOffset)
{
    g_clock = summer;
    for (const int offset : {0, 1, -1, 86400, -86400, 400000000, -std::numeric_limits<int>::max()})
    {
        long now = 77;
        EXPECT_SILENT(0, getTimeAfterNow(offset, now));
        EXPECT_EQ(summer + offset, now);
    }
}

TEST_F(Times, ClockThatCannotBeReadIsNotNoticed)
{
    g_clock = -1;
    long now = 77;
    EXPECT_SILENT(0, getTimeAfterNow(0, now));
    EXPECT_EQ(-1, now);
}

TEST_F(Times, StampAfterNowFollowsTheRealClock)
{
    const time_t before = time(nullptr);
    long now = 0;
    EXPECT_EQ(0, getTimeAfterNow(0, now));
    EXPECT_LE(before, now);
    EXPECT_LE(now, time(nullptr));
}

TEST_F(Times, TextAfterNowIsThatOfTheStamp)
{
    setZone("XYZ-3");
    g_clock = summer;
    struct OffsetRow
    {
        int offset;
        int type;
        const char* text;
    };
    const OffsetRow rows[] = {
        {0, 3, "Wed, 03 Jul 2024 09:46:40 GMT"},
        {0, 2, "Wed, 03 Jul 2024 12:46:40 GMT"},
        {60, 5, "2024-07-03 09:47:40"},
        {-86400, 4, "2024-07-02 12:46:40"},
        {86400, 7, "Thu, 04 Jul 2024 09:46:40 GMT"},
        {-summer, 5, "1970-01-01 00:00:00"},
    };
    for (const OffsetRow& row : rows)
    {
        out = "before";
        EXPECT_SILENT(0, getTimeAfterNow(row.offset, out, row.type));
        EXPECT_EQ(row.text, out);
    }
}

LOGGED_TEST_F(Times, TextAfterNowReportsAFailureAtBothLevels)
{
    const ExpectedLine outer = inUtil(failed("0 > convert2ReadableTime(now, strOut, iType)"));
    EXPECT_LOGS(-1, getTimeAfterNow(0, out, 1), inUtil(error("bad iType value=1")), outer);
    g_conversionFails = true;
    EXPECT_LOGS(-1, getTimeAfterNow(0, out, 3), inUtil(failed("NULL == gmtime_r(&ullTimeStamp, &sTime)")), outer);
    g_conversionFails = false;
    g_strftimeFails = true;
    EXPECT_LOGS(-1, getTimeAfterNow(0, out, 4),
                inUtil(failed(R"(0 == strftime(szTime, sizeof(szTime), "%Y-%m-%d %H:%M:%S", &sTime))")), outer);
    g_strftimeFails = false;

    EXPECT_EQ("before", out);
}

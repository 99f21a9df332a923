// SPDX-License-Identifier: MIT
//
// The free functions: type maps, copying members, times.

#include <ctime>

#include <VornJsonDbApi.h>

#include "../core/json_text.h"
#include "log.h"

namespace
{

constexpr const char* kLogFile = "util";

// The type maps of all tables, keyed by table name. An entry is made once and never changes again. They are never
// destroyed: the host's own static objects may use tables while they are destroyed.
Json::Value& typeMapCache()
{
    static Json::Value& jType = *new Json::Value;
    return jType;
}

// Adds the type map's entry for every member of the definition. False at a member without a usable type.
bool readMembers(Json::Value& jTableDef, std::string& strJsonName, Json::Value& jMembers)
{
    for (const std::string& strKey : jTableDef[strJsonName]["member"].getMemberNames())
    {
        if (VORN_FAILED(!jTableDef[strJsonName]["member"][strKey].isMember("cpptype")) ||
            VORN_FAILED(!jTableDef[strJsonName]["member"][strKey]["cpptype"].isString()))
            return false;
        const Json::Value& jDefined = jTableDef[strJsonName]["member"][strKey];
        Json::Value jMember(Json::objectValue);
        jMember["cpptype"] = jDefined["cpptype"];
        if (jDefined.isMember("cppDefaultValue"))
            jMember["cppDefaultValue"] = jDefined["cppDefaultValue"];
        jMembers[strKey].swap(jMember);
    }
    return true;
}

// Enters the type map of the table into the cache, in one step: a map cut short by lack of memory would stay for the
// life of the process. A bad definition is entered as far as it goes.
bool enterTypeMap(Json::Value& jTableDef, std::string& strJsonName, Json::Value& jType)
{
    if (VORN_FAILED(jTableDef.empty()) || VORN_FAILED(!jTableDef.isMember(strJsonName)) ||
        VORN_FAILED(!jTableDef[strJsonName].isObject()) || VORN_FAILED(!jTableDef[strJsonName].isMember("member")) ||
        VORN_FAILED(!jTableDef[strJsonName]["member"].isObject()) || VORN_FAILED(strJsonName.empty()))
        return false;

    Json::Value jMembers;
    const auto enter = [&]
    {
        if (!jMembers.isNull())
            jType[strJsonName].swap(jMembers);
    };
    try
    {
        const bool blDone = readMembers(jTableDef, strJsonName, jMembers);
        enter();
        return blDone;
    }
    catch (const Json::LogicError&)  // a member's entry is of another kind
    {
        enter();
        throw;
    }
}

bool formatTime(const struct tm& sTime, int iType, std::string& strOut)
{
    constexpr int kHttpDate = 2;
    constexpr int kPlain = 4;

    char szTime[1024] = {};
    // Both formats fit the buffer in every locale of the C library, so neither check can fail with it.
    if ((iType & kHttpDate) != 0)
    {
        if (VORN_FAILED(0 == strftime(szTime, sizeof(szTime), "%a, %d %b %Y %T GMT", &sTime)))
            return false;
    }
    else if ((iType & kPlain) != 0)
    {
        if (VORN_FAILED(0 == strftime(szTime, sizeof(szTime), "%Y-%m-%d %H:%M:%S", &sTime)))
            return false;
    }
    else
    {
        VORN_ERROR("bad iType value=%d", iType);
        return false;
    }
    strOut = szTime;
    return true;
}

}  // namespace

namespace VORN_JSON_DB
{

Json::Value& recType(Json::Value& jTableDef, std::string& strJsonName)
{
    Json::Value& jType = typeMapCache();
    const auto found = [&]
    {
        if (!jType.isMember(strJsonName) && (!enterTypeMap(jTableDef, strJsonName, jType) ||
                                             VORN_FAILED(jType == Json::nullValue || !jType.isMember(strJsonName))))
            return false;
        return !VORN_FAILED(jType[strJsonName].type() != Json::objectValue);
    };
    if (found())
        return jType[strJsonName];

    VORN_TRACE("strJsonName=%s", strJsonName.c_str());
    VORN_TRACE("jTableDef=%s", toString(jTableDef).c_str());
    VORN_TRACE("jType=%s", toString(jType).c_str());
    return jType[strJsonName];
}

int jsonCopyMember(Json::Value& jIn, Json::Value& jSubSet, bool blOverwrite)
{
    if (VORN_FAILED(jIn.type() != Json::nullValue && jIn.type() != Json::objectValue) ||
        VORN_FAILED(jSubSet.type() != Json::objectValue))
        return -1;

    for (const std::string& strName : jSubSet.getMemberNames())
        if (blOverwrite || !jIn.isMember(strName))
            jIn[strName] = jSubSet[strName];
    return 0;
}

int getTimeAfterNow(int offsetSecond, long& now)
{
    // Added without a sign, so that a sum beyond the range of long wraps instead of being undefined.
    now = static_cast<long>(static_cast<unsigned long>(time(nullptr)) + static_cast<unsigned long>(offsetSecond));
    return 0;
}

int getTimeAfterNow(int offsetSecond, std::string& strOut, int iType)
{
    long now = 0;
    // The other overload always returns 0, so its check cannot fail.
    if (VORN_FAILED(0 > getTimeAfterNow(offsetSecond, now)) ||
        VORN_FAILED(0 > convert2ReadableTime(now, strOut, iType)))
        return -1;
    return 0;
}

int convert2ReadableTime(long stamp, std::string& strOut, int iType)
{
    constexpr int kUtc = 1;

    const time_t ullTimeStamp = stamp;  // time_t may be wider than long
    struct tm sTime = {};
    if ((iType & kUtc) != 0)
    {
        if (VORN_FAILED(NULL == gmtime_r(&ullTimeStamp, &sTime)))
            return -1;
    }
    else if (VORN_FAILED(NULL == localtime_r(&ullTimeStamp, &sTime)))
    {
        return -1;
    }
    return formatTime(sTime, iType, strOut) ? 0 : -1;
}

}  // namespace VORN_JSON_DB

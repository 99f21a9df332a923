// SPDX-License-Identifier: MIT

#include "record_source.h"

#include "csv_source.h"
#include "json_source.h"

namespace cli
{

namespace
{

bool endsWith(const std::string& strText, const std::string& strEnd)
{
    return strText.size() >= strEnd.size() &&
           strText.compare(strText.size() - strEnd.size(), strEnd.size(), strEnd) == 0;
}

std::string formatOf(Input& input)
{
    if (endsWith(input.name(), ".csv"))
        return "csv";
    if (endsWith(input.name(), ".jsonl") || endsWith(input.name(), ".ndjson"))
        return "jsonl";
    if (endsWith(input.name(), ".json"))
        return "json";
    switch (input.peek())
    {
        case '[':
            return "json";
        case '{':
            return "jsonl";
        default:
            return "csv";
    }
}

}  // namespace

std::unique_ptr<RecordSource> openSource(Input& input, const std::string& strFormat, const Json::Value& jMembers,
                                         bool blPlainTexts)
{
    input.skipByteOrderMark();
    const std::string strKnown = strFormat.empty() ? formatOf(input) : strFormat;
    if (strKnown == "json")
        return std::make_unique<JsonArray>(input);
    if (strKnown == "jsonl")
        return std::make_unique<JsonLines>(input);
    return std::make_unique<Csv>(input, jMembers, blPlainTexts);
}

}  // namespace cli

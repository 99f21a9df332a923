// SPDX-License-Identifier: MIT
//
// JSON lines, and the items of a JSON array, which may be the one member of an object. JsonCpp reads whole texts only,
// so the items are cut out here by their brackets and quotes, one at a time; JsonCpp then reads each.

#ifndef VORN_CLI_JSON_SOURCE_H
#define VORN_CLI_JSON_SOURCE_H

#include "record_source.h"

namespace cli
{

class JsonLines : public RecordSource
{
public:
    explicit JsonLines(Input& input) : m_input(input) {}
    bool next(Json::Value& jRec, std::string& strText, std::string& strProblem) override;

private:
    Input& m_input;
    std::uint64_t m_line = 0;
};

class JsonArray : public RecordSource
{
public:
    explicit JsonArray(Input& input);
    bool next(Json::Value& jRec, std::string& strText, std::string& strProblem) override;

private:
    int skipSpace();
    void skipName();
    void readItem(std::string& strText);

    Input& m_input;
    std::uint64_t m_item = 0;
    bool m_blWrapped = false;  // {"name": [...]}
    bool m_blEnded = false;
};

}  // namespace cli

#endif  // VORN_CLI_JSON_SOURCE_H

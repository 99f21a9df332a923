// SPDX-License-Identifier: MIT
//
// Records on their way out: a table for people, JSON or CSV for programs.

#ifndef VORN_CLI_RECORD_SINK_H
#define VORN_CLI_RECORD_SINK_H

#include <json/json.h>

#include <memory>
#include <string>
#include <vector>

#include "output.h"

namespace cli
{

class RecordSink
{
public:
    virtual ~RecordSink() = default;
    virtual void write(const Json::Value& jRec) = 0;
    virtual void finish() {}
};

// strFormat: "table", "json", "jsonl", "csv", or "" for a table where the output is a terminal and JSON lines
// elsewhere. names are the columns of tables and CSV, in order. What cannot be written is told by Output::finish().
std::unique_ptr<RecordSink> openSink(Output& output, const std::string& strFormat,
                                     const std::vector<std::string>& names);

// A value on one line, UTF-8 as it is.
std::string compact(const Json::Value& jValue);

// A table, with "" where a record lacks a member.
std::unique_ptr<RecordSink> openTable(Output& output, const std::vector<std::string>& names);

}  // namespace cli

#endif  // VORN_CLI_RECORD_SINK_H

// SPDX-License-Identifier: MIT
//
// One function for each command. It returns the exit status, or throws an Error.

#ifndef VORN_CLI_COMMANDS_H
#define VORN_CLI_COMMANDS_H

#include <string>
#include <vector>

#include "options.h"
#include "store.h"

namespace cli
{

int list(const Options& options);
int get(const Options& options);
int count(const Options& options);
int explain(const Options& options);

int create(const Options& options);
int set(const Options& options);
int erase(const Options& options);

int importRecords(const Options& options);
int exportRecords(const Options& options);

int check(const Options& options);
int upgrade(const Options& options);
int init(const Options& options);

// The request of a filter with --sort, --limit, --offset and --fields.
Json::Value requestOf(const Options& options, const Json::Value& jMembers);

// The columns of a table or CSV: --fields in their order, or every member.
std::vector<std::string> columnsOf(const Options& options, const Json::Value& jMembers);

// Throws what the table said of its last operation.
void require(const vorn::Table& table, bool blHolds);

}  // namespace cli

#endif  // VORN_CLI_COMMANDS_H

// SPDX-License-Identifier: MIT
//
// Several statements, one after the other.

#ifndef VORN_SCRIPT_H
#define VORN_SCRIPT_H

#include <vorn/status.h>

#include <string>

struct sqlite3;

namespace vorn
{

class Definition;
class Waiter;

// Runs the statements of the text; rows are left aside. A statement that meets a lock is repeated by itself. The
// definition, where there is one, tells the member that a broken constraint names.
bool runScript(sqlite3* pDb, const std::string& strSql, Waiter& waiter, Status& status,
               const Definition* pDefinition = nullptr);

}  // namespace vorn

#endif  // VORN_SCRIPT_H

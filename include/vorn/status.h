// SPDX-License-Identifier: MIT
//
// What an operation of vorn::Table or vorn::Transaction says of its last call.

#ifndef VORN_STATUS_H
#define VORN_STATUS_H

#include <string>

#if defined(__GNUC__)
#define VORN_TABLE_EXPORT __attribute__((visibility("default")))
#else
#define VORN_TABLE_EXPORT
#endif

namespace vorn
{

// The kinds of failure. Requests are checked before any lock or column, so a mistake in the request comes first.
enum class Code
{
    Ok,             // the operation succeeded
    BadDefinition,  // the definition given to the constructor cannot be used
    BadRequest,     // a request, filter or argument that is malformed
    UnknownMember,  // a member that the definition does not declare
    BadType,        // a value of another JSON kind than the member's type accepts
    OutOfRange,     // a number beyond the type's range, or a text beyond SQLite's limit
    Missing,        // the table, or a declared column of it, does not exist
    Duplicate,      // a primary key or unique member has that value already
    Constraint,     // NOT NULL, CHECK, a foreign key or a trigger refused
    Locked,         // another connection holds a lock and did not give it back in time
    Full,           // the disk, or the largest size of the database, is reached
    ReadOnly,       // the database cannot be written
    BadCell,        // a stored value cannot be read as its member's type
    Corrupt,        // the file is damaged or no database
    Interrupted,    // sqlite3_interrupt(), or a progress handler, ended the statement
    Misuse,         // null connection, moved-from object, empty visitor, a Transaction that is not open
    Sqlite          // every other failure of SQLite: see Status::sqlite
};

// The name of a code as it is written above: "Duplicate". Static; never null.
VORN_TABLE_EXPORT const char* codeName(Code code);

struct Status
{
    Code code = Code::Ok;
    std::string member;    // the member, path, operator or request key concerned, or ""
    std::string text;      // one sentence for people; names members, types and limits, never a stored or given value
    int sqlite = 0;        // SQLite's extended result code, or 0
    long long index = -1;  // recCreateAll(): the record that is to blame, counted from 0, or -1
};

}  // namespace vorn

#endif  // VORN_STATUS_H

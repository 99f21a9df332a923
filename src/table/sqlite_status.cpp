// SPDX-License-Identifier: MIT

#include "sqlite_status.h"

#include <sqlite3.h>

#include <string_view>

#include "cell_value.h"
#include "definition.h"
#include "failure.h"
#include "join.h"

namespace vorn
{

namespace
{

constexpr int kPrimary = 0xff;

bool failWith(Status& status, int iResult, std::string_view member, const char* szText, std::string_view detail = {})
{
    fail(status, codeOf(iResult), member, szText, detail);
    status.sqlite = iResult;
    return false;
}

// The first member that a text such as "NOT NULL constraint failed: table.member" names, or "".
std::string_view constraintMember(const Definition& definition, std::string_view message)
{
    const std::string strBefore = join({" constraint failed: ", definition.name(), "."});
    const std::size_t place = message.find(strBefore);
    if (place == std::string_view::npos)
        return {};
    const std::string_view columns = message.substr(place + strBefore.size());
    const std::string strNext = join({", ", definition.name(), "."});
    std::string_view found;
    for (const Member& member : definition.members())
    {
        const std::size_t length = member.name.size();
        if (length <= found.size() || columns.size() < length ||
            sqlite3_strnicmp(columns.data(), member.name.data(), static_cast<int>(length)) != 0)
            continue;
        const std::string_view rest = columns.substr(length);
        if (rest.empty() || rest.substr(0, strNext.size()) == strNext)
            found = member.name;
    }
    return found;
}

// "^" is for the member.
const char* constraintText(int iResult)
{
    switch (iResult)
    {
        case SQLITE_CONSTRAINT_PRIMARYKEY:
        case SQLITE_CONSTRAINT_ROWID:
            return "A record with this primary key exists already^.";
        case SQLITE_CONSTRAINT_UNIQUE:
            return "A record with this value of a unique member exists already^.";
        case SQLITE_CONSTRAINT_NOTNULL:
            return "A member that must be given is absent^.";
        case SQLITE_CONSTRAINT_CHECK:
            return "A CHECK constraint of the table refuses the record.";
        case SQLITE_CONSTRAINT_FOREIGNKEY:
            return "A foreign key refuses the change.";
        case SQLITE_CONSTRAINT_TRIGGER:
            return "A trigger refuses the change.";
        default:
            return "A constraint of the table refuses the change^.";
    }
}

// What SQLite says of a statement that is right, but too deep or too long.
bool isTooMuch(std::string_view message)
{
    for (const std::string_view known :
         {"parser stack overflow", "Expression tree is too large", "too many SQL variables", "too many terms in"})
        if (message.substr(0, known.size()) == known)
            return true;
    return false;
}

// What SQLite says where it was built without its JSON functions.
bool lacksJson(std::string_view message)
{
    for (const std::string_view known : {"no such table: json_each", "no such function: json_"})
        if (message.substr(0, known.size()) == known)
            return true;
    return false;
}

}  // namespace

Code codeOf(int iResult)
{
    switch (iResult & kPrimary)
    {
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
        case SQLITE_PROTOCOL:
            return Code::Locked;
        case SQLITE_FULL:
            return Code::Full;
        case SQLITE_READONLY:
            return Code::ReadOnly;
        case SQLITE_CORRUPT:
        case SQLITE_NOTADB:
            return Code::Corrupt;
        case SQLITE_INTERRUPT:
            return Code::Interrupted;
        case SQLITE_MISMATCH:
            return Code::BadType;
        case SQLITE_TOOBIG:
            return Code::OutOfRange;
        case SQLITE_CONSTRAINT:
            return iResult == SQLITE_CONSTRAINT_UNIQUE || iResult == SQLITE_CONSTRAINT_PRIMARYKEY ||
                           iResult == SQLITE_CONSTRAINT_ROWID
                       ? Code::Duplicate
                       : Code::Constraint;
        default:
            return Code::Sqlite;
    }
}

bool failSqlite(Status& status, sqlite3* pDb, int iResult, const Definition* pDefinition)
{
    switch (codeOf(iResult))
    {
        case Code::Duplicate:
        case Code::Constraint:
        {
            const std::string_view member =
                pDefinition != nullptr ? constraintMember(*pDefinition, sqlite3_errmsg(pDb)) : std::string_view();
            return failWith(status, iResult, member, constraintText(iResult),
                            member.empty() ? std::string() : join({" (", shown(member), ")"}));
        }
        case Code::Locked:
            return failWith(status, iResult, "", "Another connection holds a lock on the database.");
        case Code::BadType:
            return failWith(status, iResult, "", "SQLite refuses a value because its column takes another type.");
        case Code::OutOfRange:
            return failWith(status, iResult, "", "A value is larger than SQLite's limit.");
        default:
            return failWith(status, iResult, "", "SQLite: ^.", sqlite3_errstr(iResult));
    }
}

bool failPrepare(Status& status, sqlite3* pDb, int iResult)
{
    const std::string_view message = sqlite3_errmsg(pDb);
    if ((iResult & kPrimary) != SQLITE_ERROR)
        return failSqlite(status, pDb, iResult);
    if (isTooMuch(message))
    {
        fail(status, Code::BadRequest, "", "The request is too much for SQLite: ^.", message);
        status.sqlite = iResult;
        return false;
    }
    if (lacksJson(message))
        return failWith(status, iResult, "",
                        "This SQLite was built without its JSON functions, which paths and very long lists need.");
    return failWith(status, iResult, "", "SQLite: ^.", message);
}

bool failStale(Status& status, int iResult)
{
    return failWith(status, iResult, "",
                    "Another connection writes and this transaction has read before: waiting cannot help. Roll it "
                    "back and begin again with vorn::Transaction, which takes the writer's lock at once.");
}

void noteRollback(Status& status, sqlite3* pDb, bool blHadTransaction)
{
    if (blHadTransaction && sqlite3_get_autocommit(pDb) != 0)
        status.text += " SQLite has rolled back the whole transaction.";
}

}  // namespace vorn

// SPDX-License-Identifier: MIT
//
// libvornjsondb: one table of an SQLite database, worked with as JSON records.
//
// Conventions
//
//  1. Status. Every operation returns an int. A negative result (always -1) is a failure; success is 0 unless the
//     operation says otherwise. Out-parameters are untouched on failure unless the operation says otherwise. What
//     failed is told by the log lines (7), not by the result.
//  2. Two failure texts live in the object: SQLite's text of the last failed statement, which only the log lines show,
//     and the error message, read with getErrMsg(). recCreate() and recUpdateByFilter() set the latter to
//     "DUPLICATE_PRIMARY_KEY"; the library never clears it. Clear it yourself with setErrMsg("") before a call that you
//     want to judge by it.
//  3. Ownership. The caller owns the connection and every value it passes. The object copies the table's name, its
//     definition and its create statement. The connection must outlive the object; the object never closes it.
//  4. Threads. The class keeps process-wide state without a lock (the current table's name and the cache of type maps):
//     use all objects of a process from one thread at a time. The time helpers and jsonCopyMember() work only on their
//     arguments and may run on any number of threads.
//  5. Exceptions. The library throws none of its own. Those of JsonCpp (Json::LogicError for a value of the wrong kind,
//     Json::RuntimeError) and of the standard library (std::bad_alloc; std::logic_error when SQLite's formatter had no
//     memory) pass through to the caller. Whatever the library holds is released first, and none of them ever crosses
//     SQLite's own frames.
//  6. Records. A record is a JSON object whose member names are column names. A table definition is
//       { TABLE: { "member": { NAME: { "cpptype": TYPE, "cppDefaultValue": ANY }, ... } } }
//     with "cppDefaultValue" optional. Members are always taken in ascending order of their names.
//  7. Logging. The host process defines two variables, which the library reads afresh at every line:
//       bool blLogToStdout = false;   // true: lines go to standard output; false: to syslog(LOG_ERR, ...)
//       bool blDebugOutput = false;   // true: debug lines are written too
//     They are left undefined in the library, and this header does not declare them: define them in any one file of the
//     program. A program that is linked with -fvisibility=hidden marks them __attribute__((visibility("default"))); one
//     that loads the library with dlopen() is linked with -rdynamic.
//  8. SQL text. These arguments become part of a statement as they stand and must never come from outside the program:
//     the table's name, member names, the create statement, "vornSqlWhereFilter", strSqlWhere, "limit", "offset", the
//     text given to runSqlEx(), and in conditions every value of a member that is not "string", "bool" or a JSON type
//     (in list conditions of "bool" too). String and JSON values are quoted by sqlite3_mprintf(); in a saved record,
//     though, a '%' in any value but the last is read as a conversion by the values behind it and can undo their
//     quotes. Check values from outside for '%' before recCreate() and recSave(), or write them with
//     recUpdateByFilter().
//  9. Text ends at its first NUL character wherever it passes through SQLite's formatter or comes back from a row.

#ifndef VORN_JSON_DB_API_H
#define VORN_JSON_DB_API_H

#include <json/json.h>
#include <sqlite3.h>

#include <string>
#include <vector>

#if defined(__GNUC__)
#define VORN_JSON_DB_EXPORT __attribute__((visibility("default")))
#else
#define VORN_JSON_DB_EXPORT
#endif

// Joiner kinds: the third argument of VornJsonDbApi::SqlExpandMemberList().
constexpr int VORN_SQL_WHERE_TYPE_OR = 0;     // (a or b )
constexpr int VORN_SQL_WHERE_TYPE_AND = 1;    // (a and b )
constexpr int VORN_SQL_WHERE_TYPE_COMMA = 2;  // a , b

// One table of one database. Not copyable.
class VornJsonDbApi
{
public:
    // Keeps pDb and copies of the other arguments, then runs strSqlCreate with tableCreate(). Construction always
    // completes: bad arguments (null connection, empty name, definition or statement) and a failed statement are only
    // logged, and later operations fail at their own statement. strName is both the SQL name of the table and the key
    // of its entry in jTableDef. The statement runs at every construction, so write CREATE TABLE IF NOT EXISTS. The
    // table needs a rowid (no WITHOUT ROWID), because recSave() reads the new row back by it.
    VORN_JSON_DB_EXPORT VornJsonDbApi(sqlite3* pDb, std::string& strName, Json::Value& jTableDef,
                                      std::string& strSqlCreate);

    // Leaves the connection open and the database untouched.
    VORN_JSON_DB_EXPORT ~VornJsonDbApi();

    VornJsonDbApi(const VornJsonDbApi&) = delete;
    VornJsonDbApi& operator=(const VornJsonDbApi&) = delete;

    // The message that tells one failure from another: "DUPLICATE_PRIMARY_KEY", what setErrMsg() stored, or "".
    VORN_JSON_DB_EXPORT std::string getErrMsg();
    VORN_JSON_DB_EXPORT void setErrMsg(std::string strErrMsg);

    // Runs the create statement once more. 0 when SQLite ran it, which does not say that the table fits its definition;
    // -1 with SQLite's text in the log.
    VORN_JSON_DB_EXPORT int tableCreate();

    // Records

    // Stores a copy of jRecIn as a new row: declared defaults are filled in, declared members are checked against their
    // types, the row is inserted and read back into jRecOut as it was stored. 0 or -1; a duplicate key is told by
    // getErrMsg(). Members that the definition does not declare are not written. The definition's last member (by name)
    // must be present or have a default, or SQLite rejects the statement. jRecIn and jRecOut may be the same object.
    VORN_JSON_DB_EXPORT int recCreate(Json::Value& jRecIn, Json::Value& jRecOut);

    // Writes one row as it is given, without defaults and type check: INSERT when blCreate is true, REPLACE when false
    // (a replaced row keeps nothing of the old one). On success jRecInOut becomes the stored row. 0 or -1; -1 with the
    // row written is possible when nothing could be read back.
    VORN_JSON_DB_EXPORT int recSave(Json::Value& jRecInOut, bool blCreate);

    // Appends every matching record to jRecArrayOut (null or an array, which is not emptied first). jRecParam is null
    // or an object that holds conditions, joined by "and", and the list parameters of SqlFilterConditionFromJson(). 0
    // or -1; on -1 the rows read before the failure stay in the array.
    VORN_JSON_DB_EXPORT int recList(Json::Value& jRecParam, Json::Value& jRecArrayOut);

    // Copies the members of the first matching record over those of jRecOut; members that the record lacks (SQL NULL)
    // stay as they were. 1 when found, 0 when not (jRecOut untouched), -1 on failure. No limit is added: set "limit" to
    // 1 when many rows may match.
    VORN_JSON_DB_EXPORT int recGetOne(Json::Value& jRecParam, Json::Value& jRecOut);

    // Assigns the declared members of jParamIn in every row that matches the conditions of jFilterIn, after checking
    // their types. Both are objects; a filter without any usable condition is refused. 0 (also when no row matched) or
    // -1; a duplicate key is told by getErrMsg().
    VORN_JSON_DB_EXPORT int recUpdateByFilter(Json::Value& jFilterIn, Json::Value& jParamIn);

    // As recUpdateByFilter(), without type check and message, on the rows that the SQL condition strSqlWhere selects,
    // which is run as it stands and must not be empty.
    VORN_JSON_DB_EXPORT int recUpdateByWhere(Json::Value& jRecIn, std::string& strSqlWhere);

    // Deletes the rows that match the conditions of the object jRecParam. Without any condition nothing is deleted,
    // unless blAllowAll is true: then every row is. Returns the count of deleted rows, or -1.
    VORN_JSON_DB_EXPORT int recDelete(Json::Value& jRecParam, bool blAllowAll = false);

    // Deletes every row. Returns their count, or -1.
    VORN_JSON_DB_EXPORT int recDeleteAll();

    // Deletes the rows whose member szKey, which must be declared "string", meets the list condition of strVector. More
    // than one value reads as one literal (see SqlMakeByListField()): call recDeleteByName() once a value instead.
    // Returns the count of deleted rows, or -1.
    VORN_JSON_DB_EXPORT int recDeleteByArray(std::vector<std::string>& strVector, const char* szKey);

    // Deletes the rows whose "string" member szKey equals strValue, which must not be empty. Returns their count, or
    // -1.
    VORN_JSON_DB_EXPORT int recDeleteByName(std::string& strValue, const char* szKey);

    // Statements

    // Runs SQL text (one statement or several) with sqlite3_exec(). While SQLite reports "database is locked" the whole
    // text is run again, at most 500 times with 10 ms between, so about 5 seconds; a busy timeout or handler of the
    // connection is waited out at each of these attempts. callback has sqlite3_exec()'s shape and gets pContext; pass
    // DbCallBackFillList and the address of a Json::Value to collect records. A callback that returns non-zero ends the
    // query for good. An exception thrown by it is held back until SQLite has finished and is then raised again.
    // Returns 0 with a callback, sqlite3_changes() without one, -1 on failure.
    VORN_JSON_DB_EXPORT int runSqlEx(std::string strSql, int (*callback)(void*, int, char**, char**) = nullptr,
                                     void* pContext = nullptr);

    // Row callback: appends the row as one record to the Json::Value (null or an array) at pjRecArray. Member types are
    // those of the table whose object ran the last statement; when no operation has used that table yet, call recType()
    // first, or the table stays without types. 0, or -1 to stop the query.
    VORN_JSON_DB_EXPORT static int DbCallBackFillList(void* pjRecArray, int n_column, char** column_value,
                                                      char** column_name);

    // Fills the record *pjRec (not null) from one row. 0 or -1.
    VORN_JSON_DB_EXPORT static int DbCallBackFillRec(Json::Value* pjRec, int n_column, char** column_value,
                                                     char** column_name);

    // Sets the member of jRec for column i, converted by its declared type; SQL NULL leaves it absent. 0 or -1.
    VORN_JSON_DB_EXPORT static int DbCallBackFillField(Json::Value& jRec, char** column_name, char** column_value,
                                                       int i);

    // Checks and defaults

    // Checks every declared member that the object jRecParam holds against its declared type. 0, or -1 at the first
    // that does not fit. Accepts "int", "long long", "uid_t", "time_t" (isIntegral), "bool", "string",
    // "Json::arrayValue" and "Json::objectValue"; a member declared with any other type is refused.
    VORN_JSON_DB_EXPORT int checkJsonType(Json::Value& jRecParam);

    // blRequireAll false: gives every declared member that jParam lacks its declared default, if it has one; returns 0.
    // blRequireAll true: changes nothing; -1 at the first declared member that jParam lacks, else 0.
    VORN_JSON_DB_EXPORT int fillDefaultValue(Json::Value& jParam, bool blRequireAll);

    // SQL text

    // Appends the column list: every declared member, or only those that *pjRec holds. Always 0. Without the
    // definition's last member the list ends in ",".
    VORN_JSON_DB_EXPORT int SqlExpandMemberName(std::string& strOut, Json::Value* pjRec = nullptr);

    // Appends the value list of the members that jRec holds, and ") " after the definition's last member. Each value is
    // formatted together with the text before it, so a '%' survives only in the last value (convention 8). 0 or -1.
    VORN_JSON_DB_EXPORT int SqlExpandMemberSymbol(std::string& strOut, Json::Value& jRec);

    // Appends the condition NAME=VALUE: quoted for "string" and JSON types, 1 or 0 for "bool", bare for all others.
    // 0 or -1.
    VORN_JSON_DB_EXPORT int SqlMakeByMatchField(std::string& strField, Json::Value& jParam, std::string& strOut);

    // Appends the condition NAME in (VALUES ). The values stand without a separator, so more than one reads as one
    // literal; an empty array appends nothing. 0 or -1.
    VORN_JSON_DB_EXPORT int SqlMakeByListField(const char* szField, Json::Value& jList, std::string& strOut);

    // Appends one condition for each declared member of jRecParam (null or an object), joined by andType; an array
    // value becomes a list condition. The string member "vornSqlWhereFilter" is raw SQL and is inserted as it stands:
    // put it in parentheses, or an "or" in it takes the other conditions apart. Members that are not declared are
    // passed over. 0, 1 when there was nothing to write, or -1 (strSqlWhereOut may then hold an unfinished condition).
    VORN_JSON_DB_EXPORT int SqlExpandMemberList(Json::Value& jRecParam, std::string& strSqlWhereOut, int andType);

    // Appends the clause for "sort_by" (a string, written as a quoted literal), "sort_direction" ("desc", anything else
    // is ascending), "limit" and "offset" (written unchecked). 0 or -1.
    VORN_JSON_DB_EXPORT int SqlFilterConditionFromJson(Json::Value& jFilter, std::string& strOut);

    // Sets the member szKey of jParamOut (null or an object) to an array of the strings. 0 or -1.
    VORN_JSON_DB_EXPORT int VectorParamToJson(std::vector<std::string>& strVector, const char* szKey,
                                              Json::Value& jParamOut);

private:
    int execute(const std::string& strSql, int (*callback)(void*, int, char**, char**) = nullptr,
                void* pContext = nullptr);
    const Json::Value& definedMembers();
    int save(Json::Value& jRecInOut, bool blCreate, Json::Value& jStored);
    int select(Json::Value& jRecParam, const Json::Value& jRecArrayOut, int (*callback)(void*, int, char**, char**),
               void* pContext);
    template <typename MakeCondition>
    int removeWhere(MakeCondition makeCondition, bool blAllowAll);

    sqlite3* m_pDb = nullptr;
    std::string m_strName;
    Json::Value m_jTableDef;
    Json::Value m_jReserved;
    std::string m_strSqlCreate;
    std::string m_strSqlErr;
    std::string m_strErrMsg;
};

namespace VORN_JSON_DB
{

// The type map of the table strJsonName: an object keyed by member name that holds "cpptype" and, where declared,
// "cppDefaultValue". It is built from the first definition that the process sees for the name and never refreshed. The
// library owns it; read it at once and do not change it. A bad definition is logged and leaves the map partial or null.
VORN_JSON_DB_EXPORT Json::Value& recType(Json::Value& jTableDef, std::string& strJsonName);

// Copies the members of the object jSubSet into jIn (null or an object), each value whole. Members that jIn already has
// are replaced only when blOverwrite is true. 0 or -1.
VORN_JSON_DB_EXPORT int jsonCopyMember(Json::Value& jIn, Json::Value& jSubSet, bool blOverwrite);

// Sets now to the current time plus offsetSecond, in seconds since the epoch. Always 0. Where long has 32 bits the
// stamp ends in 2038, also when time_t has 64.
VORN_JSON_DB_EXPORT int getTimeAfterNow(int offsetSecond, long& now);

// As convert2ReadableTime(), for the time offsetSecond seconds from now.
VORN_JSON_DB_EXPORT int getTimeAfterNow(int offsetSecond, std::string& strOut, int iType);

// Writes the time stamp (seconds since the epoch) as text. Bits of iType: 1 takes UTC, otherwise local time; 2 writes
// "%a, %d %b %Y %T GMT"; 4, without 2, writes "%Y-%m-%d %H:%M:%S". So 3 is an HTTP date and 4 plain local time. Day and
// month names follow the process's LC_TIME; local time follows TZ as of the last tzset() (POSIX localtime_r). 0 or -1.
VORN_JSON_DB_EXPORT int convert2ReadableTime(long ullTimeStamp, std::string& strOut, int iType);

}  // namespace VORN_JSON_DB

#endif  // VORN_JSON_DB_API_H

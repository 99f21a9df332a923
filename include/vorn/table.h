// SPDX-License-Identifier: MIT
//
// libvorntable: one table of an SQLite database, worked with as JSON records.
//
// Conventions
//
//  1. Status. A negative result (always -1) is a failure, and status() says why: see vorn/status.h. Otherwise the
//     result is 0 or a count, as each operation says. Every operation sets the status anew, to Ok where it succeeds.
//  2. Out-parameters are untouched on failure, but for the report of tableCheck(). One object may be given as argument
//     and as out-parameter. Lists are appended to: give null or an array.
//  3. Ownership. The caller owns the connection and every value it passes. The object copies its name, definition and
//     statement. It keeps prepared statements, so sqlite3_close() gives SQLITE_BUSY until the object is gone or
//     releaseStatements() was called; nothing but its end may follow sqlite3_close_v2(). The names of members that
//     records come with live as long as the process: records outlive the object and the thread that made them.
//  4. Threads. An object belongs to one thread at a time, and all objects and Transactions that share a connection
//     belong to one thread together. Everything else is independent.
//  5. Exceptions. The class throws none of its own, whatever kind of JSON it is given. std::bad_alloc, JsonCpp's
//     exception where memory runs out, and what a visitor throws pass through; no statement is then busy, no
//     transaction of the class is open, and the connection can be used on.
//  6. Values from outside are bound, never part of a statement's text: requests, filters, records and parameters may
//     hold anything. The host's own text are strSqlCreate, "vornSqlWhereFilter" and runSql()'s strSql: they become SQL
//     as they stand and must not come from outside. A program that passes a request from outside on must refuse one
//     that has "vornSqlWhereFilter" at any depth.
//  7. Locks. An operation waits for other connections' locks for the time of setLockTimeout() at most. A write is there
//     whole or not at all: it is one transaction, or one savepoint where the caller has a transaction open. A lock that
//     waiting cannot cure is Locked at once. The connection's busy handler and settings are never touched. Within a
//     function that SQLite calls while a statement writes, what needs a transaction of its own is Misuse.
//  8. Definition. { TABLE: { "member": { NAME: { "cpptype": TYPE, ... } } } }, besides "cpptype" optionally
//     "cppDefaultValue" (any value that fits), and the flags "key", "unique", "required" and "index". Names are not
//     empty, hold no NUL, begin with neither "$" nor "-" and do not differ in ASCII case only. With another one every
//     operation is BadDefinition.
//  9. Types: string; bool; int; unsigned int, unsigned, uid_t; long long, long, time_t (64 bits everywhere); unsigned
//     long long, unsigned long (0 to 2^63-1); float, double (finite); Json::objectValue; Json::arrayValue; Json::Value
//     (JSON, stored as compact text, at most 1,000 levels deep). A whole number may come as a real without fraction.
//     Another kind is BadType, a number beyond the range OutOfRange. null is stored as NULL, and NULL is read as a
//     member that is absent.
// 10. Filters. An object whose entries must all hold, or null for none: "m": value (null: absent), "m": [one of these],
//     "m": {"$op": ...} with $eq $ne $in $nin $gt $gte $lt $lte $exists $beginsWith $like $glob $all $size $not;
//     "m.a.b" inside JSON members; "$and", "$or", "$nor" with arrays of filters, "$not" with one;
//     "vornSqlWhereFilter" with "vornSqlWhereParams". What is unknown or does not fit is an error, never ignored.
// 11. Requests. A filter that may also hold "sort_by", "sort_direction", "limit", "offset" and "fields", each also with
//     "$" in front; where a member has the plain name, that is the member.

#ifndef VORN_TABLE_H
#define VORN_TABLE_H

#include <json/json.h>
#include <vorn/status.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

struct sqlite3;

namespace vorn
{

// Movable; what is left behind by a move answers every operation with Misuse.
class Table
{
public:
    // Runs strSqlCreate as it stands where it is given; otherwise makes the table by the definition where there is no
    // table, view or virtual table of that name, with its indexes, in one transaction. A table that exists is left as
    // it is, and no writer's lock is waited for. status() tells how that went; construction always completes. With a
    // null pDb everything that needs a connection is Misuse.
    VORN_TABLE_EXPORT Table(sqlite3* pDb, const std::string& strName, const Json::Value& jTableDef,
                            const std::string& strSqlCreate = "");
    VORN_TABLE_EXPORT ~Table();
    VORN_TABLE_EXPORT Table(Table&& other) noexcept;
    VORN_TABLE_EXPORT Table& operator=(Table&& other) noexcept;
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    // How the last operation went. Valid until the next one.
    VORN_TABLE_EXPORT const Status& status() const;

    // "DUPLICATE_PRIMARY_KEY" for Duplicate, otherwise status().text; or what was set since the last operation.
    VORN_TABLE_EXPORT std::string getErrMsg() const;
    VORN_TABLE_EXPORT void setErrMsg(const std::string& strErrMsg);

    // Stores a new record; members that are absent take the definition's default, else the column's own, else NULL.
    // jRecOut becomes the record as it is stored, triggers and the columns' defaults included. 0. Duplicate where a
    // key or unique member exists, Constraint where a required member would be NULL or a trigger or constraint refuses.
    VORN_TABLE_EXPORT int recCreate(const Json::Value& jRecIn, Json::Value& jRecOut);

    // The same without reading back: faster.
    VORN_TABLE_EXPORT int recCreate(const Json::Value& jRecIn);

    // Stores all records of the array, or none; null is an empty one. Their count. All are checked before the first is
    // stored; status().index is the place of the one that is to blame.
    VORN_TABLE_EXPORT long long recCreateAll(const Json::Value& jRecArrayIn);

    // blCreate: stores a new record as recCreate() does, but without the definition's defaults. Otherwise sets the
    // given members of the record that has the table's primary key and keeps its others, or stores a new one where
    // there is none. A record without the key is BadRequest, unless the key is the rowid: then it is new. jRecInOut
    // becomes the record as it is stored. 0.
    VORN_TABLE_EXPORT int recSave(Json::Value& jRecInOut, bool blCreate);

    // Appends the records of the request to jRecArrayOut. 0. BadCell where a cell does not hold what its member's type
    // can be read from: "fields" without that member reads the others.
    VORN_TABLE_EXPORT int recList(const Json::Value& jRequest, Json::Value& jRecArrayOut);

    // Gives visit one record after the other, which it may keep or change; false ends it. The count of visited records.
    // visit may use this table and others of the connection; rows that it changes may be met again, and changing what
    // the request sorts or filters by is its own risk. An empty one is Misuse.
    VORN_TABLE_EXPORT long long recForEach(const Json::Value& jRequest, const std::function<bool(Json::Value&)>& visit);

    // jRecOut becomes the first record of the request: 1. Or it stays as it is, because there is none: 0.
    VORN_TABLE_EXPORT int recGetOne(const Json::Value& jRequest, Json::Value& jRecOut);

    // How many records the filter finds.
    VORN_TABLE_EXPORT long long recCount(const Json::Value& jFilter);

    // Sets the members of jValues, null included, in every record that the filter finds. The count of changed records.
    // A filter without any condition is BadRequest unless blAllowAll, an empty jValues always; a required or key member
    // given as null is Constraint even where nothing is found.
    VORN_TABLE_EXPORT long long recUpdateByFilter(const Json::Value& jFilter, const Json::Value& jValues,
                                                  bool blAllowAll = false);

    // Deletes every record that the filter finds; the count of them. A filter without any condition is BadRequest
    // unless blAllowAll.
    VORN_TABLE_EXPORT long long recDelete(const Json::Value& jFilter, bool blAllowAll = false);
    VORN_TABLE_EXPORT long long recDeleteAll();

    // Deletes the records whose member szKey has one of the values; the count of them. For members of other types than
    // string a value is read as a text in their column would be: "5", "1.5", "{\"a\":1}"; BadType where it cannot be.
    VORN_TABLE_EXPORT long long recDeleteByArray(const std::vector<std::string>& values, const char* szKey);
    VORN_TABLE_EXPORT long long recDeleteByName(const std::string& value, const char* szKey);

    // Runs one statement with its parameters: an array for "?", an object {"name": value} for ":name". With result
    // columns: appends a record for each row to jRowsOut, columns named like a member read by its type; the count of
    // rows. Without: jRowsOut is left alone; the count of changed rows, 0 for what is no INSERT, UPDATE, DELETE,
    // REPLACE or WITH that writes. These get a transaction, or savepoint, of their own; everything else runs as it is.
    VORN_TABLE_EXPORT long long runSql(const std::string& strSql, const Json::Value& jParams, Json::Value& jRowsOut);

    // Whether every member of the record is declared and its value fits: 0. Needs no connection.
    VORN_TABLE_EXPORT int checkJsonType(const Json::Value& jRec);

    // Gives the record the definition's default for each member that is absent: 0. With blRequireAll it fills nothing,
    // and the first declared member that is absent is Constraint. Needs no connection.
    VORN_TABLE_EXPORT int fillDefaultValue(Json::Value& jRec, bool blRequireAll);

    // What the constructor does with the table, once more. 0.
    VORN_TABLE_EXPORT int tableCreate();

    // Tells how the table differs from the definition: jReportOut becomes {"missing": [members without a column],
    // "undeclared": [columns without a member], "types": [{"member", "declared", "column"}] for columns of another
    // affinity, "keys": [members declared key or unique that the table does not hold unique], and with blCells
    // "cells": [{"member", "rowid", "text"}], which cannot be read}. -1 with Missing or BadCell, the report filled,
    // where there are missing columns or bad cells; otherwise 0.
    VORN_TABLE_EXPORT int tableCheck(Json::Value& jReportOut, bool blCells = false);

    // Adds the columns and indexes that the definition has and the table lacks, in one transaction, or makes a table
    // that is not there; drops and rewrites nothing. 0. A column of the key, or required and without a default, is
    // Constraint before anything changes.
    VORN_TABLE_EXPORT int tableUpgrade();

    // jOut becomes {"sql": text, "parameters": [...], "plan": [lines of EXPLAIN QUERY PLAN]} of what recList() would
    // run. 0.
    VORN_TABLE_EXPORT int explain(const Json::Value& jRequest, Json::Value& jOut);

    // How long an operation waits for locks, at first 5,000 ms. 0: not at all.
    VORN_TABLE_EXPORT void setLockTimeout(int milliseconds);

    // Finalizes the statements that are kept; the next operation prepares anew.
    VORN_TABLE_EXPORT void releaseStatements();

private:
    struct Inside;
    std::unique_ptr<Inside> m_pInside;
};

}  // namespace vorn

#endif  // VORN_TABLE_H

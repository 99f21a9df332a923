// SPDX-License-Identifier: MIT
//
// The operations of vorn::Table. Each fills the status and returns false, or -1 for a count, where it fails; what it
// gives back is then untouched.

#ifndef VORN_OPERATIONS_H
#define VORN_OPERATIONS_H

#include <json/json.h>
#include <vorn/status.h>

#include <functional>
#include <string>
#include <vector>

#include "store.h"

namespace vorn
{

// create_table.cpp: runs the host's statements, or makes the table where there is none.
bool createTable(Store& store, Status& status);
// Makes it by the definition.
bool makeTable(Store& store, Waiter& waiter, Status& status);

// check_table.cpp. The report is filled where the status is Missing or BadCell, too.
bool checkTable(Store& store, Json::Value& jReportOut, bool blCells, Status& status);

// upgrade_table.cpp
bool upgradeTable(Store& store, Status& status);

// write.cpp. pRecOut may be null or the record itself.
bool createRecord(Store& store, const Json::Value& jRec, bool blDefaults, Json::Value* pRecOut, Status& status);
bool saveRecord(Store& store, Json::Value& jRec, Status& status);
long long createAll(Store& store, const Json::Value& jRecArray, Status& status);

// change.cpp
long long updateRecords(Store& store, const Json::Value& jFilter, const Json::Value& jValues, bool blAllowAll,
                        Status& status);
long long deleteRecords(Store& store, const Json::Value& jFilter, bool blAllowAll, Status& status);
long long deleteByTexts(Store& store, const std::vector<std::string>& values, const char* szKey, Status& status);

// read.cpp
bool listRecords(Store& store, const Json::Value& jRequest, Json::Value& jRecArrayOut, Status& status);
long long visitRecords(Store& store, const Json::Value& jRequest, const std::function<bool(Json::Value&)>& visit,
                       Status& status);
int getRecord(Store& store, const Json::Value& jRequest, Json::Value& jRecOut, Status& status);
long long countRecords(Store& store, const Json::Value& jFilter, Status& status);
bool explainRequest(Store& store, const Json::Value& jRequest, Json::Value& jOut, Status& status);

// raw_sql.cpp
long long runRawSql(Store& store, const std::string& strSql, const Json::Value& jParams, Json::Value& jRowsOut,
                    Status& status);

// Appends the rows to the array, or makes a null one the array. jRows is an array.
void appendRows(Json::Value& jRows, Json::Value& jArrayOut);

}  // namespace vorn

#endif  // VORN_OPERATIONS_H

// SPDX-License-Identifier: MIT
//
// The conditions that failure lines quote although the code tests them in another way. Log readers know them, so they
// stay. Every other failure line quotes the condition as it stands in the source.

#ifndef VORN_LOG_TEXTS_H
#define VORN_LOG_TEXTS_H

namespace log_texts
{

// Names that a type map lacks, by what the caller calls them.
constexpr const char* kNoMemberName = "!jType.isMember(strName)";
constexpr const char* kNoMemberKey = "!jType.isMember(strKey)";
constexpr const char* kNoMemberField = "!jType.isMember(strField)";
constexpr const char* kNoMemberListField = "!jType.isMember(szField)";
constexpr const char* kNoMemberDeleteKey = "!jType.isMember(szKey)";
constexpr const char* kNoStringMember = R"(jType[szKey]["cpptype"].asString() != "string")";

// Rows.
constexpr const char* kNoRecord = "0 > DbCallBackFillRec(&jTmp, n_column, column_value, column_name)";
constexpr const char* kNoField = "0 > (iTmp = DbCallBackFillField(*pjRec, column_name, column_value, i))";

// Texts that SQLite could not make.
constexpr const char* kNoText = R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.asString().c_str())))";
constexpr const char* kNoBoolText = R"(NULL == (szSql = sqlite3_mprintf("%d", jParam.asInt())))";
constexpr const char* kNoJsonText = R"(NULL == (szSql = sqlite3_mprintf("%q", jParam.toString().c_str())))";
constexpr const char* kNoItemText = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].asString().c_str())))";
constexpr const char* kNoJsonItemText = R"(NULL == (szSql = sqlite3_mprintf("%q", jList[i].toString().c_str())))";

// Members of a condition or an assignment.
constexpr const char* kRawFilterIsNoString = "!jRecParam[jmFieldName[i]].isString()";
constexpr const char* kNoListCondition = "0 > SqlMakeByListField(jmFieldName[i].c_str(), jTmp, strSqlWhereOut)";
constexpr const char* kNoCondition = "0 > SqlMakeByMatchField(jmFieldName[i], jTmp, strSqlWhereOut)";

// Steps of the record operations.
constexpr const char* kNoValueList = "0 > SqlExpandMemberSymbol(strSql, jRecInOut)";
constexpr const char* kNotSavedAndReadBack = "0 > runSqlEx(strSql, DbCallBackFillList, &jArrayTmp)";
constexpr const char* kNothingReadBack = "0 == jArrayTmp.size()";
constexpr const char* kNotSaved = "0 > recSave(jParam, true)";
constexpr const char* kNotListed = "0 > runSqlEx(strSqlRun, DbCallBackFillList, &jRecArrayOut)";
constexpr const char* kNoFetchList = "0 > recList(jRecParam, jRecArray)";
constexpr const char* kNotCopied = "0 > jsonCopyMember(jRecOut, jRecArray[0], true)";
constexpr const char* kNotUpdated = "0 > runSqlEx(strSql, NULL, NULL)";
constexpr const char* kNotRun = "0 > (err = runSqlEx(strSqlRun))";
constexpr const char* kNoDeleteCondition = "0 > SqlExpandMemberList(jRecParam, strSql, VORN_SQL_WHERE_TYPE_AND)";
constexpr const char* kNotDeleted = "0 > (err = recDelete(jParam))";

}  // namespace log_texts

#endif  // VORN_LOG_TEXTS_H

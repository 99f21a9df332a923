// SPDX-License-Identifier: MIT

#include <sqlite3.h>

#include <algorithm>

#include "definition.h"
#include "facts.h"
#include "join.h"
#include "query.h"

namespace vorn
{

bool readIndexes(sqlite3* pDb, const Definition& definition, const Facts& facts, Waiter& waiter,
                 std::vector<TableIndex>& indexes, Status& status)
{
    if (facts.blRowidKey)
        for (const TableColumn& column : facts.columns)
            if (column.iKey > 0)
                indexes.push_back({{column.strName}, true});

    std::vector<std::string> names;
    const auto lookAtIndex = [&](sqlite3_stmt* pRow)
    {
        constexpr int kName = 1;
        constexpr int kUnique = 2;
        constexpr int kPartial = 4;
        if (sqlite3_column_int(pRow, kPartial) != 0)
            return;
        names.push_back(columnString(pRow, kName));
        indexes.push_back({{}, sqlite3_column_int(pRow, kUnique) != 0});
    };
    const std::string strSchema = facts.strSchema.empty() ? std::string() : quoted(facts.strSchema) += '.';
    if (!eachRow(pDb, join({"PRAGMA ", strSchema, "index_list(", definition.quotedName(), ")"}), waiter, status,
                 lookAtIndex))
        return false;
    auto index = indexes.end() - static_cast<std::ptrdiff_t>(names.size());
    for (const std::string& strName : names)
    {
        constexpr int kColumn = 2;
        if (!eachRow(pDb, join({"PRAGMA ", strSchema, "index_info(", quoted(strName), ")"}), waiter, status,
                     [&index](sqlite3_stmt* pRow) { index->columns.push_back(columnString(pRow, kColumn)); }))
            return false;
        ++index;
    }
    return true;
}

bool isUnique(const std::vector<TableIndex>& indexes, const std::vector<std::string_view>& columns)
{
    const auto isAmong = [&columns](const std::string& strColumn)
    {
        return std::any_of(columns.begin(), columns.end(),
                           [&strColumn](std::string_view column) { return sameName(column, strColumn); });
    };
    return std::any_of(indexes.begin(), indexes.end(),
                       [&isAmong](const TableIndex& index)
                       { return index.blUnique && std::all_of(index.columns.begin(), index.columns.end(), isAmong); });
}

}  // namespace vorn

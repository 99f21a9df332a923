// SPDX-License-Identifier: MIT
//
// The statements that make a table of a definition.

#ifndef VORN_DDL_H
#define VORN_DDL_H

#include <string>
#include <string_view>
#include <vector>

#include "definition.h"

namespace vorn
{

// The declared type that a member's column gets: "INTEGER", "REAL" or "TEXT".
const char* columnTypeName(const Member& member);

// "name" TYPE NOT NULL DEFAULT ...: as CREATE TABLE and ALTER TABLE ADD COLUMN write it.
std::string columnText(const Member& member);

std::string createTableText(const Definition& definition);

// The statements for the indexes of a member; isTaken tells whether an index or table of that name exists.
template <typename IsTaken>
std::vector<std::string> indexTexts(const Definition& definition, const Member& member, IsTaken isTaken)
{
    std::vector<std::string> texts;
    for (const bool blUnique : {false, true})
    {
        if (!(blUnique ? member.blUnique : member.blIndex))
            continue;
        const std::string strName =
            definition.name() + ':' + std::string(member.name) + (blUnique ? ":unique" : ":index");
        std::string strFree = strName;
        for (int i = 2; isTaken(strFree); ++i)
            strFree = strName + ':' + std::to_string(i);
        texts.push_back((blUnique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + quoted(strFree) + " ON " +
                        definition.quotedName() + " (" + member.strQuoted + ')');
    }
    return texts;
}

}  // namespace vorn

#endif  // VORN_DDL_H

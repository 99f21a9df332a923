// SPDX-License-Identifier: MIT

#include "row_reader.h"

#include <sqlite3.h>

#include <string>

#include "cell_value.h"
#include "failure.h"
#include "join.h"

namespace vorn
{

RowReader::RowReader(std::vector<const Member*> members, bool blRowid)
    : m_members(std::move(members)), m_readers(m_members.size()), m_blRowid(blRowid)
{
    std::vector<std::string_view> names;
    for (const Member* pMember : m_members)
        names.push_back(pMember->name);
    m_prototype = RecordPrototype(names);
}

bool RowReader::read(sqlite3_stmt* pStatement, StrictReader& strictReader, Json::Value& jRec, Status& status)
{
    const Member* pBad = nullptr;
    m_prototype.fill(jRec,
                     [&](std::size_t i, Json::Value& jValue)
                     {
                         const Cell cell =
                             readCell(*m_members[i], sqlite3_column_value(pStatement, static_cast<int>(i)),
                                      m_readers[i], strictReader, jValue);
                         if (cell == Cell::Bad && pBad == nullptr)
                             pBad = m_members[i];
                         return cell == Cell::Value;
                     });
    if (pBad == nullptr)
        return true;
    const int iRowid = static_cast<int>(m_members.size());
    if (!m_blRowid)
        return failCell(status, *pBad);
    const std::string strRowid = std::to_string(sqlite3_column_int64(pStatement, iRowid));
    return fail(status, Code::BadCell, pBad->name,
                "What is stored for % in the row with the rowid ^; \"fields\" reads the other members.",
                join({strRowid, " is not ", describe(*pBad)}));
}

bool failCell(Status& status, const Member& member)
{
    return fail(status, Code::BadCell, member.name,
                "What is stored for % is not ^; \"fields\" reads the other members.", describe(member));
}

}  // namespace vorn

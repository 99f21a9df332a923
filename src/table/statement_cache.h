// SPDX-License-Identifier: MIT
//
// Prepared statements, kept for the next operation of the same shape.

#ifndef VORN_STATEMENT_CACHE_H
#define VORN_STATEMENT_CACHE_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "member_set.h"
#include "prepare.h"
#include "row_reader.h"

namespace vorn
{

// What a statement does. With a Shape's other parts it decides its text.
enum class StatementKind : unsigned char
{
    Select,       // the members, the rowid where there is one, and the tail
    Count,        // how many rows the tail leaves
    Insert,       // the members
    InsertKey,    // the same, giving back the key of a table without rowid
    InsertAbort,  // the members, whatever the table says of conflicts
    Update,       // the members, and the tail
    UpdateAbort,
    Delete,  // the tail
    Text     // the tail is the text
};

struct Shape
{
    StatementKind kind;
    const MemberSet* pMembers = nullptr;  // null: none, or all where that makes sense
    std::string_view tail = {};
    bool blKeep = true;
    std::string_view pageOrder = {};  // of a Select, and part of the tail: see Compiled
};

struct KeptStatement
{
    bool isOf(const Shape& shape) const;

    StatementKind kind = StatementKind::Text;
    std::string strMembers;
    std::string strTail;
    bool blKeep = true;
    StatementPointer pStatement;
    RowReader reader;  // of a Select
};

// Whoever uses a statement takes it out, so that nested use never meets it.
class StatementCache
{
public:
    StatementCache();

    // The statement of that shape, or null.
    std::unique_ptr<KeptStatement> take(const Shape& shape);

    // It must have been reset. The least recently used one goes where there are too many.
    void giveBack(std::unique_ptr<KeptStatement> pKept, unsigned iGeneration) noexcept;

    void clear() noexcept;

    // Grows with each clear(): statements that were taken before are not kept.
    unsigned generation() const { return m_iGeneration; }

private:
    std::vector<std::unique_ptr<KeptStatement>> m_kept;  // the most recently used is the last
    unsigned m_iGeneration = 0;
};

}  // namespace vorn

#endif  // VORN_STATEMENT_CACHE_H

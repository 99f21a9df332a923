// SPDX-License-Identifier: MIT

#include "statement_cache.h"

namespace vorn
{

namespace
{

constexpr std::size_t kMaxKept = 32;

}  // namespace

bool KeptStatement::isOf(const Shape& shape) const
{
    return kind == shape.kind &&
           strMembers == (shape.pMembers != nullptr ? std::string_view(shape.pMembers->bits()) : std::string_view()) &&
           strTail == shape.tail;
}

StatementCache::StatementCache()
{
    m_kept.reserve(kMaxKept);
}

std::unique_ptr<KeptStatement> StatementCache::take(const Shape& shape)
{
    for (auto it = m_kept.end(); it != m_kept.begin();)
    {
        if (!(*--it)->isOf(shape))
            continue;
        std::unique_ptr<KeptStatement> pKept = std::move(*it);
        m_kept.erase(it);
        return pKept;
    }
    return nullptr;
}

void StatementCache::giveBack(std::unique_ptr<KeptStatement> pKept, unsigned iGeneration) noexcept
{
    if (!pKept->blKeep || iGeneration != m_iGeneration)
        return;
    for (const auto& pOther : m_kept)  // nested use may have made another one
        if (pOther->kind == pKept->kind && pOther->strMembers == pKept->strMembers && pOther->strTail == pKept->strTail)
            return;
    if (m_kept.size() == kMaxKept)
        m_kept.erase(m_kept.begin());
    m_kept.push_back(std::move(pKept));
}

void StatementCache::clear() noexcept
{
    m_kept.clear();
    ++m_iGeneration;
}

}  // namespace vorn

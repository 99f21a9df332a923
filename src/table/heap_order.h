// SPDX-License-Identifier: MIT
//
// Where the records of a long list lie.

#ifndef VORN_HEAP_ORDER_H
#define VORN_HEAP_ORDER_H

#include <sqlite3.h>

#include <functional>

namespace vorn
{

// glibc's malloc hands out small pieces of memory in the order in which they were freed, and joins neighbours only when
// somebody asks for 1 KiB or more. So a service that lists a large table again and again gets records that are
// scattered ever more, and waits for memory. Where that shows, a request of that size tidies up, which costs less than
// it wins.
class HeapOrder
{
public:
    // Takes note of the next record. Scattered ones lie now before, now behind the one before them: two times of three,
    // if by chance alone.
    void note(const void* pRecord)
    {
        const bool blForward = std::less<const void*>()(m_pLast, pRecord);
        m_iTurns += blForward != m_blForward ? 2 : m_iTurns > 0 ? -1 : 0;
        m_blForward = blForward;
        m_pLast = pRecord;
        if (m_iTurns >= kMany)
            tidy();
    }

private:
    static constexpr int kMany = 1000;
    static constexpr int kTidying = 2048;  // bytes

    void tidy()
    {
        m_iTurns = 0;
        sqlite3_free(sqlite3_malloc(kTidying));
    }

    const void* m_pLast = nullptr;
    bool m_blForward = true;
    int m_iTurns = 0;  // above a third of the records
};

}  // namespace vorn

#endif  // VORN_HEAP_ORDER_H

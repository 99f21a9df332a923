// SPDX-License-Identifier: MIT

#include "peak.h"

#include <stdexcept>

#include "connection.h"
#include "folder.h"
#include "measure.h"
#include "worker.h"

namespace bench
{

namespace
{

long peakOf(const ContestantKind& kind, const std::string& strPath, std::size_t rows)
{
    const auto setUp = [&]
    {
        std::shared_ptr<Contestant> contestant = kind.open(strPath);
        contestant->page(0);  // what is built once does not count
        contestant->clear();
        const auto task = [contestant, rows]
        {
            const long before = residentNow();
            if (contestant->list() != rows)
                throw std::runtime_error("not all rows were listed");
            return residentPeak() - before;
        };
        return Worker<long>::Tasks{task};
    };
    return Worker<long>(setUp).run();
}

}  // namespace

std::map<std::string, long> peakOfListing(const std::vector<ContestantKind>& kinds, std::size_t rows)
{
    const Folder folder;
    const std::string strPath = folder.path() + "/peak.db";
    {
        const Connection db(strPath);
        fillTable(db, 0, rows);
    }
    std::map<std::string, long> peaks;
    for (const ContestantKind& kind : kinds)
        peaks[kind.strId] = peakOf(kind, strPath, rows);
    return peaks;
}

}  // namespace bench

// SPDX-License-Identifier: MIT

#include <soci/soci.h>
#include <soci/sqlite3/soci-sqlite3.h>

namespace bench
{

void* openSociSession(soci::session& session, const std::string& strPath)
{
    session.open(soci::sqlite3, strPath);
    return static_cast<soci::sqlite3_session_backend*>(session.get_backend())->conn_;
}

}  // namespace bench

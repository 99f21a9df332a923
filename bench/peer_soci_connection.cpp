// SPDX-License-Identifier: MIT

#include "peer_soci_connection.h"

#include <soci/sqlite3/soci-sqlite3.h>

namespace bench
{

void openSociSession(soci::session& session, const std::string& strPath)
{
    session.open(soci::sqlite3, strPath);
}

void* sociConnection(soci::session& session)
{
    return static_cast<soci::sqlite3_session_backend*>(session.get_backend())->conn_;
}

}  // namespace bench

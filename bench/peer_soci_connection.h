// SPDX-License-Identifier: MIT
//
// SOCI's SQLite backend includes sqlite3.h inside a namespace, so what needs it stands apart from all other code.

#ifndef VORN_BENCH_PEER_SOCI_CONNECTION_H
#define VORN_BENCH_PEER_SOCI_CONNECTION_H

#include <soci/soci.h>

#include <string>

namespace bench
{

void openSociSession(soci::session& session, const std::string& strPath);

// The session's sqlite3*.
void* sociConnection(soci::session& session);

}  // namespace bench

#endif  // VORN_BENCH_PEER_SOCI_CONNECTION_H

// SPDX-License-Identifier: MIT
//
// Statements of other libraries for single records: made where they are needed, as their examples do, or made once and
// kept.

#ifndef VORN_BENCH_PEER_STATEMENT_H
#define VORN_BENCH_PEER_STATEMENT_H

#include <optional>

namespace bench
{

template <class Statement, bool blKept>
class PeerStatement
{
public:
    // The function gets the statement, which make() gives where it is not there.
    template <class Make, class Function>
    auto use(const Make& make, const Function& function)
    {
        if constexpr (blKept)
        {
            if (!m_statement)
                m_statement.emplace(make());
            return function(*m_statement);
        }
        else
        {
            Statement statement(make());
            return function(statement);
        }
    }

private:
    std::optional<Statement> m_statement;
};

}  // namespace bench

#endif  // VORN_BENCH_PEER_STATEMENT_H

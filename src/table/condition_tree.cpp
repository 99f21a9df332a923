// SPDX-License-Identifier: MIT

#include "condition_tree.h"

#include <algorithm>
#include <utility>

namespace vorn
{

namespace
{

// A chain of n conditions is an expression n deep, so longer ones are made of groups of groups.
constexpr std::size_t kChain = 8;

// What a child costs of the parser's stack: the first of a chain stands behind "(" alone, each other one behind "(",
// what came before and the operator.
constexpr std::uint32_t kFirst = 1;
constexpr std::uint32_t kOther = 3;

}  // namespace

ConditionTree::ConditionTree()
{
    m_nodes.reserve(4);
    m_nodes.push_back({Kind::All, 0, 0, 0, 0, 0, 0, 0});
}

ConditionTree::Node ConditionTree::add(Node parent, const Entry& entry)
{
    const auto node = static_cast<Node>(m_nodes.size());
    m_nodes.push_back(entry);
    Entry& group = m_nodes[parent];
    if (group.count++ == 0)
        group.first = node;
    else
        m_nodes[group.last].next = node;
    group.last = node;
    return node;
}

ConditionTree::Node ConditionTree::group(Node parent, Kind kind)
{
    return m_nodes[parent].kind == kind ? parent : add(parent, {kind, 0, 0, 0, 0, 0, 0, 0});
}

void ConditionTree::begin()
{
    m_textBegin = m_strText.size();
    m_valuesBegin = m_values.size();
}

void ConditionTree::end(Node parent, std::uint32_t weight)
{
    add(parent, {Kind::Condition, weight, 0, static_cast<Node>(m_textBegin), static_cast<Node>(m_strText.size()), 0,
                 m_valuesBegin, m_values.size()});
}

std::uint32_t ConditionTree::weigh(Node node)  // NOLINT(misc-no-recursion): as deep as filters nest
{
    if (m_nodes[node].kind == Kind::Condition)
        return m_nodes[node].weight;
    std::uint32_t heaviest = 0;
    std::uint32_t second = 0;
    Node child = m_nodes[node].first;
    for (std::uint32_t i = 0; i < m_nodes[node].count; ++i, child = m_nodes[child].next)
    {
        const std::uint32_t weight = weigh(child);
        second = std::max(second, std::min(heaviest, weight));
        heaviest = std::max(heaviest, weight);
    }
    std::uint32_t levels = 1;
    for (std::size_t room = kChain; room < m_nodes[node].count; room *= kChain)
        ++levels;
    const std::uint32_t weight = std::max(heaviest + kFirst * levels, second == 0 ? 0 : second + kOther * levels);
    m_nodes[node].weight = weight;
    return weight;
}

void ConditionTree::write(std::string& strSql, std::vector<BoundValue>& values)
{
    weigh(kRoot);
    strSql.reserve(strSql.size() + m_strText.size() + 8 * m_nodes.size());
    values.reserve(values.size() + m_values.size() + 2);
    writeNode(kRoot, strSql, values);
}

// The heaviest child comes first, which needs the least of the parser's stack, and none of the meaning hangs on the
// order.
void ConditionTree::writeNode(Node node, std::string& strSql,  // NOLINT(misc-no-recursion): as deep as filters nest
                              std::vector<BoundValue>& values)
{
    const Entry entry = m_nodes[node];
    if (entry.kind == Kind::Condition)
    {
        strSql.append(m_strText, entry.first, entry.last - entry.first);
        for (std::size_t i = entry.valuesBegin; i < entry.valuesEnd; ++i)
            values.push_back(std::move(m_values[i]));
        return;
    }
    if (entry.count == 0)
    {
        strSql += entry.kind == Kind::All ? '1' : '0';
        return;
    }
    if (entry.count == 1)
    {
        writeNode(entry.first, strSql, values);
        return;
    }
    std::vector<Node> children;
    children.reserve(entry.count);
    Node child = entry.first;
    for (std::uint32_t i = 0; i < entry.count; ++i, child = m_nodes[child].next)
        children.push_back(child);
    Node& heaviest =
        *std::max_element(children.begin(), children.end(),
                          [this](Node left, Node right) { return m_nodes[left].weight < m_nodes[right].weight; });
    std::swap(children.front(), heaviest);
    writeJoined(children, 0, children.size(), entry.kind, strSql, values);
}

void ConditionTree::writeJoined(const std::vector<Node>& children,  // NOLINT(misc-no-recursion): logarithmic
                                std::size_t begin, std::size_t end, Kind kind, std::string& strSql,
                                std::vector<BoundValue>& values)
{
    std::size_t length = 1;
    while (length * kChain < end - begin)
        length *= kChain;
    for (std::size_t i = begin; i < end; i += length)
    {
        if (i > begin)
            strSql += kind == Kind::All ? " AND " : " OR ";
        const std::size_t partEnd = std::min(i + length, end);
        if (partEnd - i == 1)
        {
            writeChild(children[i], strSql, values);
            continue;
        }
        strSql += '(';
        writeJoined(children, i, partEnd, kind, strSql, values);
        strSql += ')';
    }
}

void ConditionTree::writeChild(Node child, std::string& strSql,  // NOLINT(misc-no-recursion): as deep as filters nest
                               std::vector<BoundValue>& values)
{
    const bool blGroup = m_nodes[child].kind != Kind::Condition;
    if (blGroup)
        strSql += '(';
    writeNode(child, strSql, values);
    if (blGroup)
        strSql += ')';
}

}  // namespace vorn

// SPDX-License-Identifier: MIT
//
// The conditions of a filter as a tree of AND and OR, and its text in the shape that SQLite can take: its parser has
// a stack of 100 entries, and an expression may be 1,000 deep. There is no NOT in the tree: who builds it turns a
// negated filter into the negations of its conditions.

#ifndef VORN_CONDITION_TREE_H
#define VORN_CONDITION_TREE_H

#include <cstdint>
#include <string>
#include <vector>

#include "bound_value.h"

namespace vorn
{

class ConditionTree
{
public:
    enum class Kind : unsigned char
    {
        All,
        Any,
        Condition
    };
    using Node = std::uint32_t;
    static constexpr Node kRoot = 0;

    ConditionTree();

    // A group of that kind inside the parent: the parent itself where it is one of that kind.
    Node group(Node parent, Kind kind);

    // One condition of a group: what is appended to text() and values() between the two calls. Its text binds tighter
    // than OR and needs at most weight entries of the parser's stack.
    void begin();
    void end(Node parent, std::uint32_t weight);

    std::string& text() { return m_strText; }
    std::vector<BoundValue>& values() { return m_values; }
    bool isEmpty() const { return m_nodes[kRoot].count == 0; }

    // Appends the whole condition and the values of its parameters, which the tree gives away.
    void write(std::string& strSql, std::vector<BoundValue>& values);

private:
    struct Entry
    {
        Kind kind;
        std::uint32_t weight;  // how many entries of the parser's stack its text needs, about
        std::uint32_t count;   // of a group's children
        Node first;            // of a group's children, or where a condition's text begins
        Node last;             // of a group's children, or where a condition's text ends
        Node next;             // child of the same group
        std::size_t valuesBegin;
        std::size_t valuesEnd;
    };

    Node add(Node parent, const Entry& entry);
    std::uint32_t weigh(Node node);
    void writeNode(Node node, std::string& strSql, std::vector<BoundValue>& values);
    void writeJoined(const std::vector<Node>& children, std::size_t begin, std::size_t end, Kind kind,
                     std::string& strSql, std::vector<BoundValue>& values);
    void writeChild(Node child, std::string& strSql, std::vector<BoundValue>& values);

    std::vector<Entry> m_nodes;
    std::string m_strText;
    std::vector<BoundValue> m_values;
    std::size_t m_textBegin = 0;
    std::size_t m_valuesBegin = 0;
};

}  // namespace vorn

#endif  // VORN_CONDITION_TREE_H

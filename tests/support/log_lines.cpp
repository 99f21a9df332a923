// SPDX-License-Identifier: MIT
//
// The shapes of a line, read back. A text that has none of them is kept whole with the reason.

#include "log_lines.h"

#include <unistd.h>

#include <cstring>
#include <set>
#include <sstream>

namespace support
{
namespace
{

const char* const sourceFiles[] = {"VornJsonDbApi", "util"};

// Reads what must come next and moves on.
class Cursor
{
public:
    explicit Cursor(const std::string& text, size_t position = 0) : m_text(text), m_position(position) {}

    bool literal(const std::string& expected)
    {
        if (m_text.compare(m_position, expected.size(), expected) != 0)
            return false;
        m_position += expected.size();
        return true;
    }

    bool number(std::string& digits)
    {
        const size_t end = m_text.find_first_not_of("0123456789", m_position);
        digits = m_text.substr(m_position, end == std::string::npos ? end : end - m_position);
        m_position += digits.size();
        return !digits.empty();
    }

    // "FILE:LINE"
    bool place(std::string& file, std::string& line)
    {
        for (const char* const name : sourceFiles)
        {
            if (literal(std::string(name) + ":"))
            {
                file = name;
                return number(line);
            }
        }
        return false;
    }

    std::string rest() const { return m_text.substr(m_position); }

private:
    const std::string& m_text;
    size_t m_position;
};

std::string processId()
{
    return "(" + std::to_string(static_cast<unsigned>(getpid())) + ")";
}

bool isErrnoText(const std::string& text)
{
    static const std::set<std::string> texts = []
    {
        std::set<std::string> result;
        for (int number = 0; number < 200; ++number)
            result.insert(strerror(number));
        return result;
    }();
    return texts.count(text) == 1;
}

// Removes an expected end from the message.
bool cutEnd(std::string& message, const std::string& end)
{
    if (message.size() < end.size() || message.compare(message.size() - end.size(), end.size(), end) != 0)
        return false;
    message.erase(message.size() - end.size());
    return true;
}

LogLine invalid(const std::string& text, const std::string& why)
{
    LogLine line;
    line.message = text;
    line.problem = why;
    return line;
}

LogLine parseOutputRecord(const std::string& text)
{
    LogLine line;
    std::string number;
    Cursor cursor(text);
    if (!cursor.literal(processId() + " ") || !cursor.place(line.file, number) || !cursor.literal(" "))
        return invalid(text, "does not start with \"(PID) FILE:LINE \"");
    line.located = cursor.literal("(" + line.file + ":" + number + ")");
    line.message = cursor.rest();
    if (!line.located)
        return cutEnd(line.message, "\n") ? line : invalid(text, "does not end in a newline");
    if (!cutEnd(line.message, ")\n\n"))
        return invalid(text, "a located line does not end in \")\" and two newlines");
    const size_t open = line.message.rfind('(');
    if (open == std::string::npos || !isErrnoText(line.message.substr(open + 1)))
        return invalid(text, "a located line does not end in the text of errno");
    line.errnoText = line.message.substr(open + 1);
    line.message.erase(open);
    return line;
}

// Matches a message against an expected one that may hold wildcards.
bool matches(const std::string& pattern, size_t atPattern, const std::string& text, size_t atText)
{
    static const std::string anyText = "<any>";
    static const std::string anyNumber = "<number>";

    while (atPattern < pattern.size())
    {
        if (pattern.compare(atPattern, anyText.size(), anyText) == 0)
        {
            for (size_t end = atText; end <= text.size(); ++end)
                if (matches(pattern, atPattern + anyText.size(), text, end))
                    return true;
            return false;
        }
        if (pattern.compare(atPattern, anyNumber.size(), anyNumber) == 0)
        {
            Cursor cursor(text, atText);
            std::string digits;
            if (!cursor.number(digits))
                return false;
            atPattern += anyNumber.size();
            atText += digits.size();
            continue;
        }
        if (atText >= text.size() || pattern[atPattern] != text[atText])
            return false;
        ++atPattern;
        ++atText;
    }
    return atText == text.size();
}

bool isAsExpected(const ExpectedLine& expected, const LogLine& written)
{
    return written.problem.empty() && expected.located == written.located && expected.file == written.file &&
           matches(expected.message, 0, written.message, 0);
}

}  // namespace

std::vector<LogLine> parseStandardOutput(const std::string& text)
{
    std::vector<LogLine> lines;
    const std::string start = processId() + " ";
    size_t position = 0;
    while (position < text.size())
    {
        const size_t next = text.find("\n" + start, position);
        const size_t end = next == std::string::npos ? text.size() : next + 1;
        lines.push_back(parseOutputRecord(text.substr(position, end - position)));
        position = end;
    }
    return lines;
}

LogLine parseSyslogCall(const SyslogCall& call)
{
    constexpr int logErr = 3;
    if (call.priority != logErr)
        return invalid(call.text, "priority " + std::to_string(call.priority));
    LogLine line;
    std::string number;
    Cursor cursor(call.text);
    if (!cursor.place(line.file, number) || !cursor.literal(" " + processId()))
        return invalid(call.text, "does not start with \"FILE:LINE (PID)\"");
    line.located = cursor.literal("(" + line.file + ":" + number + ")");
    line.message = cursor.rest();

    const std::string errnoText = strerror(call.errnoThen);
    const std::string once = "(" + errnoText + ")";
    std::string end = call.errnoThen != 0 ? once : "";
    if (line.located)
        end = once + "\n" + end;
    if (!cutEnd(line.message, end))
        return invalid(call.text, "does not end in \"" + end + "\", errno being " + std::to_string(call.errnoThen));
    line.errnoText = end.empty() ? "" : errnoText;
    return line;
}

std::string compareLines(const ExpectedLines& expected, const std::vector<LogLine>& written)
{
    ExpectedLines due;
    for (const ExpectedLine& line : expected)
        if (!line.debugOnly || blDebugOutput)
            due.push_back(line);

    bool equal = due.size() == written.size();
    std::ostringstream report;
    report << "log lines differ ('=' as expected, '-' expected, '+' written):\n";
    for (size_t i = 0; i < due.size() || i < written.size(); ++i)
    {
        const bool both = i < due.size() && i < written.size();
        if (both && isAsExpected(due[i], written[i]))
        {
            report << "  = " << written[i] << '\n';
            continue;
        }
        equal = false;
        if (i < due.size())
        {
            LogLine wanted;
            wanted.located = due[i].located;
            wanted.file = due[i].file;
            wanted.message = due[i].message;
            report << "  - " << wanted << '\n';
        }
        if (i < written.size())
            report << "  + " << written[i] << '\n';
    }
    return equal ? "" : report.str();
}

ExpectedLine failed(const std::string& condition)
{
    return {true, false, sourceFiles[0], "Failed [" + condition + "]"};
}

ExpectedLine error(const std::string& message)
{
    return {true, false, sourceFiles[0], message};
}

ExpectedLine trace(const std::string& message)
{
    return {false, false, sourceFiles[0], message};
}

ExpectedLine debug(const std::string& message)
{
    return {false, true, sourceFiles[0], message};
}

ExpectedLine inUtil(ExpectedLine line)
{
    line.file = sourceFiles[1];
    return line;
}

ExpectedLines operator+(ExpectedLines first, const ExpectedLines& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

std::ostream& operator<<(std::ostream& out, const LogLine& line)
{
    if (!line.problem.empty())
        return out << "INVALID (" << line.problem << "): " << line.message;
    return out << (line.located ? "located " : "plain   ") << line.file << ": " << line.message;
}

}  // namespace support

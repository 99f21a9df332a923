// SPDX-License-Identifier: MIT
//
// The conditions that failure lines quote: the reference has each of them, and no other; and the formats of all lines
// stand whole in the library.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cctype>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include "VornJsonDbApi.h"
#include "log_capture.h"

namespace
{

std::string contentOf(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    std::ostringstream content;
    content << file.rdbuf();
    return content.str();
}

std::string sourceFile(const std::string& path)
{
    return contentOf(VORN_SOURCE_FOLDER "/" + path);
}

std::set<std::string> matches(const std::string& text, const std::string& expression)
{
    std::set<std::string> found;
    const std::regex pattern(expression);
    for (std::sregex_iterator it(text.begin(), text.end(), pattern), end; it != end; ++it)
        found.insert((*it)[1]);
    return found;
}

// The arguments of every call of the macro, up to the parenthesis that closes it, lines joined.
std::set<std::string> argumentsOf(const std::string& source, const std::string& macro)
{
    std::set<std::string> arguments;
    for (std::size_t at = source.find(macro + "("); at != std::string::npos; at = source.find(macro + "(", at + 1))
    {
        const std::size_t begin = at + macro.size() + 1;
        std::size_t end = begin;
        for (int open = 1; open > 0; ++end)
            open += source[end] == '(' ? 1 : source[end] == ')' ? -1 : 0;
        arguments.insert(std::regex_replace(source.substr(begin, end - 1 - begin), std::regex("\\n *"), " "));
    }
    return arguments;
}

}  // namespace

TEST(LogTexts, TheReferenceHasEveryConditionThatIsQuotedAndNoOther)
{
    const std::string code = sourceFile("src/contract/VornJsonDbApi.cpp") + sourceFile("src/contract/util.cpp");
    std::set<std::string> quoted = argumentsOf(code, "VORN_FAILED");
    quoted.merge(argumentsOf(code, "VORN_TRACE_IF"));
    quoted.erase("condition");  // the macro's own definition
    const std::string texts = sourceFile("src/contract/log_texts.h");
    quoted.merge(matches(texts, R"re(= R"\((.*)\)";)re"));
    quoted.merge(matches(texts, R"re(\w =\s+"(.*)";)re"));
    EXPECT_LT(60U, quoted.size());

    const std::string reference = std::regex_replace(sourceFile("docs/reference.md"), std::regex("\\\\\\|"), "|");
    std::set<std::string> documented = matches(reference, "`Failed \\[(.*?)\\]`(?!\\])");
    documented.erase("X");  // how the page speaks of all of them
    for (const std::string& condition : quoted)
        EXPECT_EQ(1U, documented.count(condition)) << "not in the reference: " << condition;
    for (const std::string& condition : documented)
        EXPECT_EQ(1U, quoted.count(condition)) << "in no source: " << condition;
}

// Whether the text stands there as a string of its own, not as the end of another. What comes before the first string
// of a section is no text, and not always NUL.
bool hasText(const std::string& library, const std::string& text)
{
    const std::string ended = text + '\0';
    for (std::size_t at = 0; (at = library.find(ended, at)) != std::string::npos; ++at)
    {
        const auto before = static_cast<unsigned char>(at != 0 ? library[at - 1] : '\0');
        if (std::isprint(before) == 0 && std::isspace(before) == 0)
            return true;
    }
    return false;
}

TEST(LogTexts, EveryFormatStandsWholeInTheLibrary)
{
    Dl_info info{};
    ASSERT_NE(0, dladdr(reinterpret_cast<void*>(&VORN_JSON_DB::recType), &info));
    const std::string library = contentOf(info.dli_fname);
    for (const char* const message : {"Failed [%s]", "create table failed, sql=%s", "bad iType value=%d"})
        for (const std::string& format : {std::string("(%u) %s:%d (%s:%d)") + message + "(%m)\n\n",
                                          std::string("%s:%d (%u)(%s:%d)") + message + "(%m)\n(%m)",
                                          std::string("%s:%d (%u)(%s:%d)") + message + "(%m)\n"})
            EXPECT_TRUE(hasText(library, format)) << format;
    for (const char* const message : {"Failed [%s]", "jType=%s", "delete rec number=%d"})
        for (const std::string& format :
             {std::string("(%u) %s:%d ") + message + "\n", std::string("%s:%d (%u)") + message + "(%m)",
              std::string("%s:%d (%u)") + message})
            EXPECT_TRUE(hasText(library, format)) << format;
}

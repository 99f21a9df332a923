// SPDX-License-Identifier: MIT

#ifndef VORNJSONDB_TESTS_TEXTS_H
#define VORNJSONDB_TESTS_TEXTS_H

#include <sstream>
#include <string>
#include <vector>

namespace support
{

// The texts between bars: "a||b" are three, of which the second is empty.
inline std::vector<std::string> textsOf(const std::string& joined)
{
    std::vector<std::string> result;
    std::istringstream stream(joined + "|");
    for (std::string text; std::getline(stream, text, '|');)
        result.push_back(text);
    return result;
}

}  // namespace support

#endif  // VORNJSONDB_TESTS_TEXTS_H

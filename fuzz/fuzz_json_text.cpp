// SPDX-License-Identifier: MIT
//
// Any text, read by the library and by JsonCpp's own reader with the same settings: both accept it or both refuse it,
// and give the same value down to the kind of every number, whatever the reader has read before. What was read is
// written as JsonCpp writes it, and comes back without loss.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "check.h"
#include "column_text.h"
#include "json_value.h"

namespace
{

// Reads the text as the first and as the second of a column, which remembers the shape of the one before.
Json::Value readTwice(const std::string& strText)
{
    JsonReader reader;
    const Json::Value jFirst = readColumn(strText, reader);
    Json::Value jSecond = readColumn(strText, reader);
    FUZZ_CHECK(support::identical(jFirst, jSecond), "read otherwise the second time: <" + strText + ">");
    return jSecond;
}

// JsonCpp's reader refuses deeper texts, which its writer may well have written.
constexpr int kDeepest = 990;

std::string checkWriting(const Json::Value& jValue)
{
    std::string strText = toString(jValue);
    const std::string strReference = support::writeReference(jValue);
    FUZZ_CHECK(strText == strReference, "written <" + strText + ">, by JsonCpp <" + strReference + ">");
    return strText;
}

// blIdentical: whether the value has a kind that its text tells. A small unsigned number comes back signed, and every
// NaN as the same.
void checkValue(const Json::Value& jValue, bool blIdentical = true)
{
    const std::string strText = checkWriting(jValue);
    const Json::Value jAgain = readTwice(strText);
    FUZZ_CHECK(support::identical(jAgain, support::readReference(strText)), "not read like JsonCpp: <" + strText + ">");
    if (support::depthOf(jValue) > kDeepest)
        return;
    FUZZ_CHECK(toString(jAgain) == strText, "<" + strText + "> is not stable");
    FUZZ_CHECK(!blIdentical || support::identical(jAgain, jValue), "<" + strText + "> came back as another value");
}

std::vector<std::string> linesOf(const std::string& strText)
{
    std::vector<std::string> lines;
    std::istringstream stream(strText);
    for (std::string strLine; std::getline(stream, strLine);)
        lines.push_back(strLine);
    return lines;
}

template <typename Number>
Number numberOf(const std::string& strBytes)
{
    Number number = 0;
    std::memcpy(&number, strBytes.data(), std::min(sizeof number, strBytes.size()));
    return number;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string strText(reinterpret_cast<const char*>(data), size);
    const Json::Value jExpected = support::readReference(strText);
    const Json::Value jValue = readTwice(strText);
    FUZZ_CHECK(support::identical(jValue, jExpected),
               "read as <" + toString(jValue) + ">, by JsonCpp as <" + support::writeReference(jExpected) + ">");
    checkValue(jValue);

    // Its lines as the texts of one column, some of them again: each is read into the shape of the one before.
    JsonReader reader;
    const std::vector<std::string> lines = linesOf(strText);
    for (std::size_t i = 0; i < 2 * lines.size(); ++i)
    {
        const std::string& strLine = lines[i * 7 % lines.size()];
        FUZZ_CHECK(support::identical(readColumn(strLine, reader), support::readReference(strLine)),
                   "not read like JsonCpp into another shape: <" + strLine + ">");
    }

    // The same bytes as values that need not come from a text: NUL characters and broken UTF-8 in strings and names,
    // an array with items that were never set, any bits in numbers.
    checkValue(Json::Value(strText));
    Json::Value jNamed;
    jNamed[strText] = jValue;
    checkValue(jNamed);
    Json::Value jSparse;
    jSparse[static_cast<Json::ArrayIndex>(size % 5)] = jValue;
    checkWriting(jSparse);
    const auto uNumber = numberOf<std::uint64_t>(strText);
    checkValue(static_cast<Json::UInt64>(uNumber), uNumber > static_cast<std::uint64_t>(Json::Value::maxInt64));
    checkValue(static_cast<Json::Int64>(numberOf<std::int64_t>(strText)));
    const auto dNumber = numberOf<double>(strText);
    checkValue(dNumber, !std::isnan(dNumber));
    return 0;
}

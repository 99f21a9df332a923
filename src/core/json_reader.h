// SPDX-License-Identifier: MIT
//
// Reads the JSON texts that toString() writes, and most others, faster than JsonCpp's reader does.

#ifndef VORN_JSON_READER_H
#define VORN_JSON_READER_H

#include <json/json.h>

#include <string_view>

// Reads the texts of one column, one after the other.
class JsonReader
{
public:
    // Sets jValue to the value of the text, behind which a NUL stands, and returns true, or returns false (jValue is
    // then incomplete) where the text needs JsonCpp's reader: what is not strict JSON, "\u" escapes, numbers with more
    // than 18 digits or an exponent, texts nested deeper than 32 levels. Where it returns true, the value is the one
    // that JsonCpp's reader gives.
    bool read(std::string_view text, Json::Value& jValue);

private:
    // The last value, if it is no larger than a few KB, with null for everything but objects and arrays. The texts of a
    // column mostly have the same members, and copying an object is far cheaper than entering them again.
    Json::Value m_jShape;
    int m_iTrust = 0;  // falls with every text of another shape, until shapes are no longer tried
};

#endif  // VORN_JSON_READER_H

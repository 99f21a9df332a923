// SPDX-License-Identifier: MIT

#ifndef VORNJSONDB_TESTS_COLUMN_TEXT_H
#define VORNJSONDB_TESTS_COLUMN_TEXT_H

#include <stdexcept>
#include <string>

#include "json_reader.h"
#include "json_text.h"

// The text as the value of a column, which is null where it is not JSON.
inline Json::Value readColumn(const std::string& strText, JsonReader& reader)
{
    static Json::CharReader& anyReader = []() -> Json::CharReader&
    {
        Json::CharReaderBuilder builder;
        builder["collectComments"] = false;
        builder["allowSpecialFloats"] = true;
        return *builder.newCharReader();
    }();
    Json::Value jValue;
    const std::string_view text = strText.c_str();
    if (!reader.read(text, jValue) && !readByJsonCpp(text, anyReader, jValue) && !jValue.isNull())
        throw std::runtime_error("a value is left of a text that is refused");
    return jValue;
}

#endif  // VORNJSONDB_TESTS_COLUMN_TEXT_H

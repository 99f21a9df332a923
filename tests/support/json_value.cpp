// SPDX-License-Identifier: MIT

#include "json_value.h"

#include <memory>
#include <stdexcept>

namespace support
{

Json::Value json(const std::string& text)
{
    Json::CharReaderBuilder builder;
    builder["allowSpecialFloats"] = true;
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value value;
    std::string errors;
    if (!reader->parse(text.data(), text.data() + text.size(), &value, &errors))
    {
        throw std::runtime_error("not JSON: " + text + "\n" + errors);
    }
    return value;
}

}  // namespace support

// SPDX-License-Identifier: MIT

#include "utf8.h"

#include <cstdint>
#include <cstring>

namespace cli
{

namespace
{

// The length of the character that the bytes begin with; 0 where they begin with none.
std::size_t characterLength(std::string_view bytes)
{
    struct Form
    {
        unsigned char first, last;  // of its first byte
        std::size_t length;
        unsigned char from, to;  // of its second
    };
    static constexpr Form kForms[] = {
        {0x00, 0x7F, 1, 0, 0},       {0xC2, 0xDF, 2, 0x80, 0xBF}, {0xE0, 0xE0, 3, 0xA0, 0xBF},
        {0xE1, 0xEC, 3, 0x80, 0xBF}, {0xED, 0xED, 3, 0x80, 0x9F}, {0xEE, 0xEF, 3, 0x80, 0xBF},
        {0xF0, 0xF0, 4, 0x90, 0xBF}, {0xF1, 0xF3, 4, 0x80, 0xBF}, {0xF4, 0xF4, 4, 0x80, 0x8F}};
    const auto byteAt = [bytes](std::size_t place) { return static_cast<unsigned char>(bytes[place]); };
    for (const Form& form : kForms)
    {
        if (byteAt(0) < form.first || byteAt(0) > form.last)
            continue;
        if (bytes.size() < form.length || (form.length > 1 && (byteAt(1) < form.from || byteAt(1) > form.to)))
            return 0;
        for (std::size_t i = 2; i < form.length; ++i)
            if ((byteAt(i) & 0xC0U) != 0x80U)
                return 0;
        return form.length;
    }
    return 0;
}

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";

// Whether the character that the bytes begin with is a control character.
bool isControl(std::string_view bytes)
{
    const auto first = static_cast<unsigned char>(bytes.front());
    return first < 0x20U || first == 0x7FU ||
           (first == 0xC2U && bytes.size() > 1 && static_cast<unsigned char>(bytes[1]) < 0xA0U);
}

// How many bytes at the beginning are ASCII, or fewer. Most texts are nothing else, so it goes in strides.
std::size_t asciiLength(std::string_view bytes)
{
    std::size_t place = 0;
    for (std::uint64_t stride = 0; place + sizeof stride <= bytes.size(); place += sizeof stride)
    {
        std::memcpy(&stride, bytes.data() + place, sizeof stride);
        if ((stride & 0x8080808080808080U) != 0)
            break;
    }
    while (place < bytes.size() && static_cast<unsigned char>(bytes[place]) < 0x80U)
        ++place;
    return place;
}

}  // namespace

bool isUtf8(std::string_view bytes)
{
    for (bytes.remove_prefix(asciiLength(bytes)); !bytes.empty(); bytes.remove_prefix(asciiLength(bytes)))
    {
        const std::size_t length = characterLength(bytes);
        if (length == 0)
            return false;
        bytes.remove_prefix(length);
    }
    return true;
}

std::string asUtf8(std::string_view bytes)
{
    std::string strText;
    while (!bytes.empty())
    {
        const std::size_t length = characterLength(bytes);
        strText += length > 0 ? bytes.substr(0, length) : kReplacement;
        bytes.remove_prefix(length > 0 ? length : 1);
    }
    return strText;
}

std::string harmless(std::string_view bytes, bool blLines)
{
    std::string strText;
    while (!bytes.empty())
    {
        const std::size_t length = characterLength(bytes);
        const bool blKept = length > 0 && (!isControl(bytes) || (blLines && bytes.front() == '\n'));
        strText += blKept ? bytes.substr(0, length) : kReplacement;
        bytes.remove_prefix(length > 0 ? length : 1);
    }
    return strText;
}

std::string escaped(std::string strJson)
{
    for (std::size_t i = 0; i < strJson.size(); ++i)
    {
        const std::string_view rest = std::string_view(strJson).substr(i);
        if (rest.front() == '\x7F')
            strJson.replace(i, 1, "\\u007f");
        else if (rest.front() == '\xC2' && isControl(rest))
        {
            constexpr char kDigits[] = "0123456789abcdef";
            const auto byte = static_cast<unsigned char>(rest[1]);
            strJson.replace(i, 2, {'\\', 'u', '0', '0', kDigits[byte >> 4U], kDigits[byte & 0xFU]});
        }
    }
    return strJson;
}

}  // namespace cli

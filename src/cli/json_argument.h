// SPDX-License-Identifier: MIT
//
// From what a person types to JSON.

#ifndef VORN_CLI_JSON_ARGUMENT_H
#define VORN_CLI_JSON_ARGUMENT_H

#include <json/json.h>

#include <string>
#include <string_view>
#include <vector>

namespace cli
{

// The value of a JSON text. strWhat names it in the error: "the filter".
Json::Value parseJson(const std::string& strText, const std::string& strWhat);

// A filter from its arguments, which must all hold: JSON objects, "-" for one on standard input, and short forms
// PATH=VALUE and PATH.OPERATOR=VALUE. jMembers tells how values are read.
Json::Value filterOf(const Json::Value& jMembers, const std::vector<std::string>& arguments);

// A record, or values of one, from its arguments: JSON objects, "-", and MEMBER=VALUE.
Json::Value recordOf(const Json::Value& jMembers, const std::vector<std::string>& arguments);

// A text as a value of the type: "3" is the number for "int", the text for "string". Texts that do not fit stay texts,
// which the table then refuses by the member's name.
Json::Value valueOf(std::string_view type, std::string_view text);

// "a,-b" as ["a", "-b"].
Json::Value listOf(const std::string& strText);

}  // namespace cli

#endif  // VORN_CLI_JSON_ARGUMENT_H

// SPDX-License-Identifier: MIT
//
// Inputs are JSON texts: what a fuzzer does can be read in its corpus, and input_mutator.cpp changes values and members
// instead of bytes. Whatever part of an input is missing or of another kind reads as null or empty.

#ifndef VORN_FUZZ_INPUT_H
#define VORN_FUZZ_INPUT_H

#include <json/json.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "model_comparison.h"

namespace fuzz
{

// Nothing where the bytes are no JSON, or could make the formatter write some 100 MB.
std::optional<Json::Value> readInput(const std::uint8_t* data, std::size_t size);

// The member or item of that name or index, or null.
const Json::Value& part(const Json::Value& jInput, const char* szName);
const Json::Value& part(const Json::Value& jInput, Json::ArrayIndex index);

// The string as it is, NUL characters included; empty for other kinds.
std::string textOf(const Json::Value& jValue);
std::vector<std::string> textsOf(const Json::Value& jArray);
bool flagOf(const Json::Value& jValue);
int smallNumberOf(const Json::Value& jValue);

// Compares the library with the model on each call that the input's "steps" tell, up to a dozen.
void compareSteps(model::Comparison& comparison, const Json::Value& jInput);

// The library keeps the types of every table that it has seen: gives their larger half back, or a process with a new
// table for each input would soon grow too large. The name must not be used again.
void giveTypesBack(std::string strName);

}  // namespace fuzz

#endif  // VORN_FUZZ_INPUT_H

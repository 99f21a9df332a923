// SPDX-License-Identifier: MIT
//
// One random case for the model and the library: a definition, its table, and calls on it. A case follows from the seed
// and its index alone.

#ifndef VORN_TESTS_MODEL_CASE_H
#define VORN_TESTS_MODEL_CASE_H

#include <cstdint>

#include "model_step.h"

namespace model
{

struct Case
{
    std::string table;
    Json::Value definition;
    std::string columns;  // between the parentheses of CREATE TABLE
    std::vector<Step> steps;
};

Case randomCase(std::uint64_t seed, std::uint64_t index);

// The case as an input of the fuzzer "save", but for the table's name in queries.
std::string asInput(const Case& example);

}  // namespace model

#endif

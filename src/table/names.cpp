// SPDX-License-Identifier: MIT

#include "names.h"

#include <mutex>
#include <set>
#include <string>

namespace vorn
{

std::string_view internedName(std::string_view name)
{
    static std::mutex mutex;
    static auto& names = *new std::set<std::string, std::less<>>();  // outlives every destructor of the host

    const std::lock_guard<std::mutex> lock(mutex);
    auto it = names.find(name);
    if (it == names.end())
        it = names.emplace(name).first;
    return *it;
}

}  // namespace vorn

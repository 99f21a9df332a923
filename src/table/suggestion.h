// SPDX-License-Identifier: MIT
//
// "Did you mean": the known name that is nearest to one that is not known.

#ifndef VORN_SUGGESTION_H
#define VORN_SUGGESTION_H

#include <string>
#include <string_view>

namespace vorn
{

class Suggestion
{
public:
    explicit Suggestion(std::string_view given);

    void consider(std::string_view known);
    std::string_view nearest() const { return m_nearest; }  // "" where none is near

private:
    std::string_view m_given;
    std::string_view m_nearest;
    std::size_t m_distance;  // names as far as this, or farther, are not meant
};

// '; did you mean "name"?', or "." where there is no such name: the end of a sentence.
std::string didYouMean(std::string_view nearest);

}  // namespace vorn

#endif  // VORN_SUGGESTION_H

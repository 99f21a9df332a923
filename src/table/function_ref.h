// SPDX-License-Identifier: MIT
//
// Somebody else's function object, for as long as a call lasts: what would otherwise make a template of the callee, or
// an allocation.

#ifndef VORN_FUNCTION_REF_H
#define VORN_FUNCTION_REF_H

namespace vorn
{

template <typename Signature>
class FunctionRef;

template <typename Result, typename... Arguments>
class FunctionRef<Result(Arguments...)>
{
public:
    template <typename Function>
    FunctionRef(const Function& function)  // NOLINT(google-explicit-constructor): an argument's type
        : m_pFunction(&function),
          m_pCall([](const void* pFunction, Arguments... arguments) -> Result
                  { return (*static_cast<const Function*>(pFunction))(arguments...); })
    {
    }

    Result operator()(Arguments... arguments) const { return m_pCall(m_pFunction, arguments...); }

private:
    const void* m_pFunction;
    Result (*m_pCall)(const void*, Arguments...);
};

}  // namespace vorn

#endif  // VORN_FUNCTION_REF_H

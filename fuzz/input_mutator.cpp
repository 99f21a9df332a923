// SPDX-License-Identifier: MIT
//
// How libFuzzer changes an input that is JSON: one to three values or members at a time, so that nearly every input can
// still be read. The bytes of strings are left to libFuzzer's own mutations and dictionary.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "input.h"
#include "json_value.h"

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t maxSize);

namespace
{

class Mutator
{
public:
    explicit Mutator(unsigned seed) : m_random(seed) {}

    void change(Json::Value& jRoot)
    {
        for (std::size_t n = 1 + below(3); n > 0; --n)
            changeOne(anyValue(jRoot), jRoot);
    }

    // Brings a part of the other input in.
    void cross(Json::Value& jRoot, Json::Value& jOther)
    {
        Json::Value& jTarget = anyValue(jRoot);
        const Json::Value jPart = anyValue(jOther);
        if (jTarget.isArray() && below(2) == 0)
            jTarget.append(jPart);
        else
            jTarget = jPart;
    }

private:
    std::size_t below(std::size_t end) { return std::uniform_int_distribution<std::size_t>(0, end - 1)(m_random); }

    static void collect(Json::Value& jValue, std::vector<Json::Value*>& values)
    {
        values.push_back(&jValue);
        if (jValue.isArray() || jValue.isObject())
            for (Json::Value& jItem : jValue)
                collect(jItem, values);
    }

    Json::Value& anyValue(Json::Value& jRoot)
    {
        std::vector<Json::Value*> values;
        collect(jRoot, values);
        Json::Value* const pjValue = values[below(values.size())];
        return *pjValue;
    }

    Json::Value anyScalar()
    {
        using Limits = std::numeric_limits<Json::Int64>;
        static const Json::Value kScalars[] = {Json::Value(),
                                               true,
                                               false,
                                               0,
                                               1,
                                               -1,
                                               7,
                                               2147483647,
                                               -2147483647 - 1,
                                               4294967295u,
                                               "",
                                               "'",
                                               Limits::max(),
                                               Limits::min(),
                                               Json::Value::maxUInt64,
                                               0.5,
                                               -0.0,
                                               3.0,
                                               9223372036854775808.0,
                                               1e300,
                                               -1e-7,
                                               "a",
                                               "%",
                                               "%%",
                                               Json::Value(Json::arrayValue),
                                               Json::Value(Json::objectValue)};
        return kScalars[below(std::size(kScalars))];
    }

    std::string mutatedText(const std::string& strText)
    {
        constexpr std::size_t kRoom = 64;
        std::vector<std::uint8_t> bytes(strText.begin(), strText.end());
        bytes.resize(strText.size() + kRoom);
        bytes.resize(LLVMFuzzerMutate(bytes.data(), strText.size(), bytes.size()));
        return std::string(bytes.begin(), bytes.end());
    }

    // A name from somewhere in the input, or a changed one.
    std::string anyName(Json::Value& jRoot, const std::string& strName)
    {
        const Json::Value& jSource = anyValue(jRoot);
        if (jSource.isString())
            return jSource.asString();
        if (jSource.isObject() && !jSource.empty())
        {
            const std::vector<std::string> names = jSource.getMemberNames();
            return names[below(names.size())];
        }
        return mutatedText(strName);
    }

    void changeOne(Json::Value& jValue, Json::Value& jRoot)
    {
        switch (below(8))
        {
            case 0:
                jValue = anyScalar();
                return;
            case 1:
                jValue = Json::Value(anyValue(jRoot));
                return;
            default:
                break;
        }
        if (jValue.isString())
            jValue = mutatedText(jValue.asString());
        else if (jValue.isObject())
            changeObject(jValue, jRoot);
        else if (jValue.isArray())
            changeArray(jValue, jRoot);
        else if (jValue.isInt())
            jValue = static_cast<Json::Int64>(jValue.asInt64() + static_cast<Json::Int64>(below(9)) - 4);
        else
            jValue = anyScalar();
    }

    void changeObject(Json::Value& jObject, Json::Value& jRoot)
    {
        if (jObject.empty() || below(3) == 0)
        {
            const Json::Value jPart = anyValue(jRoot);
            jObject[anyName(jRoot, "a")] = jPart;
            return;
        }
        const std::vector<std::string> names = jObject.getMemberNames();
        const std::string& strName = names[below(names.size())];
        Json::Value jMember;
        const bool blRename = below(2) == 0;
        const std::string strNewName = blRename ? anyName(jRoot, strName) : std::string();
        jObject.removeMember(strName, &jMember);
        if (blRename)
            jObject[strNewName] = jMember;
    }

    void changeArray(Json::Value& jArray, Json::Value& jRoot)
    {
        if (jArray.empty() || below(3) == 0)
        {
            const Json::Value jPart = anyValue(jRoot);
            jArray.append(jPart);
            return;
        }
        const auto i = static_cast<Json::ArrayIndex>(below(jArray.size()));
        const auto j = static_cast<Json::ArrayIndex>(below(jArray.size()));
        switch (below(3))
        {
            case 0:
                jArray.removeIndex(i, nullptr);
                return;
            case 1:
                jArray.append(Json::Value(jArray[i]));
                return;
            default:
                jArray[i].swap(jArray[j]);
                return;
        }
    }

    std::minstd_rand m_random;
};

// 0 when the text of the value does not fit.
std::size_t store(const Json::Value& jValue, std::uint8_t* out, std::size_t maxSize)
{
    const std::string strText = support::writeReference(jValue);
    if (strText.size() > maxSize)
        return 0;
    std::copy(strText.begin(), strText.end(), out);
    return strText.size();
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize, unsigned seed)
{
    std::optional<Json::Value> jInput = fuzz::readInput(data, size);
    if (!jInput)
        jInput = Json::Value(Json::objectValue);
    Mutator(seed).change(*jInput);
    const std::size_t stored = store(*jInput, data, maxSize);
    return stored != 0 ? stored : LLVMFuzzerMutate(data, size, maxSize);
}

extern "C" std::size_t LLVMFuzzerCustomCrossOver(const std::uint8_t* data1, std::size_t size1,
                                                 const std::uint8_t* data2, std::size_t size2, std::uint8_t* out,
                                                 std::size_t maxOutSize, unsigned seed)
{
    std::optional<Json::Value> jInput = fuzz::readInput(data1, size1);
    std::optional<Json::Value> jOther = fuzz::readInput(data2, size2);
    if (!jInput || !jOther)
        return 0;
    Mutator(seed).cross(*jInput, *jOther);
    return store(*jInput, out, maxOutSize);
}

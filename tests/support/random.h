// SPDX-License-Identifier: MIT
//
// Chance that can be repeated: VORN_TEST_SEED gives the seed that an earlier run has printed.

#ifndef VORNJSONDB_TESTS_RANDOM_H
#define VORNJSONDB_TESTS_RANDOM_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <random>

namespace support
{

class Random
{
public:
    explicit Random(std::uint64_t seed) : m_seed(seed) {}
    Random() : Random(chosenSeed())
    {
        std::printf("VORN_TEST_SEED=%llu\n", static_cast<unsigned long long>(m_seed));
        std::fflush(stdout);
    }

    std::uint64_t seed() const { return m_seed; }
    std::size_t below(std::size_t limit) { return static_cast<std::size_t>(m_engine() % limit); }
    bool oneIn(std::size_t n) { return below(n) == 0; }
    bool chance(std::size_t percent) { return below(100) < percent; }

    template <class List>
    const auto& of(const List& list)
    {
        return *(std::begin(list) + static_cast<std::ptrdiff_t>(below(std::size(list))));
    }

private:
    static std::uint64_t chosenSeed()
    {
        const char* const szGiven = std::getenv("VORN_TEST_SEED");
        return szGiven != nullptr ? std::strtoull(szGiven, nullptr, 10) : std::random_device()();
    }

    std::uint64_t m_seed;
    std::mt19937_64 m_engine{m_seed};
};

}  // namespace support

#endif  // VORNJSONDB_TESTS_RANDOM_H
